// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LogOptions.h"

#include "cli/Commands.h"
#include "cli/InstrumentOptions.h"
#include "cli/NumberOptions.h"
#include "cli/Report.h"
#include "cli/SessionOptions.h"

#include "session/PortText.h"
#include "session/SessionOpener.h"
#include "session/SpanText.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace qor {

namespace {

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
            options.ports.push_back({parsed->settings, parsed->baudGiven, parsed->formatGiven, {}});
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
        if (entry.instruments.Empty() &&
            !(options.session && HasPort(*options.session, entry.settings.portName)))
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
        {"--repeat", options.repeatText, options.log.repeatEnabled, options.log.repeatInterval},
        {"--every", options.everyText, options.log.everyEnabled, options.log.every}};
    for (auto& entry : spans) {
        if (entry.text.empty())
            continue;
        if (const std::string fault = SpanFault(entry.text); !fault.empty())
            return std::string(entry.name) + " " + entry.text + ": " + fault;
        entry.enabled = true;
        entry.span = *ParseSpan(entry.text);
    }
    return {};
}

/// What is wrong with what was read, or nothing.
std::string WhatIsWrong(const LogCallOptions& options) {
    if (options.ports.empty() && !options.session)
        return "name a --port with the -d and -p files of its instruments, or a --session "
               "FILE.qor.";
    LogNaming naming;
    naming.logUserFileName = options.name;
    if (options.name.find_first_of("/\\") != std::string::npos)
        return "--name " + options.name + ": give the file's name alone, and its folder with -o.";
    if (std::string fault = NamingFault(naming); !fault.empty())
        return "--name " + options.name + ": " + fault;
    const bool hasGps = (options.session && HasRole(*options.session, InstrumentRole::Gps)) ||
                        std::ranges::any_of(options.names.roles, [](const RoleAssignment& one) {
                            return one.role == InstrumentRole::Gps;
                        });
    if (options.log.gpsHeaderEnabled && !hasGps)
        return "--gps-header needs the instrument that gives the position: --role NAME=gps.";
    if (options.log.repeatEnabled && !options.log.durationEnabled &&
        !(options.session && options.session->log.duration))
        return "--repeat needs --duration: the length of each log.";
    const SessionRecord session = PlannedSession(options);
    const LogRecord& log = session.log;
    const LogOptions planned{.durationEnabled = log.duration.has_value(),
                             .duration = log.duration.value_or(LogSpan()),
                             .repeatEnabled = log.repeat.has_value(),
                             .repeatInterval = {},
                             .everyEnabled = options.log.everyEnabled,
                             .every = options.log.every};
    if (const std::string fault = EveryFault(planned); !fault.empty())
        return "--every " + options.everyText + ": " + fault;
    if (const std::string fault = SessionFault(session); !fault.empty())
        return (options.session ? "what the call says besides --session " + options.sessionPath
                                : std::string("the call")) +
               ": " + fault;
    return {};
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

int ReadLogCall(const CLI::App& command, LogCallOptions& options) {
    if (const int status = TakeSession(options.sessionPath, options.session); status != ExitWell)
        return status;
    std::string wrong = AssignToPorts(command, options);
    if (wrong.empty())
        wrong = ReadSpans(options);
    if (wrong.empty())
        wrong = WhatIsWrong(options);
    if (!wrong.empty())
        ReportError(wrong);
    return wrong.empty() ? ExitWell : ExitBadCall;
}

void AddLogOptions(CLI::App& command, LogCallOptions& options) {
    AddSessionOption(command, options.sessionPath);
    command
        .add_option(
            "--port", options.portTexts,
            "Serial port (at 19200:8N1 unless said), followed by the -d and -p files of its "
            "instruments (repeatable)")
        ->type_name("NAME[:BAUD[:8N1]]")
        ->allow_extra_args(false);
    AddInstrumentOptions(command, options.names);
    for (const char* files : {"--definition", "--package"})
        command.get_option(files)->allow_extra_args(); // -d FIRST SECOND
    command.add_option("--name", options.name, "Name of the raw log instead of the time it begins")
        ->type_name("FILE");
    command
        .add_option("--session-log", options.sessionLogDirectory,
                    "Folder of the session log (that of the raw logs)")
        ->type_name("DIR")
        ->check(CLI::ExistingDirectory.description(""));
    command.add_option("--duration", options.durationText, "Length of a log: 45s, 10m, 1h30m")
        ->type_name("[HH:]MM:SS")
        ->check(SomeValue());
    command
        .add_option("--repeat", options.repeatText,
                    "Begin another log so long after one has ended: 50m")
        ->type_name("[HH:]MM:SS")
        ->check(SomeValue());
    command
        .add_option("--every", options.everyText,
                    "Begin logs at round times of the day, each as the last ends: 1h")
        ->type_name("[HH:]MM:SS")
        ->check(SomeValue());
    command.add_flag("--time-stamps", options.log.timeStampEnabled,
                     "Write a time-stamp sentence a second");
    command.add_flag("--gps-header", options.log.gpsHeaderEnabled,
                     "Position and sentence list of the instrument in the gps role in the header");
    command.add_flag("--reconnect", options.reconnect,
                     "Try a port that is lost, or not there yet, again until the run ends");
    AddStationOptions(command, options.station);
}

} // namespace qor
