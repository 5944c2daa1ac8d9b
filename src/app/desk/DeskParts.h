// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the rooms of the desk share; each room does one part of what the operator asks for. On the
// user-interface thread.
#pragma once

#include "app/desk/Engine.h"
#include "app/dialogs/Forms.h"
#include "app/frame/MainWindow.h"
#include "session/KeptProfile.h"

namespace qor {

struct DeskParts {
    CTheme& Theme;
    CMainWindow& Window;
    CEngine& Engine;
    CKeptProfileStore& Profile;

    CQorViewDoc& Doc() const { return Engine.Doc(); }
    /// What a form needs; what it could not do is said in the strip.
    FormFrame Form() const;
    /// A message in the strip; a later one of the same topic takes its place.
    void Say(Sign sign, const std::string& topic, const QString& text,
             std::vector<MessageButton> buttons = {}) const;
    /// A refusal in the strip; nothing for an empty one.
    void SayFault(const std::string& topic, const std::string& fault) const;
    /// What is not opened, on standard error, for runs without an operator.
    static void TellRefusal(const std::string& refusal);
    /// Does beside the user interface what may wait for a port; its fault is said in the strip.
    void Try(const std::string& topic, std::function<std::string()> operation) const;
    /// What could not be used, or is used and may not be what was meant.
    void SayAll(Sign sign, const std::vector<Refusal>& refusals) const;
};

} // namespace qor
