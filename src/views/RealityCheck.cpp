// SPDX-License-Identifier: GPL-3.0-or-later
//
// The optical systems reality check: settings, selectors, charts, and how it is opened.
#include "views/RealityCheck.h"

#include "base/Text.h"
#include "views/ShownInstrument.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr const char* Section = "OSRC";
constexpr std::int64_t NoFrame = -1;
constexpr std::int64_t NothingDrawn = -2; ///< as the last frame: draw at the next update
constexpr const char* ComparisonTitle = "DUT/REF Normalized [%]";

struct OsrcSetting {
    const char* key;
    int COSRCViewSettings::*field;
};

constexpr OsrcSetting OsrcSettings[] = {
    {"Width", &COSRCViewSettings::Width},
    {"Height", &COSRCViewSettings::Height},
    {"REFEnabled", &COSRCViewSettings::REFEnabled},
    {"DUTEnabled", &COSRCViewSettings::DUTEnabled},
    {"DREnabled", &COSRCViewSettings::DREnabled},
    {"REFSelection", &COSRCViewSettings::REFSelection},
    {"DUTSelection", &COSRCViewSettings::DUTSelection},
};

constexpr int COSRCViewSettings::*Switches[] = {
    &COSRCViewSettings::REFEnabled, &COSRCViewSettings::DUTEnabled, &COSRCViewSettings::DREnabled};

constexpr OsrcDisplay Displays[] = {OsrcDisplay::Reference, OsrcDisplay::DeviceUnderTest,
                                    OsrcDisplay::Comparison};

std::size_t PlaceOf(OsrcDisplay display) {
    return static_cast<std::size_t>(display);
}

std::string TitleOf(OsrcDisplay display, const OpticalSeries& series) {
    if (display == OsrcDisplay::Comparison)
        return ComparisonTitle;
    return Format("%s: %s [%s]", display == OsrcDisplay::Reference ? "REF" : "DUT",
                  Utf8Of(series.type).c_str(), Utf8Of(series.units).c_str());
}

} // namespace

void COSRCViewSettings::Save(CProfileStore& store) const {
    SavePlace(store, Section);
    for (const OsrcSetting& setting : OsrcSettings)
        store.WriteInteger(Section, setting.key, this->*setting.field);
    std::string greatest;
    for (double value : MaxValues)
        greatest += (greatest.empty() ? "" : " ") + FixedNumber(value, 4, 4, '0');
    store.WriteText(Section, "MaxValues", greatest);
}

void COSRCViewSettings::Load(const CProfileStore& store) {
    LoadPlace(store, Section);
    for (const OsrcSetting& setting : OsrcSettings)
        LoadInteger(store, Section, setting.key, this->*setting.field);
    const std::string text = store.ReadText(Section, "MaxValues");
    std::string_view left = text;
    for (double& limit : MaxValues) {
        left = TrimLeft(left);
        const std::string_view word = left.substr(0, left.find(' '));
        left.remove_prefix(word.size());
        const std::optional<double> number = WholeNumber(word);
        if (number && std::isfinite(*number))
            limit = *number;
    }
}

bool COSRCViewSettings::Enabled(OsrcDisplay display) const {
    return this->*Switches[PlaceOf(display)] != 0;
}

std::optional<OsrcDisplay> COSRCViewSettings::Leading() const {
    for (const OsrcDisplay display : Displays)
        if (Enabled(display))
            return display;
    return {};
}

ValueRange WidenedRange(ValueRange range) {
    if (!(range.upper > range.lower))
        range.upper = range.lower + 100.0;
    return range;
}

bool COSRCViewDlg::Initialise(const CQorViewIns& dut, const CQorViewIns& reference,
                              CMessageSink& sink) {
    DutSeries = SeriesOf(dut.Definition());
    ReferenceSeries = SeriesOf(reference.Definition());
    LastDutFrame = LastReferenceFrame = NoFrame;
    for (PlotPage& chart : Charts) {
        chart.curves.clear(); // those of other instruments
        chart.markers.clear();
    }
    ShownDut = dut.Id;
    ShownReference = reference.Id;
    for (const auto& [series, instrument] :
         {std::pair{&DutSeries, &dut}, std::pair{&ReferenceSeries, &reference}})
        if (series->empty()) {
            sink.Report(Format("Cannot initialize Optical Systems Reality Check.\r\n"
                               "\tThe instrument %s has no optical sensors.\r\n",
                               instrument->Name().c_str()));
            return false;
        }
    return true;
}

const std::vector<OpticalSeries>& COSRCViewDlg::SeriesFor(OsrcDisplay display) const {
    return display == OsrcDisplay::Reference ? ReferenceSeries : DutSeries;
}

int& COSRCViewDlg::SelectionFor(OsrcDisplay display) {
    return display == OsrcDisplay::Reference ? Settings.REFSelection : Settings.DUTSelection;
}

/// A stored selection may be of another instrument: what is out of range means the first series.
const OpticalSeries& COSRCViewDlg::Chosen(OsrcDisplay display) const {
    const auto& series = SeriesFor(display);
    const int index =
        display == OsrcDisplay::Reference ? Settings.REFSelection : Settings.DUTSelection;
    const bool inRange = index >= 0 && static_cast<std::size_t>(index) < series.size();
    return series[inRange ? static_cast<std::size_t>(index) : 0];
}

bool COSRCViewDlg::Refresh(CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* dut = doc.RoleInstrument(InstrumentRole::DeviceUnderTest);
    const CQorViewIns* reference = doc.RoleInstrument(InstrumentRole::Reference);
    if (!dut || !reference)
        return SetHeads(EmptyHead(
            Format("No %s instrument has been specified.", dut ? "REFERENCE" : "DUT"), "Roles"));
    if ((dut->Id != ShownDut || reference->Id != ShownReference) &&
        !Initialise(*dut, *reference, doc))
        return SetHeads(EmptyHead("See the session log for details.", "Roles"));
    if (DutSeries.empty() || ReferenceSeries.empty())
        return false; // what was wrong has been said
    const bool drawn = Update(dut, reference) != 0;
    const std::int64_t now = doc.Clock.MonotonicMilliseconds();
    const PageHead ofDut = HeadOf(dut, dut->Name(), true, now);
    const PageHead ofReference = HeadOf(reference, reference->Name(), true, now);
    return SetHeads(WorseSign(ofDut.sign, ofReference.sign) == ofDut.sign ? ofDut : ofReference) ||
           drawn;
}

bool COSRCViewDlg::SetHeads(const PageHead& head) {
    const bool changed = head != Charts[0].head;
    for (PlotPage& chart : Charts) {
        chart.head = head;
        if (head.state == PageState::Empty)
            chart.curves.clear();
    }
    return changed;
}

ViewPages COSRCViewDlg::Pages() const {
    ViewPages pages;
    for (const OsrcDisplay display : Displays)
        if (Settings.Enabled(display))
            pages.plots.push_back(&Page(display));
    if (pages.plots.empty())
        pages.plots.push_back(&Page(OsrcDisplay::Reference));
    return pages;
}

Menu COSRCViewDlg::ContextMenu(CQorViewDoc&) {
    constexpr const char* Names[] = {"&REF", "&DUT", "DUT/REF &Normalized"}; // by OsrcDisplay
    Menu menu;
    for (const OsrcDisplay display : Displays)
        menu.push_back({Names[PlaceOf(display)],
                        [this, display] { Enable(display, !Settings.Enabled(display)); }, true,
                        Settings.Enabled(display)});
    AddSeriesEntries(menu, OsrcDisplay::Reference);
    AddSeriesEntries(menu, OsrcDisplay::DeviceUnderTest);
    return menu;
}

/// The choice of a series, where there is one.
void COSRCViewDlg::AddSeriesEntries(Menu& menu, OsrcDisplay display) {
    const std::vector<OpticalSeries>& list = SeriesFor(display);
    if (list.size() < 2)
        return;
    menu.push_back({});
    const OpticalSeries* chosen = &Chosen(display);
    for (std::size_t i = 0; i < list.size(); ++i)
        menu.push_back({TitleOf(display, list[i]),
                        [this, display, i] {
                            SelectionFor(display) = static_cast<int>(i);
                            LastDutFrame = LastReferenceFrame = NothingDrawn;
                        },
                        true, chosen == &list[i]});
}

void COSRCViewDlg::LoadSettings(const CProfileStore& store, const std::string&) {
    Settings.Load(store);
    LastDutFrame = LastReferenceFrame = NothingDrawn;
}

void COSRCViewDlg::SaveSettings(CProfileStore& store, const std::string&) const {
    Settings.Save(store);
}

int COSRCViewDlg::Update(const CQorViewIns* dut, const CQorViewIns* reference) {
    if (!dut || !reference || DutSeries.empty() || ReferenceSeries.empty())
        return 0;
    const std::int64_t dutFrame = dut->Live.CurrentFrame() ? dut->Live.FrameNumber() : NoFrame;
    const std::int64_t referenceFrame =
        reference->Live.CurrentFrame() ? reference->Live.FrameNumber() : NoFrame;
    if (dutFrame == LastDutFrame && referenceFrame == LastReferenceFrame)
        return 0;
    LastDutFrame = dutFrame;
    LastReferenceFrame = referenceFrame;
    for (const OsrcDisplay display : Displays)
        Draw(display, *dut, *reference);
    return 1;
}

void COSRCViewDlg::Draw(OsrcDisplay display, const CQorViewIns& dut, const CQorViewIns& reference) {
    PlotPage& page = Charts[PlaceOf(display)];
    page.curves.clear();
    page.markers.clear();
    if (!Settings.Enabled(display))
        return;
    const OpticalSeries& series = Chosen(display);
    page.title = TitleOf(display, series);
    page.xLabel = "Wavelength [nm]";
    page.yLabel = display == OsrcDisplay::Comparison ? "%" : Utf8Of(series.units);

    const double limit = Settings.MaxValues[PlaceOf(display)];
    // Decided: spectra begin at 0; the deviation may fall to either side by as much.
    const double lower = display == OsrcDisplay::Comparison ? -std::fabs(limit) : 0.0;
    const ValueRange range = WidenedRange({lower, limit});
    page.yMinimum = range.lower;
    page.yMaximum = range.upper;

    PlotCurve curve;
    curve.title = page.title;
    if (display == OsrcDisplay::Comparison) {
        for (const ComparisonPoint& point :
             CompareSpectra(SpectrumOf(dut.Live, series),
                            SpectrumOf(reference.Live, Chosen(OsrcDisplay::Reference)))) {
            const double percent = point.percent.value_or(0.0);
            // Unmatched channels keep their place and are marked; so are those over a reference of
            // 0.
            curve.points.push_back(
                {point.wavelength, percent, point.percent.has_value() && std::isfinite(percent)});
        }
    } else {
        const CQorViewIns& shown = display == OsrcDisplay::Reference ? reference : dut;
        for (const SpectrumPoint& point : SpectrumOf(shown.Live, series))
            curve.points.push_back({point.wavelength, point.value, true});
    }
    const bool hidden = std::ranges::all_of(
        curve.points, [&](const PlotPoint& point) { return !(point.y <= range.upper); });
    if (hidden && !curve.points.empty())
        page.markers.push_back({curve.points.front().x, "All values are above the limit."});
    page.curves.push_back(std::move(curve));
}

void COSRCViewDlg::Enable(OsrcDisplay display, bool on) {
    Settings.*Switches[PlaceOf(display)] = on ? 1 : 0;
    LastDutFrame = LastReferenceFrame = NothingDrawn;
}

std::vector<std::string> COSRCViewDlg::SelectorEntries() const {
    std::vector<std::string> entries;
    if (const auto leading = Settings.Leading())
        for (const OpticalSeries& series : SeriesFor(*leading))
            entries.push_back(
                Format("%s [%s]", Utf8Of(series.type).c_str(), Utf8Of(series.units).c_str()));
    return entries;
}

int COSRCViewDlg::Selection() const {
    const auto leading = Settings.Leading();
    if (!leading || SeriesFor(*leading).empty())
        return -1;
    return static_cast<int>(&Chosen(*leading) - SeriesFor(*leading).data());
}

void COSRCViewDlg::Select(int index) {
    const auto leading = Settings.Leading();
    if (!leading || index < 0 || static_cast<std::size_t>(index) >= SeriesFor(*leading).size())
        return;
    SelectionFor(*leading) = index;
    LastDutFrame = LastReferenceFrame = NothingDrawn;
}

std::string COSRCViewDlg::LimitText() const {
    const auto leading = Settings.Leading();
    return leading ? GeneralNumber(Settings.MaxValues[PlaceOf(*leading)], 4) : std::string();
}

bool COSRCViewDlg::SetLimit(std::string_view text) {
    const auto leading = Settings.Leading();
    const std::optional<double> number = WholeNumber(Trim(text));
    if (!leading || !number || !std::isfinite(*number))
        return false;
    Settings.MaxValues[PlaceOf(*leading)] = *number;
    LastDutFrame = LastReferenceFrame = NothingDrawn;
    return true;
}

std::string WhyNoRealityCheck(CQorViewDoc& doc) {
    const auto refusal = [](const char* reason) {
        return std::string("Unable to initialize Optical Systems Reality Check.\r\n") + reason;
    };
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* dut = doc.RoleInstrument(InstrumentRole::DeviceUnderTest);
    const CQorViewIns* reference = doc.RoleInstrument(InstrumentRole::Reference);
    if (!dut)
        return refusal("No DUT instrument has been specified.");
    if (!reference)
        return refusal("No REFERENCE instrument has been specified.");
    if (!COSRCViewDlg().Initialise(*dut, *reference, doc))
        return refusal("See the session log for details.");
    return {};
}

} // namespace qor
