// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli simulate: plays instruments into a virtual serial port, a port, a file, or a raw log.
#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/Progress.h"
#include "cli/Report.h"
#include "cli/TerminalUser.h"
#include "export/Output.h"
#include "simulation/CastModel.h"
#include "simulation/Simulator.h"

#include "base/Text.h"
#include "instrument/FrameChecks.h"
#include "platform/SystemText.h"
#include "platform/VirtualPort.h"
#include "session/LogHeader.h"
#include "telemetry/RawLogFormat.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <thread>

namespace qor {

namespace {

struct SimulateOptions {
    InstrumentSelection instruments;
    std::string output;
    std::string rateText;
    std::string startText;
    std::uint64_t frames = 0; ///< 0: without end
    std::uint64_t seed = 1;
    double castDepth = 0.0; ///< m; 0: on the bench
    SimulatedFaults faults;
    bool pty = false;
    bool rawLog = false;
};

constexpr int WriteWaitMilliseconds = 100;

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

/// Where simulated bytes go: a virtual port, or an output.
class CSimulatedLine {
  public:
    bool Open(const SimulateOptions& options);
    /// True where nobody waits for the bytes: time need not pass.
    static bool IsStored(const SimulateOptions& options);
    /// Waits until a program has the virtual port open; false when stopped.
    bool WaitForListener(CommandContext& context);
    /// Sends everything; false when that failed or the run is stopped.
    bool Send(ByteSpan bytes, CommandContext& context);
    bool Flush() { return Port || Out.Flush(); }
    /// Lets the listener read what was sent. False when something was not written.
    bool Finish(CommandContext& context);

  private:
    std::optional<CVirtualPort> Port;
    COutput Out{ReportError};
};

bool CSimulatedLine::IsStored(const SimulateOptions& options) {
    return options.rawLog || (!options.output.empty() && !IsDevice(options.output));
}

bool CSimulatedLine::Open(const SimulateOptions& options) {
    if (!options.pty)
        return options.output.empty() || Out.OpenFile(options.output);
    std::string name;
    Port.emplace();
    SystemError error = Port->Open(name);
    if (error != 0) {
        ReportError("no virtual serial port could be made: " + OneLine(SystemErrorText(error)));
        return false;
    }
    COutput announcement(ReportError);
    announcement.Text(name + "\n");
    return announcement.Flush();
}

bool CSimulatedLine::WaitForListener(CommandContext& context) {
    while (Port && !Port->WaitForListener(WriteWaitMilliseconds))
        if (context.stop.Requested())
            return false;
    return true;
}

bool CSimulatedLine::Send(ByteSpan bytes, CommandContext& context) {
    if (!Port) {
        Out.Text(AsText(bytes));
        return Out.Good();
    }
    while (!bytes.empty() && !context.stop.Requested()) {
        std::size_t written = 0;
        SystemError error = Port->Write(bytes, WriteWaitMilliseconds, written);
        if (error != 0) {
            ReportError("the virtual serial port cannot be written: " +
                        OneLine(SystemErrorText(error)));
            return false;
        }
        bytes = bytes.subspan(written);
    }
    return bytes.empty();
}

bool CSimulatedLine::Finish(CommandContext& context) {
    if (!Port)
        return Out.Flush() || !Out.Failed();
    constexpr int drainMilliseconds = 5000, step = 10, graceMilliseconds = 200;
    for (int waited = 0;
         waited < drainMilliseconds && !Port->Drained() && !context.stop.Requested();
         waited += step)
        context.stopEvent.Wait(step);
    context.stopEvent.Wait(
        graceMilliseconds); // a listener with exclusive use does not show what it has read
    return true;
}

/// A simulation run.
class CSimulation {
  public:
    CSimulation(const SimulateOptions& options, CommandContext& context)
        : Options(options), Context(context) {}
    int Run();

  private:
    bool LoadInstruments();
    bool ReadStart();
    bool KnowsNames();
    bool WriteHeaderBlock();
    bool Wait(double seconds);
    bool SendFrame(const SimulatedFrame& frame);
    FrameTime TimeOf(double seconds) const;
    bool IsUntagged(const CInstrument& instrument) const;
    bool IsWet(const CInstrument& instrument) const;

    const SimulateOptions& Options;
    CommandContext& Context;
    CSystemClock Clock;
    CSimulatedLine Line;
    std::vector<std::unique_ptr<CInstrument>> Instruments;
    FrameTime Start;
    std::int64_t Begun = 0; ///< monotonic milliseconds
};

bool CSimulation::LoadInstruments() {
    for (const std::string& path : Options.instruments.definitions) {
        auto instrument = std::make_unique<CInstrument>();
        if (instrument->Load(path) != DefinitionStatus::Success) {
            ReportError(path + ": could not be loaded. " + OneLine(instrument->ParseLog()));
            return false;
        }
        Instruments.push_back(std::move(instrument));
    }
    CTerminalUser user;
    CWarningSink warnings;
    for (const std::string& path : Options.instruments.packages) {
        LoadedPackage package = LoadPackage(path, user, warnings);
        if (!package.ok) {
            ReportError(path +
                        ": no instrument could be loaded from the package. See qorview-cli check.");
            return false;
        }
        for (PackageMember& member : package.members)
            Instruments.push_back(std::move(member.instrument));
    }
    for (const std::unique_ptr<CInstrument>& instrument : Instruments)
        if (instrument->FrameSize() <= 0) {
            ReportError(instrument->FilePath() +
                        ": its frames have no bytes; there is nothing to simulate.");
            return false;
        } else if (instrument->FrameSize() > CFrameMaker::LargestFrame) {
            ReportError(instrument->FilePath() + ": its frames are too long to simulate.");
            return false;
        }
    return true;
}

bool CSimulation::ReadStart() {
    Start = Clock.Now();
    if (Options.startText.empty())
        return true;
    int part[6] = {};
    int length = 0;
    bool reads = std::sscanf(Options.startText.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%n", &part[0],
                             &part[1], &part[2], &part[3], &part[4], &part[5], &length) == 6 &&
                 static_cast<std::size_t>(length) == Options.startText.size();
    Start = FrameTime{};
    Start.seconds = SecondsFromCalendar(part[0], part[1], part[2], part[3], part[4], part[5]);
    Start.known = true;
    const CalendarTime real = CalendarFromSeconds(Start.seconds);
    const int there[6] = {real.year, real.month, real.day, real.hour, real.minute, real.second};
    if (reads && std::ranges::equal(part, there))
        return true;
    ReportError("--start " + Options.startText + ": give a time such as 2026-06-21T12:00:00.");
    return false;
}

FrameTime CSimulation::TimeOf(double seconds) const {
    FrameTime time = Start;
    auto milliseconds =
        static_cast<std::int64_t>(std::llround(seconds * 1000.0)) + Start.milliseconds;
    time.seconds += milliseconds / 1000;
    time.milliseconds = static_cast<std::uint16_t>(milliseconds % 1000);
    return time;
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

bool CSimulation::WriteHeaderBlock() {
    CTerminalUser user;
    CMemoryProfileStore profile;
    SessionState session(Clock, user, profile);
    std::vector<std::string> lines;
    {
        CRecursiveLock lock(session.DocLock);
        session.Station.cruiseId = "SIMULATED";
        session.Station.comment = "made by qorview-cli simulate";
        lines = HeaderLines(session, session.Station, LocalCalendar(Start));
    }
    for (const std::unique_ptr<CInstrument>& instrument : Instruments)
        if (IsUntagged(*instrument))
            lines.push_back(
                FormatHeaderLine(static_cast<int>(HeaderTag::Nmea), instrument->SyncHeader()));
    for (const std::string& line : lines)
        if (!Line.Send(MakeHeaderRecord(line), Context))
            return false;
    return true;
}

bool CSimulation::Wait(double seconds) {
    auto due = Begun + static_cast<std::int64_t>(seconds * 1000.0);
    std::int64_t late = Clock.MonotonicMilliseconds() - due;
    if (late >= 0)
        return !Context.stop.Requested();
    return Line.Flush() && !Context.stopEvent.Wait(static_cast<int>(-late));
}

bool CSimulation::SendFrame(const SimulatedFrame& frame) {
    if (!frame.noise.empty() && !Line.Send(frame.noise, Context))
        return false;
    if (frame.bytes.empty())
        return true;
    if (!Line.Send(frame.bytes, Context))
        return false;
    return !Options.rawLog || IsUntagged(*frame.instrument) ||
           Line.Send(MakeTimeTag(TimeOf(frame.seconds)), Context);
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
    const bool stored = CSimulatedLine::IsStored(Options);
    if (stored && Options.frames == 0) {
        ReportError("a file has to end: give --frames N.");
        return ExitBadCall;
    }
    if (!LoadInstruments() || !KnowsNames() || !Line.Open(Options) ||
        (Options.rawLog && !WriteHeaderBlock()))
        return ExitFault;
    CWarningSink warnings;
    CSimulator simulator(Options.seed,
                         static_cast<double>(Start.seconds) + Start.milliseconds / 1000.0,
                         Options.faults);
    for (const std::unique_ptr<CInstrument>& instrument : Instruments) {
        double rate = pace->rate.value_or(NominalFrameRate(*instrument, warnings));
        CFrameMaker::ValueSource values;
        if (Options.castDepth > 0.0)
            values = CastValues(Options.castDepth, [&simulator] { return simulator.Current(); });
        simulator.Add(*instrument, rate > 0.0 ? rate : 1.0, IsWet(*instrument), std::move(values));
    }
    if (!Line.WaitForListener(Context))
        return ExitInterrupted;
    CProgress progress("simulate", Options.frames, Context.quiet || !stored);
    Begun = Clock.MonotonicMilliseconds();
    bool sent = true;
    for (std::uint64_t i = 0; sent && (Options.frames == 0 || i < Options.frames); ++i) {
        bool timely =
            pace->unthrottled || stored ? !Context.stop.Requested() : Wait(simulator.NextDue());
        sent = timely && SendFrame(simulator.Next());
        progress.Update(i);
    }
    bool well = Line.Finish(Context) && sent;
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
    command
        ->add_option("-o,--output", options.output,
                     "File or existing port to write to (standard output)")
        ->type_name("PATH")
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
