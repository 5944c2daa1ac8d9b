// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a run of logs is asked for: ports with their instruments, naming, options, station, by
// themselves or over a session whose words they replace. Plain records; any thread.
#pragma once

#include "session/SessionRecord.h"
#include "session/SessionSetup.h"

#include <optional>
#include <string>
#include <vector>

namespace qor {

/// A port and the instruments on it.
struct PortPlan {
    SerialResourceSettings settings;
    bool baudGiven = false;   ///< else a package's own speed holds
    bool formatGiven = false; ///< else that of the session
    InstrumentSelection instruments;
};

struct LogRunPlan {
    std::vector<PortPlan> ports;
    InstrumentSelection names;       ///< roles and immersion, over all ports
    std::string directory;           ///< empty: not said
    std::string name;                ///< of the log; empty: not said
    std::string sessionLogDirectory; ///< empty: that of the logs
    LogOptions log;
    StationInformation station;
    bool reconnect = false; ///< ports that are lost, or not there yet, are tried until the end
    bool strict = false;    ///< nothing is logged with a definition that was repaired
    std::vector<std::string> spareDirectories; ///< for logs when their folder takes none any more
    bool exitOnError = false;                  ///< a log whose file fails ends the run
    bool manifests = true;                     ///< each log gets one
    bool captureAll = false;                   ///< every port's bytes are kept, frames or not
    bool partly = false; ///< start although some definition or member cannot be used

    std::optional<SessionRecord> session; ///< what holds where nothing above is said
    std::string sessionPath;
};

/// The session of the plan with all that the plan itself says of the log, the station and the lines
/// of the session's ports. Ports that the session does not have are not in it.
SessionRecord PlannedSession(const LogRunPlan& plan);

/// Whether the session has that port.
bool HasPort(const SessionRecord& session, const std::string& port);
/// Whether some instrument of the session has the role.
bool HasRole(const SessionRecord& session, InstrumentRole role);

} // namespace qor
