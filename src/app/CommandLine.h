// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desktop's command line: qorview [FILE.qor] [--lognow] [--exitifdone] [--practice]
// [--version] [--help]. A switch may begin with "--", "-" or "/", in any case. No Qt, so that
// --version needs no display.
#pragma once

#include <string>
#include <vector>

namespace qor {

struct DesktopCommand {
    std::string sessionFile;
    bool logNow = false;
    bool exitIfDone = false;
    bool practice = false;
    bool version = false;
    bool help = false;
    std::string fault; ///< not empty: what could not be understood
};

/// `arguments` begin with the program's name.
DesktopCommand ParseDesktopCommand(const std::vector<std::string>& arguments);

extern const char* const DesktopUsage;

} // namespace qor
