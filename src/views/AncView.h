// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of one instrument, apart from its window: a page of sensors and a page of
// derived products (tilt, PAR). The window refreshes it at its own rate on the user-interface
// thread and paints the page; a page that asks for the alarm sound is sounded by the window.
#pragma once

#include "products/DerivedRows.h"
#include "views/View.h"
#include "views/WindowPlace.h"

#include <string>
#include <vector>

namespace qor {

/// Kept for each ancillary view under the caller's section prefix.
struct CAncViewSettings : WindowPlace {
    static constexpr int DerivedPage = 0, SensorPage = 1;

    int PageIndex = SensorPage;
    int ViewType = 0; ///< 0 calibrated, 1 raw counts, 2 raw counts in hexadecimal
    WarningRanges TiltWarnings = DefaultTiltRanges;

    /// False, and nothing done, without a prefix. Absent keys leave their fields alone.
    bool Save(CProfileStore& store, const std::string& prefix) const;
    bool Load(const CProfileStore& store, const std::string& prefix);
};

/// The choices of the sensor page's display mode, by ViewType.
inline constexpr const char* AncViewTypeNames[] = {"&Calibrated Values", "&Raw Counts",
                                                   "Raw Counts (&Hex)"};

class CAncViewDlg : public CView {
  public:
    explicit CAncViewDlg(bool alarmSound) { Signal.sound = alarmSound; }

    CAncViewSettings Settings;

    void Show(const std::string& instrument) override;
    /// When another attachment has the instrument's name (its definition was added again), it
    /// begins afresh.
    bool Refresh(CQorViewDoc& doc) override;
    ViewPages Pages() const override { return {&Page()}; }
    Menu ContextMenu(CQorViewDoc& doc) override;

    /// Builds the rows of both pages and the title for an instrument of the session.
    void Initialise(const CQorViewIns& instrument);
    /// Fills the cells of the page that is shown (of the sensors those that can be seen) from the
    /// instrument's current frame, under the document's lock. 1 when something was drawn; 0 when
    /// the instrument is gone (null) or has no new frame.
    int Update(const CQorViewIns* instrument);

    void SetAlarmSound(bool on) override { Signal.sound = on; }
    /// Switching what is shown makes the next update draw the current frame again.
    void SetPage(int pageIndex);
    void SetViewType(int viewType);
    void SetVisibleRows(VisibleRows rows) override;
    void LoadSettings(const CProfileStore& store, const std::string& prefix) override;
    void SaveSettings(CProfileStore& store, const std::string& prefix) const override;

    /// The page that is shown.
    const GridPage& Page() const;
    const GridPage& SensorPage() const { return Sensors; }
    const GridPage& DerivedPage() const { return Derived; }

    /// The ranges that activating a row of the derived page lets the operator edit, or null.
    WarningRanges* RangesOfRow(std::size_t row) override;
    const WarningRanges* RangesOf(const std::string& instrument, ANCDATATYPE kind) const override;
    const std::string& Watched() const override { return Name; }
    bool Watches() const override { return IsDerived() && Settings.TiltWarnings.AnyEnabled(); }

  private:
    struct SensorRow {
        int sensor;
        int decimals;
    };
    void BuildSensorPage(const CQorViewIns& instrument);
    void UpdateSensorPage(const CQorViewIns& instrument);
    void UpdateDerivedPage(const CQorViewIns& instrument);
    GridPage& Shown() { return IsDerived() ? Derived : Sensors; }
    bool IsDerived() const { return Settings.PageIndex == CAncViewSettings::DerivedPage; }

    AlarmSignal Signal;
    GridPage Sensors, Derived;
    std::vector<SensorRow> SensorRows;
    CInstrumentRows Products;
    VisibleRows Visible;
    std::int64_t LastFrame = -1;
    std::string Name;
    InstrumentId Attachment = InstrumentId::None; ///< that is shown
    std::vector<DerivedRow> Rows;                 ///< its memory is used from update to update
    std::int64_t Now = 0;                         ///< monotonic milliseconds, of the latest refresh
    bool WasStale = false;
};

} // namespace qor
