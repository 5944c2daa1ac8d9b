// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/DisplayArea.h"

#include "app/look/Icons.h"
#include "views/WindowTiling.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QTabBar>
#include <QTimer>

#include <algorithm>

namespace qor {

CDisplayArea::CDisplayArea(const CTheme& theme, QWidget* parent)
    : QMainWindow(parent), Theme(theme), Nothing(new CNotice(theme, this)) {
    setWindowFlags(Qt::Widget);
    setDockOptions(AllowNestedDocks | AllowTabbedDocks | GroupedDragging);
    setTabPosition(Qt::AllDockWidgetAreas, QTabWidget::North);
    setContextMenuPolicy(Qt::NoContextMenu);
    connect(Nothing, &CNotice::RemedyPressed, this, &CDisplayArea::NewWindowAsked);
    ShowWhetherEmpty();
}

void CDisplayArea::Take(CDisplayWindow* window) {
    window->setParent(this);
    window->installEventFilter(this);
    connect(window, &CDisplayWindow::SignChanged, this, &CDisplayArea::RefreshTabs,
            Qt::UniqueConnection);
}

void CDisplayArea::AddDisplay(CDisplayWindow* window, CDisplayWindow* beside, Place place) {
    Take(window);
    if (!restoreDockWidget(window))
        return PlaceDisplay(window, beside, place);
    window->show();
    ShowWhetherEmpty();
}

void CDisplayArea::PlaceDisplay(CDisplayWindow* window, CDisplayWindow* beside, Place place) {
    Take(window);
    addDockWidget(Qt::LeftDockWidgetArea, window);
    if (beside && place == Place::Tab)
        tabifyDockWidget(beside, window);
    else if (beside)
        splitDockWidget(beside, window, place == Place::Below ? Qt::Vertical : Qt::Horizontal);
    else if (Windows().size() > 1)
        splitDockWidget(Windows().front(), window, Qt::Horizontal);
    window->show();
    ShowWhetherEmpty();
}

std::vector<CDisplayWindow*> CDisplayArea::Windows() const {
    std::vector<CDisplayWindow*> open;
    for (auto* window : findChildren<CDisplayWindow*>())
        if (!window->isHidden())
            open.push_back(window);
    return open;
}

CDisplayWindow* CDisplayArea::Current() const {
    for (QWidget* widget = QApplication::focusWidget(); widget; widget = widget->parentWidget())
        if (auto* window = qobject_cast<CDisplayWindow*>(widget))
            return window;
    return nullptr;
}

void CDisplayArea::Show(CDisplayWindow* window) {
    window->show();
    window->raise();
    if (window->Floats())
        window->activateWindow();
    window->setFocus(Qt::ShortcutFocusReason);
}

void CDisplayArea::ShowNext() {
    const std::vector<CDisplayWindow*> open = Windows();
    if (open.empty())
        return;
    const auto current = std::find(open.begin(), open.end(), Current());
    const bool last = current == open.end() || current + 1 == open.end();
    Show(last ? open.front() : *(current + 1));
}

void CDisplayArea::TileAll() {
    const std::vector<CDisplayWindow*> open = Windows();
    const std::size_t count = open.size();
    const std::size_t columns = TileColumns(count);
    QList<QDockWidget*> top;
    for (std::size_t i = 0; i < count; ++i) {
        open[i]->setFloating(false);
        if (i == 0)
            addDockWidget(Qt::LeftDockWidgetArea, open[i]);
        else if (i < columns)
            splitDockWidget(open[i - 1], open[i], Qt::Horizontal);
        else
            splitDockWidget(open[i - columns], open[i], Qt::Vertical);
        if (i < columns)
            top.append(open[i]);
        open[i]->show();
    }
    if (!top.isEmpty())
        resizeDocks(top, QList<int>(top.size(), width() / static_cast<int>(top.size())),
                    Qt::Horizontal);
}

void CDisplayArea::MoveToOtherScreen() {
    CDisplayWindow* window = Current();
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (!window || screens.size() < 2)
        return;
    const qsizetype next = (screens.indexOf(window->screen()) + 1) % screens.size();
    window->setFloating(true);
    const QRect room = screens[next]->availableGeometry();
    window->move(room.center() - window->rect().center());
}

void CDisplayArea::RefreshTabs() {
    for (QTabBar* tabs : findChildren<QTabBar*>()) {
        for (int i = 0; i < tabs->count(); ++i)
            for (const CDisplayWindow* window : Windows())
                if (window->windowTitle() == tabs->tabText(i))
                    tabs->setTabIcon(i, SignIcon(Theme, window->ShownSign()));
    }
}

void CDisplayArea::ShowWhetherEmpty() {
    PageHead head;
    if (Windows().empty()) {
        head.state = PageState::Empty;
        head.sentence = tr("No window is open.").toStdString();
        head.remedy = tr("New window").toStdString();
    }
    Nothing->ShowHead(head);
}

bool CDisplayArea::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::Close)
        // The dock tells before its place is made or taken.
        QTimer::singleShot(0, this, [this] {
            ShowWhetherEmpty();
            RefreshTabs();
        });
    return QMainWindow::eventFilter(watched, event);
}

} // namespace qor
