// SPDX-License-Identifier: GPL-3.0-or-later
//
// The look-up of a package's sensors, and their readings.
#include "products/PackageSensors.h"

#include "instrument/FitTypes.h"

#include "base/Text.h"

#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double AttenuationWavelength = 490.0;
constexpr double FarthestChannel = 10.0; ///< nm from 490
constexpr std::size_t MostScatteringChannels = 2;
constexpr std::string_view WaterIds[] = {"W", "WATER", "SEA"};
constexpr std::string_view NoIds[] = {"", "NONE"};
/// Ids of sensors that measure the instrument or the air, not the water.
constexpr std::string_view OtherIds[] = {"INT",  "AIR", "CASE", "HOUSING", "BODY",
                                         "SPEC", "PCB", "LAMP", "CPU"};
constexpr const char* LightSeries[LightFieldCount] = {"ED", "LU", "EU"};

/// The id as a finite number (a wavelength), or empty.
std::optional<double> NumericId(const CSensor& sensor) {
    const std::optional<double> number = WholeNumber(sensor.Id);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

/// The first sensor that the test accepts, over the instruments in their order.
template <class Test> SensorPlace FirstPlace(PackageInstruments instruments, Test test) {
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i])
            continue;
        for (const CSensor& sensor : instruments[i]->Definition().Sensors())
            if (test(sensor))
                return {static_cast<int>(i), sensor.Index};
    }
    return {};
}

SensorPlace FirstOfType(PackageInstruments instruments,
                        std::initializer_list<std::string_view> types) {
    return FirstPlace(instruments,
                      [types](const CSensor& sensor) { return IsType(sensor, types); });
}

SensorPlace FindTilt(PackageInstruments instruments, std::string_view axis) {
    return FirstPlace(instruments, [axis](const CSensor& sensor) {
        return IsType(sensor, {"TILT"}) && EqualsNoCase(sensor.Id, axis);
    });
}

bool HasId(const CSensor& sensor, std::span<const std::string_view> ids) {
    for (std::string_view id : ids)
        if (EqualsNoCase(sensor.Id, id))
            return true;
    return false;
}

/// A sensor that says it is in the water comes first, then one that says nothing.
SensorPlace FindInWater(PackageInstruments instruments,
                        std::initializer_list<std::string_view> types) {
    SensorPlace place;
    for (const auto ids : std::initializer_list<std::span<const std::string_view>>{WaterIds, NoIds})
        if (!place.Found())
            place = FirstPlace(instruments, [types, ids](const CSensor& sensor) {
                return IsType(sensor, types) && HasId(sensor, ids);
            });
    return place;
}

SensorPlace FindTemperature(PackageInstruments instruments) {
    // Decided: an id of any other kind (a number, a word) is none of these, so it gives no row:
    // instruments carry many thermometers, and most of them are inside.
    return FindInWater(instruments, {"TEMP", "TEMPERATURE"});
}

/// The first usable instrument with a series, preferably without the other series.
int FirstWithSeries(PackageInstruments instruments, std::string_view series,
                    std::string_view without = {}) {
    int first = -1;
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i] || instruments[i]->Unusable ||
            !HasParSeries(instruments[i]->Definition(), series))
            continue;
        if (without.empty() || !HasParSeries(instruments[i]->Definition(), without))
            return static_cast<int>(i);
        if (first < 0)
            first = static_cast<int>(i);
    }
    return first;
}

std::vector<PackageSensors::Scattering> FindScattering(PackageInstruments instruments) {
    std::vector<PackageSensors::Scattering> found;
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i])
            continue;
        for (const CSensor& sensor : instruments[i]->Definition().Sensors()) {
            const std::optional<double> wavelength = NumericId(sensor);
            if (!wavelength || !IsType(sensor, {"BETA", "VSF"}))
                continue;
            if (found.size() == MostScatteringChannels)
                return found;
            found.push_back({{static_cast<int>(i), sensor.Index}, *wavelength});
        }
    }
    return found;
}

} // namespace

bool IsType(const CSensor& sensor, std::initializer_list<std::string_view> types) {
    for (std::string_view type : types)
        if (EqualsNoCase(sensor.Type, type))
            return true;
    return false;
}

SensorPlace FindPressure(PackageInstruments instruments) {
    const SensorPlace place = FindInWater(instruments, {"PRES", "PRESSURE"});
    if (place.Found())
        return place;
    // Decided: of pressures only those known to be elsewhere are refused; a gauge with a serial
    // number for an id is the package's gauge, and without it there would be no depth at all.
    return FirstPlace(instruments, [](const CSensor& sensor) {
        return IsType(sensor, {"PRES", "PRESSURE"}) && !HasId(sensor, OtherIds);
    });
}

SensorPlace FindLight(PackageInstruments instruments, std::string_view series) {
    SensorPlace place;
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < instruments.size(); ++i) {
        if (!instruments[i])
            continue;
        for (const CSensor& sensor : instruments[i]->Definition().Sensors()) {
            if (!IsType(sensor, {series}) || !IsOptic(sensor.Fit))
                continue;
            if (place.instrument < 0)
                place.instrument = static_cast<int>(i);
            const double distance =
                std::fabs(NumericId(sensor).value_or(0.0) - AttenuationWavelength);
            if (distance > FarthestChannel || distance >= nearest)
                continue;
            nearest = distance;
            place = {static_cast<int>(i), sensor.Index};
        }
    }
    return place;
}

SensorPlace FindOxygen(PackageInstruments instruments) {
    return FirstPlace(instruments, [](const CSensor& sensor) {
        return IsType(sensor, {"O2", "DO", "DOXY", "OXY", "OXYGEN"}) &&
               sensor.Units.find('%') == std::string::npos;
    });
}

PackageSensors FindPackageSensors(PackageInstruments instruments) {
    PackageSensors found;
    found.tiltX = FindTilt(instruments, "X");
    found.tiltY = FindTilt(instruments, "Y");
    found.pressure = FindPressure(instruments);
    found.timer = FirstOfType(instruments, {"TIMER"});
    found.temperature = FindTemperature(instruments);
    found.conductivity = FirstOfType(instruments, {"COND", "CONDUCTIVITY"});
    found.cdom = FirstOfType(instruments, {"CDOM"});
    found.nitrate = FirstOfType(instruments, {"NITRATE", "NO3"});
    // An instrument with both series computes its one PAR from ES, which is not the water's.
    found.inWater = FirstWithSeries(instruments, "ED", "ES");
    found.surface = FirstWithSeries(instruments, "ES");
    found.scattering = FindScattering(instruments);
    for (std::size_t field = 0; field < LightFieldCount; ++field)
        found.light[field] = FindLight(instruments, LightSeries[field]);
    return found;
}

const CLiveInstrument* InstrumentAt(PackageInstruments instruments, int place) {
    return place >= 0 && static_cast<std::size_t>(place) < instruments.size()
               ? instruments[static_cast<std::size_t>(place)]
               : nullptr;
}

const CSensor* SensorAt(PackageInstruments instruments, SensorPlace place) {
    const CLiveInstrument* instrument = InstrumentAt(instruments, place.instrument);
    return instrument ? instrument->Definition().Sensor(place.sensor) : nullptr;
}

std::string UnknownUnits(const CLiveInstrument& instrument, const CSensor& sensor,
                         std::string_view known) {
    std::string text = instrument.Name() + ": the units \"" + sensor.Units + "\" of ";
    text += sensor.Id.empty() ? sensor.Type : sensor.Type + "(" + sensor.Id + ")";
    text += " are not known, so no value is derived from it. Its definition should name one of ";
    return text.append(known) + ".";
}

Reading ReadSensor(PackageInstruments instruments, SensorPlace place) {
    const CSensor* sensor = SensorAt(instruments, place);
    const CLiveInstrument* instrument = InstrumentAt(instruments, place.instrument);
    if (!sensor || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Value(*sensor, value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

Reading ReadPar(PackageInstruments instruments, int place) {
    const CLiveInstrument* instrument = InstrumentAt(instruments, place);
    if (!instrument || !instrument->CurrentFrame())
        return {};
    double value = 0.0;
    const ConversionStatus status = instrument->Par(value);
    return status == ConversionStatus::Good ? Reading{value, status} : Reading{{}, status};
}

} // namespace qor
