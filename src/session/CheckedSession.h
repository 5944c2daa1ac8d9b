// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session file read and all that it names loaded into a document of its own, without opening a
// port: what there is to say of the file before anybody works with it. One thread; faces and the
// texts of a check read the members.
#pragma once

#include "platform/Clock.h"
#include "session/QorViewDoc.h"
#include "session/SessionSetup.h"

#include <string>
#include <vector>

namespace qor {

class CCheckedSession {
  public:
    /// `user` hears the messages of packages and outlives this.
    CCheckedSession(const std::string& path, CUserService& user);

    /// Whether it could be opened at all: else the document holds nothing of it.
    bool Opened() const { return Refusal.empty(); }
    /// Whether all of it could be used.
    bool Ok() const { return Opened() && Setup.Refusals().empty(); }
    /// What the operator is told, in order: why it was refused, or its warnings and what of it
    /// could not be used. A line each.
    std::vector<std::string> Messages() const;

    const std::string Path;
    std::string Refusal;
    std::vector<std::string> Warnings;

  private:
    CSystemClock Clock;
    CMemoryProfileStore Profile;

  public:
    CQorViewDoc Doc;
    CSessionSetup Setup;
};

} // namespace qor
