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

enum class Field : std::uint8_t {
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
    Field field;
};
constexpr WordsRow Words[] = {
    {"WIND", "REF", Field::WindReference},  {"WIND", "UNIT", Field::WindUnits},
    {"WIND", "SP", Field::WindSpeed},       {"WIND", "DIR", Field::WindFrom},
    {"WIND", "ANG", Field::WindFrom},       {"WIND", "FROM", Field::WindFrom},
    {"TEMP", "AIR", Field::AirTemperature}, {"TEMP", "ATM", Field::AirTemperature},
    {"AIRT", "", Field::AirTemperature},    {"HUM", "", Field::Humidity},
    {"BARO", "", Field::AirPressure},       {"PRES", "AIR", Field::AirPressure},
    {"PRES", "ATM", Field::AirPressure},    {"HEADING", "", Field::Heading},
};

Field FieldOfSensor(const CSensor& sensor) {
    if (sensor.Fit == FitType::DELIMITER)
        return Field::None;
    const std::string name = FieldName(sensor);
    for (const WordsRow& row : Words)
        if (name.find(row.first) != name.npos && name.find(row.second) != name.npos)
            return row.field;
    return Field::None;
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

struct Parts {
    WindParts relative, trueWind;
    std::string unitsLetter;
    bool allTrue = false; ///< the sentence says that its wind is
};

/// A station that does not say which of the two it means measures what blows at it.
/// Decided: so a wind without a word is the relative one.
WindParts& PartsOf(Parts& parts, const CSensor& sensor) {
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
void TakeReference(const CLiveInstrument& instrument, const CSensor& sensor, Parts& parts) {
    const Field field = FieldOfSensor(sensor);
    if (field == Field::WindReference)
        parts.allTrue = FieldAsText(instrument, sensor) == "T";
    if (field == Field::WindUnits)
        parts.unitsLetter = FieldAsText(instrument, sensor);
}

void TakeField(const CLiveInstrument& instrument, const CSensor& sensor, Parts& parts,
               WeatherReading& reading) {
    const auto number = [&] { return FieldAsNumber(instrument, sensor); };
    switch (FieldOfSensor(sensor)) {
    case Field::None:
    case Field::WindReference:
    case Field::WindUnits:
        break;
    case Field::WindSpeed:
        if (WindParts& wind = PartsOf(parts, sensor); !wind.speed) // some give it in two units
            wind.speed = SpeedOf(instrument, sensor, parts.unitsLetter);
        break;
    case Field::WindFrom:
        if (WindParts& wind = PartsOf(parts, sensor); !wind.from)
            wind.from = AngleOf(number());
        break;
    case Field::AirTemperature:
        reading.airTemperature =
            Converted(number(), TemperatureScale(sensor.Units.empty() ? "C" : sensor.Units));
        break;
    case Field::Humidity:
        reading.humidity = number();
        break;
    case Field::AirPressure:
        reading.pressure =
            Converted(number(), AirPressureScale(sensor.Units.empty() ? "hPa" : sensor.Units));
        break;
    case Field::Heading:
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
        const Field field = FieldOfSensor(sensor);
        // Humidity alone is measured inside of housings too.
        return field == Field::WindSpeed || field == Field::AirTemperature ||
               field == Field::AirPressure;
    });
}

WeatherReading ReadWeather(const CLiveInstrument& instrument) {
    WeatherReading reading;
    Parts parts;
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
