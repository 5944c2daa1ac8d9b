// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of a package: settings, cells and colours. What the rows are and what they
// are worth is DerivedRows' business.
#include "views/PkgAncView.h"

#include "base/Text.h"

namespace qor {

namespace {

constexpr const char* SectionName = "\\Ancillary";

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

WarningRanges* RangesOf(CPkgAncViewSettings& settings, ANCDATATYPE kind) {
    for (const WatchedRow& watched : WatchedRows)
        if (watched.kind == kind)
            return &(settings.*watched.ranges);
    return nullptr;
}

} // namespace

bool CPkgAncViewSettings::Save(CProfileStore& store, const std::string& prefix) const {
    if (prefix.empty())
        return false;
    const std::string section = prefix + SectionName;
    SavePlace(store, section);
    for (const WatchedRow& watched : WatchedRows)
        SaveRanges(store, section, watched.key, this->*watched.ranges);
    return true;
}

bool CPkgAncViewSettings::Load(const CProfileStore& store, const std::string& prefix) {
    if (prefix.empty())
        return false;
    const std::string section = prefix + SectionName;
    LoadPlace(store, section);
    for (const WatchedRow& watched : WatchedRows)
        LoadRanges(store, section, watched.key, this->*watched.ranges);
    return true;
}

int CPkgAncViewDlg::Refresh(const CQorViewDoc& doc) {
    CRecursiveLock lock(doc.DocLock);
    const CPackage* package = doc.Find(Shown);
    if (!package)
        return 0;
    if (package->Attached != Attached)
        Initialise(*package);
    return Update(*package, doc.InputsOf(*package));
}

void CPkgAncViewDlg::Initialise(const CPackage& package) {
    Shown = package.Id;
    Attached = package.Attached;
    Signal.blinkPhase = false;
    Visible = {};
    LastFrames.assign(package.Live.size(), -1);
    Grid = {Format("Package %s - %s", package.Name.c_str(), "Ancillary View"), {}};
    for (const DerivedRow& row : package.Products.Rows())
        Grid.rows.push_back({.label = row.label, .units = row.units, .value = {}});
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
    for (std::size_t i = Visible.first; i < Rows.size() && Visible.Contains(i); ++i) {
        GridCell& cell = Grid.rows[i].value;
        cell.text = DerivedText(Rows[i]);
        Grid.rows[i].number = Rows[i].value;
        Grid.rows[i].stale = Rows[i].stale;
        const WarningRanges* ranges = RangesOf(Settings, Rows[i].kind);
        if (!ranges || !Rows[i].value)
            PaintUnwatched(cell);
        else if (PaintWatched(*ranges, *Rows[i].value, Signal, cell))
            Grid.beep = true;
    }
    return 1;
}

void CPkgAncViewDlg::SetVisibleRows(VisibleRows rows) {
    Visible = rows;
    Redraw = true;
}

WarningRanges* CPkgAncViewDlg::RangesOfRow(std::size_t row) {
    return row < Rows.size() ? RangesOf(Settings, Rows[row].kind) : nullptr;
}

} // namespace qor
