// SPDX-License-Identifier: GPL-3.0-or-later
//
// Fields of weather stations, by words in their names.
#include "products/WeatherReading.h"

#include "base/Text.h"
#include "products/FieldReading.h"
#include "products/SensorUnits.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

enum class WeatherField : std::uint8_t {
    None,
    WindSpeed,
    WindFrom,
    WindReference, ///< R or T
    WindUnits,     ///< N, K or M
    AirTemperature,
    Humidity,
    AirPressure,
    Heading
};

/// A name fits when it has every word of the row, and of the first row that fits.
struct WordsRow {
    std::string_view first, second;
    WeatherField field;
};
constexpr WordsRow Words[] = {
    {"WIND", "REF", WeatherField::WindReference},  {"WIND", "UNIT", WeatherField::WindUnits},
    {"WIND", "SP", WeatherField::WindSpeed},       {"WIND", "DIR", WeatherField::WindFrom},
    {"WIND", "ANG", WeatherField::WindFrom},       {"WIND", "FROM", WeatherField::WindFrom},
    {"TEMP", "AIR", WeatherField::AirTemperature}, {"TEMP", "ATM", WeatherField::AirTemperature},
    {"AIRT", "", WeatherField::AirTemperature},    {"HUM", "", WeatherField::Humidity},
    {"BARO", "", WeatherField::AirPressure},       {"PRES", "AIR", WeatherField::AirPressure},
    {"PRES", "ATM", WeatherField::AirPressure},    {"HEADING", "", WeatherField::Heading},
};

WeatherField WeatherFieldOf(const CSensor& sensor) {
    if (sensor.Fit == FitType::DELIMITER)
        return WeatherField::None;
    const std::string name = FieldName(sensor);
    for (const WordsRow& row : Words)
        if (name.find(row.first) != name.npos && name.find(row.second) != name.npos)
            return row.field;
    return WeatherField::None;
}

bool IsTrueByName(const CSensor& sensor) {
    const std::string name = FieldName(sensor);
    return name.find("TRUE") != name.npos || name.ends_with(" T") ||
           name.find("GROUND") != name.npos;
}

/// One wind while its parts are collected.
struct WindParts {
    std::optional<double> speed, from;

    std::optional<Wind> Whole() const {
        return speed ? std::optional(Wind{*speed, from}) : std::nullopt;
    }
};

struct WeatherParts {
    WindParts relative, trueWind;
    std::string unitsLetter;
    bool allTrue = false; ///< the sentence says that its wind is
};

/// A station that does not say which of the two it means measures what blows at it.
/// Decided: so a wind without a word is the relative one.
WindParts& PartsOf(WeatherParts& parts, const CSensor& sensor) {
    return parts.allTrue || IsTrueByName(sensor) ? parts.trueWind : parts.relative;
}

std::optional<double> Converted(const std::optional<double>& number,
                                const std::optional<UnitScale>& scale) {
    return number && scale ? std::optional(scale->Convert(*number)) : std::nullopt;
}

std::optional<double> SpeedOf(const CLiveInstrument& instrument, const CSensor& sensor,
                              const std::string& letter) {
    const std::string_view units = !sensor.Units.empty() ? std::string_view(sensor.Units)
                                   : !letter.empty()     ? std::string_view(letter)
                                                         : "m/s";
    const std::optional<double> speed =
        Converted(FieldAsNumber(instrument, sensor), SpeedScale(units));
    return speed && *speed >= 0.0 ? speed : std::nullopt;
}

std::optional<double> AngleOf(const std::optional<double>& degrees) {
    if (!degrees || !(std::fabs(*degrees) <= 360.0))
        return std::nullopt;
    const double angle = *degrees < 0.0 ? *degrees + 360.0 : *degrees;
    return angle == 360.0 ? 0.0 : angle;
}

/// What tells how the others are meant comes first.
void TakeReference(const CLiveInstrument& instrument, const CSensor& sensor, WeatherParts& parts) {
    const WeatherField field = WeatherFieldOf(sensor);
    if (field == WeatherField::WindReference)
        parts.allTrue = FieldAsText(instrument, sensor) == "T";
    if (field == WeatherField::WindUnits)
        parts.unitsLetter = FieldAsText(instrument, sensor);
}

void TakeField(const CLiveInstrument& instrument, const CSensor& sensor, WeatherParts& parts,
               WeatherReading& reading) {
    const auto number = [&] { return FieldAsNumber(instrument, sensor); };
    switch (WeatherFieldOf(sensor)) {
    case WeatherField::None:
    case WeatherField::WindReference:
    case WeatherField::WindUnits:
        break;
    case WeatherField::WindSpeed:
        if (WindParts& wind = PartsOf(parts, sensor); !wind.speed) // some give it in two units
            wind.speed = SpeedOf(instrument, sensor, parts.unitsLetter);
        break;
    case WeatherField::WindFrom:
        if (WindParts& wind = PartsOf(parts, sensor); !wind.from)
            wind.from = AngleOf(number());
        break;
    case WeatherField::AirTemperature:
        reading.airTemperature =
            Converted(number(), TemperatureScale(sensor.Units.empty() ? "C" : sensor.Units));
        break;
    case WeatherField::Humidity:
        reading.humidity = number();
        break;
    case WeatherField::AirPressure:
        reading.pressure =
            Converted(number(), AirPressureScale(sensor.Units.empty() ? "hPa" : sensor.Units));
        break;
    case WeatherField::Heading:
        reading.heading = AngleOf(number());
        break;
    }
}

} // namespace

void WeatherReading::FillFrom(const WeatherReading& other) {
    const auto fill = [](auto& mine, const auto& theirs) {
        if (!mine)
            mine = theirs;
    };
    fill(relative, other.relative);
    fill(trueWind, other.trueWind);
    fill(airTemperature, other.airTemperature);
    fill(humidity, other.humidity);
    fill(pressure, other.pressure);
    fill(heading, other.heading);
}

bool IsWeatherStation(const CInstrument& definition) {
    return std::ranges::any_of(definition.Sensors(), [](const CSensor& sensor) {
        const WeatherField field = WeatherFieldOf(sensor);
        // Humidity alone is measured inside of housings too.
        return field == WeatherField::WindSpeed || field == WeatherField::AirTemperature ||
               field == WeatherField::AirPressure;
    });
}

WeatherReading ReadWeather(const CLiveInstrument& instrument) {
    WeatherReading reading;
    WeatherParts parts;
    if (!instrument.CurrentFrame())
        return reading;
    for (const CSensor& sensor : instrument.Definition().Sensors())
        TakeReference(instrument, sensor, parts);
    for (const CSensor& sensor : instrument.Definition().Sensors())
        TakeField(instrument, sensor, parts, reading);
    reading.relative = parts.relative.Whole();
    reading.trueWind = parts.trueWind.Whole();
    return reading;
}

} // namespace qor
