// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desk that an operator sits at: the main window over an engine. It knows for every action
// which room does it, and gives everything that is shown its turn. User-interface thread.
#pragma once

#include "app/CommandLine.h"
#include "app/desk/LogDesk.h"
#include "app/desk/Messages.h"
#include "app/desk/SessionDesk.h"
#include "app/desk/SourceDesk.h"
#include "app/desk/WindowDesk.h"

#include <QTimer>

namespace qor {

class CDesk : public QObject {
    Q_OBJECT

  public:
    /// All are lent for as long as the desk lives; the store holds the program's settings.
    CDesk(CTheme& theme, CMainWindow& window, CKeptProfileStore& profile);
    ~CDesk() override;

    /// What the command line asks for, once the window is shown.
    void Begin(const DesktopCommand& command);
    /// Of a run without an operator: 0, or 1 when its log failed.
    int ExitStatus();
    /// Keeps the look, ends the log, the session and the program, and asks nothing: once the
    /// operator was asked, at the end of a run, and when the system wants the program gone.
    void End();
    /// Looked at in every turn, where it is set: whether to end so.
    std::function<bool()> EndAsked;

    CEngine& Engine() { return Under; }
    CSessionDesk& Session() { return Sessions; }
    CWindowDesk& Windows() { return Displays; }
    /// One turn of everything that is shown; the timer's.
    void Tick();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void DoIt(Do action);
    void DoWindow(Do action);
    bool MayClose();
    void ConnectRooms();
    void OpenGuide();
    void Remedy(const QString& remedy);
    bool IsOn(Do action) const;

    CTheme& Theme;
    CMainWindow& Window;
    CKeptProfileStore& Profile;
    CEngine Under;
    const DeskParts Parts;
    CMessages Messages;
    CLogDesk Log;
    CSourceDesk Sources;
    CReplayDesk Player;
    CSessionDesk Sessions;
    CWindowDesk Displays;
    QTimer Turns;
    unsigned Turn = 0;
    bool Arranged = false; ///< the docks have the room they are meant to have
    bool Closing = false;  ///< everything was asked and put away
};

} // namespace qor
