// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli info: what a raw log holds. CRawLogReader reads what its bytes say without
// definitions; with definitions the file is played and its frames are counted.
#include "cli/Commands.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "cli/SessionOptions.h"
#include "export/LogFacts.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/RawLogReader.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

struct InfoOptions : PlaybackOptions {
    bool json = false;
};

/// Reads the whole file; false when it cannot be read, which is told, or the user stops it.
bool ReadLog(const std::string& path, const CommandContext& context, CRawLogReader& log) {
    FileCause cause = log.Open(path);
    while (cause == FileCause::None && !log.AtEnd() && !context.stop.Requested())
        cause = log.ReadOn();
    if (cause != FileCause::None && !context.stop.Requested())
        ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
    return cause == FileCause::None;
}

/// The exit status of what was played.
int PlayLog(const std::string& path, const InfoOptions& options, CommandContext& context,
            PlayFacts& facts) {
    CPlayedFile playback(options.chunk);
    bool well = playback.Open(path, options.instruments, options.strict);
    if (playback.IsBadCall())
        return ExitBadCall;
    if (!playback.IsOpen())
        return ExitFault;
    playback.KeepDiscarded(facts.discarded);
    well = playback.Play(
               context,
               [&](CQorViewIns& instrument, const FrameCheckResult&) {
                   facts.Note(*instrument.Live.CurrentFrame());
               },
               [] { return true; }) &&
           well;
    facts.Count(playback.Doc().Snapshot());
    return well ? ExitWell : ExitFault;
}

/// Whether the call says something of instruments (reported) where it names none.
bool NamesInVain(const InstrumentSelection& instruments) {
    const std::vector<Refusal> named = UnknownNames(instruments, {});
    if (!instruments.Empty() || named.empty())
        return false;
    ReportError(named.front().subject +
                ": give the instrument's definition with -d, or its package "
                "with -p.");
    return true;
}

/// Behind what the log holds, on standard error. False when there are any.
bool SayFaults(COutput& output, const std::string& path, const CRawLogReader& log,
               const PlayFacts* play) {
    const std::vector<LogFault> faults = FaultsOf(log, play);
    if (faults.empty())
        return true;
    output.Flush();
    for (const LogFault& fault : faults)
        ReportError(path + ": " + fault.text);
    if (play)
        for (const std::string& sentence : UnnamedSentences(*play))
            ReportHint(path + ": " + sentence);
    return false;
}

int RunInfo(InfoOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files))
        return ExitBadCall;
    if (const int status = TakeSession(options.sessionPath, options.instruments.session);
        status != ExitWell)
        return status;
    if (NamesInVain(options.instruments))
        return ExitBadCall;
    COutput output(ReportError);
    if (const int status = OutputExit(output.Open({}, {.inputs = options.Inputs()}));
        status != ExitWell)
        return status;
    bool well = true;
    const bool plays = !options.instruments.Empty();
    for (const std::string& path : options.files) {
        CRawLogReader log;
        PlayFacts play;
        if (plays && IsDevice(path)) {
            ReportError(path + ": a pipe can be read only once; save it to a file to have its "
                               "frames counted.");
            well = false;
            continue;
        }
        const bool read = ReadLog(path, context, log);
        if (context.stop.Requested())
            return ExitInterrupted;
        if (!read) {
            well = false;
            continue;
        }
        const int played = plays ? PlayLog(path, options, context, play) : ExitWell;
        if (played == ExitBadCall)
            return played;
        well = played == ExitWell && well;
        (options.json ? WriteLogJson : WriteLogText)(output, path, log, plays ? &play : nullptr);
        well = SayFaults(output, path, log, plays ? &play : nullptr) && well;
        if (context.stop.Requested())
            return ExitInterrupted;
    }
    return (output.Flush() || !output.Failed()) && well ? ExitWell : ExitFault;
}

} // namespace

void AddInfoCommand(CLI::App& app, CommandContext& context) {
    static InfoOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("info", "Say what a raw log holds");
    AddInstrumentOptions(*command, options.instruments);
    command->add_flag("--json", options.json, "One JSON object a file");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunInfo(options, context); }; });
}

} // namespace qor
