// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/HistoryPlot.h"

#include "base/Text.h"
#include "platform/Clock.h"
#include "views/NumberText.h"
#include "views/PlotRange.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t MostItems = CHistory::MostCurves;
constexpr int MostAxes = 64;         ///< that are kept by hand
constexpr std::size_t LongMenu = 24; ///< entries, beyond which they go behind their types

/// Keeps what a curve is to its view from one session to the next.
std::uint64_t IdOf(const std::string& name) {
    std::uint64_t hash = 14695981039346656037u; // FNV-1a
    for (const char c : name)
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    return hash << 3;
}

/// "mode logarithmic minimum maximum units": -1 for a scale that is the page's.
std::string StoredAxis(const std::string& units, const AxisChoice& choice) {
    return Format("%d %d ", static_cast<int>(choice.mode),
                  choice.logarithmic ? (*choice.logarithmic ? 1 : 0) : -1) +
           ShortestNumber(choice.minimum) + " " + ShortestNumber(choice.maximum) + " " + units;
}

bool ReadAxis(std::string_view text, std::string& units, AxisChoice& choice) {
    double numbers[4];
    for (double& number : numbers) {
        const std::size_t blank = text.find(' ');
        const std::optional<double> read = WholeNumber(text.substr(0, blank));
        if (blank == std::string_view::npos || !read || !std::isfinite(*read))
            return false;
        number = *read;
        text.remove_prefix(blank + 1);
    }
    choice.mode = numbers[0] == 1.0   ? AxisMode::Automatic
                  : numbers[0] == 2.0 ? AxisMode::Fixed
                                      : AxisMode::AsPage;
    if (numbers[1] >= 0.0)
        choice.logarithmic = numbers[1] > 0.0;
    choice.minimum = numbers[2];
    choice.maximum = numbers[3];
    units = text;
    return choice.mode != AxisMode::Fixed || IsRange(choice.minimum, choice.maximum);
}

std::string Numbered(const char* key, int number) {
    return key + std::to_string(number);
}

} // namespace

void ApplyChoice(const AxisChoice& choice, PlotAxis& axis) {
    axis.automatic =
        choice.mode == AxisMode::Automatic || (choice.mode == AxisMode::AsPage && axis.automatic);
    if (choice.mode == AxisMode::Fixed) {
        axis.minimum = choice.minimum;
        axis.maximum = choice.maximum;
    }
    axis.logarithmic = choice.logarithmic.value_or(axis.logarithmic);
}

void CHistoryPlotSettings::SaveItems(CProfileStore& store, const std::string& section) const {
    SavePlace(store, section);
    store.WriteInteger(section, "Items", static_cast<int>(Items.size()));
    int number = 0;
    for (const std::string& item : Items)
        store.WriteText(section, Numbered("Item", number++), item);
    store.WriteInteger(section, "Axes", static_cast<int>(Axes.size()));
    number = 0;
    for (const auto& [units, choice] : Axes)
        store.WriteText(section, Numbered("Axis", number++), StoredAxis(units, choice));
}

void CHistoryPlotSettings::LoadItems(const CProfileStore& store, const std::string& section) {
    LoadPlace(store, section);
    int items = -1, axes = -1;
    LoadInteger(store, section, "Items", items);
    LoadInteger(store, section, "Axes", axes);
    if (items >= 0)
        Items.clear();
    for (int i = 0; i < std::min(items, static_cast<int>(MostItems)); ++i)
        if (std::string item = store.ReadText(section, Numbered("Item", i)); !item.empty())
            Items.push_back(std::move(item));
    if (axes >= 0)
        Axes.clear();
    for (int i = 0; i < std::min(axes, MostAxes); ++i) {
        std::string units;
        AxisChoice choice;
        if (ReadAxis(store.ReadText(section, Numbered("Axis", i)), units, choice))
            Axes[units] = choice;
    }
}

void CHistoryPlot::Show(const std::string& instrument) {
    Name = instrument;
    WasThere = LookedUp = false;
    LastName.clear();
}

const CQorViewIns* CHistoryPlot::Instrument() const {
    if (!Name.empty() && Doc.FindInstrument(Name) == InstrumentId::None)
        if (const CPackage* package = Doc.Find(Doc.Packages.Named(Name)))
            for (const InstrumentId id : package->Attached)
                if (const CQorViewIns* first = Doc.Find(id))
                    return first;
    if (Name.empty() && !LastName.empty())
        if (const CQorViewIns* same = Doc.Find(Doc.FindInstrument(LastName)))
            return same;
    const CQorViewIns* first = FindShown(Doc, Name, IsServed);
    return first ? first : FindShown(Doc, Name);
}

void CHistoryPlot::AddCurve(const PlotItem& item, const CQorViewIns* instrument,
                            std::vector<Curve>& to) {
    const std::string full = item.FullName();
    if (std::ranges::any_of(to, [&](const Curve& one) { return one.item.FullName() == full; }))
        return;
    const WatchId id = Doc.History.Watch(item.item);
    if (id == WatchId::None)
        return;
    const bool own = instrument && item.item.instrument == instrument->Name();
    to.push_back({item, CHistoryWatch(Doc.History, id), own ? item.label : full});
    to.back().id = IdOf(full);
}

void CHistoryPlot::LookUp(const CQorViewIns* instrument) {
    // What goes on being shown is watched anew before it is let go, or its curve would be lost.
    std::vector<Curve> next;
    if (Settings.Items.empty() && instrument)
        for (const PlotItem& item : Unasked(Doc, *instrument))
            AddCurve(item, instrument, next);
    for (const std::string& text : Settings.Items)
        if (const std::optional<PlotItem> item = FindItem(Doc, instrument, text))
            AddCurve(*item, instrument, next);
    // What was removed stays to be seen.
    if (!instrument && WasThere && next.empty())
        return;
    Shown = std::move(next);
    const std::vector<std::string> units = UnitsShown();
    for (Curve& curve : Shown)
        curve.axis = static_cast<int>(std::ranges::find(units, curve.item.units) - units.begin());
}

std::vector<std::string> CHistoryPlot::UnitsShown() const {
    std::vector<std::string> units;
    for (const Curve& curve : Shown)
        if (std::ranges::find(units, curve.item.units) == units.end())
            units.push_back(curve.item.units);
    return units;
}

std::string CHistoryPlot::Select(std::string_view text) {
    const CQorViewIns* instrument = Instrument();
    const std::optional<PlotItem> item = FindItem(Doc, instrument, text);
    if (!item)
        return Unknown;
    if (!Settings.Items.empty() && IsShown(*item))
        return {};
    Settings.Items.push_back(item->FullName());
    LookUp(instrument);
    Redraw();
    if (IsShown(*item))
        return {};
    Settings.Items.pop_back();
    return std::string(text) + ": no more than " + std::to_string(CHistory::MostCurves) +
           " values can be watched at once; let another one go first.";
}

CHistoryPlot::Moment CHistoryPlot::Now(const CQorViewIns* instrument) {
    Moment now;
    now.there = instrument != nullptr;
    now.waits = !instrument || !instrument->Live.CurrentFrame();
    for (Curve& curve : Shown) {
        const ItemState state = StateOf(Doc, curve.item);
        curve.age = state.age;
        curve.stale = state.stale || !state.attached;
        if (curve.stale)
            now.age = std::max(now.age, curve.age / 1000);
        if (const WatchedCurve* points = PointsOf(curve))
            now.taken += points->taken;
    }
    return now;
}

bool CHistoryPlot::Refresh() {
    const CQorViewIns* instrument = Instrument();
    const InstrumentId attached = instrument ? instrument->Id : InstrumentId::None;
    if (!LookedUp || Version != Doc.OwnersVersion || attached != Attached) {
        LookUp(instrument);
        LookedUp = true;
        Version = Doc.OwnersVersion;
        Attached = attached;
        Redraw();
    }
    if (instrument) {
        WasThere = true;
        LastName = instrument->Name();
    }
    const Moment now = Now(instrument);
    if (Drawn && Last == now)
        return false;
    Last = now;
    Drawn = true;
    return true;
}

void CHistoryPlot::BeginPage(const char* window, bool laneAUnit, PlotPage& page) const {
    const CQorViewIns* instrument = Instrument();
    const std::string name = Name.empty() ? LastName : Name;
    page.title = name.empty() ? window : std::string(window) + " - " + Utf8Of(name);
    if (instrument && !instrument->Title.empty())
        page.title = std::string(window) + " - " + Utf8Of(instrument->Title);
    page.head = HeadOf(instrument, name, WasThere, Doc.Clock.MonotonicMilliseconds());
    if (instrument && Shown.empty())
        page.head = EmptyHead(Utf8Of(instrument->Name()) + " has no value that a curve can show.");
    if (!Shown.empty() && Shown.front().stale && page.head.state == PageState::Live)
        page.head.sign = Sign::Stale;
    page.curves.clear();
    page.markers.clear();
    page.bands.clear();
    page.axes.clear();
    const std::vector<std::string> units = UnitsShown();
    for (std::size_t i = 0; i < units.size(); ++i) {
        PlotAxis axis;
        axis.units = units[i];
        axis.lane = laneAUnit ? static_cast<int>(i) : 0;
        axis.decimals = 0;
        page.axes.push_back(axis);
    }
    double latest = -HUGE_VAL;
    for (const Curve& curve : Shown) {
        PlotAxis& axis = page.axes[static_cast<std::size_t>(curve.axis)];
        axis.label += (axis.label.empty() ? "" : ", ") + curve.title;
        axis.decimals = std::max(axis.decimals, curve.item.decimals);
        const WatchedCurve* points = PointsOf(curve);
        if (const auto last = points ? points->points.Latest() : std::nullopt)
            latest = std::max(latest, last->time);
    }
    for (PlotAxis& axis : page.axes)
        if (const auto choice = Settings.Axes.find(axis.units); choice != Settings.Axes.end())
            ApplyChoice(choice->second, axis);
    page.station = Utf8Of(Doc.Station.stationId);
    page.stamp = std::isfinite(latest)
                     ? FormatTime("%Y-%m-%d %H:%M:%S UTC",
                                  CalendarFromSeconds(static_cast<std::int64_t>(latest)))
                     : "";
}

std::string CHistoryPlot::Leading(bool withUnits) const {
    const WatchedCurve* points = Shown.empty() ? nullptr : PointsOf(Shown.front());
    if (!points || points->taken == 0)
        return {};
    const PlotItem& item = Shown.front().item;
    const bool has = std::isfinite(points->current);
    return item.shortName + " " + (has ? FixedNumber(points->current, item.decimals) : "--") +
           (withUnits && has && !item.units.empty() ? " " + item.units : "");
}

std::string CHistoryPlot::LeadingAge() const {
    const bool old = !Shown.empty() && Shown.front().stale && Shown.front().age >= 0;
    return old ? ", " + AgeText(Shown.front().age) + " old" : "";
}

void CHistoryPlot::SetAxis(const PlotPage& page, int axis, const AxisChoice& choice) {
    const auto place = static_cast<std::size_t>(axis);
    const std::string name = axis >= 0 && place < page.axes.size()
                                 ? page.axes[place].units
                                 : CHistoryPlotSettings::KeyAxisName;
    if (choice == AxisChoice{})
        Settings.Axes.erase(name);
    else
        Settings.Axes[name] = choice;
    Redraw();
}

bool CHistoryPlot::IsShown(const PlotItem& item) const {
    return std::ranges::any_of(
        Shown, [&item](const Curve& curve) { return curve.item.item == item.item; });
}

void CHistoryPlot::Toggle(const PlotItem& item) {
    if (Settings.Items.empty())
        for (const Curve& curve : Shown)
            Settings.Items.push_back(curve.item.FullName());
    const std::string name = item.FullName();
    if (std::erase(Settings.Items, name) == 0)
        Settings.Items.push_back(name);
    LookedUp = false;
}

MenuEntry CHistoryPlot::EntryOf(const PlotItem& item) {
    MenuEntry entry{item.label, [this, item] { Toggle(item); }, true, IsShown(item)};
    if (entry.checked && Shown.size() == 1)
        entry.whyNot = "It is the only one shown.";
    return entry;
}

MenuEntry CHistoryPlot::MenuOf(std::string title, const std::vector<PlotItem>& items) {
    MenuEntry menu{std::move(title)};
    const bool grouped = items.size() > LongMenu;
    for (const PlotItem& item : items) {
        const bool alone =
            !grouped || std::ranges::count(items, item.shortName, &PlotItem::shortName) == 1;
        if (alone) {
            menu.entries.push_back(EntryOf(item));
            continue;
        }
        auto group = std::ranges::find(menu.entries, item.shortName, &MenuEntry::text);
        if (group == menu.entries.end())
            group = menu.entries.insert(group, MenuEntry{item.shortName});
        group->entries.push_back(EntryOf(item));
    }
    return menu;
}

MenuEntry CHistoryPlot::ShowMenu() {
    MenuEntry menu{"Show"};
    const CQorViewIns* shown = Instrument();
    const auto add = [&](const CQorViewIns& instrument, bool derived,
                         std::string title) REQUIRES(Doc.DocLock) {
        std::vector<PlotItem> items = ItemsOf(Doc, instrument);
        std::erase_if(items,
                      [derived](const PlotItem& item) { return item.item.derived != derived; });
        if (!items.empty())
            menu.entries.push_back(MenuOf(std::move(title), items));
    };
    if (shown)
        add(*shown, true, "Derived");
    if (shown)
        add(*shown, false, Utf8Of(shown->Name()));
    for (const auto& resource : Doc.Resources)
        for (const auto& instrument : resource->Instruments)
            if (instrument.get() != shown)
                add(*instrument, false, Utf8Of(instrument->Name()));
    menu.whyNot = menu.entries.empty() ? "There is no instrument." : "";
    return menu;
}

MenuEntry CHistoryPlot::AxesMenu(const PlotPage& page) {
    MenuEntry menu{"Axes"};
    for (std::size_t i = 0; i < page.axes.size(); ++i) {
        const PlotAxis& axis = page.axes[i];
        const auto found = Settings.Axes.find(axis.units);
        const AxisChoice choice = found == Settings.Axes.end() ? AxisChoice{} : found->second;
        const auto set = [this, units = axis.units](const AxisChoice& next) {
            Settings.Axes[units] = next;
            Redraw();
        };
        const std::string title = AxisTitle(axis);
        menu.entries.push_back({title + ", automatic",
                                [set, choice] {
                                    AxisChoice next = choice;
                                    next.mode = AxisMode::AsPage;
                                    set(next);
                                },
                                true, axis.automatic});
        menu.entries.push_back({title + ", logarithmic",
                                [set, choice, on = axis.logarithmic] {
                                    AxisChoice next = choice;
                                    next.logarithmic = !on;
                                    set(next);
                                },
                                true, axis.logarithmic});
    }
    menu.whyNot = menu.entries.empty() ? "Nothing is shown." : "";
    return menu;
}

} // namespace qor
