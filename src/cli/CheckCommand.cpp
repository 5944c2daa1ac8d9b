// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli check: loads definition files, packages and sessions and reports what was found, with
// hints at likely mistakes behind it on standard error.
#include "cli/CheckFrame.h"
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/OutputOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "cli/TerminalUser.h"
#include "export/DefinitionJson.h"
#include "export/DefinitionText.h"
#include "export/SessionText.h"

#include "base/Text.h"
#include "instrument/DefinitionVerdict.h"
#include "platform/WholeFile.h"
#include "session/FileKind.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <optional>

namespace qor {

namespace {

struct CheckOptions {
    std::vector<std::string> files;
    std::string frame; ///< what the definition is tried on; empty: nothing
    bool json = false;
    bool strict = false;
};

/// A text that is larger than any definition is judged by its parse log alone.
constexpr std::size_t LargestText = 16U << 20;

void SayHints(const std::string& subject, const DefinitionHints& hints) {
    for (const DefinitionHint& hint : hints)
        ReportHint(subject + (hint.line > 0 ? ": line " + std::to_string(hint.line) : "") + ": " +
                   hint.text);
}

/// Of what comes from a pipe there are none but those of the whole: it comes once.
DefinitionHints HintsFor(const std::string& path, const CInstrument& instrument,
                         DefinitionStatus status) {
    std::string text;
    if (!IsDevice(path) && ReadWholeFile(path, LargestText, text) != FileCause::None)
        return {};
    return status == DefinitionStatus::Success ? MistakesIn(instrument, text)
                                               : HintsOf(instrument, text);
}

void SayFailure(const std::string& path, const CInstrument& instrument, DefinitionStatus status) {
    ReportError(path + ": could not be loaded (" + Format("0x%08x", static_cast<unsigned>(status)) +
                "); its parse log says why." +
                (instrument.FirstDiagnostic().empty()
                     ? ""
                     : " The first fault in it: " + instrument.FirstDiagnostic()));
}

bool CheckDefinition(COutput& output, const std::string& path, const CheckOptions& options,
                     const CommandContext& context) {
    // Reading is the bar's first half, writing its second.
    const std::uint64_t size = FileSizeOf(path);
    std::optional<CProgress> bar(std::in_place, path, 2 * size, context.quiet);
    CInstrument instrument;
    DefinitionStatus status = instrument.Load(path, [&](std::uint64_t bytesRead) {
        bar->Update(bytesRead);
        return !context.stop.Requested();
    });
    if (context.stop.Requested())
        return false; // what was read is not the definition
    const bool loaded = status == DefinitionStatus::Success;
    const DefinitionHints hints = HintsFor(path, instrument, status);
    if (!options.json || IsTerminal(StandardStream::Output))
        bar.reset(); // the results would stand in its line
    if (options.json) {
        CJsonWriter writer(output);
        const double share = static_cast<double>(size) / std::max(instrument.SensorCount(), 1);
        WriteDefinition(writer, path, instrument, status, hints, [&](const CSensor& sensor) {
            if (bar && size > 0)
                bar->Update(size + static_cast<std::uint64_t>(share * sensor.Index));
        });
        writer.EndLine();
    } else {
        WriteParseLog(output, instrument.ParseLog());
    }
    bar.reset();
    output.Flush();
    SayHints(path, hints);
    if (loaded)
        return !options.strict || IsClean(instrument, hints);
    SayFailure(path, instrument, status);
    return false;
}

void SayFailedMembers(const LoadedPackage& package) {
    if (!package.ok)
        ReportError(package.path +
                    ": no instrument could be loaded from the package; its messages say why.");
    for (const FailedMember& member : package.failed)
        ReportError(package.path + "(" + member.name + "): " +
                    (member.instrument ? "could not be loaded; its parse log says why."
                                       : "could not be extracted."));
}

bool CheckPackage(COutput& output, const std::string& path, const CheckOptions& options,
                  const CommandContext&) {
    const LoadedPackage package = ReadPackageTexts(path); // its messages are part of the result
    std::vector<DefinitionHints> hints;
    for (const PackageMember& member : package.members)
        hints.push_back(MistakesIn(*member.instrument, member.text));
    if (options.json)
        WritePackageJson(output, package, hints);
    else
        WritePackageText(output, package);
    output.Flush();
    bool clean = true;
    for (std::size_t i = 0; i < hints.size(); ++i) {
        SayHints(path + "(" + package.members[i].name + ")", hints[i]);
        clean = clean && IsClean(*package.members[i].instrument, hints[i]);
    }
    SayFailedMembers(package);
    return package.ok && package.failed.empty() && (clean || !options.strict);
}

bool CheckSession(COutput& output, const std::string& path, const CheckOptions& options,
                  const CommandContext&) {
    CTerminalUser nobody(true); // the session's own messages say it all
    const CCheckedSession checked(path, nobody);
    (options.json ? WriteSessionJson : WriteSessionText)(output, checked);
    output.Flush();
    for (const std::string& warning : checked.Warnings)
        ReportWarning(warning);
    if (!checked.Opened())
        ReportError(checked.Refusal);
    return ReportSetup(checked.Setup, options.strict, false) && checked.Opened();
}

/// A session is read; every other file that is no definition and no package is refused.
std::string CheckFile(const std::string& path) {
    return KindByName(path) == FileKind::Session ? std::string() : CheckInstrumentFile(path);
}

/// What keeps the definition from being tried, as one sentence.
std::string TrialFault(const std::vector<std::string>& definitions) {
    if (definitions.size() != 1)
        return "--frame tries one definition or package: give it with -d FILE.";
    if (KindByName(definitions.front()) == FileKind::Session)
        return definitions.front() +
               ": --frame tries a definition (.cal, .tdf) or a package (.sip), no session.";
    return {};
}

/// What was wrong with a definition that is tried all the same. False when it is not clean.
bool SayFaults(const std::string& subject, const CInstrument& instrument,
               const DefinitionHints& hints) {
    SayHints(subject, hints);
    if (instrument.DiagnosticCount() > 0)
        ReportWarning(subject + ": " + std::to_string(instrument.DiagnosticCount()) +
                      " of its lines were repaired or dropped. " + instrument.FirstDiagnostic());
    return IsClean(instrument, hints);
}

int RunPackageTrial(const CheckOptions& options, CommandContext& context) {
    const std::string& path = options.files.front();
    const LoadedPackage package = ReadPackageTexts(path);
    bool clean = true;
    std::vector<TriedDefinition> definitions;
    for (const PackageMember& member : package.members) {
        definitions.push_back({member.instrument.get(), path + "(" + member.name + ")"});
        clean = SayFaults(definitions.back().name, *member.instrument,
                          MistakesIn(*member.instrument, member.text)) &&
                clean;
    }
    SayFailedMembers(package);
    if (definitions.empty())
        return ExitFault;
    const int exit = TryFrames(options.frame, definitions, options.json, context);
    const bool faulty = !package.failed.empty() || (options.strict && !clean);
    return exit == ExitWell && faulty ? ExitFault : exit;
}

int RunTrial(const CheckOptions& options, CommandContext& context) {
    if (const std::string fault = TrialFault(options.files); !fault.empty()) {
        ReportError(fault);
        return ExitBadCall;
    }
    const std::string& path = options.files.front();
    if (KindByName(path) == FileKind::Package)
        return RunPackageTrial(options, context);
    CInstrument instrument;
    const DefinitionStatus status = instrument.Load(path);
    const bool clean = SayFaults(path, instrument, HintsFor(path, instrument, status));
    if (status != DefinitionStatus::Success) {
        SayFailure(path, instrument, status);
        return ExitFault;
    }
    const int exit = TryFrames(options.frame, {{&instrument, path}}, options.json, context);
    return exit == ExitWell && options.strict && !clean ? ExitFault : exit;
}

/// Results are not written onto what is read.
int RefuseOntoInput(const CheckOptions& options) {
    std::vector<std::string> inputs = options.files;
    if (!options.frame.empty())
        inputs.push_back(options.frame);
    COutput output(ReportError);
    return OutputExit(output.Open({}, {.inputs = inputs}));
}

int RunCheck(const CheckOptions& options, CommandContext& context) {
    if (const int status = RefuseOntoInput(options); status != ExitWell)
        return status;
    if (!options.frame.empty())
        return RunTrial(options, context);
    if (options.files.empty()) {
        ReportError("FILE is required: name definitions, packages or sessions. See qorview-cli "
                    "check --help.");
        return ExitBadCall;
    }
    COutput output(ReportError);
    if (const int status = OutputExit(output.Open({}, {.inputs = options.files}));
        status != ExitWell)
        return status;
    bool well = true;
    for (const std::string& path : options.files) {
        const FileKind kind = KindByName(path);
        const auto check = kind == FileKind::Package   ? CheckPackage
                           : kind == FileKind::Session ? CheckSession
                                                       : CheckDefinition;
        well = check(output, path, options, context) && well;
        if (context.stop.Requested())
            return ExitInterrupted;
        if (!output.Good())
            break;
    }
    output.Flush();
    return well && !output.Failed() ? ExitWell : ExitFault;
}

} // namespace

void AddCheckCommand(CLI::App& app, CommandContext& context) {
    static CheckOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand(
        "check", "Load definition files, packages and sessions and report what was found");
    command->add_flag("--json", options.json, "One JSON object a file instead of the parse log");
    command->add_flag("--quiet", context.quiet, "No progress bar");
    command->add_flag("--strict", options.strict,
                      "A definition with repaired or dropped lines, or with hints, is a fault");
    command
        ->add_option(
            "--frame", options.frame,
            "Try a definition or package on the bytes of a file, a port or standard input (-)")
        ->type_name("FILE|PORT[:BAUD[:8N1]]|-");
    command
        ->add_option("-d,--definition,-p,--package,FILE", options.files,
                     "Definition files (.cal, .tdf), packages (.sip) or sessions (.qor)")
        ->type_name("FILE")
        ->check(CheckFile);
    command->callback(
        [&context] { context.body = [&context] { return RunCheck(options, context); }; });
}

} // namespace qor
