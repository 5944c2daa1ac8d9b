// SPDX-License-Identifier: GPL-3.0-or-later
//
// What stands in the window before there is a session: practice, find, new, open, replay, the
// sessions of late, and the one that ended unexpectedly.
#pragma once

#include "app/frame/Actions.h"

#include <QWidget>

#include <string>
#include <vector>

class QLabel;
class QVBoxLayout;

namespace qor {

struct ShownSession {
    std::string path;
    std::string name;
    std::string when;  ///< in words
    bool gone = false; ///< its file is not there
};

class CStartPage : public QWidget {
    Q_OBJECT

  public:
    CStartPage(const CTheme& theme, const CActions& actions, QWidget* parent = nullptr);

    /// `unfinished` names the session that ended unexpectedly; empty: none did.
    void ShowSessions(const std::vector<ShownSession>& recent, const std::string& unfinished);

  signals:
    void OpenAsked(QString path);
    void RestoreAsked();

  private:
    QWidget* MakeButton(Do action, const QString& text, const QString& below, bool large);
    void TakeTheme();

    const CTheme& Theme;
    const CActions& Actions;
    QVBoxLayout* Sessions;
    QLabel* Title;
    std::vector<ShownSession> Recent;
    std::string Unfinished;
};

} // namespace qor
