// SPDX-License-Identifier: GPL-3.0-or-later
//
// The words that files and options use for choices of the session. Any thread.
#pragma once

#include "session/SessionState.h"

#include <optional>
#include <string>
#include <string_view>

namespace qor {

/// "profiler", "reference", "tracker", "sqm", "dut", "weather", "gps".
std::string_view RoleName(InstrumentRole role);
std::optional<InstrumentRole> RoleOfName(std::string_view name);
/// "file", "autocast", "time-stamp", "sqm".
std::string_view NamingName(LogNamingMode mode);
std::optional<LogNamingMode> NamingOfName(std::string_view name);

/// All of them for a message: "profiler", "reference", ... or "gps".
std::string AllRoleNames();
std::string AllNamingNames();

} // namespace qor
