// SPDX-License-Identifier: GPL-3.0-or-later
//
// Session files (.qor): from bytes to records and back. A session is taken as a whole or refused as
// a whole with one line that names the file, the place and what would be right. Nothing that it
// names is opened or loaded here. Called by the faces' thread; no lock, no state.
#pragma once

#include "session/SessionRecord.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct SessionReading {
    std::optional<SessionRecord> session;
    std::string refusal;               ///< why there is none; one line
    std::vector<std::string> warnings; ///< a line each
};

/// `path` is that of the file, as messages shall show it; paths in the session are relative to its
/// folder.
SessionReading ReadSession(std::string_view bytes, const std::string& path);
/// The same from the file itself.
SessionReading LoadSession(const std::string& path);

struct SessionWriting {
    std::string bytes;
    std::string refusal; ///< why there are none: a text or number that no session file may hold
};

/// The file for that path. Members stand in a fixed order and layout, unknown ones behind the known
/// ones of their object in the order in which they were read. What was written is read again before
/// it is given out.
SessionWriting WriteSession(const SessionRecord& session, const std::string& path);
/// Writes the file beside and renames. Empty, or one line that says why the old file still stands.
std::string SaveSession(const SessionRecord& session, const std::string& path);

} // namespace qor
