// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a call says of a run of logs, as the commands that make or keep such runs have it: ports
// with their instruments, a session, naming, spans, station.
#pragma once

#include "export/FramePrinter.h"
#include "session/LogPlan.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace qor {

struct LogCallOptions : LogRunPlan {
    std::vector<std::string> portTexts;
    std::string durationText, repeatText, everyText;
    std::optional<PrintSettings> print;
    bool csvSafe = false;
};

/// Adds the options but for those of the output.
void AddLogOptions(CLI::App& command, LogCallOptions& options);

/// Reads the session and makes the plan. The exit status of a call that is wrong (reported), or
/// ExitWell.
int ReadLogCall(const CLI::App& command, LogCallOptions& options);

} // namespace qor
