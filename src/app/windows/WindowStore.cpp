// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/WindowStore.h"

#include "base/Text.h"

#include <QGuiApplication>
#include <QScreen>
#include <QTabBar>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

namespace qor {

namespace {

/// In thousandths: the profile's width, the spectrum's height. Values have pixels.
constexpr int ProfilePart = 360, SpectrumPart = 550;
constexpr int ValuesWidth = 330;

std::string PresentScreens() {
    QStringList screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect place = screen->geometry();
        screens.append(QStringLiteral("%1x%2+%3+%4")
                           .arg(place.width())
                           .arg(place.height())
                           .arg(place.x())
                           .arg(place.y()));
    }
    return screens.join(QLatin1Char(' ')).toStdString();
}

std::vector<CViewWindow*> ViewWindows(const CDisplayArea& area) {
    std::vector<CViewWindow*> windows;
    for (CDisplayWindow* window : area.Windows())
        if (auto* view = qobject_cast<CViewWindow*>(window))
            windows.push_back(view);
    return windows;
}

CViewWindow* Make(CDisplayArea& area, const WindowMaker& maker, const WindowKind& kind,
                  const std::string& name) {
    auto* window = new CViewWindow(maker.theme, QString::fromStdString(name), kind, maker.doc);
    if (maker.made)
        maker.made(*window);
    QObject::connect(window, &CViewWindow::Closing, &area, [window, &maker = maker.doc] {
        window->View().SaveSettings(maker.Profile,
                                    SettingsPrefix(window->Kind(), window->Instrument()));
    });
    return window;
}

std::string FreeName(const CDisplayArea& area, const WindowKind& kind) {
    std::set<QString> taken;
    for (const auto* window : area.findChildren<CDisplayWindow*>())
        taken.insert(window->objectName());
    const QString name = QString::fromStdString(std::string(kind.name)) + QStringLiteral("-%1");
    int number = 1;
    while (taken.contains(name.arg(number)))
        ++number;
    return name.arg(number).toStdString();
}

/// A session keeps names in UTF-8; the instrument's own are bytes.
std::string NameInSession(const CQorViewDoc& doc, const std::string& kept) {
    for (const ResourceStatus& resource : doc.Snapshot().resources)
        for (const InstrumentFigures& instrument : resource.instruments)
            if (Utf8Of(instrument.name) == kept)
                return instrument.name;
    return kept;
}

/// Where it was when a screen shows the middle of its title bar, else in the middle of the first.
void PlaceFloat(CViewWindow& window, const KeptWindow& kept) {
    const KeptPlace place = PlaceOf(kept);
    window.setFloating(true);
    if (kept.width > 0 && kept.height > 0)
        window.resize(kept.width, kept.height);
    const QPoint corner(place.x, place.y);
    if (QGuiApplication::screenAt(corner + QPoint(window.width() / 2, size::TitleBar / 2))) {
        window.move(corner);
        return;
    }
    const QRect room = QGuiApplication::primaryScreen()->availableGeometry();
    window.resize(window.size().boundedTo(room.size()));
    window.move(room.center() - window.rect().center());
}

/// Whether the session has anything for a window of that kind.
bool HasSomethingFor(const WindowKind& kind, CQorViewDoc& doc) {
    const std::unique_ptr<CView> trial = kind.make(doc);
    trial->Refresh(doc);
    const ViewPages pages = trial->Pages();
    const PageHead& head = pages.grid ? pages.grid->head : pages.plots.front()->head;
    return head.state != PageState::Empty;
}

struct PlacedWindow {
    CDisplayWindow* window;
    KeptTile tile;
};

/// Docks the windows, which stand nowhere yet, as their places say.
void Tile(CDisplayArea& area, const std::vector<PlacedWindow>& placed) {
    if (placed.empty())
        return;
    std::vector<TilePlace> places;
    QList<QDockWidget*> docks;
    QList<int> widths, heights;
    for (const PlacedWindow& one : placed) {
        places.push_back(one.tile.place);
        docks.append(one.window);
        widths.append(std::max(area.width() * one.tile.place.width / TilePlace::Whole, 1));
        heights.append(std::max(area.height() * one.tile.place.height / TilePlace::Whole, 1));
    }
    const Tiling tiling = TilingOf(places);
    using Place = CDisplayArea::Place;
    area.PlaceDisplay(placed[tiling.first].window);
    for (const TileStep& step : tiling.steps)
        area.PlaceDisplay(placed[step.window].window, placed[step.beside].window,
                          step.side == TileSide::Right   ? Place::Right
                          : step.side == TileSide::Below ? Place::Below
                                                         : Place::Tab);
    area.resizeDocks(docks, widths, Qt::Horizontal);
    area.resizeDocks(docks, heights, Qt::Vertical);
    for (const PlacedWindow& one : placed)
        if (one.tile.front)
            one.window->raise();
}

/// The place of a docked window with what stands behind it and their tabs.
QRect RoomOf(const CDisplayArea& area, const QDockWidget& window) {
    QRect room = window.geometry();
    for (const QTabBar* tabs : area.findChildren<QTabBar*>(QString(), Qt::FindDirectChildrenOnly)) {
        const QRect above = tabs->geometry();
        if (tabs->isVisible() && above.left() >= room.left() - 1 && above.left() < room.right() &&
            std::abs(above.bottom() + 1 - room.top()) <= 2)
            room.setTop(above.top());
    }
    return room;
}

std::map<std::string, KeptTile> TilesOf(const CDisplayArea& area) {
    std::map<std::string, KeptTile> tiles;
    const auto part = [](int pixels, int whole) {
        return std::clamp(pixels * TilePlace::Whole / std::max(whole, 1), 0, TilePlace::Whole);
    };
    for (CViewWindow* window : ViewWindows(area)) {
        if (window->Floats())
            continue;
        const CDisplayWindow* front = window;
        for (QDockWidget* other : area.tabifiedDockWidgets(window))
            if (const auto* shown = qobject_cast<CDisplayWindow*>(other);
                shown && shown->IsSeen() && !window->IsSeen())
                front = shown;
        const QRect room = RoomOf(area, *front);
        const int x = part(room.x(), area.width()), y = part(room.y(), area.height());
        tiles[window->objectName().toStdString()] = {
            {x, y, std::min(part(room.width(), area.width()), TilePlace::Whole - x),
             std::min(part(room.height(), area.height()), TilePlace::Whole - y)},
            front == window};
    }
    return tiles;
}

} // namespace

CViewWindow* OpenWindow(CDisplayArea& area, const WindowMaker& maker, const WindowKind& kind,
                        const std::string& instrument, CDisplayWindow* beside,
                        CDisplayArea::Place place) {
    CViewWindow* window = Make(area, maker, kind, FreeName(area, kind));
    window->View().LoadSettings(maker.doc.Profile, SettingsPrefix(kind, instrument));
    window->ShowInstrument(instrument);
    area.AddDisplay(window, beside, place);
    return window;
}

JsonValue DescribeWindows(const CDisplayArea& area, const JsonValue& before) {
    KeptWindows kept;
    kept.layouts = ReadWindows(before).layouts;
    for (const CViewWindow* window : ViewWindows(area))
        kept.windows.push_back(window->Kept());
    if (!kept.windows.empty())
        kept.Keep({PresentScreens(), TilesOf(area)});
    return WriteWindows(kept);
}

std::size_t OpenWindows(CDisplayArea& area, const WindowMaker& maker, const JsonValue& windows) {
    const KeptWindows kept = ReadWindows(windows);
    const KeptLayout* layout = kept.LayoutFor(PresentScreens());
    std::vector<PlacedWindow> placed;
    std::vector<std::pair<CViewWindow*, const KeptWindow*>> others;
    for (const KeptWindow& one : kept.windows) {
        const bool taken = area.findChild<QDockWidget*>(QString::fromStdString(one.name));
        const WindowKind& kind = *FindWindowKind(one.kind);
        CViewWindow* window = Make(area, maker, kind, taken ? FreeName(area, kind) : one.name);
        window->setParent(&area); // its name is taken from now on
        KeptWindow here = one;
        here.instrument = NameInSession(maker.doc, one.instrument);
        window->Restore(here);
        const bool docked = layout && layout->tiles.contains(one.name) && !PlaceOf(one).Floats();
        if (docked)
            placed.push_back({window, layout->tiles.at(one.name)});
        else
            others.emplace_back(window, &one);
    }
    Tile(area, placed);
    for (const auto& [window, one] : others) {
        area.AddDisplay(window);
        if (PlaceOf(*one).Floats())
            PlaceFloat(*window, *one);
    }
    return kept.windows.size();
}

void OpenDefaultWindows(CDisplayArea& area, const WindowMaker& maker) {
    // The first kind of each line that the session has something for; the others behind it when
    // the line says so.
    struct Line {
        std::vector<const char*> kinds;
        bool all;
        std::vector<const WindowKind*> there = {};
    };
    Line left{{"profile", "gps", "weather"}, true}, above{{"spectral", "reality-check"}, true},
        values{{"package", "ancillary", "sensors"}, false}, series{{"time-series"}, true};
    for (Line* line : {&left, &above, &values, &series})
        for (const char* name : line->kinds)
            if (const WindowKind* kind = FindWindowKind(name);
                (line->all || line->there.empty()) && HasSomethingFor(*kind, maker.doc))
                line->there.push_back(kind);
    if (!series.there.empty())
        series.there.push_back(FindWindowKind("status"));
    // What is not there leaves its room to its neighbours.
    const bool right = !above.there.empty() || !values.there.empty() || !series.there.empty();
    const int whole = TilePlace::Whole;
    const int edge = left.there.empty() ? 0 : right ? ProfilePart : whole;
    const int level = above.there.empty()                            ? 0
                      : values.there.empty() && series.there.empty() ? whole
                                                                     : SpectrumPart;
    const int valuesWidth = maker.theme.Px(ValuesWidth) * whole / std::max(area.width(), 1);
    const int middle = values.there.empty() ? edge
                       : series.there.empty()
                           ? whole
                           : std::min(edge + valuesWidth, (edge + whole) / 2 + 1);
    std::vector<PlacedWindow> placed;
    const auto open = [&](const Line& line, const TilePlace& place) {
        for (const WindowKind* kind : line.there) {
            CViewWindow* window = Make(area, maker, *kind, FreeName(area, *kind));
            window->setParent(&area);
            window->View().LoadSettings(maker.doc.Profile, SettingsPrefix(*kind, {}));
            placed.push_back({window, {place, kind == line.there.front()}});
        }
    };
    open(left, {0, 0, edge, whole});
    open(above, {edge, 0, whole - edge, level});
    open(values, {edge, level, middle - edge, whole - level});
    open(series, {middle, level, whole - middle, whole - level});
    Tile(area, placed);
}

void CloseWindows(CDisplayArea& area) {
    for (auto* window : area.findChildren<CViewWindow*>()) {
        window->close();
        delete window; // not when events come round: its session may be gone by then
    }
}

} // namespace qor
