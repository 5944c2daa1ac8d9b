// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli diff: what differs between two definitions of an instrument, and what that does to
// the values of a raw log. Comparing is CalibrationDiff's.
#include "cli/Commands.h"
#include "cli/OutputOptions.h"
#include "cli/PlayedFile.h"
#include "cli/Report.h"
#include "export/CalibrationDiff.h"

#include "base/Text.h"
#include "session/FileKind.h"

#include <CLI/CLI.hpp>

namespace qor {

namespace {

struct DiffOptions {
    std::string before, after, log;
    bool json = false, wet = false;
};

/// What is wrong with the call, or nothing.
std::string WrongCall(const DiffOptions& options) {
    for (const std::string& path : {options.before, options.after})
        if (KindOfFile(path) != FileKind::Definition)
            return path +
                   ": it is no definition (.cal, .tdf); diff compares two of them, and a raw "
                   "log may follow.";
    return {};
}

bool Load(CInstrument& instrument, const std::string& path) {
    const DefinitionStatus status = instrument.Load(path);
    if (status == DefinitionStatus::Success) {
        if (!instrument.FirstDiagnostic().empty())
            ReportWarning(path +
                          ": what is compared was repaired: " + instrument.FirstDiagnostic());
        return true;
    }
    ReportError(path + ": could not be loaded (" + Format("0x%08x", static_cast<unsigned>(status)) +
                "); check says why.");
    return false;
}

/// The log is played with the first definition; each frame is converted with the other too.
bool PlayValues(const DiffOptions& options, CommandContext& context, CValueChanges& values) {
    InstrumentSelection selection;
    selection.definitions = {options.before};
    selection.allWet = options.wet;
    CPlayedFile playback(0);
    if (!playback.Open(options.log, selection))
        return false;
    return playback.Play(
        context,
        [&](CQorViewIns& instrument, const FrameCheckResult& checks) {
            if (!checks.checksumError)
                values.Take(instrument.Live.CurrentFrame()->Span(), instrument.Live.Immersed,
                            instrument.Live.Values());
        },
        [] { return true; });
}

int RunDiff(const DiffOptions& options, CommandContext& context) {
    if (const std::string wrong = WrongCall(options); !wrong.empty()) {
        ReportError(wrong);
        return ExitBadCall;
    }
    CInstrument before, after;
    const bool first = Load(before, options.before);
    if (!Load(after, options.after) || !first)
        return ExitFault;
    COutput output(ReportError);
    if (const int status =
            OutputExit(output.Open({}, {.inputs = {options.before, options.after, options.log}}));
        status != ExitWell)
        return status;
    const CalibrationDiff diff = CompareCalibrations(before, after);
    CValueChanges values(before, after);
    const bool plays = !options.log.empty();
    const bool played = !plays || PlayValues(options, context, values);
    if (context.stop.Requested())
        return ExitInterrupted;
    const DiffReport report{options.before, options.after, options.log, diff,
                            plays && played ? &values : nullptr};
    (options.json ? WriteDiffJson : WriteDiffText)(output, report);
    const bool written = output.Flush() || !output.Failed();
    return written && played && diff.Alike() ? ExitWell : ExitFault;
}

} // namespace

void AddDiffCommand(CLI::App& app, CommandContext& context) {
    static DiffOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("diff", "Say how two definitions differ");
    command->add_option("BEFORE", options.before, "The one definition")->type_name("")->required();
    command->add_option("AFTER", options.after, "The other")->type_name("")->required();
    command->add_option("RAW", options.log, "A raw log, to say how its values differ with them")
        ->type_name("");
    command->add_flag("--json", options.json, "One JSON object");
    command->add_flag("--wet", options.wet, "The instrument is immersed");
    command->add_flag("--quiet", context.quiet, "No progress bar");
    command->callback(
        [&context] { context.body = [&context] { return RunDiff(options, context); }; });
}

} // namespace qor
