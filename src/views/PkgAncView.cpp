// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of a package: settings, cells and colours. What the rows are and what they
// are worth is DerivedRows' business.
#include "views/PkgAncView.h"

#include "base/Text.h"
#include "views/AncRows.h"
#include "views/ShownInstrument.h"

#include <algorithm>

namespace qor {

namespace {

constexpr const char* PkgAncSection = "\\Ancillary";

struct WatchedRow {
    ANCDATATYPE kind;
    const char* key;
    WarningRanges CPkgAncViewSettings::*ranges;
};

constexpr WatchedRow WatchedRows[] = {
    {ANCDATATYPE::Tilt, "TiltWarnings", &CPkgAncViewSettings::TiltWarnings},
    {ANCDATATYPE::Depth, "DepthWarnings", &CPkgAncViewSettings::DepthWarnings},
    {ANCDATATYPE::Velocity, "VelWarnings", &CPkgAncViewSettings::VelWarnings},
    {ANCDATATYPE::WaterTemperature, "TempWarnings", &CPkgAncViewSettings::TempWarnings},
    {ANCDATATYPE::Salinity, "SalWarnings", &CPkgAncViewSettings::SalWarnings},
};

/// Of the settings, as constant as they are.
template <class Kept> auto WatchedRanges(Kept& settings, ANCDATATYPE kind) {
    const auto watched = std::ranges::find(WatchedRows, kind, &WatchedRow::kind);
    return watched == std::end(WatchedRows) ? nullptr : &(settings.*watched->ranges);
}

} // namespace

bool CPkgAncViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + PkgAncSection;
    SavePlace(store, section);
    for (const WatchedRow& watched : WatchedRows)
        SaveRanges(store, section, watched.key, this->*watched.ranges);
    return true;
}

bool CPkgAncViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + PkgAncSection;
    LoadPlace(store, section);
    for (const WatchedRow& watched : WatchedRows)
        LoadRanges(store, section, watched.key, this->*watched.ranges);
    return true;
}

void CPkgAncViewDlg::Show(const std::string& name) {
    Name = name;
    Shown = PackageId::None;
    Attached.clear();
}

const CPackage* CPkgAncViewDlg::Find(const CQorViewDoc& doc) const {
    const CPackage* known = doc.Find(Shown);
    if (known || (Name.empty() && Shown != PackageId::None))
        return known;
    for (const auto& package : doc.PackageTable)
        if (Name.empty() || package->Name == Name ||
            std::ranges::find(package->Instruments, Name) != package->Instruments.end())
            return package.get();
    return nullptr;
}

bool CPkgAncViewDlg::Refresh(CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CPackage* package = Find(doc);
    PageHead head;
    bool changed = false;
    if (package) {
        if (package->Attached != Attached)
            Initialise(*package);
        const auto old = std::ranges::count_if(
            package->Live, [now = doc.Clock.MonotonicMilliseconds()](const CLiveInstrument* live) {
                return live && live->Stale(now);
            });
        Redraw = Redraw || old != StaleCount; // what was live is to look old, though no frame comes
        StaleCount = old;
        changed = Update(*package, doc.InputsOf(*package)) != 0;
        changed = AgeRows(*package, doc.Clock.MonotonicMilliseconds()) || changed;
        const bool sent =
            std::ranges::any_of(LastFrames, [](std::int64_t frame) { return frame >= 0; });
        head.state = sent ? PageState::Live : PageState::Waiting;
        head.sign = sent ? Sign::Ok : Sign::Waiting;
        if (sent)
            LeadByRows(Grid, 0, head);
        else
            head.sentence = "Waiting for " + Utf8Of(package->Name) + ".";
    } else if (Shown != PackageId::None) {
        head.state = PageState::Gone;
        head.sign = Sign::Off;
        head.sentence = "The package was removed.";
        head.remedy = "Close";
    } else {
        head = EmptyHead(Name.empty() ? "There is no package."
                                      : Utf8Of(Name) + " belongs to no package.",
                         "Add package");
    }
    changed = changed || head != Grid.head;
    Grid.head = std::move(head);
    return changed;
}

void CPkgAncViewDlg::Initialise(const CPackage& package) {
    Shown = package.Id;
    Attached = package.Attached;
    PackageName = package.Name;
    Members = package.Instruments;
    Signal.blinkPhase = false;
    LastFrames.assign(package.Live.size(), -1);
    Rows = package.Products.Rows();
    Grid = {Format("Package %s - %s", Utf8Of(package.Name).c_str(), "Ancillary View"), {}};
    for (const DerivedRow& row : Rows)
        Grid.rows.push_back(
            RowOfProduct(row, Grid.rows.size() + 1, WatchedRanges(Settings, row.kind) != nullptr));
    SalinityText.clear();
    if (package.Products.LacksSalinity(package.Settings))
        SalinityText =
            "The Instrument Package Ancillary View requires Salinity to calculate BETAp(x), "
            "bbp(x) and bb(x).\r\nThe sensors required for calculating Salinity were not "
            "found.\r\n\r\nPlease select the Instrument Package's Properties menu to specify a "
            "Salinity value.";
}

int CPkgAncViewDlg::Update(const CPackage& package, const CPackageRows::Inputs& inputs) {
    bool draw = false;
    for (std::size_t i = 0; i < LastFrames.size() && i < inputs.instruments.size(); ++i) {
        const CLiveInstrument* instrument = inputs.instruments[i];
        if (!instrument || !instrument->CurrentFrame())
            continue;
        draw = draw || Redraw || instrument->FrameNumber() != LastFrames[i];
        LastFrames[i] = instrument->FrameNumber();
    }
    if (!draw)
        return 0;
    Redraw = false;
    Signal.blinkPhase = !Signal.blinkPhase;
    Grid.beep = false;
    package.Products.Read(inputs, Rows);
    // Decided: rows are drawn out of sight too, for an alarm is told wherever the page was scrolled
    // to.
    for (std::size_t i = 0; i < Rows.size(); ++i) {
        if (ShowProduct(Rows[i], WatchedRanges(Settings, Rows[i].kind), Signal, -1, Rows[i].stale,
                        Grid.rows[i]))
            Grid.beep = true;
    }
    return 1;
}

/// A row is as old as the oldest instrument that it comes from. True when a text changed.
bool CPkgAncViewDlg::AgeRows(const CPackage& package, std::int64_t now) {
    bool changed = false;
    for (std::size_t i = 0; i < Grid.rows.size(); ++i) {
        std::int64_t age = -1;
        for (const int place : package.Products.CarriersOf(i))
            if (const CLiveInstrument* live = InstrumentAt(package.Live, place))
                if (live->CurrentFrame())
                    age = std::max(age, now - live->ArrivalMonotonic);
        changed = AgeRow(Grid.rows[i], age) || changed;
    }
    return changed;
}

bool CPkgAncViewDlg::Watches() const {
    return std::ranges::any_of(WatchedRows, [this](const WatchedRow& watched) {
        return (Settings.*watched.ranges).AnyEnabled();
    });
}

const WarningRanges* CPkgAncViewSettings::RangesOf(ANCDATATYPE kind) const {
    return WatchedRanges(*this, kind);
}

void CPkgAncViewDlg::LoadSettings(const CProfileStore& store, const std::string& prefix) {
    if (Settings.Load(store, prefix))
        Redraw = true;
}

void CPkgAncViewDlg::SaveSettings(CProfileStore& store, const std::string& prefix) const {
    (void)Settings.Save(store, prefix); // without a prefix there is nothing to keep
}

WarningRanges* CPkgAncViewDlg::RangesOfRow(std::size_t row) {
    return row < Rows.size() ? WatchedRanges(Settings, Rows[row].kind) : nullptr;
}

const WarningRanges* CPkgAncViewDlg::RangesOf(const std::string& instrument,
                                              ANCDATATYPE kind) const {
    return std::ranges::find(Members, instrument) == Members.end() ? nullptr
                                                                   : WatchedRanges(Settings, kind);
}

} // namespace qor
