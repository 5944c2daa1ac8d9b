// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desktop's command line: qorview [FILE] [--lognow] [--exitifdone] [--practice]
// [--register] [--unregister] [--version] [--help]. A switch may begin with "--", "-" or "/", in
// any case. No Qt, so that
// --version needs no display.
#pragma once

#include <string>
#include <vector>

namespace qor {

struct DesktopCommand {
    std::string file; ///< to open: a session, or what the operator could drop on the window
    bool logNow = false;
    bool exitIfDone = false;
    bool practice = false;
    bool registerTypes = false;
    bool unregisterTypes = false;
    bool version = false;
    bool help = false;
    std::string fault; ///< not empty: what could not be understood
};

/// `arguments` begin with the program's name.
DesktopCommand ParseDesktopCommand(const std::vector<std::string>& arguments);

extern const char* const DesktopUsage;

} // namespace qor
