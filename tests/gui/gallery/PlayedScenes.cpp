// SPDX-License-Identifier: GPL-3.0-or-later
//
// Scenes of windows over their views, in a session that is played.
#include "app/plots/PlotWidget.h"
#include "app/windows/WindowStore.h"
#include "gui/PlayedSession.h"
#include "gui/gallery/Scenes.h"

#include <QCoreApplication>
#include <QPointer>

namespace qor {

namespace {

constexpr QSize AreaOfSmallScreen(1074, 549);

/// The session behind the windows, which go first.
struct Stage {
    CPlayedSession session;
    QPointer<QWidget> widget;

    ~Stage() { delete widget.data(); }
};
std::unique_ptr<Stage> Played;

CPlayedSession& Begin() {
    Played.reset();
    Played = std::make_unique<Stage>();
    Played->session.AddCast();
    Played->session.AddShip();
    return Played->session;
}

QWidget* Show(QWidget* widget) {
    Played->widget = widget;
    return widget;
}

void RefreshAll(QWidget* area) {
    for (auto* window : area->findChildren<CViewWindow*>())
        window->Tick(0);
}

QWidget* MakeDefault(CTheme& theme, QSize screen) {
    CPlayedSession& session = Begin();
    auto* area = new CDisplayArea(theme);
    area->resize(screen == QSize(1366, 768) ? AreaOfSmallScreen : screen);
    area->show();
    OpenDefaultWindows(*area, {theme, session.Doc});
    return Show(area);
}

QWidget* PlayCast(QWidget* area) {
    RefreshAll(area);
    for (int i = 0; i < 60; ++i) {
        Played->session.Play(2.0);
        RefreshAll(area);
    }
    // Limits shrink in the time of the wall, which did not pass.
    for (auto* plot : area->findChildren<CPlotWidget*>())
        plot->ResetView();
    return area;
}

QWidget* PlayAndBeSilent(QWidget* area) {
    PlayCast(area);
    Played->session.Silence(38.0);
    RefreshAll(area);
    return area;
}

void Raise(QWidget* area, std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (auto* window = area->findChild<CViewWindow*>(QString::fromLatin1(name)))
            window->raise();
    QCoreApplication::processEvents();
}

QWidget* ShowTabs(QWidget* area) {
    PlayCast(area);
    Raise(area, {"gps-1", "status-1", "reality-check-1"});
    RefreshAll(area);
    return area;
}

QWidget* ShowWeather(QWidget* area) {
    PlayCast(area);
    Raise(area, {"weather-1"});
    RefreshAll(area);
    return area;
}

/// Every kind in a room of its own.
QWidget* MakeAll(CTheme& theme, QSize) {
    CPlayedSession& session = Begin();
    auto* area = new CDisplayArea(theme);
    area->resize(1900, 1500);
    area->show();
    for (const WindowKind& kind : WindowKinds())
        OpenWindow(*area, {theme, session.Doc}, kind, {});
    area->TileAll();
    return Show(area);
}

QWidget* SetUpAll(QWidget* area) {
    RefreshAll(area);
    for (auto* window : area->findChildren<CViewWindow*>())
        if (window->Kind().name == "reality-check")
            for (const char* display : {"DUT", "DUT/REF Normalized"})
                (void)window->View().Select(Played->session.Doc, display);
    return PlayCast(area);
}

QWidget* NoSession(CTheme& theme, QSize) {
    Played.reset();
    Played = std::make_unique<Stage>();
    auto* area = new CDisplayArea(theme);
    area->resize(1900, 1100);
    area->show();
    for (const WindowKind& kind : WindowKinds())
        OpenWindow(*area, {theme, Played->session.Doc}, kind, {});
    area->TileAll();
    return Show(area);
}

QWidget* JustRefresh(QWidget* area) {
    RefreshAll(area);
    return area;
}

} // namespace

const std::vector<Scene> PlayedScenes{
    {"played", MakeDefault, PlayCast},
    {"played-waiting", MakeDefault, JustRefresh},
    {"played-stale", MakeDefault, PlayAndBeSilent},
    {"played-tabs", MakeDefault, ShowTabs},
    {"played-weather", MakeDefault, ShowWeather},
    {"played-all", MakeAll, SetUpAll},
    {"played-all-stale", MakeAll, PlayAndBeSilent},
    {"played-none", NoSession, JustRefresh},
};

void ClearPlayed() {
    Played.reset();
}

} // namespace qor
