// SPDX-License-Identifier: GPL-3.0-or-later
//
// The axes of a page of curves: their titles, the extent of their data, automatic limits that do
// not twitch, and the thinning of long series to what a plot can show. Pure but for CAutoRange,
// which remembers what it showed; called on the user-interface thread without a lock.
#pragma once

#include "views/PlotPage.h"

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace qor {

struct PlotRange {
    double lower = 0.0;
    double upper = 1.0;

    double Size() const { return upper - lower; }
    bool operator==(const PlotRange&) const = default;
};

/// The ids of the curves that the operator switched off.
using HiddenCurves = std::set<std::uint64_t>;

/// Pages without axes have one of their y limits; its key axis follows the data.
std::size_t ValueAxisCount(const PlotPage& page);
PlotAxis ValueAxis(const PlotPage& page, std::size_t index);
PlotAxis KeyAxis(const PlotPage& page);

/// "label [units]", or "Time UTC", "Time local (UTC+02:00)".
std::string AxisTitle(const PlotAxis& axis);

/// The extent of the values of an axis's visible curves, and of the keys of all; empty when there
/// are none. On a logarithmic axis only positive ones count.
std::optional<PlotRange> ExtentOfAxis(const PlotPage& page, std::size_t axis,
                                      const HiddenCurves& hidden);
std::optional<PlotRange> ExtentOfKey(const PlotPage& page, const HiddenCurves& hidden);

/// Automatic limits of one axis: they widen at once and shrink only after the data have needed less
/// for ten seconds, and they stand on round numbers.
class CAutoRange {
  public:
    /// `now` in seconds of a clock that never steps.
    PlotRange Follow(const std::optional<PlotRange>& extent, const PlotAxis& axis, double now);
    void Forget() { *this = {}; }

  private:
    std::optional<PlotRange> Shown;
    double LastFilled = 0.0;
};

/// The range as an axis can show it: ordered, wider than nothing, positive on a logarithmic axis.
PlotRange UsableRange(PlotRange range, const PlotAxis& axis);
bool IsRange(double lower, double upper);

/// Nearer (a factor below 1) or farther about a place; moved by the way between two places. On a
/// logarithmic axis both in its own measure.
PlotRange ZoomedRange(PlotRange range, double at, double factor, const PlotAxis& axis);
PlotRange PannedRange(PlotRange range, double from, double to, const PlotAxis& axis);

/// Widens one of the two so that a unit is as long on both, on a plot of that many pixels.
void EqualScales(PlotRange& across, PlotRange& upright, int width, int height);

/// The lowest and the highest point of each of `columns` equal steps of x between `from` and `to`,
/// with the step's ends: at most ten points a step. Of the gaps and the hollow points of one step
/// the first is kept. For points whose x rises; one on either side of the range stays, so that
/// lines leave it.
std::vector<PlotPoint> Thinned(std::span<const PlotPoint> points, double from, double to,
                               std::size_t columns);

} // namespace qor
