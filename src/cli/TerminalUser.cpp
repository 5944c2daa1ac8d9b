// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TerminalUser.h"

#include "base/Text.h"
#include "cli/Report.h"
#include "platform/Console.h"

#include <utility>

namespace qor {

void CTerminalUser::ShowMessage(const std::string& text) {
    if (Quiet)
        return;
    {
        CLock lock(Guard);
        Waiting.push_back(OneLine(text));
    }
    if (std::this_thread::get_id() == Owner)
        Print();
}

bool CTerminalUser::AskYesNo(const std::string& text) {
    ShowMessage(text + " Nobody can be asked here: answered No.");
    return false;
}

void CTerminalUser::Beep(BeepKind) {
    {
        CLock lock(Guard);
        BeepWaits = true;
    }
    if (std::this_thread::get_id() == Owner)
        Print();
}

void CTerminalUser::Print() {
    std::vector<std::string> texts;
    bool beep;
    {
        CLock lock(Guard);
        texts.swap(Waiting);
        beep = std::exchange(BeepWaits, false);
    }
    for (const std::string& text : texts)
        ReportWarning(text);
    if (beep && IsTerminal(StandardStream::Error))
        DrawError("\a");
}

} // namespace qor
