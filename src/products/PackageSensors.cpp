// SPDX-License-Identifier: GPL-3.0-or-later
//
// The look-up of a package's sensors, and their readings.
#include "products/PackageSensors.h"

#include "base/Text.h"

#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double AttenuationWavelength = 490.0;
constexpr double FarthestChannel = 10.0; ///< nm from 490
constexpr std::size_t MostScatteringChannels = 2;
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

SensorPlace FindTemperature(PackageInstruments instruments) {
    const SensorPlace water = FirstPlace(instruments, [](const CSensor& sensor) {
        return IsType(sensor, {"TEMP", "TEMPERATURE"}) &&
               (EqualsNoCase(sensor.Id, "W") || EqualsNoCase(sensor.Id, "WATER"));
    });
    return water.Found() ? water : FirstOfType(instruments, {"TEMP", "TEMPERATURE"});
}

int FirstWithSeries(PackageInstruments instruments, std::string_view series) {
    for (std::size_t i = 0; i < instruments.size(); ++i)
        if (instruments[i] && !instruments[i]->Unusable &&
            HasParSeries(instruments[i]->Definition(), series))
            return static_cast<int>(i);
    return -1;
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

/// The optical channel of a series nearest 490 nm; the instrument alone when none is near enough.
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

} // namespace

bool IsType(const CSensor& sensor, std::initializer_list<std::string_view> types) {
    for (std::string_view type : types)
        if (EqualsNoCase(sensor.Type, type))
            return true;
    return false;
}

PackageSensors FindPackageSensors(PackageInstruments instruments) {
    PackageSensors found;
    found.tiltX = FindTilt(instruments, "X");
    found.tiltY = FindTilt(instruments, "Y");
    found.pressure = FirstOfType(instruments, {"PRES", "PRESSURE"});
    found.timer = FirstOfType(instruments, {"TIMER"});
    found.temperature = FindTemperature(instruments);
    found.conductivity = FirstOfType(instruments, {"COND", "CONDUCTIVITY"});
    found.cdom = FirstOfType(instruments, {"CDOM"});
    found.nitrate = FirstOfType(instruments, {"NITRATE", "NO3"});
    found.inWater = FirstWithSeries(instruments, "ED");
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
