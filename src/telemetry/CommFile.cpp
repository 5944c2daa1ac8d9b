// SPDX-License-Identifier: GPL-3.0-or-later
//
// A file played as if it were a port: it has no thread and is read on demand by whoever retrieves
// frames, in batches small enough to stay in the processor's cache. Its end stops reading, never
// delivery: what the end settles is still handed over, and only then is the end reported.
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/TelemCommImpl.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::size_t FramesPerBatch = 64;
/// Bounds the memory that a read takes, whatever the settings say.
constexpr std::uint32_t MaxReadSize = 64u << 20;
constexpr std::uint32_t DefaultReadSize = 2048;
/// What one call reads at the most when no frame comes, so that its caller stays responsive.
constexpr std::uint64_t BytesPerCall = 16u << 20;

} // namespace

std::uint32_t CTelemComm::Impl::ReadSize() const {
    std::uint32_t size = Playback.readChunkSize;
    return size == 0 ? DefaultReadSize : std::min(size, MaxReadSize);
}

CommResult CTelemComm::Impl::ReadOn() {
    CFrameQueue& frames = Sync->Frames();
    const std::uint64_t begun = BytesReceived;
    while (frames.Empty() && !EndReported && BytesReceived - begun < BytesPerCall) {
        // No time is known but for what the file's own tags say.
        PassResult pass = Sync->Process(FrameTime{}, false, FramesPerBatch);
        FramesCut += pass.framesCut;
        if (!frames.Empty())
            return CommResult::Success;
        if (FileRead)
            ReportEnd();
        else
            ReadChunk();
    }
    return frames.Empty() ? FileResult : CommResult::Success;
}

void CTelemComm::Impl::ReadChunk() {
    if (!File.IsOpen())
        return ReadFailed(CommResult::FileNotOpen, {});
    FileStarted = true;
    std::span<std::uint8_t> room = Sync->Prepare(ReadSize());
    std::size_t got = 0;
    FileCause cause = File.Read(room, got);
    Sync->Commit(got);
    BytesReceived += got;
    if (cause != FileCause::None)
        return ReadFailed(CommResult::FileError, ResourceFileErrorText(cause));
    if (got != 0)
        return;
    FileRead = true;
    Sync->EndOfStream();
}

/// What was read before is still settled and delivered; after it, retrieving gives the code.
void CTelemComm::Impl::ReadFailed(CommResult code, std::string_view causeText) {
    FileResult = Fail(Format("Error reading file resource %s.\r\n", Name.c_str()), code, causeText);
    FileRead = true;
    Sync->EndOfStream();
}

/// The notice tells the loop that nothing more will come, also after a failure; the message says
/// that the end was reached only where it was.
void CTelemComm::Impl::ReportEnd() {
    EndReported = true;
    File.Close();
    if (FileResult == CommResult::Success)
        Sink.Report(Format("End of file resource reached for %s.\r\n", Name.c_str()));
    if (Commands != nullptr)
        Commands->PostNotice(NoticeCode::EndOfFile, Name);
}

} // namespace qor
