// SPDX-License-Identifier: GPL-3.0-or-later
//
// Axis titles, extents, automatic limits and thinning of curves.
#include "views/PlotRange.h"

#include "base/Text.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace qor {

namespace {

constexpr double ShrinkSeconds = 10.0;
constexpr double Margin = 0.04; ///< of the extent, on either side
constexpr int RoundSteps = 20;  ///< limits stand on steps of about this part of the range

/// Beyond them no hand can zoom: times from the year 1 to 9999, numbers that stay finite.
constexpr PlotRange AllTimes{-62'135'596'800.0, 253'402'300'799.0}, AllNumbers{-1e100, 1e100},
    AllDecades{1e-100, 1e100};

void Include(std::optional<PlotRange>& range, double value) {
    if (!range)
        range = PlotRange{value, value};
    range->lower = std::min(range->lower, value);
    range->upper = std::max(range->upper, value);
}

/// 1, 2 or 5 times a power of ten, not below the size.
double RoundStep(double size) {
    const double decade = std::pow(10.0, std::floor(std::log10(size)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (decade * factor >= size)
            return decade * factor;
    return decade * 10.0;
}

PlotRange RoundDecades(PlotRange range) {
    const double lower = std::floor(std::log10(range.lower));
    const double upper = std::ceil(std::log10(range.upper));
    return {std::pow(10.0, lower), std::pow(10.0, std::max(upper, lower + 1.0))};
}

/// What the axis should show of the extent: with a margin, on round numbers.
PlotRange Needed(PlotRange extent, const PlotAxis& axis) {
    if (axis.logarithmic)
        return RoundDecades(extent);
    const bool zeroBelow = axis.fromZero && extent.lower >= 0.0;
    const bool zeroAbove = axis.fromZero && extent.upper <= 0.0;
    if (axis.fromZero) {
        extent.lower = std::min(extent.lower, 0.0);
        extent.upper = std::max(extent.upper, 0.0);
    }
    double size = extent.Size();
    if (!(size > std::fabs(extent.upper) * 1e-9))
        size = std::max(std::fabs(extent.upper) * 0.1, 1e-6);
    const double step = RoundStep(size / RoundSteps);
    const PlotRange rounded{std::floor((extent.lower - size * Margin) / step) * step,
                            std::ceil((extent.upper + size * Margin) / step) * step};
    return {zeroBelow ? 0.0 : rounded.lower, zeroAbove ? 0.0 : rounded.upper};
}

/// What one step of a thinned curve keeps, as indices of its points.
class CStep {
  public:
    bool Empty() const { return Count == 0; }

    void Take(std::span<const PlotPoint> points, std::size_t index) {
        const PlotPoint& point = points[index];
        if (std::isnan(point.y))
            return TakeOnce(Gap, index);
        if (!point.valid)
            return TakeOnce(Hollow, index);
        Part& part = Gap == None ? Before : Behind;
        ++Count;
        if (part.first == None)
            part = {index, index, index, index};
        if (point.y < points[part.lowest].y)
            part.lowest = index;
        if (point.y > points[part.highest].y)
            part.highest = index;
        part.last = index;
    }

    void Flush(std::span<const PlotPoint> points, std::vector<PlotPoint>& kept) {
        std::array<std::size_t, 10> indices{
            Before.first, Before.lowest, Before.highest, Before.last,    Gap,
            Hollow,       Behind.first,  Behind.lowest,  Behind.highest, Behind.last};
        std::sort(indices.begin(), indices.end());
        const auto end = std::unique(indices.begin(), indices.end());
        for (auto index = indices.begin(); index != end && *index != None; ++index)
            kept.push_back(points[*index]);
        *this = {};
    }

  private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);
    struct Part {
        std::size_t first = None, lowest = None, highest = None, last = None;
    };

    void TakeOnce(std::size_t& place, std::size_t index) {
        ++Count;
        if (place == None)
            place = index;
    }

    Part Before, Behind; ///< of the step's gap
    std::size_t Gap = None, Hollow = None;
    std::size_t Count = 0;
};

} // namespace

std::size_t ValueAxisCount(const PlotPage& page) {
    return std::max<std::size_t>(page.axes.size(), 1);
}

PlotAxis ValueAxis(const PlotPage& page, std::size_t index) {
    if (index < page.axes.size())
        return page.axes[index];
    PlotAxis axis;
    axis.label = page.yLabel;
    axis.minimum = page.yMinimum;
    axis.maximum = page.yMaximum;
    axis.automatic = false;
    return axis;
}

PlotAxis KeyAxis(const PlotPage& page) {
    PlotAxis axis = page.key;
    if (axis.label.empty())
        axis.label = page.xLabel;
    return axis;
}

std::string AxisTitle(const PlotAxis& axis) {
    if (axis.kind == AxisKind::Time) {
        if (axis.zoneMinutes == 0)
            return "Time UTC";
        return "Time local (" + UtcOffsetText(axis.zoneMinutes) + ")";
    }
    return axis.units.empty() ? axis.label : axis.label + " [" + axis.units + "]";
}

std::optional<PlotRange> ExtentOfAxis(const PlotPage& page, std::size_t axis,
                                      const HiddenCurves& hidden) {
    const bool positiveOnly = ValueAxis(page, axis).logarithmic;
    std::optional<PlotRange> extent;
    for (const PlotCurve& curve : page.curves) {
        if (static_cast<std::size_t>(curve.axis) != axis || hidden.contains(curve.id))
            continue;
        for (const PlotPoint& point : curve.points)
            if (point.valid && std::isfinite(point.y) && (!positiveOnly || point.y > 0.0))
                Include(extent, point.y);
    }
    return extent;
}

std::optional<PlotRange> ExtentOfKey(const PlotPage& page, const HiddenCurves& hidden) {
    std::optional<PlotRange> extent;
    for (const PlotCurve& curve : page.curves) {
        if (hidden.contains(curve.id))
            continue;
        for (const PlotPoint& point : curve.points)
            if (std::isfinite(point.x) && (!page.key.logarithmic || point.x > 0.0))
                Include(extent, point.x);
    }
    return extent;
}

PlotRange CAutoRange::Follow(const std::optional<PlotRange>& extent, const PlotAxis& axis,
                             double now) {
    if (!extent) {
        LastFilled = now;
        return Shown.value_or(PlotRange{axis.minimum, axis.maximum});
    }
    const PlotRange needed = Needed(*extent, axis);
    const bool outside = !Shown || needed.lower < Shown->lower || needed.upper > Shown->upper;
    if (outside && Shown) {
        // Widened to both, so that data that swing do not make the axis swing.
        Shown =
            PlotRange{std::min(needed.lower, Shown->lower), std::max(needed.upper, Shown->upper)};
        LastFilled = now;
    } else if (outside || needed == *Shown || now - LastFilled >= ShrinkSeconds) {
        Shown = needed;
        LastFilled = now;
    }
    return *Shown;
}

bool IsRange(double lower, double upper) {
    // So near to each other that an axis could not tell them apart is none.
    const double size = std::max(std::fabs(lower), std::fabs(upper));
    return std::isfinite(lower) && std::isfinite(upper) && upper - lower > size * 1e-12;
}

PlotRange UsableRange(PlotRange range, const PlotAxis& axis) {
    const bool time = axis.kind == AxisKind::Time;
    if (axis.logarithmic) {
        if (!(range.upper > 0.0))
            range = {0.1, 1.0};
        if (!(range.lower > 0.0))
            range.lower = range.upper * 1e-3;
    }
    const PlotRange& all = time ? AllTimes : axis.logarithmic ? AllDecades : AllNumbers;
    range = {std::clamp(range.lower, all.lower, all.upper),
             std::clamp(range.upper, all.lower, all.upper)};
    if (!IsRange(range.lower, range.upper))
        range.upper = range.lower + (time ? 1.0 : std::max(std::fabs(range.lower), 1.0));
    return range;
}

PlotRange ZoomedRange(PlotRange range, double at, double factor, const PlotAxis& axis) {
    if (axis.logarithmic && at > 0.0 && range.lower > 0.0)
        range = {at * std::pow(range.lower / at, factor), at * std::pow(range.upper / at, factor)};
    else
        range = {at + (range.lower - at) * factor, at + (range.upper - at) * factor};
    return UsableRange(range, axis);
}

PlotRange PannedRange(PlotRange range, double from, double to, const PlotAxis& axis) {
    if (axis.logarithmic && from > 0.0 && to > 0.0)
        return UsableRange({range.lower * to / from, range.upper * to / from}, axis);
    return UsableRange({range.lower + to - from, range.upper + to - from}, axis);
}

void EqualScales(PlotRange& across, PlotRange& upright, int width, int height) {
    if (width <= 0 || height <= 0)
        return;
    const double unit = std::max(across.Size() / width, upright.Size() / height);
    const auto widen = [](PlotRange& range, double size) {
        const double more = (size - range.Size()) / 2.0;
        range = {range.lower - more, range.upper + more};
    };
    widen(across, unit * width);
    widen(upright, unit * height);
}

std::vector<PlotPoint> Thinned(std::span<const PlotPoint> points, double from, double to,
                               std::size_t columns) {
    const auto byX = [](const PlotPoint& point, double x) { return point.x < x; };
    auto first = std::lower_bound(points.begin(), points.end(), from, byX);
    auto last = std::lower_bound(first, points.end(), to, byX);
    if (first != points.begin())
        --first;
    if (last != points.end())
        ++last;
    const std::span<const PlotPoint> shown(first, last);
    if (columns == 0 || shown.size() <= 4 * columns || !(to > from))
        return {shown.begin(), shown.end()};

    std::vector<PlotPoint> kept;
    kept.reserve(4 * columns);
    CStep step;
    double place = 0.0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const double at =
            std::floor((shown[i].x - from) / (to - from) * static_cast<double>(columns));
        if (at != place && !step.Empty())
            step.Flush(shown, kept);
        place = at;
        step.Take(shown, i);
    }
    step.Flush(shown, kept);
    return kept;
}

} // namespace qor
