// SPDX-License-Identifier: GPL-3.0-or-later
//
// The option that names a session file, and how such a file is read for a command.
#pragma once

#include "session/SessionRecord.h"

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace qor {

/// Adds --session.
void AddSessionOption(CLI::App& command, std::string& path);

/// Reads the file, when one was named: what is odd about it is a warning. ExitFault, and why is
/// reported, when it is refused.
int TakeSession(const std::string& path, std::optional<SessionRecord>& session);

} // namespace qor
