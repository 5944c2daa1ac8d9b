// SPDX-License-Identifier: GPL-3.0-or-later
//
// The program's files in the system's list of file types, on request. No Qt.
#pragma once

#include <string>

namespace qor {

struct RegistrationOutcome {
    bool done = false;
    std::string text; ///< what was done, or why it was not
};

/// Registers sessions, packages, definitions and raw logs for this user, or takes that back.
/// Windows; elsewhere the installation does it, and this says so.
RegistrationOutcome RegisterProgram(bool on);

} // namespace qor
