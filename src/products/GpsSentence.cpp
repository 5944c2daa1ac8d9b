// SPDX-License-Identifier: GPL-3.0-or-later
//
// Fields of receivers. A row of the table is what a type's name begins with; the first that fits
// counts.
#include "products/GpsSentence.h"

#include "base/Text.h"
#include "platform/Clock.h"
#include "products/FieldReading.h"
#include "products/SensorUnits.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

enum class Field : std::uint8_t {
    Ignored,
    Latitude,
    Longitude,
    Time,
    Date,
    Day,
    Month,
    Year,
    Status,
    Quality,
    Satellites,
    Hdop,
    Altitude,
    Speed,
    Course,
    Heading
};

struct NameRow {
    std::string_view begins;
    Field field;
};
constexpr NameRow Names[] = {
    {"LATHEM", Field::Ignored},
    {"LATDIR", Field::Ignored},
    {"LATNS", Field::Ignored},
    {"LONHEM", Field::Ignored},
    {"LONDIR", Field::Ignored},
    {"LONEW", Field::Ignored},
    {"LONGITUDEHEM", Field::Ignored},
    {"LATITUDEHEM", Field::Ignored},
    {"LAT", Field::Latitude},
    {"LON", Field::Longitude},
    {"UTC", Field::Time},
    {"GPSTIME", Field::Time},
    {"TIME", Field::Time},
    {"DATE", Field::Date},
    {"DAY", Field::Day},
    {"MONTH", Field::Month},
    {"YEAR", Field::Year},
    {"FIXSTATUS", Field::Status},
    {"STATUS", Field::Status},
    {"VALID", Field::Status},
    {"FIXQUAL", Field::Quality},
    {"QUAL", Field::Quality},
    {"GPSQUAL", Field::Quality},
    {"FIX", Field::Quality},
    {"SAT", Field::Satellites},
    {"NUMSAT", Field::Satellites},
    {"NSAT", Field::Satellites},
    {"NSV", Field::Satellites},
    {"HDOP", Field::Hdop},
    {"ALT", Field::Altitude},
    {"SPEED", Field::Speed},
    {"SOG", Field::Speed},
    {"COURSEMAG", Field::Ignored},
    {"COURSE MAG", Field::Ignored},
    {"COURSE M", Field::Ignored},
    {"COURSE", Field::Course},
    {"COG", Field::Course},
    {"TRACKMAG", Field::Ignored},
    {"TRACK MAG", Field::Ignored},
    {"TRACK", Field::Course},
    {"TMG", Field::Course},
    {"HEADING MAG", Field::Ignored},
    {"HEADING", Field::Heading},
    {"HDT", Field::Heading},
};

Field FieldOfSensor(const CSensor& sensor) {
    if (sensor.Fit == FitType::DELIMITER)
        return Field::Ignored;
    const std::string name = FieldName(sensor);
    if (name.find("UNIT") != name.npos)
        return Field::Ignored;
    for (const NameRow& row : Names)
        if (name.starts_with(row.begins))
            return row.field;
    switch (sensor.Fit) {
    case FitType::HHMMSS:
        return Field::Time;
    case FitType::DDMMYY:
        return Field::Date;
    case FitType::DDMM:
        return Field::Latitude; // its hemisphere says which
    case FitType::NONE:
    case FitType::COUNT:
    case FitType::DELIMITER:
    case FitType::OPTIC1:
    case FitType::OPTIC2:
    case FitType::OPTIC3:
    case FitType::POLYF:
    case FitType::POLYU:
    case FitType::TIME2:
        break;
    }
    return Field::Ignored;
}

/// The letter behind a coordinate, or nothing.
std::string HemisphereBehind(const CLiveInstrument& instrument, const CSensor& coordinate) {
    for (int index = coordinate.Index + 1; index <= coordinate.Index + 2; ++index) {
        const CSensor* sensor = instrument.Definition().Sensor(index);
        if (!sensor || sensor->Fit == FitType::DELIMITER)
            continue;
        const std::string text = ToLower(FieldAsText(instrument, *sensor));
        return text == "n" || text == "s" || text == "e" || text == "w" ? text : std::string();
    }
    return {};
}

/// Degrees and minutes as sentences have them, or degrees where a fit made them.
std::optional<double> AngleOf(const CLiveInstrument& instrument, const CSensor& sensor,
                              const std::string& hemisphere) {
    if (!IsCalibrated(sensor.Fit))
        return DegreesOf(FieldAsText(instrument, sensor), hemisphere);
    std::optional<double> degrees = FieldAsNumber(instrument, sensor);
    if (degrees && (hemisphere == "s" || hemisphere == "w"))
        degrees = -std::fabs(*degrees);
    return degrees;
}

/// The parts of what may only be told together.
struct Parts {
    std::optional<double> latitude, longitude;
    std::optional<double> day, month, year;
};

void TakeCoordinate(const CLiveInstrument& instrument, const CSensor& sensor, Field field,
                    Parts& parts) {
    const std::string hemisphere = HemisphereBehind(instrument, sensor);
    const bool isLongitude =
        hemisphere == "e" || hemisphere == "w" || (hemisphere.empty() && field == Field::Longitude);
    (isLongitude ? parts.longitude : parts.latitude) = AngleOf(instrument, sensor, hemisphere);
}

std::optional<double> SpeedOf(const CLiveInstrument& instrument, const CSensor& sensor) {
    const std::optional<double> number = FieldAsNumber(instrument, sensor);
    // Sentences give knots where they say nothing else.
    const auto scale = SpeedScale(sensor.Units.empty() ? "kn" : sensor.Units);
    return number && scale ? std::optional(scale->Convert(*number)) : std::nullopt;
}

void TakeStatus(const std::string& text, GpsSentence& sentence) {
    if (text == "A" || text == "V")
        sentence.valid = text == "A";
}

void TakeQuality(const CLiveInstrument& instrument, const CSensor& sensor, GpsSentence& sentence) {
    const std::optional<double> number = FieldAsNumber(instrument, sensor);
    if (!number || !(*number >= 0.0) || !(*number <= 8.0)) {
        TakeStatus(FieldAsText(instrument, sensor), sentence);
        return;
    }
    sentence.quality = static_cast<int>(*number);
    sentence.valid = *sentence.quality != 0;
}

void TakeField(const CLiveInstrument& instrument, const CSensor& sensor, GpsSentence& sentence,
               Parts& parts) {
    const Field field = FieldOfSensor(sensor);
    const auto number = [&] { return FieldAsNumber(instrument, sensor); };
    switch (field) {
    case Field::Ignored:
        break;
    case Field::Latitude:
    case Field::Longitude:
        TakeCoordinate(instrument, sensor, field, parts);
        break;
    case Field::Time:
        sentence.secondsOfDay = SecondsOfDay(FieldAsText(instrument, sensor));
        break;
    case Field::Date:
        sentence.midnight = MidnightOf(FieldAsText(instrument, sensor));
        break;
    case Field::Day:
        parts.day = number();
        break;
    case Field::Month:
        parts.month = number();
        break;
    case Field::Year:
        parts.year = number();
        break;
    case Field::Status:
        TakeStatus(FieldAsText(instrument, sensor), sentence);
        break;
    case Field::Quality:
        TakeQuality(instrument, sensor, sentence);
        break;
    case Field::Satellites:
        sentence.satellites = number();
        break;
    case Field::Hdop:
        sentence.hdop = number();
        break;
    case Field::Altitude:
        sentence.altitude = number();
        break;
    case Field::Speed:
        if (!sentence.speed) // VTG has it twice
            sentence.speed = SpeedOf(instrument, sensor);
        break;
    case Field::Course:
        if (!sentence.course)
            sentence.course = number();
        break;
    case Field::Heading:
        sentence.heading = number();
        break;
    }
}

void TakeDate(const Parts& parts, GpsSentence& sentence) {
    if (!parts.day || !parts.month || !parts.year || !(*parts.year >= 1970.0) ||
        !(*parts.year <= 9999.0) || !(*parts.month >= 1.0) || !(*parts.month <= 12.0) ||
        !(*parts.day >= 1.0) || !(*parts.day <= 31.0))
        return;
    sentence.midnight =
        SecondsFromCalendar(static_cast<int>(*parts.year), static_cast<int>(*parts.month),
                            static_cast<int>(*parts.day), 0, 0, 0);
}

constexpr const char* Fixes[] = {"no fix",    "GPS",       "DGPS",   "PPS",      "RTK",
                                 "float RTK", "estimated", "manual", "simulated"};

} // namespace

void GpsSentence::FillFrom(const GpsSentence& other) {
    const auto fill = [](auto& mine, const auto& theirs) {
        if (!mine)
            mine = theirs;
    };
    fill(position, other.position);
    fill(secondsOfDay, other.secondsOfDay);
    fill(midnight, other.midnight);
    fill(valid, other.valid);
    fill(quality, other.quality);
    fill(satellites, other.satellites);
    fill(hdop, other.hdop);
    fill(altitude, other.altitude);
    fill(speed, other.speed);
    fill(course, other.course);
    fill(heading, other.heading);
}

bool BringsPosition(const CInstrument& definition) {
    return std::ranges::any_of(definition.Sensors(), [](const CSensor& sensor) {
        const Field field = FieldOfSensor(sensor);
        return field == Field::Latitude || field == Field::Longitude;
    });
}

bool IsCoordinateText(const CSensor& sensor) {
    const Field field = FieldOfSensor(sensor);
    return !IsCalibrated(sensor.Fit) && (field == Field::Latitude || field == Field::Longitude);
}

bool IsNamedLatitude(const CSensor& sensor) {
    return FieldName(sensor).starts_with("LAT");
}

bool IsNamedLongitude(const CSensor& sensor) {
    return FieldName(sensor).starts_with("LON");
}

std::optional<double> SignedDegrees(const CLiveInstrument& instrument, const CSensor& sensor) {
    return AngleOf(instrument, sensor, HemisphereBehind(instrument, sensor));
}

bool IsGpsSentence(const CInstrument& definition) {
    if (BringsPosition(definition))
        return true;
    const bool says = std::ranges::any_of(definition.Sensors(), [](const CSensor& sensor) {
        const Field field = FieldOfSensor(sensor);
        return field == Field::Course || field == Field::Speed || field == Field::Heading ||
               field == Field::Satellites || field == Field::Year || field == Field::Date;
    });
    return says && definition.SyncHeader().starts_with('$');
}

GpsSentence ReadGps(const CLiveInstrument& instrument) {
    GpsSentence sentence;
    Parts parts;
    if (!instrument.CurrentFrame())
        return sentence;
    for (const CSensor& sensor : instrument.Definition().Sensors())
        TakeField(instrument, sensor, sentence, parts);
    TakeDate(parts, sentence);
    const bool isPlace = parts.latitude && parts.longitude && std::fabs(*parts.latitude) <= 90.0 &&
                         std::fabs(*parts.longitude) <= 180.0;
    // A receiver without a fix goes on sending the last place that it knew.
    if (isPlace && sentence.valid.value_or(true))
        sentence.position = GeoPosition{*parts.latitude, *parts.longitude};
    return sentence;
}

std::string FixText(const GpsSentence& sentence) {
    if (sentence.quality)
        return Fixes[*sentence.quality];
    return !sentence.valid ? "" : *sentence.valid ? "fix" : Fixes[0];
}

} // namespace qor
