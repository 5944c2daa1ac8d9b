// SPDX-License-Identifier: GPL-3.0-or-later
//
// Warning and alarm limits of a watched quantity: their stored text, how a value is classified and
// painted, and the dialog in which the operator edits them. The only room that knows the stored
// form. Used by the displays on the user-interface thread.
#pragma once

#include "session/ProfileStore.h"
#include "session/UserService.h"
#include "views/GridPage.h"

#include <string>
#include <string_view>

namespace qor {

/// The ranges name the values that are bad. Both start disabled.
struct WarningRanges {
    double WarnMin = 0.0;
    double WarnMax = 0.0;
    double AlarmMin = 0.0;
    double AlarmMax = 0.0;
    int WarnEnabled = 0;
    int AlarmEnabled = 0;

    bool operator==(const WarningRanges&) const = default;
    /// Either of them is watched.
    bool AnyEnabled() const { return WarnEnabled || AlarmEnabled; }
};

inline constexpr WarningRanges DefaultTiltRanges{20.0, 45.0, 45.0, 180.0, 0, 0};

/// The stored form: four numbers of width 9 and two digits, at fixed positions.
std::string FormatWarningRanges(const WarningRanges& ranges);

/// Reads the stored form by its positions; a position without a number reads as 0. An empty text
/// leaves the ranges alone.
void ParseWarningRanges(std::string_view text, WarningRanges& ranges);

/// Reads and writes the ranges under a key of a display's section.
void SaveRanges(CProfileStore& store, const std::string& section, const std::string& key,
                const WarningRanges& ranges);
void LoadRanges(const CProfileStore& store, const std::string& section, const std::string& key,
                WarningRanges& ranges);

enum class WatchState { Normal, Warning, Alarm };

/// The alarm comes first; a value on a bound is outside of its range.
WatchState Classify(const WarningRanges& ranges, double value);

/// How a display shows its watched quantities at this moment.
struct AlarmSignal {
    bool blinkPhase = false;
    bool sound = false;
};

/// Colours the cell by the value's state. True when it asks for the alarm sound: an alarm in the
/// lit blink phase.
bool PaintWatched(const WarningRanges& ranges, double value, const AlarmSignal& signal,
                  GridCell& cell);
/// The colours of a cell that has no value to watch.
void PaintUnwatched(GridCell& cell);

/// The dialog in which the ranges of one quantity are edited, apart from its widgets: what its
/// fields show, and what OK does.
class CAncWarningsDlg {
  public:
    /// Works on a copy of the ranges. `quantity` goes into the caption.
    CAncWarningsDlg(const WarningRanges& ranges, std::string_view quantity);

    const std::string& Caption() const { return Title; }

    std::string WarnMin, WarnMax, AlarmMin, AlarmMax; ///< the edit fields
    bool WarnEnabled, AlarmEnabled;                   ///< the "Enable" boxes

    /// OK: checks the fields (warning range first). True when the dialog may close; then `ranges`
    /// holds the six values. Otherwise the operator was told, and `ranges` is as it was.
    bool Accept(CUserService& user, WarningRanges& ranges) const;

  private:
    std::string Title;
};

} // namespace qor
