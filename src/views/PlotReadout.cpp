// SPDX-License-Identifier: GPL-3.0-or-later
//
// Curves read out: under a cursor, as CSV, in words.
#include "views/PlotReadout.h"

#include "base/Text.h"
#include "platform/Clock.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace qor {

namespace {

constexpr double SecondsADay = 86400.0;

bool HasValue(const PlotPoint& point) {
    return point.valid && std::isfinite(point.y);
}

/// The point with a value that lies nearest to a place, or null.
const PlotPoint* NearestPoint(const PlotCurve& curve, double x, double reach) {
    const PlotPoint* nearest = nullptr;
    for (const PlotPoint& point : curve.points) {
        const double distance = std::fabs(point.x - x);
        if (HasValue(point) && distance <= reach &&
            (!nearest || distance < std::fabs(nearest->x - x)))
            nearest = &point;
    }
    return nearest;
}

std::string WithUnits(const std::string& text, const std::string& units) {
    return units.empty() ? text : text + " " + units;
}

std::string UnitsOf(const PlotPage& page, const PlotCurve& curve) {
    return curve.units.empty() ? ValueAxis(page, static_cast<std::size_t>(curve.axis)).units
                               : curve.units;
}

/// Milliseconds since 1970 as a clock time; `date` puts the day in front.
std::string ClockText(double seconds, bool date, int digits) {
    const double scale = std::pow(10.0, digits);
    const double whole = std::floor(seconds);
    double fraction = std::floor((seconds - whole) * scale + 0.5);
    const bool carried = fraction >= scale;
    if (carried)
        fraction = 0.0;
    const CalendarTime time =
        CalendarFromSeconds(static_cast<std::int64_t>(whole) + (carried ? 1 : 0));
    std::string text = FormatTime(date ? "%Y-%m-%dT%H:%M:%S" : "%H:%M:%S", time);
    if (digits > 0)
        text += Format(".%0*d", digits, static_cast<int>(fraction));
    return text;
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    return quoted + "\"";
}

/// When the day of a place begins, in the axis's zone.
double DayOf(const PlotAxis& axis, double place) {
    return std::floor((place + axis.zoneMinutes * 60.0) / SecondsADay) * SecondsADay;
}

/// Of "hh:mm" or "hh:mm:ss".
std::optional<double> SecondsOfClock(std::string_view text) {
    std::array<double, 3> parts{};
    constexpr std::array<double, 3> Limits{24.0, 60.0, 60.0};
    std::size_t count = 0;
    for (bool more = true; more; ++count) {
        if (count == parts.size())
            return std::nullopt;
        const std::size_t colon = text.find(':');
        const std::optional<double> part = WholeNumber(text.substr(0, colon));
        if (!part || *part < 0.0 || *part >= Limits[count])
            return std::nullopt;
        parts[count] = *part;
        more = colon != std::string_view::npos;
        text.remove_prefix(more ? colon + 1 : text.size());
    }
    if (count < 2)
        return std::nullopt;
    return parts[0] * 3600.0 + parts[1] * 60.0 + parts[2];
}

} // namespace

std::string PlaceText(const PlotAxis& axis, double place) {
    if (axis.kind == AxisKind::Time)
        return ClockText(place + axis.zoneMinutes * 60.0, false, 1);
    return WithUnits(Format("%.*f", axis.decimals, place), axis.units);
}

PlotReadout ReadoutAt(const PlotPage& page, double x, double reach, const HiddenCurves& hidden,
                      std::optional<double> anchor) {
    const PlotAxis key = KeyAxis(page);
    PlotReadout readout{PlaceText(key, x), {}};
    if (anchor)
        readout.place +=
            "  " + (key.kind == AxisKind::Time ? Format("%+.1f s", x - *anchor)
                                               : Format("%+.*f", key.decimals, x - *anchor));
    for (std::size_t i = 0; i < page.curves.size(); ++i) {
        const PlotCurve& curve = page.curves[i];
        const PlotPoint* point =
            hidden.contains(curve.id) ? nullptr : NearestPoint(curve, x, reach);
        if (!point)
            continue;
        const int decimals = ValueAxis(page, static_cast<std::size_t>(curve.axis)).decimals;
        std::string text = curve.title + "  " +
                           WithUnits(Format("%.*f", decimals, point->y), UnitsOf(page, curve));
        const PlotPoint* from = anchor ? NearestPoint(curve, *anchor, reach) : nullptr;
        if (from)
            text += Format("  %+.*f", decimals, point->y - from->y);
        readout.lines.push_back({i, point->y, std::move(text)});
    }
    return readout;
}

std::string VisibleCsv(const PlotPage& page, PlotRange key, const HiddenCurves& hidden) {
    const PlotAxis axis = KeyAxis(page);
    const bool time = axis.kind == AxisKind::Time;
    std::vector<const PlotCurve*> shown;
    std::string text = CsvField(time ? "Time UTC" : AxisTitle(axis));
    for (const PlotCurve& curve : page.curves) {
        if (hidden.contains(curve.id))
            continue;
        shown.push_back(&curve);
        const std::string units = UnitsOf(page, curve);
        text += "," + CsvField(units.empty() ? curve.title : curve.title + " [" + units + "]");
    }
    text += "\n";

    // Places shared by several curves become one line; a curve that comes back to a place (a cast)
    // gets further lines for it.
    std::multimap<double, std::vector<std::string>> lines;
    for (std::size_t column = 0; column < shown.size(); ++column) {
        std::map<double, std::size_t> uses;
        for (const PlotPoint& point : shown[column]->points) {
            if (!(point.x >= key.lower && point.x <= key.upper))
                continue;
            auto line = lines.lower_bound(point.x);
            for (std::size_t skip = uses[point.x]++; skip > 0 && line != lines.end(); --skip)
                line = line->first == point.x ? std::next(line) : lines.end();
            if (line == lines.end() || line->first != point.x)
                line = lines.emplace(point.x, std::vector<std::string>(shown.size()));
            if (HasValue(point))
                line->second[column] = ShortestNumber(point.y);
        }
    }
    for (const auto& [place, fields] : lines) {
        text += time ? ClockText(place, true, 3) + "Z" : ShortestNumber(place);
        for (const std::string& field : fields)
            text += "," + field;
        text += "\n";
    }
    return text;
}

std::string DescribePlot(const PlotPage& page, const HiddenCurves& hidden) {
    std::string text;
    for (const PlotCurve& curve : page.curves) {
        if (hidden.contains(curve.id))
            continue;
        const auto last = std::find_if(curve.points.rbegin(), curve.points.rend(), HasValue);
        const int decimals = ValueAxis(page, static_cast<std::size_t>(curve.axis)).decimals;
        text += text.empty() ? "" : "; ";
        text += curve.title + " ";
        text += last == curve.points.rend()
                    ? "no value"
                    : WithUnits(Format("%.*f", decimals, last->y), UnitsOf(page, curve));
    }
    return text;
}

std::optional<double> ParseLimit(const PlotAxis& axis, std::string_view text, double near) {
    text = Trim(text);
    if (axis.kind != AxisKind::Time) {
        const std::optional<double> number = WholeNumber(text);
        const bool usable =
            number && std::isfinite(*number) && (!axis.logarithmic || *number > 0.0);
        return usable ? number : std::nullopt;
    }
    double day = DayOf(axis, near);
    if (const std::size_t blank = text.find(' '); blank != std::string_view::npos) {
        const auto date = SecondsFromText(std::string(text.substr(0, blank)) + "T00:00:00");
        if (!date)
            return std::nullopt;
        day = static_cast<double>(*date);
        text = Trim(text.substr(blank));
    }
    const std::optional<double> seconds = SecondsOfClock(text);
    return seconds ? std::optional(day + *seconds - axis.zoneMinutes * 60.0) : std::nullopt;
}

std::string LimitText(const PlotAxis& axis, double limit, PlotRange range) {
    if (axis.kind != AxisKind::Time)
        return Format("%.6g", limit);
    const bool dated = DayOf(axis, range.lower) != DayOf(axis, range.upper);
    std::string text = ClockText(limit + axis.zoneMinutes * 60.0, dated, 0);
    std::ranges::replace(text, 'T', ' ');
    return text;
}

} // namespace qor
