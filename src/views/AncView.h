// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of one instrument, apart from its window: a page of sensors and a page of
// derived products (tilt, PAR). The window asks for an update at its own rate on the
// user-interface thread, under the document's lock, and paints the page.
#pragma once

#include "products/DerivedRows.h"
#include "session/QorViewIns.h"
#include "views/WarningRanges.h"
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

/// The rows of a page that can be seen; only they are refreshed.
struct VisibleRows {
    std::size_t first = 0;
    std::size_t end = static_cast<std::size_t>(-1); ///< one past the last

    bool Contains(std::size_t row) const { return first <= row && row < end; }
};

class CAncViewDlg {
  public:
    CAncViewDlg(CUserService& user, bool alarmSound);

    CAncViewSettings Settings;

    /// Builds the rows of both pages and the title for an instrument of the session.
    void Initialise(const CQorViewIns& instrument, int packageIndex, int instrumentIndex);

    /// Fills the visible cells of the page that is shown from the instrument's current frame.
    /// 1 when something was drawn; 0 when the instrument is gone (null) or has no new frame.
    int Update(const CQorViewIns* instrument);

    void SetAlarmSound(bool on) { Signal.sound = on; }
    /// Switching what is shown makes the next update draw the current frame again.
    void SetPage(int pageIndex);
    void SetViewType(int viewType);
    void SetVisibleRows(VisibleRows rows);

    /// The page that is shown.
    const GridPage& Page() const;
    const GridPage& SensorPage() const { return Sensors; }
    const GridPage& DerivedPage() const { return Derived; }

    /// The ranges that activating a row of the derived page lets the operator edit, or null.
    WarningRanges* RangesOfRow(std::size_t row);

    int PackageIndex() const { return Package; }
    int InstrumentIndex() const { return Instrument; }

  private:
    struct SensorRow {
        int sensor;
        int decimals;
    };
    void BuildSensorPage(const CQorViewIns& instrument);
    void UpdateSensorPage(const CQorViewIns& instrument);
    void UpdateDerivedPage(const CQorViewIns& instrument);

    CUserService& User;
    AlarmSignal Signal;
    GridPage Sensors, Derived;
    std::vector<SensorRow> SensorRows;
    CInstrumentRows Products;
    VisibleRows Visible;
    std::int64_t LastFrame = -1;
    int Package = -1, Instrument = -1;
};

} // namespace qor
