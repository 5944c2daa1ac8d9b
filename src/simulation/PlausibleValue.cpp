// SPDX-License-Identifier: GPL-3.0-or-later
//
// A table of quantities with their usual values in a coastal sea.
#include "simulation/PlausibleValue.h"

#include "base/Text.h"
#include "instrument/FitTypes.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

/// A row holds for sensors whose type begins with `type` and whose units are `units`; an empty text
/// holds for all.
struct Row {
    std::string_view type, units;
    double base, swing;
};

constexpr Row Rows[] = {
    {"INTTIME", "", 0.128, 0.0}, {"", "uW/cm^2/nm", 90.0, 9.0}, {"", "uW/cm^2/nm/sr", 0.9, 0.09},
    {"PRES", "", 20.0, 15.0},    {"TEMP", "", 14.0, 2.0},       {"COND", "S/m", 4.0, 0.1},
    {"COND", "", 40.0, 1.0},     {"SAL", "", 34.5, 0.3},        {"TILT", "", 2.0, 5.0},
    {"PITCH", "", 0.0, 4.0},     {"ROLL", "", 0.0, 4.0},        {"HEADING", "", 180.0, 60.0},
    {"COURSE", "", 180.0, 20.0}, {"SPEED", "", 5.0, 1.0},       {"WIND", "", 8.0, 3.0},
    {"HUM", "", 70.0, 8.0},      {"BARO", "", 1013.0, 2.0},     {"CHL", "", 1.5, 0.8},
    {"FLU", "", 1.5, 0.8},       {"CDOM", "", 2.0, 0.3},        {"NITRATE", "", 8.0, 1.5},
    {"NO3", "", 8.0, 1.5},       {"BETA", "", 0.0012, 0.0004},  {"VSF", "", 0.0012, 0.0004},
    {"LAT", "", 44.6, 0.01},     {"LON", "", -63.5, 0.01},      {"", "V", 12.0, 0.2},
    {"", "deg", 2.0, 2.0},       {"", "C", 14.0, 2.0},          {"", "dbar", 20.0, 15.0},
    {"", "%", 50.0, 5.0},
};

} // namespace

std::optional<PlausibleValue> PlausibleValueOf(const CSensor& sensor) {
    if (EqualsNoCase(sensor.Type, "TIMER"))
        return PlausibleValue{0.0, 0.0, true};
    const std::string_view type = sensor.Type;
    for (const Row& row : Rows)
        if (EqualsNoCase(type.substr(0, row.type.size()), row.type) &&
            (row.units.empty() || EqualsNoCase(sensor.Units, row.units)))
            return PlausibleValue{row.base, row.swing, false};
    return std::nullopt;
}

double SpectralShape(const CSensor& sensor) {
    const std::optional<double> wavelength = WholeNumber(sensor.Id);
    if (!IsOptic(sensor.Fit) || !wavelength || !(*wavelength > 200.0 && *wavelength < 2000.0))
        return 1.0;
    const double distance = (*wavelength - 480.0) / 150.0;
    return std::max(std::exp(-distance * distance), 0.02);
}

} // namespace qor
