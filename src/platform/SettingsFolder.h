// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where this user's settings of the program stand. Looks at the environment only; makes nothing.
#pragma once

#include <string>

namespace qor {

/// The folder, ending in a path separator: QORVIEW_HOME when that is set, else the system's place
/// for settings. Empty when the system names none (no home folder). It need not exist yet.
std::string SettingsFolder();

} // namespace qor
