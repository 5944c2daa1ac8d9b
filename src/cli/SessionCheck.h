// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session file read and all that it names loaded, without opening a port: what check says of it.
#pragma once

#include "cli/TerminalUser.h"
#include "export/SessionText.h"
#include "platform/Clock.h"
#include "session/QorViewDoc.h"
#include "session/SessionSetup.h"

#include <string>

namespace qor {

class CheckedSession {
  public:
    explicit CheckedSession(const std::string& path);

    bool Ok() const { return Refusal.empty() && Setup.Refusals().empty(); }
    /// What the operator is told, in order: why it was refused, or its warnings and what of it
    /// could not be used.
    std::vector<std::string> Messages() const;
    SessionReport Report() const { return {Path, Refusal.empty(), Ok(), Messages(), Doc}; }

    const std::string Path;
    std::string Refusal;
    std::vector<std::string> Warnings;

  private:
    CSystemClock Clock;
    CTerminalUser User{true};
    CMemoryProfileStore Profile;

  public:
    CQorViewDoc Doc;
    CSessionSetup Setup;
};

/// Says what is wrong or odd; false for a fault (`strict`: also for what was repaired).
bool SaySession(const CheckedSession& checked, bool strict);

} // namespace qor
