// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/MainWindow.h"

#include "app/ShownText.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCryptographicHash>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QMimeData>
#include <QScopedValueRollback>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int NarrowWindow = 1200, VeryNarrowWindow = 1000, SideWidth = 286;
constexpr int TextStep = 10;
constexpr const char* LookSection = "Look";

/// What Qt makes of a layout, with a sum before it: its reader trusts what it is given.
std::string Sealed(const QByteArray& layout) {
    const QByteArray sum = QCryptographicHash::hash(layout, QCryptographicHash::Sha256);
    return (sum + layout).toBase64().toStdString();
}

/// Empty when it is not what was written.
QByteArray Unsealed(const std::string& text) {
    const QByteArray bytes = QByteArray::fromBase64(QByteArray::fromStdString(text));
    const int length = QCryptographicHash::hashLength(QCryptographicHash::Sha256);
    const QByteArray layout = bytes.mid(length);
    const bool whole =
        bytes.left(length) == QCryptographicHash::hash(layout, QCryptographicHash::Sha256);
    return whole ? layout : QByteArray();
}

/// The screens that are there, so that each set of them has its own layout.
std::string LayoutSection() {
    QStringList screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect place = screen->geometry();
        screens.append(QStringLiteral("%1,%2 %3x%4")
                           .arg(place.x())
                           .arg(place.y())
                           .arg(place.width())
                           .arg(place.height()));
    }
    screens.sort();
    return "Layout\\" + screens.join(QLatin1Char('\\')).toStdString();
}

} // namespace

CMainWindow::CMainWindow(CTheme& theme, QWidget* parent)
    : QMainWindow(parent), Theme(theme), Possible(new CActions(theme, this)),
      Questions(new CBoxes(theme, this)) {
    setObjectName(QStringLiteral("main"));
    setWindowTitle(QStringLiteral("QorView"));
    setDockOptions(AllowNestedDocks | AllowTabbedDocks);
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    setContextMenuPolicy(Qt::NoContextMenu);
    setAcceptDrops(true);
    setMenuWidget(MakeTop());
    setCentralWidget(MakeMiddle());

    Instruments = new CSessionTree(Theme);
    AddDock(Do::TreeDock, QStringLiteral("tree"), tr("Session"), Instruments,
            Qt::LeftDockWidgetArea);
    connect(Possible, &CActions::Asked, this, &CMainWindow::DoIt);
    connect(&Theme, &CTheme::Changed, this, &CMainWindow::ShowLook);
    connect(State, &CBanner::clicked, this, [this] { emit Asked(Do::LogStatus); });
    connect(Instruments, &CSessionTree::AddAsked, (*Possible)[Do::AddPort], &QAction::trigger);
    AddWindowKeys();
    ShowLook();
    ShowStart(true);
    ShowReplay(false);
}

QWidget* CMainWindow::MakeTop() {
    auto* top = new QWidget;
    auto* whole = new QVBoxLayout(top);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    Menus = new QMenuBar;
    Menus->setNativeMenuBar(false);
    Possible->FillMenuBar(*Menus);
    whole->addWidget(Menus);
    Tools = new CToolRow(Theme, *Possible);
    State = new CBanner(Theme);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(size::Between, size::Between, size::Between, size::Between);
    row->setSpacing(size::Between);
    row->addWidget(Tools);
    row->addWidget(State, 1);
    whole->addLayout(row);
    Messages = new CMessageStrip(Theme);
    whole->addWidget(Messages);
    return top;
}

QWidget* CMainWindow::MakeMiddle() {
    auto* middle = new QWidget;
    auto* whole = new QVBoxLayout(middle);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    Middle = new QStackedWidget;
    Beginning = new CStartPage(Theme, *Possible);
    Displays = new CDisplayArea(Theme);
    Middle->addWidget(Beginning);
    Middle->addWidget(Displays);
    whole->addWidget(Middle, 1);
    Player =
        new CReplayBar(Theme, {QStringLiteral("x1"), QStringLiteral("x2"), QStringLiteral("x4"),
                               QStringLiteral("x10"), tr("full", "replay at full speed")});
    whole->addWidget(Player);
    return middle;
}

CDisplayWindow* CMainWindow::AddDock(Do toggle, const QString& name, const QString& title,
                                     QWidget* content, Qt::DockWidgetArea side) {
    auto* dock = new CDisplayWindow(Theme, name, {false, false, false}, this);
    dock->ShowHead(title, {});
    dock->SetContent(content);
    AddDock(toggle, dock, side);
    return dock;
}

void CMainWindow::AddDock(Do toggle, CDisplayWindow* dock, Qt::DockWidgetArea side) {
    dock->setParent(this);
    if (!restoreDockWidget(dock))
        addDockWidget(side, dock);
    Docks[toggle] = dock;
    QAction* action = (*Possible)[toggle];
    action->setChecked(toggle != Do::MonitorDock);
    connect(action, &QAction::toggled, dock, &QWidget::setVisible);
    connect(dock, &CDisplayWindow::SeenChanged, action, [this, action, dock] {
        if (!Rearranging) // else the operator's choice stands
            action->setChecked(!dock->isHidden());
    });
    dock->setVisible(false);
}

void CMainWindow::ShowStart(bool start) {
    if (start)
        SetWatch(false); // there is nothing to watch, and no key leads out of it
    Middle->setCurrentWidget(start ? static_cast<QWidget*>(Beginning) : Displays);
    Possible->SetSession(!start);
    // Never on a button of the tool row, which a hand on the keys would press.
    (start ? static_cast<QWidget*>(Beginning) : Instruments)->setFocus();
    const QScopedValueRollback<bool> keep(Rearranging, true);
    for (const auto& [action, dock] : Docks)
        dock->setVisible(!start && (*Possible)[action]->isChecked());
}

/// The tree has the most of its side, the log below the rest.
void CMainWindow::ArrangeDocks() {
    CDisplayWindow* tree = Docks[Do::TreeDock];
    CDisplayWindow* log = Docks[Do::LogDock];
    resizeDocks({tree}, {Theme.Px(SideWidth)}, Qt::Horizontal);
    resizeDocks({tree, log}, {height() * 2 / 3, height() / 3}, Qt::Vertical);
}

void CMainWindow::ShowReplay(bool replay) {
    Player->setVisible(replay);
    for (const Do action : {Do::ReplayPlay, Do::ReplayBack, Do::ReplayForward})
        Possible->SetWhyNot(action, replay ? QString() : tr("No replay is open."));
}

void CMainWindow::ShowLog(const LogPage& page) {
    State->ShowPage(page);
    Tools->SetLogging(page.state == LogState::Open || page.state == LogState::Between);
}

void CMainWindow::SetWatch(bool watch) {
    if (watch == Watch)
        return;
    Watch = watch;
    const QScopedValueRollback<bool> keep(Rearranging, true);
    (*Possible)[Do::WatchMode]->setChecked(watch);
    Menus->setVisible(!watch);
    Tools->setVisible(!watch);
    State->SetWatch(watch);
    if (watch) {
        WasMaximized = isMaximized();
        HiddenByWatch.clear();
        for (const auto& [action, dock] : Docks)
            if (!dock->isHidden()) {
                HiddenByWatch.push_back(dock);
                dock->hide();
            }
        // Else the focus would go to whatever comes next, which may be a button.
        if (const auto windows = Displays->Windows(); !windows.empty())
            windows.front()->setFocus();
        showFullScreen();
    } else {
        for (CDisplayWindow* dock : HiddenByWatch)
            dock->show();
        WasMaximized ? showMaximized() : showNormal();
    }
}

void CMainWindow::DoIt(Do action) {
    switch (action) {
    case Do::Quit:
        close();
        return;
    case Do::LightLook:
        Theme.SetLook(Look::Light);
        ShowLook();
        return;
    case Do::DarkLook:
        Theme.SetLook(Look::Dark);
        ShowLook();
        return;
    case Do::NightLook:
        Theme.ToggleNight();
        return;
    case Do::LargerText:
        Theme.SetTextPercent(Theme.TextPercent() + TextStep);
        return;
    case Do::SmallerText:
        Theme.SetTextPercent(Theme.TextPercent() - TextStep);
        return;
    case Do::NormalText:
        Theme.SetTextPercent(100);
        return;
    case Do::LargeTargets:
        Theme.SetLargeTargets(!Theme.LargeTargets());
        return;
    case Do::WatchMode:
        SetWatch(!Watch);
        return;
    case Do::NextArea:
        NextArea();
        return;
    case Do::NextWindow:
        Displays->ShowNext();
        return;
    case Do::CloseWindow:
        if (CDisplayWindow* window = Displays->Current())
            window->close();
        return;
    case Do::ToOtherScreen:
        Displays->MoveToOtherScreen();
        return;
    case Do::Tile:
        Displays->TileAll();
        return;
    case Do::Keys:
        OpenKeys(Theme, this);
        return;
    case Do::TreeDock:
    case Do::LogDock:
    case Do::CommentDock:
    case Do::MonitorDock:
        return; // the action's own check mark moves the dock
    case Do::NewSession:
    case Do::OpenSession:
    case Do::SaveSession:
    case Do::SaveSessionAs:
    case Do::ReplayLog:
    case Do::Practice:
    case Do::DamagedFrames:
    case Do::LostPort:
    case Do::SlowDisk:
    case Do::CloseSession:
    case Do::AddPort:
    case Do::AddInstrument:
    case Do::AddPackage:
    case Do::FindInstruments:
    case Do::ConnectAll:
    case Do::StartAll:
    case Do::Roles:
    case Do::Properties:
    case Do::StartLog:
    case Do::StopLog:
    case Do::LogOptions:
    case Do::Naming:
    case Do::Station:
    case Do::OpenLogFolder:
    case Do::LogStatus:
    case Do::Tare:
    case Do::ClearTare:
    case Do::CastBegins:
    case Do::NextCast:
    case Do::Comment:
    case Do::AlarmSound:
    case Do::Silence:
    case Do::NewSpectrum:
    case Do::NewProfile:
    case Do::NewSeries:
    case Do::NewGps:
    case Do::NewWeather:
    case Do::NewAncillary:
    case Do::NewRealityCheck:
    case Do::NewStatus:
    case Do::KeepLayout:
    case Do::DefaultLayout:
    case Do::ReplayPlay:
    case Do::ReplayBack:
    case Do::ReplayForward:
    case Do::Guide:
    case Do::Settings:
    case Do::About:
        emit Asked(action); // what concerns the session is its owner's
    }
}

/// Check marks that follow the theme.
void CMainWindow::ShowLook() {
    (*Possible)[Do::LightLook]->setChecked(Theme.CurrentLook() == Look::Light);
    (*Possible)[Do::DarkLook]->setChecked(Theme.CurrentLook() == Look::Dark);
    (*Possible)[Do::NightLook]->setChecked(Theme.IsNight());
    (*Possible)[Do::LargeTargets]->setChecked(Theme.LargeTargets());
    FitToWidth();
}

/// Tool row, messages, tree and docks, windows, and round again.
void CMainWindow::NextArea() {
    std::vector<QWidget*> areas{Tools, State, Messages};
    for (const auto& [action, dock] : Docks)
        areas.push_back(dock);
    areas.push_back(Middle);
    std::erase_if(areas, [](const QWidget* area) { return !area->isVisible(); });
    const QWidget* focus = QApplication::focusWidget();
    const auto current = std::find_if(areas.begin(), areas.end(), [focus](const QWidget* area) {
        return focus && (area == focus || area->isAncestorOf(focus));
    });
    const auto begin = current == areas.end() ? areas.begin() : current + 1;
    for (std::size_t i = 0; i < areas.size(); ++i) {
        QWidget* area = areas[(static_cast<std::size_t>(begin - areas.begin()) + i) % areas.size()];
        const bool takes = area->focusPolicy() & Qt::TabFocus;
        QWidget* target = area->focusProxy() ? area->focusProxy() : takes ? area : nullptr;
        for (QWidget* child : area->findChildren<QWidget*>())
            if (!target && child->isVisible() && child->isEnabled() &&
                (child->focusPolicy() & Qt::TabFocus))
                target = child;
        if (!target)
            continue;
        target->setFocus(Qt::TabFocusReason);
        return;
    }
}

void CMainWindow::AddWindowKeys() {
    for (int i = 0; i < 9; ++i) {
        auto* key =
            new QShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + i)), this);
        key->setContext(Qt::ApplicationShortcut);
        connect(key, &QShortcut::activated, this, [this, i] {
            const auto windows = Displays->Windows();
            if (static_cast<std::size_t>(i) < windows.size())
                Displays->Show(windows[static_cast<std::size_t>(i)]);
        });
    }
}

/// In a narrow window the docks on the left give their room to the windows.
void CMainWindow::FitToWidth() {
    Tools->SetNarrow(width() < Theme.Px(NarrowWindow));
    if (Watch || Middle->currentWidget() == Beginning)
        return;
    const QScopedValueRollback<bool> keep(Rearranging, true);
    if (width() >= Theme.Px(VeryNarrowWindow)) {
        for (CDisplayWindow* dock : std::exchange(Folded, {}))
            dock->show();
        return;
    }
    for (const auto& [action, dock] : Docks)
        if (!dock->isHidden() && !dock->isFloating() &&
            dockWidgetArea(dock) == Qt::LeftDockWidgetArea) {
            Folded.push_back(dock);
            dock->hide();
        }
}

void CMainWindow::SaveLayout(CProfileStore& store) const {
    const std::string section = LayoutSection();
    store.WriteText(section, "Frame", Sealed(saveGeometry()));
    store.WriteText(section, "Docks", Sealed(saveState()));
    // Which the operator wants: start page and watch mode hide them all.
    for (const auto& [action, dock] : Docks)
        store.WriteInteger(section, dock->objectName().toStdString(),
                           (*Possible)[action]->isChecked());
}

bool CMainWindow::RestoreLayout(const CProfileStore& store) {
    const std::string section = LayoutSection();
    const bool frame = restoreGeometry(Unsealed(store.ReadText(section, "Frame")));
    const bool docks = restoreState(Unsealed(store.ReadText(section, "Docks")));
    for (const auto& [toggle, dock] : Docks) {
        QAction* action = (*Possible)[toggle];
        action->setChecked(
            store.ReadInteger(section, dock->objectName().toStdString(), action->isChecked()) != 0);
    }
    ShowStart(Middle->currentWidget() == Beginning);
    return docks && frame;
}

void CMainWindow::SaveLook(CProfileStore& store) const {
    store.WriteInteger(LookSection, "Palette", static_cast<int>(Theme.CurrentLook()));
    store.WriteInteger(LookSection, "TextSize", Theme.TextPercent());
    store.WriteInteger(LookSection, "LargeTargets", Theme.LargeTargets() ? 1 : 0);
}

void CMainWindow::LoadLook(const CProfileStore& store) {
    const int look = store.ReadInteger(LookSection, "Palette", 0);
    if (look >= 0 && static_cast<std::size_t>(look) < LookCount)
        Theme.SetLook(static_cast<Look>(look));
    Theme.SetTextPercent(store.ReadInteger(LookSection, "TextSize", 100));
    Theme.SetLargeTargets(store.ReadInteger(LookSection, "LargeTargets", 0) == 1);
}

void CMainWindow::closeEvent(QCloseEvent* event) {
    if (MayClose && !MayClose())
        event->ignore();
    else
        QMainWindow::closeEvent(event);
}

void CMainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    FitToWidth();
}

void CMainWindow::dragEnterEvent(QDragEnterEvent* event) {
    const auto urls = event->mimeData()->urls();
    if (std::any_of(urls.begin(), urls.end(), [](const QUrl& url) { return url.isLocalFile(); }))
        event->acceptProposedAction();
}

void CMainWindow::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    if (!paths.isEmpty())
        emit FilesDropped(paths);
}

} // namespace qor
