// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of a package, apart from its window: one row a derived product, five of
// them watched. Refreshed by its window on the user-interface thread; the products are the
// document's, which advances them.
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
    /// Null of a row that is not watched.
    const WarningRanges* RangesOf(ANCDATATYPE kind) const;
};

class CPkgAncViewDlg : public CView {
  public:
    explicit CPkgAncViewDlg(bool alarmSound) { Signal.sound = alarmSound; }

    CPkgAncViewSettings Settings;

    /// The package of this name, or the one that the instrument of this name belongs to.
    void Show(const std::string& name) override;
    void Show(PackageId package) { Shown = package; }
    /// Begins afresh when other attachments than before carry the package's instruments' names.
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Grid}; }
    Menu ContextMenu(CQorViewDoc&) override { return {}; }

    /// Builds the rows and the title for a package.
    void Initialise(const CPackage& package);
    /// Fills the cells from the latest frames, under the document's lock. 1 when something
    /// was drawn, 0 when no instrument has a new frame.
    int Update(const CPackage& package, const CPackageRows::Inputs& inputs);

    /// What the operator is told when scattering cannot be computed for want of a salinity; else
    /// empty. After Initialise or Refresh.
    const std::string& MissingSalinity() const { return SalinityText; }
    std::string Notice() const override { return SalinityText; }

    void SetAlarmSound(bool on) override { Signal.sound = on; }
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    const GridPage& Page() const { return Grid; }

    /// The ranges that activating a row lets the operator edit, or null.
    WarningRanges* RangesOfRow(std::size_t row) override;
    const WarningRanges* RangesOf(const std::string& instrument, ANCDATATYPE kind) const override;
    const std::string& Watched() const override { return PackageName; }
    bool Watches() const override;

  private:
    const CPackage* Find(const CQorViewDoc& doc) const REQUIRES(doc.DocLock);
    bool AgeRows(const CPackage& package, std::int64_t now);

    std::string Name; ///< as it was asked for
    PackageId Shown = PackageId::None;
    std::vector<InstrumentId> Attached;
    std::string PackageName;
    std::vector<std::string> Members; ///< of the package, by name
    std::string SalinityText;
    AlarmSignal Signal;
    GridPage Grid;
    std::vector<DerivedRow> Rows;
    std::vector<std::int64_t> LastFrames; ///< of each instrument
    bool Redraw = false;
    std::ptrdiff_t StaleCount = 0; ///< instruments that send no more
};

} // namespace qor
