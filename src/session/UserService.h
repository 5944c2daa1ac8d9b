// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the engine asks of whoever sits in front of it. A seam: the desktop shows boxes, the command
// line writes to standard error and never asks, tests are scripted.
#pragma once

#include "session/StationInformation.h"

#include <string>

namespace qor {

enum class BeepKind { Default, Asterisk };

/// What the operator sees before a log begins.
struct LogQuestion {
    std::string displayName; ///< of the next file
    StationInformation station;
};
enum class LogAnswer {
    LogAsShown,
    ChangeFirst, ///< the log does not begin; whoever asked lets the name or station be changed
    Cancel,
};

/// Showing, beeping and asking to close may come from any thread, under no lock, and return at
/// once: an implementation posts or queues. Only questions wait for the operator; they never come
/// from the acquisition thread and never under the document's lock.
class CUserService {
  public:
    virtual ~CUserService() = default;
    /// Shows a message (exclamation icon, OK). Does not wait for the operator.
    virtual void ShowMessage(const std::string& text) = 0;
    /// Asks yes or no and waits; only a clear yes is consent.
    virtual bool AskYesNo(const std::string& text) = 0;
    virtual void Beep(BeepKind kind) = 0;
    /// Takes back every question that is being asked: it is answered with no. Questions that come
    /// afterwards are answered so too. For the end of a loop or a document.
    virtual void CancelQuestions() {}
    /// Before the first log of a run begins.
    virtual LogAnswer ConfirmLog(const LogQuestion& question) = 0;
    /// Asks the program to end.
    virtual void RequestClose() = 0;
};

/// Nobody sits there: nothing is shown, and the answer is no.
class CNobody final : public CUserService {
  public:
    void ShowMessage(const std::string&) override {}
    bool AskYesNo(const std::string&) override { return false; }
    void Beep(BeepKind) override {}
    LogAnswer ConfirmLog(const LogQuestion&) override { return LogAnswer::Cancel; }
    void RequestClose() override {}
};

} // namespace qor
