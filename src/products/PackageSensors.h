// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which sensors of a package its derived products come from, and what those sensors read now.
// Found once when the rows of a package are built, read for every frame; under the document's
// lock. What is made of the readings is PackageRows' business.
#pragma once

#include "products/LiveInstrument.h"

#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// The instruments in package order; null: no longer there.
using PackageInstruments = std::span<const CLiveInstrument* const>;

/// Where a sensor is: the place of its instrument in the package (0 for a lone one) and its index.
struct SensorPlace {
    int instrument = -1;
    int sensor = -1;

    bool Found() const { return sensor >= 0; }
};

/// A light field whose attenuation is followed, and the channel that it is followed by.
enum class LightField : std::uint8_t { Ed, Lu, Eu };
constexpr std::size_t LightFieldCount = 3;

/// The sensors of a package, first in list order over the instruments in package order.
struct PackageSensors {
    struct Scattering {
        SensorPlace place;
        double wavelength; ///< nm
    };

    SensorPlace tiltX, tiltY, pressure, timer, temperature, conductivity, cdom, nitrate;
    int inWater = -1, surface = -1;     ///< places of the irradiance instruments
    std::vector<Scattering> scattering; ///< the first two that scatter at a wavelength
    /// The channels nearest 490 nm; one without a sensor: the series exists, no channel is near.
    std::array<SensorPlace, LightFieldCount> light;

    bool MeasureSalinity() const {
        return pressure.Found() && temperature.Found() && conductivity.Found();
    }
};

PackageSensors FindPackageSensors(PackageInstruments instruments);

/// The optical channel of a series nearest 490 nm, within 10 nm; the series' first instrument alone
/// when no channel is near enough.
SensorPlace FindLight(PackageInstruments instruments, std::string_view series);
/// The water's pressure, by the names that instruments give it.
SensorPlace FindPressure(PackageInstruments instruments);
/// Dissolved oxygen as an amount, not as a percentage.
SensorPlace FindOxygen(PackageInstruments instruments);

/// The instrument or sensor at a place, or null.
const CLiveInstrument* InstrumentAt(PackageInstruments instruments, int place);
const CSensor* SensorAt(PackageInstruments instruments, SensorPlace place);

/// A value, or the status that prevented it; Good without a value when there is nothing yet.
struct Reading {
    std::optional<double> value;
    ConversionStatus status = ConversionStatus::Good;
};

/// The calibrated value in the latest frame of the sensor's instrument.
Reading ReadSensor(PackageInstruments instruments, SensorPlace place);
/// PAR over the PAR list of the instrument at a place.
Reading ReadPar(PackageInstruments instruments, int place);

/// What to tell the operator about a sensor in units that are not known.
std::string UnknownUnits(const CLiveInstrument& instrument, const CSensor& sensor,
                         std::string_view known);

/// Whether the sensor is of one of the types, compared without case.
bool IsType(const CSensor& sensor, std::initializer_list<std::string_view> types);

} // namespace qor
