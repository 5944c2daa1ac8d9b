// SPDX-License-Identifier: GPL-3.0-or-later
//
// Paths as a session file holds them: relative to its folder where they lead into it, with "/" on
// every system, so that a folder with its session can be moved. Decided by the text of paths; what
// a symbolic link leads to is not looked at. Any thread.
#pragma once

#include <string>

namespace qor {

/// The absolute folder of a session file, with a separator at its end.
std::string SessionFolder(const std::string& sessionPath);

/// The absolute path that a text of the file means, without a separator at its end.
std::string ResolvedPath(const std::string& folder, const std::string& text);

/// Whether an absolute path leads to a server ("\\server\share") other than that of the folder.
/// Only looking there would give a stranger's server the name of who opens the session.
bool LeadsToServer(const std::string& folder, const std::string& path);

/// The text for an absolute path: relative in or below the folder ("." for the folder itself), else
/// absolute.
std::string StoredPath(const std::string& folder, const std::string& path);

/// The same folder, with a separator at its end; empty stays empty.
std::string WithSeparator(std::string folder);

} // namespace qor
