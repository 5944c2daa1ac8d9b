// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log can be taken apart with, looked for where it lies, and what it holds by time, for
// a face that replays it. Plays the log into a document of its own; any thread, no lock.
#pragma once

#include "session/SessionRecord.h"

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Definition and package files of the log's folder that give frames in its first megabytes, by
/// name; packages first, and no definition of an instrument that a package has.
std::vector<std::string> DefinitionsBeside(const std::string& logPath);

/// The moments of a log, for a bar that seeks in it.
struct LogOutline {
    std::optional<double> begin, end; ///< seconds since 1970 of its first and last tag
    std::vector<double> castBegins;   ///< the same of its casts
};

/// Plays the log with the instruments of a session to its end, or until `stop` says so; then only
/// what was seen so far is told.
LogOutline OutlineLog(const std::string& logPath, const SessionRecord& session,
                      const std::atomic<bool>& stop);

} // namespace qor
