// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of curves in words and numbers: the values under a cursor, the visible data as CSV, a
// description for a screen reader. Pure functions of the page, on the user-interface thread.
#pragma once

#include "views/PlotRange.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qor {

struct ReadoutLine {
    std::size_t curve = 0; ///< its index in the page
    double y = 0.0;
    std::string text; ///< name, value and unit
};

/// What lies at one place of the key axis.
struct PlotReadout {
    std::string place;
    std::vector<ReadoutLine> lines;
};

/// The values of the visible curves at the points nearest to `x`, none for a curve whose nearest
/// point is farther than `reach`. With an anchor each is followed by its difference from there.
PlotReadout ReadoutAt(const PlotPage& page, double x, double reach, const HiddenCurves& hidden,
                      std::optional<double> anchor = std::nullopt);

/// A place of an axis as text: a number with the axis's decimals and unit, or a time.
std::string PlaceText(const PlotAxis& axis, double place);

/// The visible curves between two places of the key axis as CSV: names with units, then one line a
/// place. Times are UTC; a gap or a point without value is an empty field.
std::string VisibleCsv(const PlotPage& page, PlotRange key, const HiddenCurves& hidden);

/// Each visible curve with its last value.
std::string DescribePlot(const PlotPage& page, const HiddenCurves& hidden);

/// A limit that the operator typed, or empty when it is none: a number, or on a time axis
/// "YYYY-MM-DD hh:mm:ss" or "hh:mm:ss" of the day of `near`.
std::optional<double> ParseLimit(const PlotAxis& axis, std::string_view text, double near);
/// A limit of a range as text that ParseLimit reads: times with their date when the range is not
/// within one day.
std::string LimitText(const PlotAxis& axis, double limit, PlotRange range);

} // namespace qor
