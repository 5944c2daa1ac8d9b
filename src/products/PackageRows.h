// SPDX-License-Identifier: GPL-3.0-or-later
//
// The derived products of a package: which rows its sensors allow, and their unrounded values for
// the latest frames of its instruments. What follows the cast (velocity, attenuation, salinity) is
// advanced once for every frame of the package, by the document alone; displays, exports and the
// command line only read, so they agree whatever their rates. Under the document's lock. The
// formulas are OceanMath's and Attenuation's.
#pragma once

#include "products/Attenuation.h"
#include "products/DerivedRows.h"
#include "products/OceanMath.h"
#include "products/PackageSettings.h"

#include <array>
#include <span>

namespace qor {

/// Where a sensor is: the place of its instrument in the package (0 for a lone one) and its index.
struct SensorPlace {
    int instrument = -1;
    int sensor = -1;

    bool Found() const { return sensor >= 0; }
};

/// The products of a package, in display order; a row exists when its inputs do.
class CPackageRows {
  public:
    using Instruments = std::span<const CLiveInstrument* const>;

    CPackageRows() = default;
    /// Finds the sensors, first in list order over the instruments in package order.
    CPackageRows(Instruments instruments, const PackageSettings& settings);

    /// Whether there are scattering sensors and nothing to take a salinity from.
    bool LacksSalinity(const PackageSettings& settings) const;

    /// The rows without values: their kinds, labels and units.
    const std::vector<DerivedRow>& Rows() const { return List; }

    /// What the rows are computed from beside the latest frames.
    struct Inputs {
        Instruments instruments; ///< in package order; null: no longer there
        const PackageSettings& settings;
        double pressureOffset = 0.0; ///< the pressure that was read in air
    };
    /// Follows the cast: to be called once for every frame of the package's instruments.
    void Advance(const Inputs& inputs, VelocityState& velocity);
    /// Every row for the latest frames, into a list whose memory is used again.
    void Read(const Inputs& inputs, std::vector<DerivedRow>& rows) const;

  private:
    struct Reading {
        std::optional<double> value;
        ConversionStatus status = ConversionStatus::Good;
    };
    struct ScatteringChannel {
        SensorPlace place;
        double wavelength = 0.0;
        double waterBackscattering = 0.0;
    };
    struct LightField {
        SensorPlace place; ///< the channel nearest 490 nm; the row may exist without one
        std::uint32_t lastFrame = 0;
        CAttenuation attenuation;
    };

    void FindSensors(Instruments instruments);
    void FindScattering(Instruments instruments);
    void FindLight(Instruments instruments);
    void BuildRows(Instruments instruments);
    void AddRow(ANCDATATYPE kind, std::string label, std::string units);
    bool MeasuresSalinity() const {
        return Pressure.Found() && Temperature.Found() && Conductivity.Found();
    }

    static Reading ReadSensor(Instruments instruments, SensorPlace place);
    static Reading ReadPar(Instruments instruments, int instrument);
    Reading ReadTilt(Instruments instruments) const;
    Reading ReadDepth(const Inputs& inputs) const;
    void AdvanceVelocity(const Inputs& inputs, const Reading& pressure, VelocityState& velocity);
    void AdvanceSalinity(const Inputs& inputs, const Reading& pressure);
    Reading ReadSalinity(const Inputs& inputs) const;
    void AdvanceAttenuation(const Inputs& inputs, LightField& field, const Reading& depth);
    static Reading ReadAttenuation(const Inputs& inputs, const LightField& field,
                                   const Reading& depth);
    static void SetScattering(DerivedRow* rows, Instruments instruments,
                              const ScatteringChannel& channel, const Reading& salinity);

    std::vector<DerivedRow> List;
    SensorPlace TiltX, TiltY, Pressure, Timer, Temperature, Conductivity, Cdom, Nitrate;
    int InWater = -1, Surface = -1; ///< places of the irradiance instruments
    std::vector<ScatteringChannel> Scattering;
    std::array<LightField, 3> Fields; ///< ED, LU, EU
    PressureHistory History;
    Reading LastVelocity; ///< of the package's latest frame
    std::optional<double> LastSalinity;
    bool SalinityMeasured = false;
    std::size_t FirstScatteringRow = 0;
};

} // namespace qor
