// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SessionOptions.h"

#include "cli/Commands.h"
#include "cli/Report.h"
#include "session/SessionFile.h"
#include "session/SessionOpener.h"

#include <CLI/CLI.hpp>

namespace qor {

void AddSessionOption(CLI::App& command, std::string& path) {
    command.add_option("--session", path, "Session file; what the call says besides wins over it")
        ->type_name("FILE.qor");
}

int TakeSession(const std::string& path, std::optional<SessionRecord>& session) {
    if (path.empty())
        return ExitWell;
    SessionReading reading = LoadSession(path);
    for (const std::string& warning : reading.warnings)
        ReportWarning(warning);
    if (reading.session)
        if (const std::string fault = SessionFault(*reading.session); !fault.empty())
            reading.refusal = path + ": " + fault;
    if (!reading.refusal.empty()) {
        ReportError(reading.refusal);
        return ExitFault;
    }
    session = std::move(reading.session);
    return ExitWell;
}

} // namespace qor
