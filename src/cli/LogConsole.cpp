// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LogConsole.h"

#include "base/Text.h"
#include "cli/InstrumentOptions.h"
#include "cli/Report.h"
#include "platform/SystemText.h"
#include "session/EventAdvice.h"
#include "session/FileKind.h"
#include "session/PortText.h"
#include "views/LogLines.h"
#include "views/PortList.h"
#include "views/SessionPages.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int WatchMilliseconds = 100;
constexpr int PositionMilliseconds = 3000;

constexpr const char* NoThread = "the system has no thread to give; close other programs.";

/// What can be done about a name that is taken, in the words of a call.
constexpr std::string_view TakenNameAdvice = "Choose another --name, or give --overwrite.";

/// The same about bytes without a frame.
constexpr std::string_view TrialAdvice =
    "Try its definition on them: qorview-cli check -d DEFINITION --frame FILE.";

std::string_view AdviceHere(const EventAdvice& row) {
    return row.kind == EventKind::NameTaken  ? TakenNameAdvice
           : row.kind == EventKind::NoFrames ? TrialAdvice
                                             : row.advice;
}

} // namespace

CLogConsole::CLogConsole(LogRunPlan plan, std::optional<PrintSettings> print,
                         CommandContext& context)
    : Context(context), Strict(plan.strict), Partly(plan.partly),
      NamesSessionLog(!plan.sessionLogDirectory.empty()),
      Document(Clock, MakeSystemSerialPort, User, Profile), LogRun(Document, std::move(plan)),
      Print(Document, print) {
    Document.Instruments.DefaultsPath = InstrumentDefaultsPath();
}

void CLogConsole::ReportPorts() {
    const std::vector<PortRefusal>& refused = LogRun.PortRefusals();
    for (; PortsReported < refused.size(); ++PortsReported) {
        const PortRefusal& port = refused[PortsReported];
        Fault = Fault || !port.triedAgain;
        std::string why = Format("0x%08x", static_cast<unsigned>(port.result));
        if (port.systemError != 0)
            why += ": " + OneLine(SystemErrorText(port.systemError));
        if (port.result == CommResult::SettingsNotWritten)
            ReportError(port.settings.portName + ": its driver refuses " +
                        LineTextOf(port.settings) + " (" + why +
                        "). Choose another speed or format with --port NAME:BAUD:8N1.");
        else if (port.result == CommResult::WorkerNotStarted && port.systemError == 0)
            ReportError(port.settings.portName + ": could not be connected: " + NoThread);
        else if (Document.Snapshot().resources.empty() || port.systemError == 0)
            ReportError("--port " + port.settings.portName + ": " +
                        OneLine(CommDetail(port.result)));
        else
            ReportError(port.settings.portName + ": could not be connected (" + why + "). " +
                        PortTrouble(port.settings.portName, port.systemError) +
                        (port.triedAgain ? " It is tried again." : ""));
    }
}

bool CLogConsole::IsTriedAgain(const std::string& port) const {
    for (const ResourceStatus& resource : Document.Snapshot().resources)
        if (resource.name == port)
            return resource.reconnects;
    return false;
}

/// A session may name logs that are to be played; they hold what was logged already.
void CLogConsole::WarnOfFiles() {
    for (const ResourceStatus& resource : Document.Snapshot().resources)
        if (resource.isFile)
            ReportWarning(resource.name + ": it is a file and is not played into a log; decode "
                                          "reads it.");
}

/// True when there was any.
bool CLogConsole::ReportTroubles(CLiveStatus* status) {
    bool any = false;
    for (const Event& event : LogRun.TakeEvents()) {
        const EventAdvice* row = AdviceOf(event.kind);
        if (!row)
            continue;
        if (status)
            status->Erase();
        if (event.kind == EventKind::PortLost && !IsTriedAgain(event.subject))
            continue; // said as an abort
        (row->fault ? ReportError : ReportWarning)(EventLine(event, *row, AdviceHere(*row)));
        Fault = Fault || row->fault;
        any = any || row->fault;
    }
    for (const std::string& fault : Document.Manifests.TakeFaults()) {
        if (status)
            status->Erase();
        ReportWarning(fault);
    }
    return any;
}

void CLogConsole::NoteAborts(CLiveStatus& status, const SessionSnapshot& snapshot) {
    for (const ResourceStatus& resource : snapshot.resources) {
        if (resource.reconnects || resource.figures.abortCode == 0 ||
            std::ranges::count(Aborted, resource.id) > 0)
            continue;
        Aborted.push_back(resource.id);
        Fault = true;
        status.Erase();
        ReportError(resource.name + ": telemetry acquisition aborted (" +
                    Format("0x%08x", resource.figures.abortCode) +
                    "); is it still plugged in? The other ports go on.");
    }
}

/// How long the disk lasts, and a word when that is not long.
void CLogConsole::LookAtSpace(const LogStatus& log) {
    if (!log.logOpen)
        return;
    const std::string folder = FolderPartOf(log.logFilePath);
    Document.Room.Watch(folder);
    LogFacts facts;
    facts.freeBytes = Document.Room.FreeBytes();
    facts.bytesPerSecond = LogGrowth(log);
    const std::optional<double> left = qor::SecondsLeft(facts);
    if (left)
        SecondsLeft = left;
    if (std::optional<Event> word = Space.Look(left, Clock.MonotonicMilliseconds(), folder))
        Document.Raise(std::move(*word));
}

void CLogConsole::Watch() {
    // Lines that are drawn over and values would tear one another apart.
    const bool shared = Print.IsOn() && IsTerminal(StandardStream::Output);
    CLiveStatus status(Document, Clock, Context.quiet || shared);
    CLogRun::State state = CLogRun::State::Going;
    while (state == CLogRun::State::Going && !Context.stopEvent.Wait(WatchMilliseconds) &&
           !User.CloseRequested.IsSet()) {
        LookAtSpace(Document.Snapshot().log);
        // A terminal that takes nothing is told later: the run does not wait for it.
        if (ReaderTakes(StandardStream::Error))
            Say(status);
        state = LogRun.Look();
    }
    HurryReaders();
    status.Erase();
    if (state == CLogRun::State::NoPort)
        ReportError("no port is connected any more; the run ends.");
    NoteAborts(status, Document.Snapshot());
}

/// What has happened, and how the run stands.
void CLogConsole::Say(CLiveStatus& status) {
    NoteAborts(status, Document.Snapshot());
    ReportTroubles(&status);
    if (Print.HasNews()) {
        status.Erase();
        Print.SayNews();
    }
    User.Print();
    status.Update(SecondsLeft);
}

void CLogConsole::ReportSilent(const SessionSnapshot& snapshot) {
    for (const std::string& line : SilentLines(snapshot)) {
        ReportError(line);
        Fault = true;
    }
}

/// Where values are printed, all else goes to standard error.
void CLogConsole::Summarise() {
    std::string text;
    for (const std::string& path : LogRun.LogFiles())
        text += "raw log: " + path + "\n";
    for (const CaptureStatus& capture : Document.Captures.Status())
        text += CaptureLine(capture);
    if (std::string path = Document.SessionLog.FilePath(); !path.empty())
        text += "session log: " + path + "\n";
    else if (std::string lost = Document.SessionLog.LostPath(); !lost.empty()) {
        ReportError("session log: " + lost + " (ended early; its disk took no more)");
        Fault = true;
    } else if (NamesSessionLog) { // why was said as it began
        ReportError("--session-log: no session log was kept; choose another folder.");
        Fault = true;
    }
    const SessionSnapshot snapshot = Document.Snapshot();
    for (const ResourceStatus& resource : snapshot.resources)
        if (const std::string line = DiscardedLine(resource); !line.empty())
            ReportWarning(line);
    ReportSilent(snapshot);
    text += LogSummary(snapshot.log, LogRun.LogFiles().size(), SecondsLeft);
    text += SummaryLines(snapshot);
    if (Print.IsOn()) {
        WriteError(text);
        return;
    }
    COutput output(ReportError);
    output.Text(text);
    output.Flush();
    Fault = Fault || output.Failed();
}

bool CLogConsole::Begin() {
    if (LogRun.Begin())
        return true;
    Document.Acquisition.TakeCommands(0); // what was said of it; the loop does not run yet
    if (!ReportTroubles(nullptr))
        ReportError("the raw log could not be begun in " + LogRun.Directory() +
                    "; choose another -o or --name.");
    return false;
}

/// Whether consent to overwrite would not do for what has the log's name.
OutputResult CLogConsole::PlaceOfFirstLog() const {
    const std::string path = LogRun.FirstLogPath();
    const OutputRules rules{.overwrite = true, .overRawLogs = true, .inputs = LogRun.Inputs()};
    return {path.empty() ? OutputState::Good : StateOfPlace(path, rules), path};
}

int CLogConsole::Run() {
    if (!Context.stop.IsWatching()) { // a request to stop would cut the log off
        ReportError(NoThread);
        return ExitFault;
    }
    const bool ports = LogRun.SetUp();
    if (!LogRun.SessionRefusal().empty()) {
        ReportError(LogRun.SessionRefusal());
        return ExitFault;
    }
    ReportPorts();
    WarnOfFiles();
    const bool usable = ReportSetup(LogRun.Set(), Strict, true);
    if (HasUnknownName(LogRun.Set().Refusals()))
        return ExitBadCall;
    if (const int status = OutputExit(PlaceOfFirstLog()); status != ExitWell)
        return status;
    Fault = Fault || !usable;
    const bool instruments = LogRun.HasInstruments();
    if (!ports || !instruments || (!usable && !Partly)) {
        if (ports && !usable && instruments)
            ReportError("nothing was logged; --partly logs what can be used.");
        return ExitFault;
    }
    if (const int status = Print.Begin(); status != ExitWell)
        return status;
    // What the ports receive waits in their queues until there is a log for it; where no port can
    // be had no log is begun, or replaced, in vain.
    const bool connected = LogRun.Connect();
    ReportPorts();
    if (!connected) {
        ReportError("no port could be connected; nothing was acquired.");
        return ExitFault;
    }
    if (LogRun.WantsPosition())
        LogRun.WaitForPosition(PositionMilliseconds, Context.stopEvent);
    if (!Begin()) {
        Document.DisconnectAll();
        return ExitFault;
    }
    if (LogRun.Start()) {
        Watch();
    } else {
        ReportError(NoThread);
        Fault = true;
    }
    for (const ResourceStatus& resource : Document.Snapshot().resources)
        if (resource.reconnects && !resource.figures.connected) {
            ReportError(resource.name + ": it was not there when the run ended.");
            Fault = true;
        }
    LogRun.End();
    Fault = !Print.End() || Fault;
    User.Print();
    Fault = Fault || LogRun.Failed();
    ReportTroubles(nullptr);
    Summarise();
    return Fault ? ExitFault : ExitWell;
}

} // namespace qor
