// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli log: a long-running acquisition from serial ports into raw logs. The acquisition loop
// does the work on its own threads; this thread starts, watches, says what happens, and winds up.
#include "cli/Commands.h"
#include "cli/LineText.h"
#include "cli/LiveStatus.h"
#include "cli/SessionSetup.h"

#include "base/Text.h"
#include "cli/Output.h"
#include "platform/SystemText.h"
#include "session/AcquisitionLoop.h"
#include "session/LogHeader.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

/// A port of the call and the instruments named behind it.
struct PortOptions {
    PortText port;
    InstrumentOptions instruments;
};

struct LogCallOptions {
    std::vector<std::string> portTexts;
    InstrumentOptions instruments; ///< definitions and packages of all ports; roles and immersion
    std::vector<PortOptions> ports;
    std::string directory = ".";
    std::string name;
    std::string sessionLogDirectory;
    std::string durationText, repeatText;
    LogOptions log;
    StationInformation station;
};

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

/// Gives each port the definitions and packages that were named behind it, in order. Returns what
/// is wrong with the call, or nothing.
std::string AssignToPorts(const CLI::App& command, LogCallOptions& options) {
    std::size_t port = 0, definition = 0, package = 0;
    for (const CLI::Option* option : command.parse_order()) {
        bool isDefinition = option->get_name() == "--definition";
        bool isPackage = option->get_name() == "--package";
        if (option->get_name() == "--port") {
            const std::string& text = options.portTexts[port++];
            std::optional<PortText> parsed = ParsePort(text);
            if (!parsed)
                return "--port " + text +
                       ": give NAME[:BAUD[:8N1]], for example /dev/ttyUSB0:19200:8N1.";
            options.ports.push_back({*parsed, {}});
        } else if ((isDefinition || isPackage) && options.ports.empty()) {
            return "name the --port before the -d and -p files of the instruments on it.";
        } else if (isDefinition) {
            options.ports.back().instruments.definitions.push_back(
                options.instruments.definitions[definition++]);
        } else if (isPackage) {
            options.ports.back().instruments.packages.push_back(
                options.instruments.packages[package++]);
        }
    }
    for (const PortOptions& entry : options.ports)
        if (entry.instruments.definitions.empty() && entry.instruments.packages.empty())
            return "--port " + entry.port.settings.portName +
                   ": name its instruments behind it with -d or -p.";
    return {};
}

std::string ReadSpans(LogCallOptions& options) {
    struct {
        const char* name;
        const std::string& text;
        bool& enabled;
        LogSpan& span;
    } spans[] = {
        {"--duration", options.durationText, options.log.durationEnabled, options.log.duration},
        {"--repeat", options.repeatText, options.log.repeatEnabled, options.log.repeatInterval}};
    for (auto& entry : spans) {
        if (entry.text.empty())
            continue;
        std::optional<LogSpan> span = ParseSpan(entry.text);
        if (!span)
            return std::string(entry.name) + " " + entry.text +
                   ": give [HH:]MM:SS, more than zero.";
        entry.enabled = true;
        entry.span = *span;
    }
    if (options.log.repeatEnabled && !options.log.durationEnabled)
        return "--repeat needs --duration: the length of each log.";
    return {};
}

/// The run of one `log` call.
class CLogRun {
  public:
    CLogRun(LogCallOptions& options, CommandContext& context)
        : Options(options), Context(context), Document(Clock, MakeSystemSerialPort, User, Profile),
          Packages(Document), Loop(Document) {}

    int Run();

  private:
    void SetUpDocument();
    bool SetUpPorts();
    bool SetUpPort(const PortOptions& port);
    bool ConnectPorts();
    void ReportRefusal(int resource, CommResult result);
    void WaitForPosition();
    bool BeginLog();
    void Watch();
    void NoteEntry(std::string_view entry);
    bool ReportTroubles(CLiveStatus* status);
    void NoteAborts(CLiveStatus& status);
    void Summarise();

    LogCallOptions& Options;
    CommandContext& Context;
    CSystemClock Clock;
    CTerminalUser User;
    CMemoryProfileStore Profile;
    CQorViewDoc Document;
    CPackageList Packages;
    CAcquisitionLoop Loop;
    std::vector<std::string> LogFiles;     ///< under the document's lock, as are:
    std::vector<std::string> TroublesSeen; ///< not yet reported
    std::vector<bool> Aborted;
    bool Fault = false;
};

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
    COutput output;
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

int RunLog(const CLI::App& command, LogCallOptions& options, CommandContext& context) {
    std::string wrong = AssignToPorts(command, options);
    if (wrong.empty())
        wrong = ReadSpans(options);
    if (wrong.empty() && options.name.find_first_of("/\\") != std::string::npos)
        wrong = "--name " + options.name + ": give the file's name alone, and its folder with -o.";
    if (!wrong.empty()) {
        ReportError(wrong);
        return ExitBadCall;
    }
    return CLogRun(options, context).Run();
}

void AddStationOptions(CLI::App& command, StationInformation& station) {
    struct {
        const char* name;
        std::string& value;
        const char* help;
    } texts[] = {{"--cruise", station.cruiseId, "Cruise identifier"},
                 {"--operator", station.operatorName, "Operator"},
                 {"--latitude", station.latitude, "Latitude"},
                 {"--longitude", station.longitude, "Longitude"},
                 {"--zone", station.zone, "Time zone"},
                 {"--comment", station.comment, "Comment"},
                 {"--station", station.stationId, "Station identifier"},
                 {"--cast", station.cast, "Cast"}};
    for (auto& text : texts)
        command.add_option(text.name, text.value, std::string(text.help) + " for the log's header")
            ->type_name("TEXT")
            ->check([](const std::string& value) { // a header record is one line
                return std::any_of(value.begin(), value.end(),
                                   [](unsigned char c) { return c < 0x20 || c == 0x7F; })
                           ? std::string("control characters cannot stand in a header")
                           : std::string();
            })
            ->group("Station");
}

} // namespace

void AddLogCommand(CLI::App& app, CommandContext& context) {
    static LogCallOptions options; // one command runs in a process
    CLI::App* command = app.add_subcommand("log", "Acquire from serial ports and write raw logs");
    command
        ->add_option("--port", options.portTexts,
                     "Serial port, followed by the -d and -p files of its instruments (repeatable)")
        ->type_name("NAME[:BAUD[:8N1]]")
        ->allow_extra_args(false)
        ->required();
    AddInstrumentOptions(*command, options.instruments);
    for (const char* files : {"--definition", "--package"})
        command->get_option(files)->allow_extra_args(); // -d FIRST SECOND
    command->add_option("-o,--output", options.directory, "Folder of the raw logs (.)")
        ->type_name("DIR");
    command->add_option("--name", options.name, "Name of the raw log instead of the time it begins")
        ->type_name("FILE");
    command
        ->add_option("--session-log", options.sessionLogDirectory,
                     "Folder of the session log (that of the raw logs)")
        ->type_name("DIR");
    command->add_option("--duration", options.durationText, "Length of a log")
        ->type_name("[HH:]MM:SS");
    command
        ->add_option("--repeat", options.repeatText,
                     "Begin another log so long after one has ended")
        ->type_name("[HH:]MM:SS");
    command->add_flag("--time-stamps", options.log.timeStampEnabled,
                      "Write a time-stamp sentence a second");
    command->add_flag("--gps-header", options.log.gpsHeaderEnabled,
                      "Position and sentence list of the instrument in the gps role in the header");
    command->add_flag("--overwrite", options.log.overwriteExisting,
                      "Replace an existing log of the same name");
    command->add_flag("--quiet", context.quiet, "No status lines");
    AddStationOptions(*command, options.station);
    command->callback([command, &context] {
        context.body = [command, &context] { return RunLog(*command, options, context); };
    });
}

} // namespace qor
