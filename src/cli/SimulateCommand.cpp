// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli simulate: plays instruments into a virtual serial port, a port, a file, or a raw log.
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "cli/SimulatedLine.h"
#include "cli/TerminalUser.h"
#include "simulation/PlayedInstruments.h"
#include "simulation/RawLogMaker.h"

#include "base/Text.h"
#include "instrument/FrameChecks.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct SimulateOptions {
    InstrumentSelection instruments;
    std::string output;
    OutputRules rules;
    std::string rateText;
    std::string startText;
    std::uint64_t frames = 0; ///< 0: without end
    std::uint64_t seed = 1;
    double castDepth = 0.0; ///< m; 0: on the bench
    SimulatedFaults faults;
    bool pty = false;
    bool rawLog = false;
};

/// The pace of a run: none ("max"), the instruments' own, or one for all.
struct Pace {
    bool unthrottled = false;
    std::optional<double> rate; ///< frames a second of each instrument
};

std::optional<Pace> ParseRate(const std::string& text) {
    if (text.empty())
        return Pace{};
    if (EqualsNoCase(text, "max"))
        return Pace{true, {}};
    std::optional<double> rate = WholeNumber(text);
    constexpr double fastest = 1e6;
    if (!rate || !(*rate > 0.0) || *rate > fastest)
        return std::nullopt;
    return Pace{false, *rate};
}

/// What is odd about a definition is said, and no reason to stop.
class CWarningSink : public CMessageSink {
  public:
    void Raise(Event event) override { ReportWarning(OneLine(event.text)); }
};

/// A simulation run.
class CSimulation {
  public:
    CSimulation(const SimulateOptions& options, CommandContext& context)
        : Options(options), Context(context) {}
    int Run();

  private:
    /// True where nobody waits for the bytes: time need not pass.
    bool IsStored() const {
        return Options.rawLog || (!Options.output.empty() && !IsDevice(Options.output));
    }
    int OpenLine();
    bool LoadInstruments();
    bool ReadStart();
    bool KnowsNames();
    bool BeginRawLog();
    void AddPlayers(CSimulator& simulator, const Pace& pace);
    bool Play(CSimulator& simulator, const Pace& pace);
    bool Wait(double seconds);
    bool SendFrame(const SimulatedFrame& frame);
    bool IsUntagged(const CInstrument& instrument) const;
    bool IsWet(const CInstrument& instrument) const;

    const SimulateOptions& Options;
    CommandContext& Context;
    CSystemClock Clock;
    CSimulatedLine Line{Context};
    PlayedInstruments Instruments;
    std::optional<CRawLogMaker> RawLog;
    std::vector<std::uint8_t> Bytes; ///< of the frame being sent
    FrameTime Start;
    std::int64_t Begun = 0; ///< monotonic milliseconds
};

bool CSimulation::LoadInstruments() {
    std::optional<PlayRefusal> refusal =
        LoadDefinitions(Options.instruments.definitions, Instruments);
    CTerminalUser user;
    CWarningSink warnings;
    for (const std::string& path : Options.instruments.packages) {
        if (refusal)
            break;
        LoadedPackage package = LoadPackage(path, user, warnings);
        if (!package.ok)
            refusal = {path,
                       "no instrument could be loaded from the package. See qorview-cli check."};
        for (PackageMember& member : package.members)
            Instruments.push_back(std::move(member.instrument));
    }
    if (!refusal)
        refusal = FindUnplayable(Instruments);
    if (refusal)
        ReportError(refusal->path + ": " + OneLine(refusal->reason));
    return !refusal;
}

bool CSimulation::ReadStart() {
    Start = Clock.Now();
    if (Options.startText.empty())
        return true;
    if (const std::optional<std::int64_t> seconds = SecondsFromText(Options.startText)) {
        Start = FrameTime{};
        Start.seconds = *seconds;
        Start.known = true;
        return true;
    }
    ReportError("--start " + Options.startText + ": give a time such as 2026-06-21T12:00:00.");
    return false;
}

/// Whether --role and --wet name instruments of the call; reports the first that does not.
bool CSimulation::KnowsNames() {
    std::vector<std::string> names = Options.instruments.wet;
    for (const RoleAssignment& assignment : Options.instruments.roles)
        names.push_back(assignment.name);
    for (const std::string& name : names) {
        if (std::ranges::any_of(Instruments, [&](auto& known) { return known->Name() == name; }))
            continue;
        ReportError("--role, --wet: there is no instrument \"" + name + "\".");
        return false;
    }
    return true;
}

bool CSimulation::IsUntagged(const CInstrument& instrument) const {
    return std::ranges::any_of(Options.instruments.roles, [&](const RoleAssignment& assignment) {
        return assignment.name == instrument.Name() && assignment.role == InstrumentRole::Gps;
    });
}

bool CSimulation::IsWet(const CInstrument& instrument) const {
    const std::vector<std::string>& wet = Options.instruments.wet;
    return Options.instruments.allWet || std::ranges::count(wet, instrument.Name()) > 0;
}

int CSimulation::OpenLine() {
    if (Options.pty)
        return Line.OpenPort();
    OutputRules rules = Options.rules;
    rules.overRawLogs = rules.overwrite; // logs are what it makes
    rules.inputs = Together({Options.instruments.definitions, Options.instruments.packages});
    return Line.OpenOutput(Options.output, rules);
}

bool CSimulation::BeginRawLog() {
    RawLog.emplace(Start);
    for (const std::unique_ptr<CInstrument>& instrument : Instruments)
        if (IsUntagged(*instrument))
            RawLog->LeaveUntagged(*instrument);
    return Line.Send(RawLog->HeaderBlock("made by qorview-cli simulate"));
}

void CSimulation::AddPlayers(CSimulator& simulator, const Pace& pace) {
    CWarningSink warnings;
    for (const std::unique_ptr<CInstrument>& instrument : Instruments)
        simulator.Add(*instrument,
                      {.rate = pace.rate.value_or(NominalFrameRate(*instrument, warnings)),
                       .immersed = IsWet(*instrument),
                       .castDepth = Options.castDepth});
}

bool CSimulation::Wait(double seconds) {
    auto due = Begun + static_cast<std::int64_t>(seconds * 1000.0);
    std::int64_t late = Clock.MonotonicMilliseconds() - due;
    if (late >= 0)
        return !Context.stop.Requested();
    return Line.Flush() && !Context.stopEvent.Wait(static_cast<int>(-late));
}

bool CSimulation::SendFrame(const SimulatedFrame& frame) {
    if (!RawLog)
        return (frame.noise.empty() || Line.Send(frame.noise)) &&
               (frame.bytes.empty() || Line.Send(frame.bytes));
    Bytes.clear();
    RawLog->Append(frame, Bytes);
    return Line.Send(Bytes);
}

bool CSimulation::Play(CSimulator& simulator, const Pace& pace) {
    const bool stored = IsStored();
    CProgress progress("simulate", Options.frames, Context.quiet || !stored);
    Begun = Clock.MonotonicMilliseconds();
    for (std::uint64_t i = 0; Options.frames == 0 || i < Options.frames; ++i) {
        const bool timely =
            pace.unthrottled || stored ? !Context.stop.Requested() : Wait(simulator.NextDue());
        if (!timely || !SendFrame(simulator.Next()))
            return false;
        progress.Update(i);
    }
    return true;
}

int CSimulation::Run() {
    if (Options.instruments.definitions.empty() && Options.instruments.packages.empty()) {
        ReportError(
            "no instrument to play: give definitions with -d FILE or a package with -p FILE.");
        return ExitBadCall;
    }
    std::optional<Pace> pace = ParseRate(Options.rateText);
    if (!pace) {
        ReportError("--rate " + Options.rateText + ": give frames a second, or max.");
        return ExitBadCall;
    }
    if (!ReadStart())
        return ExitBadCall;
    if (IsStored() && Options.frames == 0) {
        ReportError("a file has to end: give --frames N.");
        return ExitBadCall;
    }
    if (!LoadInstruments())
        return ExitFault;
    if (!KnowsNames())
        return ExitBadCall;
    if (const int status = OpenLine(); status != ExitWell)
        return status;
    CSimulator simulator(Options.seed,
                         static_cast<double>(Start.seconds) + Start.milliseconds / 1000.0,
                         Options.faults);
    AddPlayers(simulator, *pace);
    if (!Line.WaitForListener())
        return ExitInterrupted;
    const bool sent = (!Options.rawLog || BeginRawLog()) && Play(simulator, *pace);
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
    command
        ->add_option("-d,--definition", options.instruments.definitions,
                     "Definition file of an instrument to play")
        ->type_name("FILE");
    command
        ->add_option("-p,--package", options.instruments.packages,
                     "Package whose instruments to play")
        ->type_name("FILE")
        ->allow_extra_args(false);
    AddNameOptions(*command, options.instruments);
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
        ->check(CLI::Range(std::uint64_t{0}, std::uint64_t{1} << 48));
    command
        ->add_option("--rate", options.rateText,
                     "Frames a second of each instrument instead of its own, or max")
        ->type_name("HZ");
    command->add_option("--seed", options.seed, "Same seed, same bytes (1)")->type_name("N");
    command->add_option("--start", options.startText, "Time of the first frame (now)")
        ->type_name("YYYY-MM-DDTHH:MM:SS");
    command
        ->add_option("--cast", options.castDepth,
                     "Lower the instruments through a water column this deep")
        ->type_name("METRES")
        ->check(CLI::Range(1.0, 6000.0));
    command->add_option("--drop", options.faults.drop, "Probability that a frame is left out")
        ->type_name("P")
        ->check(CLI::Range(0.0, 1.0));
    command
        ->add_option("--corrupt", options.faults.corrupt,
                     "Probability that a byte of a frame is changed")
        ->type_name("P")
        ->check(CLI::Range(0.0, 1.0));
    command->add_option("--noise", options.faults.noise, "Junk bytes before each frame")
        ->type_name("BYTES")
        ->check(CLI::Range(0, 1 << 20));
    command->add_flag("--quiet", context.quiet, "No progress bar");
    command->callback(
        [&context] { context.body = [&context] { return CSimulation(options, context).Run(); }; });
}

} // namespace qor
