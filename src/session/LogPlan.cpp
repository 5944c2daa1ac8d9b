// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/LogPlan.h"

#include "platform/File.h"
#include "session/SessionFields.h"

#include <algorithm>

namespace qor {
namespace {

void SayLog(const LogRunPlan& plan, LogRecord& log) {
    if (!plan.directory.empty())
        log.directory = FullPathOf(plan.directory);
    if (!plan.name.empty()) {
        log.naming = LogNamingMode::UserFileName;
        log.name = plan.name;
    }
    log.timeStamps = log.timeStamps || plan.log.timeStampEnabled;
    log.gpsHeader = log.gpsHeader || plan.log.gpsHeaderEnabled;
    if (plan.log.durationEnabled)
        log.duration = plan.log.duration;
    if (plan.log.repeatEnabled || plan.log.everyEnabled) {
        // One of them takes the place of what the session has.
        log.repeat = plan.log.repeatEnabled ? std::optional(plan.log.repeatInterval) : std::nullopt;
        log.every = plan.log.everyEnabled ? std::optional(plan.log.every) : std::nullopt;
    }
    if (!plan.sessionLogDirectory.empty()) {
        log.sessionLog = true;
        log.sessionLogDirectory = FullPathOf(plan.sessionLogDirectory);
    }
}

void SayLine(const PortPlan& port, ResourceRecord& resource) {
    const SerialResourceSettings& line = port.settings;
    if (port.baudGiven)
        resource.baud = line.baudRate;
    if (port.formatGiven)
        resource.format = LineFormat{line.dataBits, line.parity, line.stopBits};
}

bool Holds(const std::vector<InstrumentRecord>& instruments, InstrumentRole role) {
    return std::ranges::any_of(instruments, [role](const InstrumentRecord& one) {
        return std::ranges::count(one.roles, role) > 0;
    });
}

} // namespace

SessionRecord PlannedSession(const LogRunPlan& plan) {
    SessionRecord session = plan.session.value_or(SessionRecord());
    SayLog(plan, session.log);
    for (const StationText& field : StationTexts)
        if (const std::string& said = plan.station.*field.text; !said.empty())
            session.station.*field.text = said;
    for (ResourceRecord& resource : session.resources) {
        resource.reconnect = resource.reconnect || (plan.reconnect && !resource.IsFile());
        for (const PortPlan& port : plan.ports)
            if (resource.port == port.settings.portName)
                SayLine(port, resource);
    }
    return session;
}

bool HasPort(const SessionRecord& session, const std::string& port) {
    return std::ranges::count(session.resources, port, &ResourceRecord::port) > 0;
}

bool HasRole(const SessionRecord& session, InstrumentRole role) {
    return std::ranges::any_of(session.resources, [role](const ResourceRecord& resource) {
        return Holds(resource.instruments, role) ||
               std::ranges::any_of(resource.packages, [role](const PackageRecord& package) {
                   return Holds(package.instruments, role);
               });
    });
}

} // namespace qor
