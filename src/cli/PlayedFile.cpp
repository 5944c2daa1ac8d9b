// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/PlayedFile.h"

#include "base/Text.h"
#include "cli/NumberOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "cli/SessionOptions.h"
#include "instrument/SpecialType.h"
#include "session/FileKind.h"
#include "session/FrameWatch.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

constexpr std::uint32_t LargestChunk = 64 * 1024 * 1024;

} // namespace

CPlayedFile::CPlayedFile(std::uint32_t chunk, std::uint32_t framesAtOnce)
    : Document(Clock, MakeSystemSerialPort, User, Profile),
      Playback(Document, chunk, framesAtOnce) {
    Document.SessionLog.KeepText = false; // a damaged file reports without end
    Document.Acquisition.OnEvent = [this](const Event& event) { SayLoss(event); };
}

/// Says the first loss only: the like may follow for every further megabyte.
void CPlayedFile::SayLoss(const Event& event) {
    if (event.kind != EventKind::BytesLost || LossTold)
        return;
    ReportWarning(OneLine(event.text));
    LossTold = true;
}

bool CPlayedFile::Open(const std::string& path, const InstrumentSelection& selection, bool strict) {
    Path = path;
    if (!Playback.Open(path, selection)) {
        ReportError(path + ": " + Playback.OpenFault());
        return false;
    }
    const bool well = ReportSetup(Playback.Set(), strict, false);
    for (const CQorViewIns* instrument : Instruments())
        if (instrument->Definition().SyncHeader().empty() &&
            !SpecialTypeOf(instrument->Definition())) // a raw log holds theirs between time tags
            ReportWarning(instrument->Definition().FilePath() +
                          ": it has no sync header; its frames cannot be found in a file.");
    Opened = !Instruments().empty();
    if (!Opened)
        ReportError(path + ": no instrument to decode it with; no definition or package named "
                           "could be loaded.");
    return well && Opened;
}

const CQorViewIns* CPlayedFile::Find(std::string_view name) const {
    for (const CQorViewIns* instrument : Instruments())
        if (instrument->Name() == name)
            return instrument;
    return nullptr;
}

bool CPlayedFile::Play(CommandContext& context, const FrameFunction& onFrame,
                       const std::function<bool()>& goOn, const std::function<void()>& onIdle) {
    const CFrameWatch watch(Document, onFrame);
    CProgress progress(Path, Playback.Size(), context.quiet);
    while (!context.stop.Requested() && goOn() && Playback.PlayBatch()) {
        progress.Update(Figures().bytesOfFile);
        if (onIdle && !Playback.HasInput())
            onIdle();
    }
    return context.stop.Requested() || SayEnd();
}

bool CPlayedFile::SayEnd() {
    const CommResult result = Playback.Result();
    if (result != CommResult::Success) {
        ReportError(Path + ": could not be read to its end (" +
                    Format("0x%08x", static_cast<unsigned>(result)) +
                    "); what was read before was played." +
                    (PackingOf(Path) == Packing::None
                         ? ""
                         : " It is compressed: the archive is cut short or damaged."));
        return false;
    }
    if (Playback.AtEnd() && Figures().framesCut == 0)
        ReportWarning(Path + ": none of its " + std::to_string(Figures().bytesReceived) +
                      " bytes belong to a frame of the instruments named.");
    return true;
}

void AddPlaybackOptions(CLI::App& command, PlaybackOptions& options, CommandContext& context) {
    command
        .add_option("--chunk", options.chunk,
                    "Read size in bytes (2048); the frames are the same for every size")
        ->type_name("BYTES")
        ->transform(CountIn(1, LargestChunk));
    AddSessionOption(command, options.sessionPath);
    AddStrictOption(command, options.strict);
    command.add_flag("--quiet", context.quiet, "No progress bar");
    command
        .add_option_function<std::vector<std::string>>(
            "RAW",
            [&options](const std::vector<std::string>& paths) {
                for (const std::string& path : paths) {
                    const FileKind kind = KindByName(path);
                    (kind == FileKind::Package      ? options.instruments.packages
                     : kind == FileKind::Definition ? options.instruments.definitions
                                                    : options.files)
                        .push_back(path);
                }
            },
            "Raw logs, or any captured byte streams")
        ->type_name("")
        ->required();
}

bool NamesRawFile(const std::vector<std::string>& files) {
    if (files.empty())
        ReportError(
            "RAW is required: name a raw log behind the definitions. See qorview-cli --help.");
    return !files.empty();
}

int TakeInstruments(PlaybackOptions& options) {
    if (const int status = TakeSession(options.sessionPath, options.instruments.session);
        status != ExitWell)
        return status;
    if (!options.instruments.Empty())
        return ExitWell;
    ReportError("an instrument is required: give its definition with -d FILE, its package with "
                "-p FILE, or a --session FILE.qor.");
    return ExitBadCall;
}

int WithholdResults(const std::string& path, bool mayPrint) {
    ReportError(path + ": not made, because a log could not be read whole" +
                (mayPrint ? "; -o - prints what can be read of it." : "."));
    return ExitFault;
}

void AddFormatOption(CLI::App& command, const std::vector<std::string>& formats,
                     const std::string& help, std::function<void(const std::string&)> take) {
    std::string names;
    for (const std::string& format : formats)
        names += (names.empty() ? "" : "|") + format;
    command.add_option_function<std::string>("--format", std::move(take), help)
        ->type_name(names)
        ->check(CLI::IsMember(formats).description(""));
}

int PlaybackExit(const CommandContext& context, bool well) {
    return context.stop.Requested() ? ExitInterrupted : well ? ExitWell : ExitFault;
}

} // namespace qor
