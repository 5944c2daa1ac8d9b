// SPDX-License-Identifier: GPL-3.0-or-later
//
// The spectral display: what is drawn, and what leads. Its menu is SpectralMenu.cpp.
#include "views/SpectralView.h"

#include "base/Text.h"
#include "views/NumberText.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <iterator>

namespace qor {

namespace {

constexpr std::size_t FewestForBand = 2;

/// Curve ids: a trace has a few, and so have the overlays.
enum CurveKind : std::uint64_t { Now, Least, Most, Kept, DarkOverlay, ReferenceOverlay, KindCount };

std::uint64_t CurveId(std::size_t place, CurveKind kind) {
    return place * KindCount + kind + 1;
}

} // namespace

CSpectralView::CSpectralView(CQorViewDoc& doc)
    : Doc(doc), Watch(doc, [this](CQorViewIns& instrument, const FrameCheckResult&) {
          CRecursiveLock lock(Doc.DocLock);
          Traces.Take(instrument);
      }) {}

void CSpectralView::Show(const std::string& instrument) {
    CRecursiveLock lock(Doc.DocLock);
    Name = instrument;
    WasThere = false;
    Traces.Clear();
    Held.reset();
    Frozen.clear();
    Redraw = true;
}

bool CSpectralView::Refresh(CQorViewDoc&) {
    CRecursiveLock lock(Doc.DocLock);
    const SpectrumReading reading =
        Settings.Reading == 1 ? SpectrumReading::RawCounts : SpectrumReading::Calibrated;
    if (Traces.Find(Doc, Name, {Settings.Dark, Settings.Reference}, reading)) {
        Redraw = true;
        Held.reset();
        Frozen.clear();
    }
    WasThere = WasThere || !Traces.Shown().empty();
    const bool draw = Redraw || (!Held && Traces.FramesTaken() != DrawnFrames);
    if (draw)
        Draw();
    PageHead head = Head();
    const bool changed = draw || head != Page.head;
    Page.head = std::move(head);
    return changed;
}

PageHead CSpectralView::Head() const {
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    std::vector<const CQorViewIns*> sources;
    for (const SpectralTrace& trace : Traces.Shown())
        if (const CQorViewIns* source = Doc.Find(trace.instrument);
            source && (sources.empty() || sources.back() != source))
            sources.push_back(source);
    if (sources.empty()) {
        const CQorViewIns* blind = Name.empty() ? nullptr : FindShown(Doc, Name);
        return Name.empty() ? EmptyHead("No instrument with an optical series.", "Add instrument")
               : blind      ? EmptyHead(Utf8Of(Name) + " has no optical series.", "Add instrument")
                            : HeadOf(nullptr, Name, WasThere, now);
    }
    // Of several instruments one that sends makes the page live; one that is old is seen.
    PageHead head = HeadOf(sources.front(), Name, true, now);
    for (const CQorViewIns* source : sources) {
        const PageHead one = HeadOf(source, Name, true, now);
        if (one.state == PageState::Live &&
            (head.state != PageState::Live || WorseSign(one.sign, head.sign) == one.sign))
            head = one;
    }
    if (head.state != PageState::Live)
        return head;
    // What is made with an old dark or reference is no newer than it.
    for (const auto& [used, name] : {std::pair{Settings.SubtractDark, &Settings.Dark},
                                     std::pair{Settings.Ratio, &Settings.Reference}})
        if (const CQorViewIns* overlay =
                used != 0 && !name->empty() ? FindShown(Doc, *name) : nullptr)
            head.sign = WorseSign(head.sign, HeadOf(overlay, *name, true, now).sign);
    Lead(head);
    return head;
}

/// The value of the first curve at the wavelength that leads.
void CSpectralView::Lead(PageHead& head) const {
    if (Page.curves.empty())
        return;
    Spectrum points;
    for (const PlotPoint& point : Page.curves.front().points)
        points.push_back({point.x, point.y});
    if (const SpectrumPoint* nearest = NearestPoint(points, Settings.LeadingWavelength))
        head.leading =
            FixedNumber(nearest->wavelength, 0) + " nm " +
            (Settings.Reading == 1 && Settings.Ratio == 0 ? FixedNumber(nearest->value, 0)
                                                          : GeneralNumber(nearest->value, 3));
}

std::vector<SpectralGroup> CSpectralView::ShownGroups() const {
    std::vector<SpectralGroup> groups = Drawn().Groups();
    std::vector<SpectralGroup> chosen;
    std::ranges::copy_if(groups, std::back_inserter(chosen), [this](const SpectralGroup& group) {
        return std::ranges::find(Settings.Groups, group.Text()) != Settings.Groups.end();
    });
    if (!chosen.empty())
        return chosen;
    groups.resize(std::min<std::size_t>(groups.size(), 1));
    return groups;
}

std::size_t CSpectralView::Frames() const {
    return static_cast<std::size_t>(std::max(Settings.MeanOf, 1));
}

void CSpectralView::Draw() {
    DrawnFrames = Traces.FramesTaken();
    Redraw = false;
    const std::vector<SpectralGroup> groups = ShownGroups();
    Page.curves.clear();
    Page.axes.clear();
    std::string types;
    for (const SpectralGroup& group : groups)
        types += (types.empty() ? "" : ", ") + Utf8Of(group.type);
    Page.title = "Spectrum" + (types.empty() ? "" : " - " + types);
    Page.key = {.label = "Wavelength", .units = "nm", .kind = AxisKind::Wavelength, .decimals = 1};
    for (const SpectralGroup& group : groups)
        DrawGroup(group);
    if (Page.axes.empty())
        Page.axes.push_back({.label = "Spectrum", .units = ""});
    const std::vector<SpectralTrace>& shown = Drawn().Shown();
    const CQorViewIns* first = shown.empty() ? nullptr : Doc.Find(shown.front().instrument);
    Page.stamp =
        first && first->Live.CurrentFrame() && !Held ? UtcText(MomentOf(Doc, *first)) : Page.stamp;
}

void CSpectralView::DrawGroup(const SpectralGroup& group) {
    const int axis = AxisOf(group);
    const std::vector<SpectralTrace>& shown = Drawn().Shown();
    for (std::size_t i = 0; i < shown.size(); ++i)
        if (shown[i].group == group)
            DrawTrace(shown[i], i, axis);
    DrawOverlays(group, axis);
}

/// Groups of the same units share an axis; over a reference all are plain numbers.
int CSpectralView::AxisOf(const SpectralGroup& group) {
    const std::string units = Settings.Ratio != 0     ? ""
                              : Settings.Reading == 1 ? "counts"
                                                      : Utf8Of(group.units);
    for (std::size_t i = 0; i < Page.axes.size(); ++i)
        if (Page.axes[i].units == units) {
            Page.axes[i].label += ", " + Utf8Of(group.type);
            return static_cast<int>(i);
        }
    PlotAxis axis{.label = Utf8Of(group.type), .units = units};
    axis.fromZero = true;
    axis.logarithmic = Settings.Logarithmic != 0;
    axis.decimals = Settings.Reading == 1 && Settings.Ratio == 0 ? 0 : 4;
    Page.axes.push_back(axis);
    return static_cast<int>(Page.axes.size()) - 1;
}

const CSpectralView::FrozenSpectrum* CSpectralView::FrozenOf(const SpectralTrace& trace) const {
    for (const FrozenSpectrum& one : Frozen)
        if (one.instrument == trace.name && one.group == trace.group)
            return &one;
    return nullptr;
}

CSpectralView::Spectrum CSpectralView::LessDarkOf(const SpectralTrace& trace,
                                                  Spectrum points) const {
    if (Settings.SubtractDark == 0)
        return points;
    const SpectralTrace* dark = Drawn().Overlay(Settings.Dark, trace.group);
    return dark ? LessDark(points, dark->ring.Mean(Frames())) : Spectrum();
}

CSpectralView::Spectrum CSpectralView::Processed(const SpectralTrace& trace,
                                                 Spectrum points) const {
    points = LessDarkOf(trace, std::move(points));
    if (Settings.Ratio == 0)
        return points;
    const FrozenSpectrum* frozen = FrozenOf(trace);
    if (!Settings.Reference.empty()) {
        const SpectralTrace* reference = Drawn().Overlay(Settings.Reference, trace.group);
        return reference ? RatioOf(points, reference->ring.Mean(Frames())) : Spectrum();
    }
    return frozen ? RatioOf(points, frozen->points) : Spectrum();
}

PlotCurve& CSpectralView::AddCurve(std::string title, const Spectrum& points, int axis,
                                   std::uint64_t id) {
    PlotCurve curve;
    curve.title = std::move(title);
    curve.units = Page.axes[static_cast<std::size_t>(axis)].units;
    curve.id = id;
    curve.axis = axis;
    curve.broad = true;
    curve.place = static_cast<double>(Page.curves.size());
    for (const SpectrumPoint& point : points)
        curve.points.push_back({point.wavelength, point.value});
    return Page.curves.emplace_back(std::move(curve));
}

void CSpectralView::DrawTrace(const SpectralTrace& trace, std::size_t index, int axis) {
    const bool several = Drawn().Shown().front().name != Drawn().Shown().back().name;
    const std::string title = (several ? Utf8Of(trace.name) + " " : "") + Utf8Of(trace.group.type);
    AddCurve(title, Processed(trace, trace.ring.Mean(Frames())), axis, CurveId(index, Now));
    if (Settings.Band != 0) {
        Spectrum least, most;
        for (const SpectrumBand& band : trace.ring.Band(std::max(Frames(), FewestForBand))) {
            least.push_back({band.wavelength, band.least});
            most.push_back({band.wavelength, band.most});
        }
        AddCurve(title + " least", Processed(trace, std::move(least)), axis, CurveId(index, Least))
            .frozen = true;
        AddCurve(title + " greatest", Processed(trace, std::move(most)), axis, CurveId(index, Most))
            .frozen = true;
    }
    if (const FrozenSpectrum* frozen = FrozenOf(trace); frozen && Settings.Ratio == 0)
        AddCurve(title + " frozen", frozen->points, axis, CurveId(index, Kept)).frozen = true;
}

/// What is laid over is shown as it is; over a reference nothing else has its place.
void CSpectralView::DrawOverlays(const SpectralGroup& group, int axis) {
    if (Settings.Ratio != 0)
        return;
    const std::size_t place = Drawn().Shown().size() + static_cast<std::size_t>(axis);
    for (const auto& [name, title, kind] :
         {std::tuple{&Settings.Dark, " dark", DarkOverlay},
          std::tuple{&Settings.Reference, " reference", ReferenceOverlay}})
        if (const SpectralTrace* trace = Drawn().Overlay(*name, group)) {
            const bool shares = Settings.Reading == 1 || trace->group.units == group.units;
            PlotCurve& curve =
                AddCurve(Utf8Of(trace->name) + " " + Utf8Of(trace->group.type) + title,
                         trace->ring.Mean(Frames()), shares ? axis : AxisOf(trace->group),
                         CurveId(place, kind));
            curve.role = CurveRole::Reference;
        }
}

void CSpectralView::Hold(bool on) {
    CRecursiveLock lock(Doc.DocLock);
    if (on && !Held)
        Held = Traces;
    if (!on)
        Held.reset();
    Redraw = true;
}

void CSpectralView::Freeze() {
    CRecursiveLock lock(Doc.DocLock);
    Frozen.clear();
    for (const SpectralTrace& trace : Drawn().Shown())
        Frozen.push_back({trace.name, trace.group, LessDarkOf(trace, trace.ring.Mean(Frames()))});
    Redraw = true;
}

void CSpectralView::Thaw() {
    Frozen.clear();
    Redraw = true;
}

} // namespace qor
