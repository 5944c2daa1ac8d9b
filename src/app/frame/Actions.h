// SPDX-License-Identifier: GPL-3.0-or-later
//
// Everything that can be asked of the program as one table: where it stands in the menus, its
// text, icon, keys and tip. Menu bar, tool row and the list of keys are made from it.
// User-interface thread.
#pragma once

#include "app/look/Theme.h"

#include <QAction>
#include <QObject>

#include <array>
#include <cstdint>
#include <map>
#include <span>

class QMenu;
class QMenuBar;
class QWidget;

namespace qor {

// clang-format off
enum class Do : std::uint8_t {
    NewSession, OpenSession, SaveSession, SaveSessionAs, ReplayLog, Practice, CloseSession, Quit,
    DamagedFrames, LostPort, SlowDisk,
    AddPort, AddInstrument, AddPackage, FindInstruments, ConnectAll, StartAll, Roles, Properties,
    StartLog, StopLog, LogOptions, Naming, Station, OpenLogFolder, LogStatus,
    Tare, ClearTare, CastBegins, NextCast, Comment,
    LightLook, DarkLook, NightLook, LargerText, SmallerText, NormalText, LargeTargets, WatchMode,
    AlarmSound, Silence, TreeDock, LogDock, CommentDock, MonitorDock, NextArea,
    NewSpectrum, NewProfile, NewSeries, NewGps, NewWeather, NewAncillary, NewRealityCheck, NewStatus,
    NextWindow, CloseWindow, ToOtherScreen, Tile, KeepLayout, DefaultLayout,
    ReplayPlay, ReplayBack, ReplayForward,
    Guide, Keys, Settings, About
};
// clang-format on

enum class InMenu : std::uint8_t {
    Session,
    Instruments,
    Log,
    Cast,
    View,
    Palette,
    TextSize,
    Docks,
    Window,
    NewWindow,
    Layouts,
    Replay,
    Practice,
    Help
};

struct ActionRow {
    Do action;
    InMenu menu;
    const char* text; ///< in the translation context "qor"
    const char* icon;
    const char* keys;
    const char* tip;
    bool checkable = false;
    bool lineAbove = false;
};

std::span<const ActionRow> ActionTable();

/// The actions of one main window.
class CActions : public QObject {
    Q_OBJECT

  public:
    CActions(const CTheme& theme, QWidget* window);

    QAction* operator[](Do action) const { return Made.at(action); }
    /// Grey with its reason, which the tip says; an empty reason makes it possible again.
    void SetWhyNot(Do action, const QString& reason);

    /// Without a session, what needs one is grey.
    void SetSession(bool open);

    void FillMenuBar(QMenuBar& bar);
    /// The menu of recent sessions, which its owner fills.
    QMenu* RecentMenu() const { return Recent; }

  signals:
    void Asked(qor::Do action);

  private:
    const CTheme& Theme;
    std::map<Do, QAction*> Made;
    std::map<InMenu, QMenu*> Menus;
    QMenu* Recent = nullptr;
};

/// The list of all keys, as a window of its own.
void OpenKeys(const CTheme& theme, QWidget* parent);

} // namespace qor
