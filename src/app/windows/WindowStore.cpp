// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/WindowStore.h"

#include "base/Text.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <set>

namespace qor {

namespace {

constexpr int LayoutVersion = 1;
/// The profile has 36 % of the width, the spectrum 55 % of the height, values 330 pixels.
constexpr double ProfilePart = 0.36, SpectrumPart = 0.55;
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

/// A section of the profile store for windows of that kind and instrument.
std::string PrefixOf(const WindowKind& kind, const std::string& instrument) {
    return "View-" + std::string(kind.name) + (instrument.empty() ? "" : "-" + instrument);
}

CViewWindow* Make(CDisplayArea& area, const WindowMaker& maker, const WindowKind& kind,
                  const std::string& name) {
    auto* window = new CViewWindow(maker.theme, QString::fromStdString(name), kind, maker.doc);
    if (maker.made)
        maker.made(*window);
    QObject::connect(window, &CViewWindow::Closing, &area, [window, &maker = maker.doc] {
        window->View().SaveSettings(maker.Profile, PrefixOf(window->Kind(), window->Instrument()));
    });
    return window;
}

std::string FreeName(const CDisplayArea& area, const WindowKind& kind) {
    std::set<QString> taken;
    for (const auto* window : area.findChildren<CDisplayWindow*>())
        taken.insert(window->objectName());
    for (int number = 1;; ++number) {
        std::string name = std::string(kind.name) + "-" + std::to_string(number);
        if (!taken.contains(QString::fromStdString(name)))
            return name;
    }
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

/// The windows that a session has something for; null for one that has not.
class CDefaultWindows {
  public:
    CDefaultWindows(CDisplayArea& area, const WindowMaker& maker) : Area(area), Maker(maker) {}

    CViewWindow* Open(const char* name, CDisplayWindow* beside, CDisplayArea::Place place) {
        const WindowKind& kind = *FindWindowKind(name);
        const std::unique_ptr<CView> trial = kind.make(Maker.doc);
        trial->Refresh(Maker.doc);
        const ViewPages pages = trial->Pages();
        const PageHead& head = pages.grid ? pages.grid->head : pages.plots.front()->head;
        if (head.state == PageState::Empty)
            return nullptr;
        return OpenWindow(Area, Maker, kind, {}, beside, place);
    }
    /// The first of these that there is; the others wait for OpenTabs.
    CViewWindow* OpenFirst(std::initializer_list<const char*> names, CDisplayWindow* beside,
                           CDisplayArea::Place place) {
        CViewWindow* first = nullptr;
        for (const char* name : names) {
            if (first)
                Behind.emplace_back(first, name);
            else
                first = Open(name, beside, place);
        }
        return first;
    }
    /// Beside a tab nothing can be put but another tab: they come last.
    void OpenTabs() {
        for (const auto& [front, name] : Behind)
            Open(name, front, CDisplayArea::Place::Tab);
        for (const auto& [front, name] : Behind)
            front->raise();
    }

  private:
    CDisplayArea& Area;
    const WindowMaker& Maker;
    std::vector<std::pair<CViewWindow*, const char*>> Behind;
};

} // namespace

CViewWindow* OpenWindow(CDisplayArea& area, const WindowMaker& maker, const WindowKind& kind,
                        const std::string& instrument, CDisplayWindow* beside,
                        CDisplayArea::Place place) {
    CViewWindow* window = Make(area, maker, kind, FreeName(area, kind));
    window->View().LoadSettings(maker.doc.Profile, PrefixOf(kind, instrument));
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
        kept.Keep({PresentScreens(), area.saveState(LayoutVersion).toBase64().toStdString()});
    return WriteWindows(kept);
}

std::size_t OpenWindows(CDisplayArea& area, const WindowMaker& maker, const JsonValue& windows) {
    const KeptWindows kept = ReadWindows(windows);
    std::vector<CViewWindow*> opened;
    for (const KeptWindow& one : kept.windows) {
        const bool taken = area.findChild<QDockWidget*>(QString::fromStdString(one.name));
        const WindowKind& kind = *FindWindowKind(one.kind);
        CViewWindow* window = Make(area, maker, kind, taken ? FreeName(area, kind) : one.name);
        KeptWindow here = one;
        here.instrument = NameInSession(maker.doc, one.instrument);
        window->Restore(here);
        area.AddDisplay(window);
        opened.push_back(window);
    }
    const KeptLayout* layout = kept.LayoutFor(PresentScreens());
    const QByteArray state =
        layout ? QByteArray::fromBase64(QByteArray::fromStdString(layout->state)) : QByteArray();
    if (!state.isEmpty() && area.restoreState(state, LayoutVersion)) {
        // A layout of other windows hides those that it does not know.
        for (CViewWindow* window : opened)
            window->show();
        return opened.size();
    }
    for (std::size_t i = 0; i < opened.size(); ++i)
        if (PlaceOf(kept.windows[i]).Floats())
            PlaceFloat(*opened[i], kept.windows[i]);
    return opened.size();
}

void OpenDefaultWindows(CDisplayArea& area, const WindowMaker& maker) {
    using Place = CDisplayArea::Place;
    CDefaultWindows windows(area, maker);
    CViewWindow* left = windows.OpenFirst({"profile", "gps", "weather"}, nullptr, Place::Right);
    CViewWindow* spectrum = windows.OpenFirst({"spectral", "reality-check"}, left, Place::Right);
    CDisplayWindow* above = spectrum ? spectrum : left;
    const Place under = spectrum ? Place::Below : Place::Right;
    CViewWindow* values = windows.OpenFirst({"package"}, above, under);
    if (!values)
        values = windows.OpenFirst({"ancillary"}, above, under);
    if (!values)
        values = windows.OpenFirst({"sensors"}, above, under);
    CViewWindow* series = windows.OpenFirst({"time-series", "status"}, values ? values : above,
                                            values ? Place::Right : under);
    windows.OpenTabs();
    CViewWindow* right = spectrum ? spectrum : values ? values : series;
    const auto part = [](int room, double share) {
        return static_cast<int>(share * static_cast<double>(room));
    };
    const int beside = left ? part(area.width(), 1.0 - ProfilePart) : area.width();
    if (left && right)
        area.resizeDocks({left, right},
                         {part(area.width(), ProfilePart), part(area.width(), 1.0 - ProfilePart)},
                         Qt::Horizontal);
    if (spectrum && values)
        area.resizeDocks(
            {spectrum, values},
            {part(area.height(), SpectrumPart), part(area.height(), 1.0 - SpectrumPart)},
            Qt::Vertical);
    if (values && series)
        area.resizeDocks({values, series},
                         {maker.theme.Px(ValuesWidth),
                          std::max(beside - maker.theme.Px(ValuesWidth), ValuesWidth)},
                         Qt::Horizontal);
}

void CloseWindows(CDisplayArea& area) {
    for (CViewWindow* window : ViewWindows(area))
        window->close();
}

} // namespace qor
