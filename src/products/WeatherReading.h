// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a weather station's frame says, in units of our own; its fields are found by what the
// definition calls them. Pure reading of the current frame, under the document's lock.
#pragma once

#include "products/LiveInstrument.h"
#include "products/Wind.h"

#include <optional>

namespace qor {

/// Empty: the frame has no such field, or nothing stands in it.
struct WeatherReading {
    std::optional<Wind> relative; ///< what blows at the ship: m/s, from, clockwise from the bow
    std::optional<Wind> trueWind; ///< over ground as the station gives it: m/s, from, from north
    std::optional<double> airTemperature; ///< degrees C
    std::optional<double> humidity;       ///< relative, %
    std::optional<double> pressure;       ///< hPa
    std::optional<double> heading;        ///< of the bow, degrees from north

    /// What this one does not say is taken from another.
    void FillFrom(const WeatherReading& other);
};

/// Whether a definition has fields of a weather station: the wind, or the air's temperature or
/// pressure.
bool IsWeatherStation(const CInstrument& definition);

WeatherReading ReadWeather(const CLiveInstrument& instrument);

} // namespace qor
