// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/TimeSeries.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr const char* TimeSeriesSection = "\\Series";
constexpr const char* TimeSeriesTitle = "Time series";
constexpr int LastSpan = static_cast<int>(std::size(TimeSpans)) - 1;

void Shade(bool enabled, double from, double to, int axis, Sign sign, PlotPage& page) {
    if (enabled && from < to)
        page.bands.push_back({axis, from, to, sign});
}

} // namespace

bool CTimeSeriesSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + TimeSeriesSection;
    SaveItems(store, section);
    store.WriteInteger(section, "Span", Span);
    store.WriteInteger(section, "LocalTime", LocalTime);
    store.WriteInteger(section, "AlarmLimits", AlarmLimits);
    return true;
}

bool CTimeSeriesSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + TimeSeriesSection;
    LoadItems(store, section);
    LoadInteger(store, section, "Span", Span);
    LoadInteger(store, section, "LocalTime", LocalTime);
    LoadInteger(store, section, "AlarmLimits", AlarmLimits);
    Span = std::clamp(Span, 0, LastSpan);
    return true;
}

CTimeSeriesView::CTimeSeriesView(CQorViewDoc& doc) : Plot(doc, Settings, SeriesItems, {}) {}

void CTimeSeriesView::SetPlotSize(int width, int) {
    MostPoints = 2 * static_cast<std::size_t>(std::clamp(width, 50, 10'000));
    Plot.Redraw();
}

void CTimeSeriesView::SetKeyRange(const std::optional<PlotRange>& zoomed) {
    if (zoomed == Zoomed)
        return;
    Zoomed = zoomed;
    Plot.Redraw();
}

void CTimeSeriesView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    Settings.Load(store, prefix);
    Plot.LookAgain();
}

void CTimeSeriesView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    Settings.Save(store, prefix);
}

void CTimeSeriesView::TakeRanges(const RangesFinder& find) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    std::map<std::uint64_t, WarningRanges> found;
    for (const CHistoryPlot::Curve& curve : Plot.Curves()) {
        const WarningRanges* ranges =
            curve.item.kind ? find(curve.item.item.instrument, *curve.item.kind) : nullptr;
        if (ranges && ranges->AnyEnabled())
            found[curve.id] = *ranges;
    }
    if (found == Limits)
        return;
    Limits = std::move(found);
    Plot.Redraw();
}

std::string CTimeSeriesView::Select(CQorViewDoc& doc, std::string_view item) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    const std::string wrong = Plot.Select(item);
    return wrong == CHistoryPlot::Unknown ? ChooseEntry(ContextMenu(doc), item) : wrong;
}

bool CTimeSeriesView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    if (!Plot.Refresh())
        return false;
    Draw();
    return true;
}

void CTimeSeriesView::Draw() {
    Plot.BeginPage(TimeSeriesTitle, true, Page);
    SetTimes();
    std::size_t place = 0;
    for (const CHistoryPlot::Curve& curve : Plot.Curves())
        DrawCurve(curve, place++);
    if (!Plot.Instrument())
        return;
    if (Settings.AlarmLimits)
        ShadeLimits();
    Page.head.leading = Plot.Leading(true) + Plot.LeadingAge();
}

/// The time axis ends with the latest value; when every curve is old it goes on, and leaves their
/// ends behind.
void CTimeSeriesView::SetTimes() {
    double oldest = HUGE_VAL, newest = -HUGE_VAL;
    std::int64_t age = std::numeric_limits<std::int64_t>::max();
    for (const CHistoryPlot::Curve& curve : Plot.Curves()) {
        const WatchedCurve* watched = Plot.PointsOf(curve);
        const std::optional<HistoryPoint> last = watched ? watched->points.Latest() : std::nullopt;
        if (!last)
            continue;
        oldest = std::min(oldest, watched->points.OldestTime().value_or(last->time));
        newest = std::max(newest, last->time);
        age = std::min(age, curve.stale ? std::max<std::int64_t>(curve.age, 0) : 0);
    }
    if (std::isfinite(newest))
        newest += static_cast<double>(age) / 1000.0;
    Page.key = {};
    Page.key.label = "Time";
    Page.key.kind = AxisKind::Time;
    Page.key.zoneMinutes = Settings.LocalTime ? Plot.Doc.Clock.Now().utcOffsetMinutes : 0;
    Page.key.automatic = !std::isfinite(newest);
    if (Page.key.automatic)
        return;
    const double span =
        TimeSpans[static_cast<std::size_t>(std::clamp(Settings.Span, 0, LastSpan))].seconds;
    Page.key.maximum = newest;
    Page.key.minimum = span > 0.0 ? newest - span : std::min(oldest, newest - 1.0);
}

void CTimeSeriesView::DrawCurve(const CHistoryPlot::Curve& curve, std::size_t place) {
    PlotCurve drawn;
    drawn.title = curve.title;
    drawn.units = curve.item.units;
    drawn.id = curve.id;
    drawn.place = static_cast<double>(place);
    drawn.axis = curve.axis;
    const WatchedCurve* watched = Plot.PointsOf(curve);
    Points.clear();
    if (watched && Zoomed) // with as much on both sides, so that a hand can pan
        watched->points.Query(Zoomed->lower - Zoomed->Size(), Zoomed->upper + Zoomed->Size(),
                              3 * MostPoints, Points);
    else if (watched && !Page.key.automatic)
        watched->points.Query(Page.key.minimum, Page.key.maximum, MostPoints, Points);
    for (const HistoryPoint& point : Points) {
        if (point.gap && !drawn.points.empty())
            drawn.points.push_back({point.time, std::nan("")});
        drawn.points.push_back({point.time, point.value});
    }
    Page.curves.push_back(std::move(drawn));
}

void CTimeSeriesView::ShadeLimits() {
    for (const CHistoryPlot::Curve& curve : Plot.Curves()) {
        const auto found = Limits.find(curve.id);
        if (found == Limits.end())
            continue;
        const WarningRanges& ranges = found->second;
        Shade(ranges.WarnEnabled, ranges.WarnMin, ranges.WarnMax, curve.axis, Sign::Warning, Page);
        Shade(ranges.AlarmEnabled, ranges.AlarmMin, ranges.AlarmMax, curve.axis, Sign::Alarm, Page);
    }
}

void CTimeSeriesView::Set(int CTimeSeriesSettings::*setting, int value) {
    Settings.*setting = value;
    Plot.Redraw();
}

Menu CTimeSeriesView::ContextMenu(CQorViewDoc&) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    Menu menu{Plot.ShowMenu(), Plot.AxesMenu(Page), {}};
    for (int i = 0; i <= LastSpan; ++i)
        menu.push_back({TimeSpans[i].text, [this, i] { Set(&CTimeSeriesSettings::Span, i); }, true,
                        Settings.Span == i});
    menu.push_back({});
    for (const int local : {0, 1})
        menu.push_back({local ? "Time local" : "Time UTC",
                        [this, local] { Set(&CTimeSeriesSettings::LocalTime, local); }, true,
                        (Settings.LocalTime != 0) == (local != 0)});
    menu.push_back(
        {"Alarm limits",
         [this] { Set(&CTimeSeriesSettings::AlarmLimits, Settings.AlarmLimits ? 0 : 1); }, true,
         Settings.AlarmLimits != 0});
    if (Limits.empty())
        menu.back().whyNot = "No ranges are set in the ancillary windows.";
    return menu;
}

} // namespace qor
