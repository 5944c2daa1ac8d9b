// SPDX-License-Identifier: GPL-3.0-or-later
//
// The desk's part for display windows: opens them, gives each its turn, keeps them in the session;
// and the docks around them. A window that cannot be seen draws nothing; only its ranges are held.
#pragma once

#include "app/desk/DeskParts.h"
#include "app/windows/WindowStore.h"
#include "session/JsonValue.h"

#include <QTimer>

#include <set>
#include <string>

namespace qor {

class CWindowDesk : public QObject {
    Q_OBJECT

  public:
    CWindowDesk(const DeskParts& parts, QObject* parent);
    ~CWindowDesk() override;

    /// The windows that the session's file names, else those that fit what it has.
    void OpenAll();
    /// All go, before their session does.
    void CloseAll();
    void OpenDefault();
    JsonValue Describe() const;
    /// The instruments and packages that a window has in its alarm range, as the tree names them.
    std::set<std::string> Alarmed() const;

    /// A window of a kind, for an instrument or (empty) the first that has what it shows.
    CViewWindow* OpenWindow(const char* kind, const std::string& instrument = {});
    std::vector<CViewWindow*> Windows() const;

    /// The one reality check of the session: brought forward, or opened where its instruments are.
    void OpenRealityCheck();
    /// A session that had no instrument gets its first windows with the first one.
    void OpenFirst();

    /// Once a tick.
    void Tick();
    void SetAlarmSound(bool on);

  signals:
    void AlarmSounds();
    void SilenceAsked();
    /// The button of a window that has nothing to show.
    void RemedyAsked(QString remedy);

  private:
    WindowMaker Maker();
    void Watch(CViewWindow& window);
    void AddDocks();
    void EditRanges(CViewWindow& window, int row);
    void LinkRanges();

    const DeskParts Parts;
    std::vector<CViewWindow*> Docked; ///< around the display windows; they stay
    unsigned Ticks = 0;
    unsigned LastNumber = 0;
    bool AlarmSound = true;
    bool AwaitsFirst = false; ///< the session has no instrument yet
};

} // namespace qor
