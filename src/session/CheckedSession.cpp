// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session file that is checked. See CheckedSession.h.
#include "session/CheckedSession.h"

#include "session/InstrumentDefaults.h"
#include "session/SessionFile.h"

namespace qor {

CCheckedSession::CCheckedSession(const std::string& path, CUserService& user)
    : Path(path), Doc(Clock, MakeSystemSerialPort, user, Profile), Setup(Doc) {
    Doc.SessionLog.KeepText = Doc.SessionLog.KeepFile = false;
    Doc.Instruments.DefaultsPath = InstrumentDefaultsPath();
    const SessionReading reading = LoadSession(path);
    Warnings = reading.warnings;
    Refusal =
        reading.session ? Doc.Session.OpenSession(*reading.session, path, Setup) : reading.refusal;
    if (Refusal.empty())
        Setup.JudgeReplay();
}

std::vector<std::string> CCheckedSession::Messages() const {
    std::vector<std::string> messages;
    if (!Refusal.empty())
        messages.push_back(Refusal);
    messages.insert(messages.end(), Warnings.begin(), Warnings.end());
    for (const auto* list :
         {&Setup.Refusals(), &Setup.Warnings(), &Setup.Silent(), &Setup.Unreplayable()})
        for (const qor::Refusal& one : *list)
            messages.push_back(one.subject + ": " + one.reason);
    return messages;
}

} // namespace qor
