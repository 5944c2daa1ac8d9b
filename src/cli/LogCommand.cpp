// SPDX-License-Identifier: GPL-3.0-or-later
//
// qorview-cli log: what a call may say, and whether it makes sense. The run is CLogConsole's.
#include "cli/Commands.h"

#include "cli/InstrumentOptions.h"
#include "cli/LogConsole.h"
#include "cli/Report.h"

#include "session/PortText.h"
#include "session/SpanText.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

struct LogCallOptions : LogRunPlan {
    std::vector<std::string> portTexts;
    std::string durationText, repeatText;
};

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
            options.ports.push_back({parsed->settings, parsed->baudGiven, {}});
        } else if ((isDefinition || isPackage) && options.ports.empty()) {
            return "name the --port before the -d and -p files of the instruments on it.";
        } else if (isDefinition) {
            options.ports.back().instruments.definitions.push_back(
                options.names.definitions[definition++]);
        } else if (isPackage) {
            options.ports.back().instruments.packages.push_back(options.names.packages[package++]);
        }
    }
    for (const PortPlan& entry : options.ports)
        if (entry.instruments.definitions.empty() && entry.instruments.packages.empty())
            return "--port " + entry.settings.portName +
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

int RunLog(const CLI::App& command, LogCallOptions& options, CommandContext& context) {
    std::string wrong = AssignToPorts(command, options);
    if (wrong.empty())
        wrong = ReadSpans(options);
    if (wrong.empty() && options.name.find_first_of("/\\") != std::string::npos)
        wrong = "--name " + options.name + ": give the file's name alone, and its folder with -o.";
    const bool hasGps = std::ranges::any_of(options.names.roles, [](const RoleAssignment& one) {
        return one.role == InstrumentRole::Gps;
    });
    if (wrong.empty() && options.log.gpsHeaderEnabled && !hasGps)
        wrong = "--gps-header needs the instrument that gives the position: --role NAME=gps.";
    if (!wrong.empty()) {
        ReportError(wrong);
        return ExitBadCall;
    }
    return CLogConsole(options, context).Run();
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
    AddInstrumentOptions(*command, options.names);
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
    command->add_flag("--reconnect", options.reconnect,
                      "Try a port that is lost, or not there yet, again until the run ends");
    AddStrictOption(*command, options.strict);
    command->add_flag("--partly", options.partly,
                      "Log with what can be used when some definition cannot");
    command->add_flag("--quiet", context.quiet, "No status lines");
    AddStationOptions(*command, options.station);
    command->callback([command, &context] {
        context.body = [command, &context] { return RunLog(*command, options, context); };
    });
}

} // namespace qor
