// SPDX-License-Identifier: GPL-3.0-or-later
//
// A raw log through a document. See Playback.h.
#include "session/Playback.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/WholeFile.h"
#include "session/PressureTare.h"
#include "session/SessionOpener.h"
#include "telemetry/RawLogReader.h"

namespace qor {
namespace {

/// Large enough that the system calls do not count, small enough to stay in the second-level cache.
constexpr std::uint32_t FastestChunk = 256 * 1024;

} // namespace

void AddPlayed(CQorViewDoc& doc, CSessionSetup& setup, ResourceId file, const std::string& path,
               const InstrumentSelection& selection) {
    const RawLogHeader header = HeaderOf(path);
    {
        CRecursiveLock lock(doc.DocLock);
        doc.Derived = selection.derived;
    }
    if (selection.session) {
        KeptSession none;
        CSessionOpener(doc, setup, none).OpenOn(file, *selection.session, selection.packageOptions);
    }
    setup.AddAll(selection, file);
    setup.ApplyNames(selection);
    CRecursiveLock lock(doc.DocLock);
    TakeLoggedTare(doc, header.PressureTare().value_or(0.0));
}

CPlayback::CPlayback(CQorViewDoc& doc, std::uint32_t chunk, std::uint32_t framesAtOnce)
    : Doc(doc), Loop(doc), Setup(doc), Settings{.readChunkSize = chunk != 0 ? chunk : FastestChunk,
                                                .framesAtOnce = framesAtOnce} {}

bool CPlayback::Open(const std::string& path, const InstrumentSelection& selection) {
    if (!CZstdUnpacker::IsThere() && PackingOf(path) == Packing::Zstd) {
        Fault = "this build reads no .zst; unpack it first.";
        return false;
    }
    CommResult result = CommResult::Success;
    Resource = Doc.AddFileResource(path, Settings, &result);
    if (Resource == ResourceId::None) {
        CFile file;
        const FileCause cause = file.OpenForReading(path);
        Fault = cause == FileCause::None
                    ? "cannot be played. " + OneLine(CommDetail(result))
                    : "cannot be read. " + std::string(GetFileErrorText(cause));
        return false;
    }
    FileSize = FileSizeOf(path);
    AddPlayed(Doc, Setup, Resource, path, selection);
    CRecursiveLock lock(Doc.DocLock);
    CQorViewRes* resource = Doc.Find(Resource);
    Comm = &resource->Comm;
    for (const auto& instrument : resource->Instruments)
        Named.push_back(instrument.get());
    return true;
}

bool CPlayback::PlayBatch() {
    std::size_t frames = 0;
    return Loop.PlayBatch(Resource, frames);
}

CommResult CPlayback::Result() {
    CFrameQueue none;
    return AtEnd() ? Comm->RetrieveFrames(none) : CommResult::Success;
}

} // namespace qor
