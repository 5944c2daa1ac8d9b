// SPDX-License-Identifier: GPL-3.0-or-later
//
// Spans and their bins. See BinSpan.h.
#include "export/BinSpan.h"

#include "base/Text.h"

#include <cmath>

namespace qor {

namespace {

constexpr struct {
    std::string_view units;
    BinSpan::Axis axis;
    double worth;
} SpanUnits[] = {
    {"dbar", BinSpan::Axis::Pressure, 1.0}, {"m", BinSpan::Axis::Depth, 1.0},
    {"s", BinSpan::Axis::Time, 1.0},        {"min", BinSpan::Axis::Time, 60.0},
    {"h", BinSpan::Axis::Time, 3600.0},
};

constexpr double LeastWidth = 0.001, GreatestWidth = 1e6;

} // namespace

/// Times are counted in milliseconds, as tags have them, so that none lies between two bins.
double BinSpan::BinOf(double place) const {
    if (!IsTime())
        return std::floor(place / width);
    return std::floor(std::round(place * 1000.0) / std::round(width * 1000.0));
}

std::string_view BinSpan::Name() const {
    return axis == Axis::Time ? "time" : axis == Axis::Pressure ? "pressure" : "depth";
}

std::string_view BinSpan::Units() const {
    return axis == Axis::Time ? "s" : axis == Axis::Pressure ? "dbar" : "m";
}

std::optional<BinSpan> ReadBinSpan(std::string_view text) {
    text = Trim(text);
    const std::size_t end = text.find_last_of("0123456789.");
    if (end == text.npos)
        return std::nullopt;
    const std::optional<double> number = WholeNumber(text.substr(0, end + 1));
    const std::string_view units = Trim(text.substr(end + 1));
    for (const auto& one : SpanUnits) {
        if (!number || units != one.units)
            continue;
        const BinSpan span{one.axis, *number * one.worth};
        const double hundredths = std::round(span.width * 100.0);
        const bool whole = !span.IsTime() || std::fabs(span.width * 100.0 - hundredths) < 1e-6;
        return span.width >= LeastWidth && span.width <= GreatestWidth && whole &&
                       (!span.IsTime() || hundredths >= 1.0)
                   ? std::optional(span)
                   : std::nullopt;
    }
    return std::nullopt;
}

} // namespace qor
