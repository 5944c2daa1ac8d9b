// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where this user's settings of the program stand. Makes nothing.
#pragma once

#include <string>

namespace qor {

/// The folder, ending in a path separator: QORVIEW_HOME when that is set, else on Windows the
/// program's own when `qorview.ini` lies there (a program on a stick brings its settings along),
/// else the system's place for settings. Empty when the system names none (no home folder). It need
/// not exist yet.
std::string SettingsFolder();

/// Whether the display settings are `qorview.ini` in that folder: always, but for Windows without
/// QORVIEW_HOME and without that file beside the program. There they are in the registry.
bool SettingsInFile();

} // namespace qor
