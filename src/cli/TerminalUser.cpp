// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TerminalUser.h"

#include "base/Text.h"
#include "cli/Report.h"
#include "platform/Console.h"

namespace qor {

void CTerminalUser::ShowMessage(const std::string& text) {
    {
        CLock lock(Guard);
        Shown.push_back(text);
    }
    if (!Quiet)
        ReportWarning(OneLine(text));
}

bool CTerminalUser::AskYesNo(const std::string& text) {
    ReportWarning(OneLine(text) + " Nobody can be asked here: answered No.");
    return false;
}

void CTerminalUser::Beep(BeepKind) {
    if (IsTerminal(StandardStream::Error))
        WriteError("\a");
}

bool CTerminalUser::ConfirmLog(const std::string&) {
    return true;
}

std::vector<std::string> CTerminalUser::Messages() const {
    CLock lock(Guard);
    return Shown;
}

} // namespace qor
