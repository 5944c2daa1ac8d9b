// SPDX-License-Identifier: GPL-3.0-or-later
//
// The main window: menus, tool row with the banner, the message strip, the docks around, and in
// the middle the start page or the display windows. It knows no session: who owns it fills the
// pages, listens to what is asked for, and says what is impossible. User-interface thread.
#pragma once

#include "app/dialogs/Boxes.h"
#include "app/frame/Actions.h"
#include "app/frame/Banner.h"
#include "app/frame/MessageStrip.h"
#include "app/frame/ReplayBar.h"
#include "app/frame/SessionTree.h"
#include "app/frame/StartPage.h"
#include "app/frame/ToolRow.h"
#include "app/windows/DisplayArea.h"
#include "session/ProfileStore.h"

#include <QMainWindow>

#include <functional>
#include <map>

class QMenuBar;
class QStackedWidget;

namespace qor {

class CMainWindow : public QMainWindow {
    Q_OBJECT

  public:
    explicit CMainWindow(CTheme& theme, QWidget* parent = nullptr);

    CActions& Actions() { return *Possible; }
    CBanner& Banner() { return *State; }
    CMessageStrip& Strip() { return *Messages; }
    CSessionTree& Tree() { return *Instruments; }
    CDisplayArea& Area() { return *Displays; }
    CStartPage& Start() { return *Beginning; }
    CReplayBar& Replay() { return *Player; }
    CBoxes& Boxes() { return *Questions; }

    /// A dock of the outer frame that an action of the Docks menu shows and hides.
    void AddDock(Do toggle, CDisplayWindow* dock, Qt::DockWidgetArea side);
    /// The same around any widget.
    CDisplayWindow* AddDock(Do toggle, const QString& name, const QString& title, QWidget* content,
                            Qt::DockWidgetArea side);

    /// The start page, or the display windows.
    void ShowStart(bool start);
    /// The docks around in the room that they are meant to have.
    void ArrangeDocks();
    void ShowReplay(bool replay);
    void ShowLog(const LogPage& page);
    void SetWatch(bool watch);
    bool IsWatch() const { return Watch; }

    /// Places of the frame, docks and windows, kept apart for each set of screens.
    void SaveLayout(CProfileStore& store) const;
    bool RestoreLayout(const CProfileStore& store);
    /// Palette, text size and targets.
    void SaveLook(CProfileStore& store) const;
    void LoadLook(const CProfileStore& store);

    /// Asked before the window closes; false keeps it open. Empty: it closes.
    std::function<bool()> MayClose;

  signals:
    /// What the window cannot do by itself.
    void Asked(qor::Do action);
    void FilesDropped(QStringList paths);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    QWidget* MakeTop();
    QWidget* MakeMiddle();
    void DoIt(Do action);
    void ShowLook();
    void NextArea();
    void AddWindowKeys();
    void FitToWidth();

    CTheme& Theme;
    CActions* Possible;
    QMenuBar* Menus = nullptr;
    CToolRow* Tools = nullptr;
    CBanner* State = nullptr;
    CMessageStrip* Messages = nullptr;
    QStackedWidget* Middle = nullptr;
    CStartPage* Beginning = nullptr;
    CDisplayArea* Displays = nullptr;
    CReplayBar* Player = nullptr;
    CSessionTree* Instruments = nullptr;
    CBoxes* Questions;
    std::map<Do, CDisplayWindow*> Docks;
    std::vector<CDisplayWindow*> HiddenByWatch;
    bool Watch = false, WasMaximized = false;
    bool Rearranging = false;            ///< docks come and go by the program's hand
    std::vector<CDisplayWindow*> Folded; ///< for want of room, not by the operator
};

} // namespace qor
