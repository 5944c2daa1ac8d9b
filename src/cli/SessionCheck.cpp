// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/SessionCheck.h"

#include "base/Text.h"
#include "cli/InstrumentOptions.h"
#include "cli/Report.h"
#include "session/SessionFile.h"

namespace qor {

namespace {

std::string Line(const Refusal& refusal) {
    return refusal.subject + ": " + refusal.reason;
}

} // namespace

CheckedSession::CheckedSession(const std::string& path)
    : Path(path), Doc(Clock, MakeSystemSerialPort, User, Profile), Setup(Doc) {
    Doc.SessionLog.KeepText = Doc.SessionLog.KeepFile = false;
    Doc.Instruments.DefaultsPath = InstrumentDefaultsPath();
    const SessionReading reading = LoadSession(path);
    Warnings = reading.warnings;
    Refusal =
        reading.session ? Doc.Session.OpenSession(*reading.session, path, Setup) : reading.refusal;
    if (Refusal.empty())
        Setup.JudgeReplay();
}

std::vector<std::string> CheckedSession::Messages() const {
    std::vector<std::string> messages;
    if (!Refusal.empty())
        messages.push_back(Refusal);
    messages.insert(messages.end(), Warnings.begin(), Warnings.end());
    for (const auto* list :
         {&Setup.Refusals(), &Setup.Warnings(), &Setup.Silent(), &Setup.Unreplayable()})
        for (const qor::Refusal& one : *list)
            messages.push_back(Line(one));
    return messages;
}

bool SaySession(const CheckedSession& checked, bool strict) {
    for (const std::string& warning : checked.Warnings)
        ReportWarning(warning);
    if (!checked.Refusal.empty())
        ReportError(checked.Refusal);
    return ReportSetup(checked.Setup, strict, false) && checked.Refusal.empty();
}

} // namespace qor
