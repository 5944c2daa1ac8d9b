// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operator's seat of the command line: messages go to standard error, nothing is ever asked.
// From any thread.
#pragma once

#include "base/Lock.h"
#include "platform/Worker.h"
#include "session/UserService.h"

#include <string>
#include <vector>

namespace qor {

/// Shows messages as one-line warnings, answers no question, and hears a request to close.
class CTerminalUser : public CUserService {
  public:
    /// `quiet`: messages are only kept.
    explicit CTerminalUser(bool quiet = false) : Quiet(quiet) {}

    void ShowMessage(const std::string& text) override;
    bool AskYesNo(const std::string& text) override;
    void Beep(BeepKind kind) override;
    bool ConfirmLog(const std::string& displayName) override;
    void RequestClose() override { CloseRequested.Set(); }

    /// What has been shown so far.
    std::vector<std::string> Messages() const;

    CEvent CloseRequested;

  private:
    const bool Quiet;
    mutable CMutex Guard; ///< a leaf
    std::vector<std::string> Shown GUARDED_BY(Guard);
};

} // namespace qor
