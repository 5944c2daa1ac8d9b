// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operator's seat of the command line: messages go to standard error, nothing is ever asked.
// What its own thread says is written at once; what other threads say waits for its next Print, so
// that no thread of the engine is ever held up by a terminal that nobody reads.
#pragma once

#include "base/Lock.h"
#include "platform/Console.h"
#include "session/UserService.h"

#include <string>
#include <thread>
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
    LogAnswer ConfirmLog(const LogQuestion&) override { return LogAnswer::LogAsShown; }
    void RequestClose() override {
        HurryReaders(); // who says something now must not hold up the end
        CloseRequested.Set();
    }

    /// Writes what other threads have said since the last time. On the thread that made this.
    void Print();

    CEvent CloseRequested;

  private:
    const bool Quiet;
    const std::thread::id Owner = std::this_thread::get_id();
    CMutex Guard; ///< a leaf
    std::vector<std::string> Waiting GUARDED_BY(Guard);
    bool BeepWaits GUARDED_BY(Guard) = false;
};

} // namespace qor
