// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli simulate: plays instruments into a virtual serial port, a port, a file, or a raw log.
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/NumberOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "cli/SimulatedLine.h"
#include "cli/TerminalUser.h"
#include "simulation/SimulationRun.h"

#include "base/Text.h"
#include "session/FileKind.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct SimulateOptions : SimulationPlan {
    InstrumentSelection instruments;
    std::string output;
    OutputRules rules;
    std::string rateText;
    std::string startText;
    bool pty = false;
};

/// Reads --rate: "max", or frames a second of each instrument. False when it is neither.
bool ReadRate(SimulateOptions& options) {
    if (options.rateText.empty())
        return true;
    if (EqualsNoCase(options.rateText, "max")) {
        options.inTime = false;
        return true;
    }
    options.rate = WholeNumber(options.rateText);
    constexpr double fastest = 1e6;
    return options.rate && *options.rate > 0.0 && *options.rate <= fastest;
}

/// What is odd about a definition is said, and no reason to stop.
class CWarningSink : public CMessageSink {
  public:
    void Raise(Event event) override { ReportWarning(OneLine(event.text)); }
};

/// What a call of simulate comes to.
class CSimulation {
  public:
    CSimulation(SimulateOptions& options, CommandContext& context)
        : Options(options), Context(context) {}
    int Run();

  private:
    /// True where nobody waits for the bytes: time need not pass.
    bool IsStored() const {
        return Options.rawLog || (!Options.output.empty() && !IsDevice(Options.output));
    }
    int OpenLine();
    std::optional<PlayRefusal> LoadMembers(const std::string& path);
    bool LoadInstruments();
    void ReadStart();
    bool KnowsNames();
    int ReadCall();
    bool Play();

    SimulateOptions& Options;
    CommandContext& Context;
    CSystemClock Clock;
    CSimulatedLine Line{Context};
    PlayedInstruments Instruments;
};

std::optional<PlayRefusal> CSimulation::LoadMembers(const std::string& path) {
    CTerminalUser user;
    CWarningSink warnings;
    LoadedPackage package = LoadPackage(path, user, warnings);
    for (PackageMember& member : package.members)
        Instruments.push_back(std::move(member.instrument));
    if (package.ok)
        return std::nullopt;
    return PlayRefusal{path,
                       "no instrument could be loaded from the package. See qorview-cli check."};
}

/// A file of either kind may stand in either list.
bool CSimulation::LoadInstruments() {
    std::optional<PlayRefusal> refusal;
    for (const auto* files : {&Options.instruments.definitions, &Options.instruments.packages})
        for (const std::string& path : *files)
            if (!refusal)
                refusal = KindByName(path) == FileKind::Package
                              ? LoadMembers(path)
                              : LoadDefinitions({&path, 1}, Instruments);
    if (!refusal)
        refusal = FindUnplayable(Instruments);
    if (refusal)
        ReportError(refusal->path + ": " + OneLine(refusal->reason));
    return !refusal;
}

void CSimulation::ReadStart() {
    const std::optional<std::int64_t> seconds = SecondsFromText(Options.startText);
    if (!seconds) { // not given: the parser has looked at it
        Options.start = Clock.Now();
        return;
    }
    Options.start = FrameTime{};
    Options.start.seconds = *seconds;
    Options.start.known = true;
}

/// Whether --role and --wet name instruments of the call; reports those that do not.
bool CSimulation::KnowsNames() {
    std::vector<std::string> known;
    for (const auto& instrument : Instruments)
        known.push_back(instrument->Name());
    const std::vector<Refusal> unknown = UnknownNames(Options.instruments, known);
    for (const Refusal& name : unknown)
        ReportError(name.subject + ": " + name.reason);
    return unknown.empty();
}

int CSimulation::OpenLine() {
    if (Options.pty)
        return Line.OpenPort();
    OutputRules rules = Options.rules;
    rules.overRawLogs = true; // logs are what it makes
    rules.inputs = FilesOf(Options.instruments, {}, {});
    return Line.OpenOutput(Options.output, rules);
}

/// Reads what the options say; the exit status of a call that cannot be run (reported).
int CSimulation::ReadCall() {
    if (Options.instruments.definitions.empty() && Options.instruments.packages.empty()) {
        ReportError(
            "no instrument to play: give definitions with -d FILE or a package with -p FILE.");
        return ExitBadCall;
    }
    if (!ReadRate(Options)) {
        ReportError("--rate " + Options.rateText + ": give frames a second, or max.");
        return ExitBadCall;
    }
    ReadStart();
    if (IsStored() && Options.frames == 0) {
        ReportError("a file has to end: give --frames N.");
        return ExitBadCall;
    }
    if (!LoadInstruments())
        return ExitFault;
    return KnowsNames() ? ExitWell : ExitBadCall;
}

bool CSimulation::Play() {
    const bool stored = IsStored();
    SimulationPlan plan = Options;
    plan.inTime = plan.inTime && !stored;
    plan.comment = "made by qorview-cli simulate";
    plan.allWet = Options.instruments.allWet;
    plan.wet = Options.instruments.wet;
    for (const RoleAssignment& assignment : Options.instruments.roles)
        if (assignment.role == InstrumentRole::Gps)
            plan.untagged.push_back(assignment.name);
    CWarningSink warnings;
    CSimulationRun run(std::move(plan), Instruments, Clock, warnings);
    if (!Line.WaitForListener())
        return false;
    CProgress progress("simulate", Options.frames, Context.quiet || !stored);
    return run.Play(
        {[this](ByteSpan bytes) { return Line.Send(bytes); }, [this] { return Line.Flush(); }},
        Context.stopEvent, [&](std::uint64_t sent) { progress.Update(sent); });
}

int CSimulation::Run() {
    if (const int status = ReadCall(); status != ExitWell)
        return status;
    if (const int status = OpenLine(); status != ExitWell)
        return status;
    const bool sent = Play();
    if (Context.stop.Requested() && IsStored())
        return ExitInterrupted; // a file that is not complete is not there
    // An output whose reader has gone is no fault; one that failed tells at its end.
    const bool well = Line.Finish() && (sent || !Options.pty);
    return Context.stop.Requested() ? ExitInterrupted : well ? ExitWell : ExitFault;
}

} // namespace

void AddSimulateCommand(CLI::App& app, CommandContext& context) {
    static SimulateOptions options; // one command runs in a process
    CLI::App* command =
        app.add_subcommand("simulate", "Play simulated instruments into a port or a file");
    AddInstrumentOptions(*command, options.instruments);
    command->get_option("--definition")->allow_extra_args(); // -d FIRST SECOND
    CLI::Option* pty = command->add_flag(
        "--pty", options.pty, "Create a virtual serial port, print its name and serve it");
    AddOutputOptions(*command, "File or existing port to write to (standard output)",
                     options.output, options.rules)
        ->excludes(pty);
    command
        ->add_flag("--raw-log", options.rawLog,
                   "Write a complete raw log: header block and time tags")
        ->excludes(pty);
    command->add_option("--frames", options.frames, "Frames to send in all, then end (without end)")
        ->type_name("N")
        ->transform(CountIn(0, std::uint64_t{1} << 48));
    command
        ->add_option("--rate", options.rateText,
                     "Frames a second of each instrument instead of its own, or max")
        ->type_name("HZ")
        ->check(SomeValue());
    command->add_option("--seed", options.seed, "Same seed, same bytes (1)")
        ->type_name("N")
        ->transform(CountIn(0, UINT64_MAX).description(""));
    command->add_option("--start", options.startText, "Time of the first frame (now)")
        ->type_name("YYYY-MM-DDTHH:MM:SS")
        ->check(TimeOfLogs());
    command
        ->add_option("--cast", options.castDepth,
                     "Lower the instruments through a water column this deep")
        ->type_name("METRES")
        ->transform(DecimalIn(1.0, 6000.0));
    command->add_option("--drop", options.faults.drop, "Probability that a frame is left out")
        ->type_name("P")
        ->transform(DecimalIn(0.0, 1.0));
    command
        ->add_option("--corrupt", options.faults.corrupt,
                     "Probability that a byte of a frame is changed")
        ->type_name("P")
        ->transform(DecimalIn(0.0, 1.0));
    command->add_option("--noise", options.faults.noise, "Junk bytes before each frame")
        ->type_name("BYTES")
        ->transform(CountIn(0, 1 << 20));
    command->add_flag("--quiet", context.quiet, "No progress bar");
    command->callback(
        [&context] { context.body = [&context] { return CSimulation(options, context).Run(); }; });
}

} // namespace qor
