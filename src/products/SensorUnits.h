// SPDX-License-Identifier: GPL-3.0-or-later
//
// The units that definitions give pressure, temperature and conductivity, and how to turn them into
// dbar, degrees C and mS/cm, which the formulas take. A table of the spellings that instruments
// come with and no library of units: half of them (mmho/cm, psia, degree signs of three code pages,
// m of water) are not in such a library's tongue, and it would not be there on every system.
#pragma once

#include <optional>
#include <string_view>

namespace qor {

/// A linear change of units.
struct UnitScale {
    double zero = 0.0; ///< what the new units' zero is in the old ones
    double times = 1.0;
    double over = 1.0; ///< a quotient, so that decimal steps stay exact

    double Convert(double value) const { return (value - zero) * times / over; }
    /// The same for the difference of two values.
    double Difference(double value) const { return value * times / over; }
    /// Back into the old units.
    double Invert(double value) const { return value * over / times + zero; }

    bool operator==(const UnitScale&) const = default;
};

/// To dbar of sea pressure. Units of absolute pressure (psia, bara) lose one standard atmosphere. A
/// metre is one of sea water, 10 kPa by convention and so 1 dbar; mH2O is one of fresh water,
/// 9806.65 Pa.
std::optional<UnitScale> PressureScale(std::string_view units);
/// To degrees C. A bare "deg" is an angle, not a temperature.
std::optional<UnitScale> TemperatureScale(std::string_view units);
/// To m/s.
std::optional<UnitScale> SpeedScale(std::string_view units);
/// Of the air, absolute, to hPa.
std::optional<UnitScale> AirPressureScale(std::string_view units);
/// To mS/cm.
std::optional<UnitScale> ConductivityScale(std::string_view units);

/// Dissolved oxygen in umol/l, or in umol/kg where it is measured per mass of water.
struct OxygenScale {
    UnitScale scale;
    bool perMass = false;
};
std::optional<OxygenScale> OxygenScaleOf(std::string_view units);

inline constexpr double MpsPerKnot = 1852.0 / 3600.0;

} // namespace qor
