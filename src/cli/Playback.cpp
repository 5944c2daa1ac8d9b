// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Playback.h"
#include "cli/Report.h"

#include "base/Text.h"
#include "cli/Progress.h"
#include "session/MemberName.h"
#include "telemetry/RawLogReader.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

/// Large enough that the system calls do not count, small enough to stay in the second-level cache.
constexpr std::uint32_t FastestChunk = 256 * 1024;
constexpr std::uint32_t LargestChunk = 64 * 1024 * 1024;

/// How the session log's entries on frames that cannot be cut begin.
constexpr std::string_view LossStarts[] = {"No frame terminator of ", "Frames of "};

} // namespace

CPlayback::CPlayback(std::uint32_t chunk)
    : Document(Clock, MakeSystemSerialPort, User, Profile), NamedPackages(Document), Loop(Document),
      Chunk(chunk != 0 ? chunk : FastestChunk) {
    Document.SessionLog.KeepText = false; // a damaged file reports without end
    Document.SessionLog.OnEntry = [this](const std::string& entry) { NoteEntry(entry); };
}

/// Says the first loss only: the like may follow for every further megabyte.
void CPlayback::NoteEntry(std::string_view entry) {
    entry.remove_prefix(std::min(entry.find("> "), entry.size() - 2) + 2);
    for (std::string_view start : LossStarts)
        if (!LossTold && entry.starts_with(start)) {
            ReportWarning(OneLine(entry));
            LossTold = true;
        }
}

bool CPlayback::Open(const std::string& path, const InstrumentOptions& options) {
    Path = path;
    FileResourceSettings settings;
    settings.readChunkSize = Chunk;
    CommResult result = CommResult::Success;
    int resource = Document.AddFileResource(path, settings, &result);
    if (resource < 0) {
        if (IsReadable(path))
            ReportError(path + ": cannot be played. " + OneLine(CommDetail(result)));
        return false;
    }
    // The file is opened only once where it may be a pipe.
    CFile file;
    if (!IsDevice(path) && file.OpenForReading(path) == FileCause::None &&
        file.Size(Size) != FileCause::None)
        Size = 0;
    Tare = PressureTareOf(path);
    bool well = AddDefinitions(Document, resource, options.definitions);
    for (const std::string& packagePath : options.packages)
        well = AddPackage(NamedPackages, resource, LoadPackage(packagePath, User, Document),
                          options.packageSettings) &&
               well;
    well = ApplyWetAndRoles(Document, options) && well;
    CRecursiveLock lock(Document.DocLock);
    Comm = &Document.Resources[static_cast<std::size_t>(resource)]->Comm;
    for (const auto& instrument :
         Document.Resources[static_cast<std::size_t>(resource)]->Instruments)
        Named.push_back(instrument.get());
    for (const CQorViewIns* instrument : Named)
        if (instrument->Definition().SyncHeader().empty())
            ReportWarning(instrument->Definition().FilePath() +
                          ": it has no sync header; its frames cannot be found in a file.");
    if (Named.empty()) {
        ReportError(path + ": no instrument to decode it with; no definition or package named "
                           "could be loaded.");
        return false;
    }
    Resource = resource;
    return well;
}

bool CPlayback::Play(CommandContext& context, const FrameFunction& onFrame,
                     const std::function<bool()>& goOn) {
    {
        CRecursiveLock lock(Document.DocLock);
        Document.OnFrame = [&](int, CQorViewIns& instrument, const FrameCheckResult& checks) {
            onFrame(instrument, checks);
        };
    }
    CProgress progress(Path, Size, context.quiet);
    std::size_t frames = 0;
    while (!context.stop.Requested() && goOn() && Loop.PlayBatch(Resource, frames))
        progress.Update(Comm->Figures().bytesReceived);
    CRecursiveLock lock(Document.DocLock);
    Document.OnFrame = nullptr;
    if (context.stop.Requested())
        return true;
    CFrameQueue none;
    CommResult result = Document.AtEnd(Resource) ? Comm->RetrieveFrames(none) : CommResult::Success;
    if (result == CommResult::Success) {
        const ResourceFigures figures = Comm->Figures();
        if (Document.AtEnd(Resource) && figures.framesCut == 0)
            ReportWarning(Path + ": none of its " + std::to_string(figures.bytesReceived) +
                          " bytes belong to a frame of the instruments named.");
        return true;
    }
    ReportError(Path + ": could not be read to its end (" +
                Format("0x%08x", static_cast<unsigned>(result)) +
                "); what was read before was played.");
    return false;
}

void AddPlaybackOptions(CLI::App& command, PlaybackOptions& options, CommandContext& context) {
    command
        .add_option("--chunk", options.chunk,
                    "Read size in bytes (2048); the frames are the same for every size")
        ->type_name("BYTES")
        ->check(CLI::Range(std::uint32_t{1}, LargestChunk));
    command.add_flag("--quiet", context.quiet, "No progress bar");
    command
        .add_option_function<std::vector<std::string>>(
            "RAW",
            [&options](const std::vector<std::string>& paths) {
                for (const std::string& path : paths) {
                    bool isPackage = ExtensionOf(path) == "sip";
                    (isPackage                ? options.instruments.packages
                     : IsDefinitionName(path) ? options.instruments.definitions
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

bool NamesInstrument(const InstrumentOptions& instruments) {
    const bool named = !instruments.definitions.empty() || !instruments.packages.empty();
    if (!named)
        ReportError("an instrument is required: give its definition with -d FILE or its package "
                    "with -p FILE.");
    return named;
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
