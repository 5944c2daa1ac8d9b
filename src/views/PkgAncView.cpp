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

CPkgAncViewDlg::CPkgAncViewDlg(CUserService& user, VelocityState& velocity, bool alarmSound)
    : User(user), Velocity(velocity) {
    Signal.sound = alarmSound;
}

void CPkgAncViewDlg::Initialise(const std::string& packageName, Instruments instruments,
                                const PackageSettings& package) {
    Signal.blinkPhase = false;
    Visible = {};
    LastFrames.assign(instruments.size(), -1);
    Products = CPackageRows(instruments, package);
    Grid = {Format("Package %s - %s", packageName.c_str(), "Ancillary View"), {}};
    for (const DerivedRow& row : Products.Rows())
        Grid.rows.push_back({row.label, row.units, {}});
}

void CPkgAncViewDlg::ReportMissingSalinity() {
    if (!Products.LacksSalinity())
        return;
    User.ShowMessage(
        "The Instrument Package Ancillary View requires Salinity to calculate BETAp(x), bbp(x) and "
        "bb(x).\r\nThe sensors required for calculating Salinity were not found.\r\n\r\nPlease "
        "select the Instrument Package's Properties menu to specify a Salinity value.");
}

int CPkgAncViewDlg::Update(Instruments instruments, const PackageSettings& package,
                           double pressureOffset) {
    bool draw = false;
    for (std::size_t i = 0; i < LastFrames.size() && i < instruments.size(); ++i) {
        if (!instruments[i] || !instruments[i]->CurrentFrame())
            continue;
        draw = draw || Redraw || instruments[i]->FrameNumber() != LastFrames[i];
        LastFrames[i] = instruments[i]->FrameNumber();
    }
    if (!draw)
        return 0;
    Redraw = false;
    Signal.blinkPhase = !Signal.blinkPhase;
    std::vector<DerivedRow> products;
    const CPackageRows::Inputs inputs{instruments, package, pressureOffset};
    Products.Advance(inputs, Velocity);
    Products.Read(inputs, products);
    for (std::size_t i = Visible.first; i < products.size() && Visible.Contains(i); ++i) {
        GridCell& cell = Grid.rows[i].value;
        cell.text = DerivedText(products[i]);
        const WarningRanges* ranges = RangesOf(Settings, products[i].kind);
        if (ranges && products[i].value)
            PaintWatched(*ranges, *products[i].value, Signal, User, cell);
    }
    return 1;
}

void CPkgAncViewDlg::SetVisibleRows(VisibleRows rows) {
    Visible = rows;
    Redraw = true;
}

WarningRanges* CPkgAncViewDlg::RangesOfRow(std::size_t row) {
    return row < Products.Rows().size() ? RangesOf(Settings, Products.Rows()[row].kind) : nullptr;
}

} // namespace qor
