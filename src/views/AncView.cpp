// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of one instrument: which sensors have a row, and the text and colours of
// the cells.
#include "views/AncView.h"

#include "base/Text.h"
#include "instrument/FieldText.h"
#include "instrument/FitTypes.h"
#include "views/AncRows.h"
#include "views/ShownInstrument.h"

namespace qor {

namespace {

constexpr const char* AncTitle = "Ancillary View";
constexpr const char* AncSection = "\\Ancillary";
constexpr int TimeDecimals = 2;
constexpr int ValueDecimals = 4;

bool HasSensorRow(const CSensor& sensor, std::int32_t counter, std::int32_t checksum) {
    return sensor.Fit != FitType::NONE && sensor.Fit != FitType::DELIMITER &&
           !IsOptic(sensor.Fit) && sensor.Index != counter && sensor.Index != checksum;
}

FieldView ViewOf(int viewType) {
    return viewType == 1   ? FieldView::RawCounts
           : viewType == 2 ? FieldView::HexCounts
                           : FieldView::Calibrated;
}

} // namespace

bool CAncViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + AncSection;
    SavePlace(store, section);
    store.WriteInteger(section, "ViewType", ViewType);
    store.WriteInteger(section, "PageIndex", PageIndex);
    SaveRanges(store, section, "TiltWarnings", TiltWarnings);
    return true;
}

bool CAncViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + AncSection;
    LoadPlace(store, section);
    LoadInteger(store, section, "ViewType", ViewType);
    LoadInteger(store, section, "PageIndex", PageIndex);
    LoadRanges(store, section, "TiltWarnings", TiltWarnings);
    return true;
}

void CAncViewDlg::Show(const std::string& instrument) {
    Name = instrument;
    Attachment = InstrumentId::None;
}

bool CAncViewDlg::Refresh(CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* instrument = FindShown(doc, Name);
    Now = doc.Clock.MonotonicMilliseconds();
    if (instrument && instrument->Live.Stale(Now) != WasStale)
        LastFrame = -1; // what was live is to look old, though no frame comes
    if (instrument && instrument->Id != Attachment)
        Initialise(*instrument);
    bool changed = Update(instrument) != 0;
    PageHead head = HeadOf(instrument, Name, Attachment != InstrumentId::None, Now);
    if (instrument && IsDerived() && Derived.rows.empty())
        head = EmptyHead(Utf8Of(Name) + " has no derived products.");
    if (WasStale && instrument)
        for (GridRow& row : Shown().rows)
            changed = AgeRow(row, Now - instrument->Live.ArrivalMonotonic) || changed;
    if (head.state == PageState::Live)
        LeadByRows(Shown(), IsDerived() ? 0 : Visible.first, head);
    changed = changed || head != Shown().head;
    Shown().head = std::move(head);
    return changed;
}

void CAncViewDlg::Initialise(const CQorViewIns& instrument) {
    Name = instrument.Name();
    Attachment = instrument.Id;
    LastFrame = -1;
    Signal.blinkPhase = false;
    Visible = {};
    const std::string title = instrument.Title.empty()
                                  ? AncTitle
                                  : Format("%s - %s", AncTitle, Utf8Of(instrument.Title).c_str());
    Sensors = {title, {}};
    Derived = {title, {}};
    BuildSensorPage(instrument);
    Products = CInstrumentRows(instrument.Live);
    for (const DerivedRow& row : Products.Rows())
        Derived.rows.push_back(
            RowOfProduct(row, Derived.rows.size() + 1, row.kind == ANCDATATYPE::Tilt));
}

void CAncViewDlg::BuildSensorPage(const CQorViewIns& instrument) {
    const CInstrument& definition = instrument.Definition();
    // The role sensors, whether they are checked or not.
    const std::int32_t counter = FrameCounterIndex(definition);
    const std::int32_t checksum = ChecksumIndexOf(definition);
    const CSensor* timer = definition.NextSensor("TIMER");
    const CSensor* strain = definition.NextSensor("STRAIN");
    SensorRows.clear();
    for (const CSensor& sensor : definition.Sensors()) {
        if (!HasSensorRow(sensor, counter, checksum))
            continue;
        const bool fewDecimals = &sensor == timer || &sensor == strain;
        SensorRows.push_back({sensor.Index, fewDecimals ? TimeDecimals : ValueDecimals});
        Sensors.rows.push_back(
            {.label = Utf8Of(SensorName(sensor)),
             .units = sensor.Units.empty() ? "" : "(" + Utf8Of(sensor.Units) + ")",
             .value = {},
             .id = static_cast<std::uint64_t>(sensor.Index) + 1});
    }
}

int CAncViewDlg::Update(const CQorViewIns* instrument) {
    if (!instrument || !instrument->Live.CurrentFrame() ||
        instrument->Live.FrameNumber() == LastFrame)
        return 0;
    LastFrame = instrument->Live.FrameNumber();
    WasStale = instrument->Live.Stale(Now);
    if (Settings.PageIndex == CAncViewSettings::SensorPage)
        UpdateSensorPage(*instrument);
    if (Settings.PageIndex == CAncViewSettings::DerivedPage)
        UpdateDerivedPage(*instrument);
    return 1;
}

void CAncViewDlg::UpdateSensorPage(const CQorViewIns& instrument) {
    const FieldView view = ViewOf(Settings.ViewType);
    const std::int64_t age = Now - instrument.Live.ArrivalMonotonic;
    const bool stale = instrument.Live.Stale(Now);
    for (std::size_t i = Visible.first; i < Sensors.rows.size() && Visible.Contains(i); ++i) {
        const CSensor* sensor = instrument.Definition().Sensor(SensorRows[i].sensor);
        if (!sensor)
            continue;
        GridRow& row = Sensors.rows[i];
        std::string text;
        // A failure leaves the text of its status in the cell.
        const ConversionStatus status =
            FormatField(*sensor, instrument.Live.CurrentFrame()->Span(), instrument.Live.Immersed,
                        view, SensorRows[i].decimals, text);
        row.value.text = Utf8Of(text);
        double number = 0.0;
        const bool has = instrument.Live.Value(*sensor, number) == ConversionStatus::Good;
        row.number = has ? std::optional(number) : std::nullopt;
        MarkRow(row, status == ConversionStatus::Good ? Sign::None : Sign::Error, age, stale);
    }
}

void CAncViewDlg::UpdateDerivedPage(const CQorViewIns& instrument) {
    Signal.blinkPhase = !Signal.blinkPhase;
    Products.Read(instrument.Live, Rows);
    const std::int64_t age = Now - instrument.Live.ArrivalMonotonic;
    const bool stale = instrument.Live.Stale(Now);
    Derived.beep = false;
    // Decided: derived rows are drawn out of sight too, for an alarm is told wherever the page was
    // scrolled to.
    for (std::size_t i = 0; i < Rows.size(); ++i) {
        const bool watched = Rows[i].kind == ANCDATATYPE::Tilt;
        if (ShowProduct(Rows[i], watched ? &Settings.TiltWarnings : nullptr, Signal, age, stale,
                        Derived.rows[i]))
            Derived.beep = true;
    }
}

void CAncViewDlg::SetPage(int pageIndex) {
    Settings.PageIndex = pageIndex;
    LastFrame = -1;
}

void CAncViewDlg::SetViewType(int viewType) {
    Settings.ViewType = viewType;
    LastFrame = -1;
}

void CAncViewDlg::SetVisibleRows(VisibleRows rows) {
    Visible = rows;
    LastFrame = -1;
    for (std::size_t i = 0; i < Sensors.rows.size(); ++i)
        if (!Visible.Contains(i)) // what it was is not known to last
            MarkRow(Sensors.rows[i], Sign::None, -1, false);
}

const GridPage& CAncViewDlg::Page() const {
    return IsDerived() ? Derived : Sensors;
}

Menu CAncViewDlg::ContextMenu(CQorViewDoc&) {
    Menu menu;
    for (const auto& [page, text] : {std::pair{CAncViewSettings::DerivedPage, "&Derived Products"},
                                     std::pair{CAncViewSettings::SensorPage, "&Sensors"}})
        menu.push_back(
            {text, [this, chosen = page] { SetPage(chosen); }, true, Settings.PageIndex == page});
    menu.push_back({});
    for (int type = 0; type < static_cast<int>(std::size(AncViewTypeNames)); ++type)
        menu.push_back({AncViewTypeNames[type], [this, type] { SetViewType(type); }, true,
                        Settings.ViewType == type,
                        IsDerived() ? "Derived products have no raw counts." : ""});
    return menu;
}

void CAncViewDlg::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    if (Settings.Load(store, prefix))
        LastFrame = -1;
}

void CAncViewDlg::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix); // without a prefix there is nothing to keep
}

WarningRanges* CAncViewDlg::RangesOfRow(std::size_t row) {
    const bool watched = IsDerived() && row < Products.Rows().size() &&
                         Products.Rows()[row].kind == ANCDATATYPE::Tilt;
    return watched ? &Settings.TiltWarnings : nullptr;
}

const WarningRanges* CAncViewDlg::RangesOf(const std::string& instrument, ANCDATATYPE kind) const {
    return kind == ANCDATATYPE::Tilt && instrument == Name ? &Settings.TiltWarnings : nullptr;
}

} // namespace qor
