// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of curves: what a plot shows, apart from any widget. Views fill it, the desktop draws it,
// `PlotData.h` reads it out.
#pragma once

#include "views/PageHead.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// A place along the page's key axis (x) and the curve's value axis (y), whichever way they run.
/// A y that is not a number ends the line: a gap.
struct PlotPoint {
    double x = 0.0;
    double y = 0.0;
    bool valid = true; ///< false: the point has a place but no value (marked hollow, not joined)
};

enum class AxisKind : std::uint8_t {
    Number,
    Time,      ///< seconds since 1970 UTC
    Wavelength ///< nanometres of light, with the colours beside the axis
};

struct PlotAxis {
    std::string label;
    std::string units;
    double minimum = 0.0;
    double maximum = 1.0;
    bool automatic = true; ///< the limits follow the data; false: minimum to maximum
    bool fromZero = false; ///< automatic limits always hold 0
    bool logarithmic = false;
    bool reversed = false;
    AxisKind kind = AxisKind::Number;
    int zoneMinutes = 0; ///< a time axis shows UTC plus this
    int decimals = 2;    ///< of values read out along it
    int lane = 0;        ///< value axes of one lane share its strip of the plot

    bool operator==(const PlotAxis&) const = default;
};

enum class CurveRole : std::uint8_t {
    Series,      ///< the place is its number, from 0
    Wavelength,  ///< the place is its wavelength in nm
    Reference,   ///< what the others are held against
    PreviousCast ///< the one before, behind the others
};

enum class CurveStyle : std::uint8_t { Line, Points };

struct PlotCurve {
    std::string title;
    std::vector<PlotPoint> points;
    std::string units = {};
    std::uint64_t id = 0; ///< what the curve is to its view; keeps whether it is hidden
    CurveRole role = CurveRole::Series;
    double place = 0.0;
    CurveStyle style = CurveStyle::Line;
    int axis = 0;        ///< its value axis in PlotPage::axes
    bool loops = false;  ///< x does not only rise (a cast, a track)
    bool broad = false;  ///< spectra and profiles, 1.5 px
    bool picked = false; ///< stands out from the others
    bool frozen = false; ///< a held spectrum or the like: drawn in the background
};

/// A line across the plot at a place of the key axis.
struct PlotMarker {
    double x = 0.0;
    std::string text;
    Sign sign = Sign::None;
};

/// Values between two limits of an axis, shaded.
struct PlotBand {
    int axis = 0;
    double lower = 0.0;
    double upper = 0.0;
    Sign sign = Sign::Warning;
};

struct PlotPage {
    std::string title;
    /// One value axis with fixed limits, for a page that names no axes.
    std::string xLabel, yLabel;
    double yMinimum = 0.0, yMaximum = 1.0;
    std::vector<PlotCurve> curves;

    PlotAxis key = {};
    std::vector<PlotAxis> axes = {};
    bool keyUpright = false; ///< the key axis stands (depth), values run to the right
    bool sameScale = false;  ///< one unit is as long on both axes (a track)
    std::vector<PlotMarker> markers = {};
    std::vector<PlotBand> bands = {};
    PageHead head = {};
    std::string station = {}; ///< for the foot of an exported picture
    std::string stamp = {};   ///< likewise: when what is shown was measured, with its zone
};

enum class AxisMode : std::uint8_t { AsPage, Automatic, Fixed };

/// What the operator set on an axis by hand; views keep it with their settings.
struct AxisChoice {
    AxisMode mode = AxisMode::AsPage;
    double minimum = 0.0; ///< when fixed
    double maximum = 1.0;
    std::optional<bool> logarithmic = {}; ///< empty: as the page has it

    bool operator==(const AxisChoice&) const = default;
};

} // namespace qor
