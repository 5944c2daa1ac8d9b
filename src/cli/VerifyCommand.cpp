// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli verify: one verdict a raw log. The log is played once; what is checked of it and how
// the verdict is written is CLogCheck's.
#include "cli/Commands.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/ManifestCheck.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct VerifyOptions : PlaybackOptions {
    bool json = false;
    bool repair = false; ///< manifests that are missing are made
};

/// How many logs came to what.
struct Tally {
    std::size_t whole = 0, faulty = 0, unread = 0;

    std::string Text() const {
        std::string text =
            Format("%zu logs: %zu whole, %zu with faults", whole + faulty + unread, whole, faulty);
        return unread > 0 ? text + Format(", %zu not read to their end", unread) : text;
    }
};

/// Reads the header block, and one piece more to see whether the file ends with it.
FileCause ReadHeader(const std::string& path, CRawLogReader& log) {
    const FileCause cause = log.Open(path);
    return cause == FileCause::None ? log.ReadOn() : cause;
}

/// What came of a log; what has no verdict is reported.
struct VerifiedLog {
    std::optional<LogVerdict> verdict; ///< none: it could not be read to its end
    bool badCall = false;              ///< the call names an instrument that is not there
};

/// The instruments of the manifest with what the call says of them.
InstrumentSelection ByManifest(const CManifestCheck& manifest, const InstrumentSelection& call) {
    InstrumentSelection selection = manifest.Selection();
    selection.allWet = call.allWet;
    selection.wet = call.wet;
    selection.roles = call.roles;
    return selection;
}

VerifiedLog VerifyLog(const std::string& path, const VerifyOptions& options,
                      CommandContext& context) {
    if (IsDevice(path)) {
        ReportError(path + ": a pipe can be read only once; save it to a file to verify it.");
        return {};
    }
    CRawLogReader log;
    if (const FileCause cause = ReadHeader(path, log); cause != FileCause::None) {
        ReportError(path + ": cannot be read. " + std::string(GetFileErrorText(cause)));
        return {};
    }
    CManifestCheck manifest(path, options.repair);
    const bool named = !options.instruments.Empty();
    const InstrumentSelection instruments =
        named ? options.instruments : ByManifest(manifest, options.instruments);
    if (instruments.Empty()) {
        ReportError(path + ": it has no manifest that names definitions which are there; name them "
                           "with -d or -p.");
        return {};
    }
    CLogCheck check;
    check.Know(manifest.Manifest().steps);
    CPlayedFile playback(options.chunk);
    bool well = playback.Open(path, instruments, options.strict);
    if (playback.IsBadCall())
        return {{}, true};
    if (!playback.IsOpen())
        return {};
    playback.KeepDiscarded(check.Discarded());
    well = playback.Play(
               context,
               [&](const CQorViewIns& instrument, const FrameCheckResult& checks) {
                   check.Note(instrument, checks);
               },
               [] { return true; }) &&
           well;
    if (!well || context.stop.Requested())
        return {};
    std::optional<LogVerdict> verdict =
        check.Finish(log, playback.Figures().bytesReceived, playback.Doc().Snapshot());
    if (options.repair && !manifest.IsThere() && log.Header().IsRawLog()) {
        const std::string fault = manifest.Repair(playback.Doc(), log, check.Played(), *verdict);
        (fault.empty() ? ReportHint : ReportError)(
            fault.empty() ? ManifestPathOf(path) + ": made of what the log holds." : fault);
        if (!fault.empty())
            return {};
    } else {
        manifest.Judge(playback.Doc(), *verdict);
    }
    for (const std::string& hint : UnnamedSentences(check.Played()))
        ReportHint(path + ": " + hint);
    return {verdict};
}

/// Behind the verdicts, where there are several; beside lines of JSON it is no result.
void SayTally(const Tally& tally, bool json, COutput& output) {
    if (json) {
        output.Flush();
        WriteError(tally.Text() + "\n");
    } else {
        output.Text(tally.Text() + "\n");
    }
}

int RunVerify(VerifyOptions& options, CommandContext& context) {
    if (!NamesRawFile(options.files))
        return ExitBadCall;
    const auto hasManifest = [](const std::string& path) {
        return FileExists(ManifestPathOf(path));
    };
    const bool found =
        options.sessionPath.empty() && std::ranges::any_of(options.files, hasManifest);
    if (const int status = found ? ExitWell : TakeInstruments(options); status != ExitWell)
        return status;
    COutput output(ReportError);
    if (const int status = OutputExit(output.Open({}, {.inputs = options.Inputs()}));
        status != ExitWell)
        return status;
    Tally tally;
    for (const std::string& path : options.files) {
        const auto [verdict, badCall] = VerifyLog(path, options, context);
        if (context.stop.Requested())
            return ExitInterrupted;
        if (badCall)
            return ExitBadCall;
        if (!verdict) {
            ++tally.unread;
            continue;
        }
        (options.json ? WriteVerdictJson : WriteVerdictText)(output, path, *verdict);
        ++(verdict->Whole() ? tally.whole : tally.faulty);
        output.Flush();
    }
    if (options.files.size() > 1 && !(options.json && context.quiet))
        SayTally(tally, options.json, output);
    const bool written = output.Flush() || !output.Failed();
    return written && tally.faulty + tally.unread == 0 ? ExitWell : ExitFault;
}

} // namespace

void AddVerifyCommand(CLI::App& app, CommandContext& context) {
    static VerifyOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("verify", "Say whether raw logs are whole");
    AddInstrumentOptions(*command, options.instruments);
    command->add_flag("--json", options.json, "One JSON object a log");
    command->add_flag("--repair", options.repair,
                      "Make the manifest of a log that has none, as after a crash");
    AddPlaybackOptions(*command, options, context);
    command->callback(
        [&context] { context.body = [&context] { return RunVerify(options, context); }; });
}

} // namespace qor
