// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of a package, apart from its window: one row a derived product, five of
// them watched. Called on the user-interface thread under the document's lock.
#pragma once

#include "products/PackageRows.h"
#include "views/AncView.h"

#include <string>
#include <vector>

namespace qor {

/// Kept for each package view under the caller's section prefix.
struct CPkgAncViewSettings : WindowPlace {
    WarningRanges TiltWarnings = DefaultTiltRanges;
    WarningRanges DepthWarnings{100.0, 200.0, 200.0, 750.0, 0, 0};
    WarningRanges VelWarnings{2.0, 4.0, 4.0, 20.0, 0, 0};
    WarningRanges TempWarnings{20.0, 25.0, 25.0, 50.0, 0, 0};
    WarningRanges SalWarnings{36.0, 40.0, 40.0, 100.0, 0, 0};

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

class CPkgAncViewDlg {
  public:
    using Instruments = CPackageRows::Instruments;

    /// The velocity state is the document's.
    CPkgAncViewDlg(CUserService& user, VelocityState& velocity, bool alarmSound);

    CPkgAncViewSettings Settings;

    /// Builds the rows and the title for a package's instruments, in package order.
    void Initialise(const std::string& packageName, Instruments instruments,
                    const PackageSettings& package);

    /// Tells the operator when scattering cannot be computed for want of a salinity. To be called
    /// after Initialise, without the document's lock.
    void ReportMissingSalinity();

    /// Fills the visible cells from the instruments' current frames (null: no longer there). 1 when
    /// something was drawn, 0 when no instrument has a new frame.
    int Update(Instruments instruments, const PackageSettings& package, double pressureOffset);

    void SetAlarmSound(bool on) { Signal.sound = on; }
    void SetVisibleRows(VisibleRows rows);

    const GridPage& Page() const { return Grid; }

    /// The ranges that activating a row lets the operator edit, or null.
    WarningRanges* RangesOfRow(std::size_t row);

  private:
    CUserService& User;
    VelocityState& Velocity;
    AlarmSignal Signal;
    GridPage Grid;
    CPackageRows Products;
    VisibleRows Visible;
    std::vector<std::int64_t> LastFrames; ///< of each instrument
    bool Redraw = false;
};

} // namespace qor
