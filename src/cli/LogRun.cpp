// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LogRun.h"
#include "cli/Report.h"

#include "base/Text.h"
#include "export/Output.h"
#include "platform/SystemText.h"
#include "session/LogHeader.h"

#include <algorithm>

namespace qor {

namespace {

constexpr int WatchMilliseconds = 100;
constexpr int GpsWaitMilliseconds = 3000;
// Decided: far above the default of 200 frames, which a card that stalls for two seconds or a burst
// from a converter's buffer outruns; memory is only used for frames that do wait.
constexpr std::int32_t WaitingFrames = 16384;

/// What of the session log an operator must see at once, and what he can do about it.
struct Trouble {
    std::string_view start; ///< of the entry's text
    bool namesFile;         ///< the text itself says which file
    std::string_view advice;
};
constexpr Trouble Troubles[] = {
    {"The log file \"", true, "Choose another --name, or give --overwrite."},
    {"Error writing to log file", false, "The log has ended; make room and begin another."},
    {"Error synchronizing log file", true, "A power cut now may cost data; look at the disk."}};
constexpr std::string_view BeginLogStart = "Begin log file: \"";

std::string WithSeparator(std::string directory) {
    if (!directory.empty() && !directory.ends_with('/') && !directory.ends_with(PathSeparator()))
        directory += PathSeparator();
    return directory;
}

} // namespace

void CLogRun::SetUpDocument() {
    Document.SessionLog.KeepText = false;
    Document.SessionLog.SetFile(true, WithSeparator(Options.sessionLogDirectory.empty()
                                                        ? Options.directory
                                                        : Options.sessionLogDirectory));
    CRecursiveLock lock(Document.DocLock);
    Document.NoDialogs = true;
    Document.ExitIfDone = true;
    Document.Options = Options.log;
    Document.Station = Options.station;
    Document.Naming.logDirectory = WithSeparator(Options.directory);
    Document.Naming.logUserFileName = Options.name;
    Document.Naming.logNamingMode =
        Options.name.empty() ? LogNamingMode::TimeStamp : LogNamingMode::UserFileName;
}

bool CLogRun::SetUpPorts() {
    bool well = true;
    for (const PortOptions& port : Options.ports)
        well = SetUpPort(port) && well;
    return ApplyWetAndRoles(Document, Options.instruments) && well;
}

/// A package brings up its port at its baud rate, unless the call names another.
bool CLogRun::SetUpPort(const PortOptions& port) {
    SerialResourceSettings settings = port.port.settings;
    settings.maxFrameDepth = WaitingFrames;
    std::vector<LoadedPackage> packages;
    bool baudKnown = port.port.baudGiven;
    for (const std::string& path : port.instruments.packages) {
        packages.push_back(LoadPackage(path, User, Document));
        if (!baudKnown)
            settings = PackagePort(packages.back(), settings, User);
        baudKnown = true;
    }
    CommResult result = CommResult::Success;
    int resource = Document.AddSerialResource(settings, &result);
    if (resource < 0) {
        ReportError("--port " + settings.portName + ": " + OneLine(CommDetail(result)));
        return false;
    }
    bool well = AddDefinitions(Document, resource, port.instruments.definitions);
    for (LoadedPackage& loaded : packages)
        well = AddPackage(Packages, resource, std::move(loaded), {}) && well;
    return well;
}

bool CLogRun::ConnectPorts() {
    bool any = false;
    for (std::size_t i = 0; i < Document.ResourceCount(); ++i) {
        int resource = static_cast<int>(i);
        CommResult result = Document.ConnectResource(resource);
        if (result == CommResult::Success) {
            any = true;
            continue;
        }
        Fault = true;
        ReportRefusal(resource, result);
    }
    return any;
}

void CLogRun::ReportRefusal(int resource, CommResult result) {
    const ResourceStatus status = Document.StatusOf(resource);
    std::string why = Format("0x%08x", static_cast<unsigned>(result));
    if (std::uint32_t error = status.figures.connectError)
        why += ": " + OneLine(SystemErrorText(error));
    if (result != CommResult::SettingsNotWritten) {
        ReportError(status.name + ": could not be connected (" + why +
                    "). Is it a serial port, not in use, and may you open it?");
        return;
    }
    CRecursiveLock lock(Document.DocLock);
    ReportError(status.name + ": its driver refuses " +
                LineTextOf(Document.Resources[static_cast<std::size_t>(resource)]->Serial) + " (" +
                why + "). Choose another speed or format with --port NAME:BAUD:8N1.");
}

/// Frames of the GPS that come before it knows where it is are not logged; the others wait.
void CLogRun::WaitForPosition() {
    int gps = -1;
    {
        CRecursiveLock lock(Document.DocLock);
        gps = Document.Role(InstrumentRole::Gps).resource;
    }
    if (gps < 0)
        return;
    const std::int64_t until = Clock.MonotonicMilliseconds() + GpsWaitMilliseconds;
    do {
        Document.TakeFramesOf(gps);
        CRecursiveLock lock(Document.DocLock);
        if (RefreshPosition(Document))
            return;
    } while (Clock.MonotonicMilliseconds() < until && !Context.stopEvent.Wait(WatchMilliseconds));
}

/// Runs wherever entries are made, where the document's lock is held: it only takes note.
void CLogRun::NoteEntry(std::string_view entry) {
    CRecursiveLock lock(Document.DocLock);
    std::string_view text = entry.substr(std::min(entry.find("> "), entry.size() - 2) + 2);
    if (text.starts_with(BeginLogStart)) {
        std::size_t start = BeginLogStart.size();
        LogFiles.emplace_back(text.substr(start, text.rfind('"') - start));
    }
    for (const Trouble& trouble : Troubles) {
        if (!text.starts_with(trouble.start))
            continue;
        std::string file = trouble.namesFile ? "" : Document.Naming.logFilePath + ": ";
        TroublesSeen.push_back(file + OneLine(std::string(text)) + " " +
                               std::string(trouble.advice));
    }
}

/// True when there was any.
bool CLogRun::ReportTroubles(CLiveStatus* status) {
    std::vector<std::string> seen;
    {
        CRecursiveLock lock(Document.DocLock);
        seen.swap(TroublesSeen);
    }
    if (status && !seen.empty())
        status->Erase();
    for (const std::string& trouble : seen)
        ReportError(trouble);
    Fault = Fault || !seen.empty();
    return !seen.empty();
}

void CLogRun::NoteAborts(CLiveStatus& status) {
    for (std::size_t i = 0; i < Aborted.size(); ++i) {
        ResourceStatus resource = Document.StatusOf(static_cast<int>(i));
        if (Aborted[i] || resource.figures.abortCode == 0)
            continue;
        Aborted[i] = true;
        Fault = true;
        status.Erase();
        ReportError(resource.name + ": telemetry acquisition aborted (" +
                    Format("0x%08x", resource.figures.abortCode) +
                    "); is it still plugged in? The other ports go on.");
    }
}

void CLogRun::Watch() {
    CLiveStatus status(Document, Clock, Context.quiet);
    Aborted.assign(Document.ResourceCount(), false);
    while (!Context.stopEvent.Wait(WatchMilliseconds) && !User.CloseRequested.IsSet()) {
        NoteAborts(status);
        ReportTroubles(&status);
        status.Update();
        bool connected = false;
        for (std::size_t i = 0; i < Aborted.size(); ++i)
            connected = Document.StatusOf(static_cast<int>(i)).figures.connected || connected;
        if (!connected) {
            status.Erase();
            ReportError("no port is connected any more; the run ends.");
            return;
        }
        if (!Document.RawLog.Status().loggingActive)
            break;
    }
    NoteAborts(status);
}

void CLogRun::Summarise() {
    COutput output(ReportError);
    for (const std::string& path : LogFiles)
        output.Text("raw log: " + path + "\n");
    if (std::string path = Document.SessionLog.FilePath(); !path.empty())
        output.Text("session log: " + path + "\n");
    for (const InstrumentFigures& figures : Document.FiguresOf(-1))
        output.Text(Format(
            "%s on %s: %llu frames, %u in the last log, %llu dropped, %llu checksum errors\n",
            figures.name.c_str(), Document.StatusOf(figures.resource).name.c_str(),
            static_cast<unsigned long long>(figures.frames), figures.framesThisLog,
            static_cast<unsigned long long>(figures.dropped),
            static_cast<unsigned long long>(figures.checksumErrors)));
    output.Flush();
    Fault = Fault || output.Failed();
}

bool CLogRun::BeginLog() {
    if (Document.RawLog.BeginLogFile())
        return true;
    Document.TakeCommands(0); // what was said of it; the loop does not run yet
    if (!ReportTroubles(nullptr))
        ReportError("the raw log could not be begun in " + Options.directory +
                    "; choose another -o or --name.");
    return false;
}

int CLogRun::Run() {
    SetUpDocument();
    Document.SessionLog.OnEntry = [this](const std::string& entry) { NoteEntry(entry); };
    Document.BeginSession();
    if (!SetUpPorts())
        return ExitFault;
    // What the ports receive waits in their queues until there is a log for it; where no port can
    // be had no log is begun, or replaced, in vain.
    if (!ConnectPorts()) {
        ReportError("no port could be connected; nothing was acquired.");
        return ExitFault;
    }
    if (Options.log.gpsHeaderEnabled)
        WaitForPosition();
    if (!BeginLog()) {
        Document.DisconnectAll();
        return ExitFault;
    }
    if (Loop.Start()) {
        Watch();
    } else {
        ReportError("the system has no thread to give; close other programs.");
        Fault = true;
    }
    Document.DisconnectAll();
    Fault = Fault || Document.RawLog.Status().runFailed;
    Document.RawLog.EndLogFile(true);
    Loop.Stop();
    ReportTroubles(nullptr);
    Summarise();
    return Fault ? ExitFault : ExitWell;
}

} // namespace qor
