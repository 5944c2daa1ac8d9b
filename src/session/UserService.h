// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the engine asks of whoever sits in front of it. A seam: the desktop shows boxes, the command
// line writes to standard error and never asks, tests are scripted.
#pragma once

#include <string>

namespace qor {

enum class BeepKind { Default, Asterisk };

class CUserService {
  public:
    virtual ~CUserService() = default;
    /// Shows a message (exclamation icon, OK).
    virtual void ShowMessage(const std::string& text) = 0;
    /// Asks yes or no; only a clear yes is consent.
    virtual bool AskYesNo(const std::string& text) = 0;
    virtual void Beep(BeepKind kind) = 0;
    /// Before a log begins: shows the next file's name and the station information. True: log as
    /// shown; false: do not begin.
    virtual bool ConfirmLog(const std::string& displayName) = 0;
    /// Asks the program to end.
    virtual void RequestClose() = 0;
};

} // namespace qor
