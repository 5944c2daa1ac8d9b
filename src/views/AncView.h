// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ancillary display of one instrument, apart from its window: a page of sensors and a page of
// derived products (tilt, PAR). The window refreshes it at its own rate on the user-interface
// thread and paints the page; a page that asks for the alarm sound is sounded by the window.
#pragma once

#include "products/DerivedRows.h"
#include "session/QorViewDoc.h"
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
    explicit CAncViewDlg(bool alarmSound) { Signal.sound = alarmSound; }

    CAncViewSettings Settings;

    /// Shows the instrument of this name from now on.
    void Show(const std::string& name) { Name = name; }
    /// Updates from the session: looks the instrument up and, when another attachment has its name
    /// (its definition was added again), begins afresh. As Update.
    int Refresh(const CQorViewDoc& doc);

    /// Builds the rows of both pages and the title for an instrument of the session.
    void Initialise(const CQorViewIns& instrument);
    /// Fills the visible cells of the page that is shown from the instrument's current frame, under
    /// the document's lock. 1 when something was drawn; 0 when the instrument is gone (null) or has
    /// no new frame.
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

  private:
    struct SensorRow {
        int sensor;
        int decimals;
    };
    void BuildSensorPage(const CQorViewIns& instrument);
    void UpdateSensorPage(const CQorViewIns& instrument);
    void UpdateDerivedPage(const CQorViewIns& instrument);

    AlarmSignal Signal;
    GridPage Sensors, Derived;
    std::vector<SensorRow> SensorRows;
    CInstrumentRows Products;
    VisibleRows Visible;
    std::int64_t LastFrame = -1;
    std::string Name;
    InstrumentId Shown = InstrumentId::None;
    std::vector<DerivedRow> Rows; ///< its memory is used from update to update
    std::int64_t Now = 0;         ///< monotonic milliseconds, of the latest refresh
    bool WasStale = false;
};

} // namespace qor
