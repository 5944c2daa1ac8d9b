// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/DepthProfile.h"

#include "base/Text.h"
#include "products/PackageSensors.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr const char* DepthProfileSection = "\\Profile";
constexpr const char* DepthProfileTitle = "Depth profile";
constexpr double Ever = HUGE_VAL;
constexpr int DepthDecimals = 1;

/// Decided: depth is shown in metres of the convention that a metre of sea water is 1 dbar.
constexpr const char* DepthUnits = "m";

std::string DepthText(double depth) {
    return FixedNumber(depth, DepthDecimals) + " " + DepthUnits;
}

bool HasPressure(const CQorViewIns& instrument) {
    const CLiveInstrument* one[] = {&instrument.Live};
    return FindPressure(one).Found();
}

PlotAxis DepthAxis() {
    PlotAxis axis;
    axis.label = "Depth";
    axis.units = DepthUnits;
    axis.fromZero = true;
    axis.reversed = true;
    axis.decimals = DepthDecimals;
    return axis;
}

} // namespace

bool CDepthProfileSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + DepthProfileSection;
    SaveItems(store, section);
    store.WriteInteger(section, "UpCast", UpCast);
    store.WriteInteger(section, "PreviousCast", PreviousCast);
    return true;
}

bool CDepthProfileSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + DepthProfileSection;
    LoadItems(store, section);
    LoadInteger(store, section, "UpCast", UpCast);
    LoadInteger(store, section, "PreviousCast", PreviousCast);
    return true;
}

CDepthProfileView::CDepthProfileView(CQorViewDoc& doc)
    : Plot(doc, Settings, ProfileItems, HasPressure) {
    Page.keyUpright = true;
}

void CDepthProfileView::SetPlotSize(int, int height) {
    MostPoints = 2 * static_cast<std::size_t>(std::clamp(height, 50, 10'000));
    Plot.Redraw();
}

void CDepthProfileView::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    Settings.Load(store, prefix);
    Plot.LookAgain();
}

void CDepthProfileView::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    Settings.Save(store, prefix);
}

std::string CDepthProfileView::Select(CQorViewDoc& doc, std::string_view item) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    const std::string wrong = Plot.Select(item);
    return wrong == CHistoryPlot::Unknown ? ChooseEntry(ContextMenu(doc), item) : wrong;
}

bool CDepthProfileView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    if (!Plot.Refresh())
        return false;
    Draw();
    return true;
}

void CDepthProfileView::Draw() {
    std::vector<PlotCurve> before = std::move(Page.curves);
    Plot.BeginPage(DepthProfileTitle, false, Page);
    Page.key = DepthAxis();
    if (const auto choice = Settings.Axes.find(CHistoryPlotSettings::KeyAxisName);
        choice != Settings.Axes.end())
        ApplyChoice(choice->second, Page.key);
    const CQorViewIns* instrument = Plot.Instrument();
    if (Page.head.state == PageState::Gone) {
        Page.curves = std::move(before); // what was there when it went
        return;
    }
    const CCastDetector* casts =
        instrument ? Plot.Doc.History.CastsOf(instrument->Name()) : nullptr;
    if (instrument && !Plot.Curves().empty() && !casts) {
        Page.head = EmptyHead(Utf8Of(instrument->Name()) +
                                  " has no depth: neither its package nor the profiler has a "
                                  "pressure in units that are known.",
                              "Roles");
        return;
    }
    if (!casts)
        return;
    std::size_t place = 0;
    for (const CHistoryPlot::Curve& curve : Plot.Curves()) {
        for (const Stretch& stretch : Stretches(*casts))
            DrawCurve(curve, place, stretch);
        ++place;
    }
    const std::optional<double> depth = Plot.Doc.History.DepthOf(instrument->Name());
    MarkDepth(depth);
    Page.head.leading = Plot.Leading(false);
    if (depth)
        Page.head.leading += (Page.head.leading.empty() ? "" : ", ") + DepthText(*depth);
    Page.head.leading += Plot.LeadingAge();
}

std::vector<CDepthProfileView::Stretch>
CDepthProfileView::Stretches(const CCastDetector& casts) const {
    const std::optional<Cast>& current = casts.Current();
    const std::optional<Cast>& previous = casts.Previous();
    if (!current)
        return {{-Ever, Ever, "", 0}}; // no cast has been told apart yet
    std::vector<Stretch> stretches{{current->begin, current->deepestTime, "", 0}};
    if (Settings.UpCast)
        stretches.push_back({current->deepestTime, current->end.value_or(Ever), " up", 1});
    if (Settings.PreviousCast && previous)
        stretches.push_back({previous->begin, previous->deepestTime, ", previous cast", 2,
                             CurveRole::PreviousCast});
    return stretches;
}

void CDepthProfileView::DrawCurve(const CHistoryPlot::Curve& curve, std::size_t place,
                                  const Stretch& stretch) {
    const WatchedCurve* watched = Plot.PointsOf(curve);
    if (!watched)
        return;
    watched->points.Query(stretch.from, stretch.to, MostPoints, Points);
    PlotCurve drawn;
    drawn.title = curve.title + stretch.suffix;
    drawn.units = curve.item.units;
    drawn.id = curve.id + static_cast<std::uint64_t>(stretch.number);
    drawn.role = stretch.role;
    drawn.place = static_cast<double>(place);
    drawn.axis = curve.axis;
    drawn.loops = drawn.broad = true;
    bool gap = false;
    for (const HistoryPoint& point : Points) {
        // What came at a depth that nobody knew has no place here, and no line leads over it.
        gap = gap || point.gap || !std::isfinite(point.depth);
        if (!std::isfinite(point.depth))
            continue;
        if (gap && !drawn.points.empty())
            drawn.points.push_back({point.depth, std::nan("")});
        gap = false;
        drawn.points.push_back({point.depth, point.value});
    }
    Page.curves.push_back(std::move(drawn));
}

/// The depth now or, when that is old, the last one that a value came from.
void CDepthProfileView::MarkDepth(std::optional<double> depth) {
    if (depth) {
        Page.markers.push_back({*depth, DepthText(*depth), Sign::None});
        return;
    }
    const WatchedCurve* watched =
        Plot.Curves().empty() ? nullptr : Plot.PointsOf(Plot.Curves().front());
    const std::optional<HistoryPoint> last = watched ? watched->points.Latest() : std::nullopt;
    if (last && std::isfinite(last->depth))
        Page.markers.push_back({last->depth, DepthText(last->depth), Sign::Stale});
}

void CDepthProfileView::Toggle(int CDepthProfileSettings::*setting) {
    Settings.*setting = Settings.*setting ? 0 : 1;
    Plot.Redraw();
}

Menu CDepthProfileView::ContextMenu(CQorViewDoc&) {
    CRecursiveLock lock(Plot.Doc.DocLock);
    const CQorViewIns* instrument = Plot.Instrument();
    const std::string name = instrument ? instrument->Name() : "";
    const CCastDetector* casts = instrument ? Plot.Doc.History.CastsOf(name) : nullptr;
    const bool known = casts && Plot.Doc.History.DepthOf(name);
    MenuEntry begins{"Cast begins now", [this, name] {
                         Plot.Doc.History.BeginCast(name);
                         Plot.Redraw();
                     }};
    MenuEntry ends{"Cast ends now", [this, name] {
                       Plot.Doc.History.EndCast(name);
                       Plot.Redraw();
                   }};
    begins.whyNot = known ? "" : "There is no depth now.";
    ends.whyNot = casts && casts->UnderWay() ? "" : "No cast is under way.";
    return {
        Plot.ShowMenu(),
        Plot.AxesMenu(Page),
        {},
        {"Up-cast", [this] { Toggle(&CDepthProfileSettings::UpCast); }, true, Settings.UpCast != 0},
        {"Previous cast", [this] { Toggle(&CDepthProfileSettings::PreviousCast); }, true,
         Settings.PreviousCast != 0},
        {},
        begins,
        ends};
}

} // namespace qor
