// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of one instrument: which sensors have a row, and the text and colours of
// the cells.
#include "views/AncView.h"

#include "base/Text.h"
#include "instrument/FieldText.h"
#include "instrument/FitTypes.h"

namespace qor {

namespace {

constexpr const char* WindowName = "Ancillary View";
constexpr const char* SectionName = "\\Ancillary";
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
    const std::string section = prefix + SectionName;
    SavePlace(store, section);
    store.WriteInteger(section, "ViewType", ViewType);
    store.WriteInteger(section, "PageIndex", PageIndex);
    SaveRanges(store, section, "TiltWarnings", TiltWarnings);
    return true;
}

bool CAncViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + SectionName;
    LoadPlace(store, section);
    LoadInteger(store, section, "ViewType", ViewType);
    LoadInteger(store, section, "PageIndex", PageIndex);
    LoadRanges(store, section, "TiltWarnings", TiltWarnings);
    return true;
}

int CAncViewDlg::Refresh(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CQorViewIns* instrument = doc.Find(doc.FindInstrument(Name));
    Now = doc.Clock.MonotonicMilliseconds();
    if (instrument && instrument->Live.Stale(Now) != WasStale)
        LastFrame = -1; // what was live is to look old, though no frame comes
    if (instrument && instrument->Id != Shown)
        Initialise(*instrument);
    return Update(instrument);
}

void CAncViewDlg::Initialise(const CQorViewIns& instrument) {
    Name = instrument.Name();
    Shown = instrument.Id;
    LastFrame = -1;
    Signal.blinkPhase = false;
    Visible = {};
    const std::string title = instrument.Title.empty()
                                  ? WindowName
                                  : Format("%s - %s", WindowName, instrument.Title.c_str());
    Sensors = {title, {}};
    Derived = {title, {}};
    BuildSensorPage(instrument);
    Products = CInstrumentRows(instrument.Live);
    for (const DerivedRow& row : Products.Rows())
        Derived.rows.push_back({.label = row.label, .units = row.units, .value = {}});
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
        Sensors.rows.push_back({.label = SensorName(sensor),
                                .units = sensor.Units.empty() ? "" : "(" + sensor.Units + ")",
                                .value = {}});
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
    for (std::size_t i = Visible.first; i < Sensors.rows.size() && Visible.Contains(i); ++i) {
        const CSensor* sensor = instrument.Definition().Sensor(SensorRows[i].sensor);
        if (!sensor)
            continue;
        // A failure leaves the text of its status in the cell.
        static_cast<void>(FormatField(*sensor, instrument.Live.CurrentFrame()->Span(),
                                      instrument.Live.Immersed, view, SensorRows[i].decimals,
                                      Sensors.rows[i].value.text));
        double number = 0.0;
        const bool has = instrument.Live.Value(*sensor, number) == ConversionStatus::Good;
        Sensors.rows[i].number = has ? std::optional(number) : std::nullopt;
        Sensors.rows[i].stale = instrument.Live.Stale(Now);
    }
}

void CAncViewDlg::UpdateDerivedPage(const CQorViewIns& instrument) {
    Signal.blinkPhase = !Signal.blinkPhase;
    Products.Read(instrument.Live, Rows);
    const bool stale = instrument.Live.Stale(Now);
    Derived.beep = false;
    for (std::size_t i = Visible.first; i < Rows.size() && Visible.Contains(i); ++i) {
        GridCell& cell = Derived.rows[i].value;
        cell.text = DerivedText(Rows[i]);
        Derived.rows[i].number = Rows[i].value;
        Derived.rows[i].stale = stale;
        if (Rows[i].kind != ANCDATATYPE::Tilt || !Rows[i].value)
            PaintUnwatched(cell);
        else if (PaintWatched(Settings.TiltWarnings, *Rows[i].value, Signal, cell))
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
}

const GridPage& CAncViewDlg::Page() const {
    return Settings.PageIndex == CAncViewSettings::DerivedPage ? Derived : Sensors;
}

WarningRanges* CAncViewDlg::RangesOfRow(std::size_t row) {
    const bool watched =
        row < Products.Rows().size() && Products.Rows()[row].kind == ANCDATATYPE::Tilt;
    return watched ? &Settings.TiltWarnings : nullptr;
}

} // namespace qor
