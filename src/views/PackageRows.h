// SPDX-License-Identifier: GPL-3.0-or-later
//
// The derived products of a package: which rows its sensors allow, and their unrounded values for
// the latest frames of its instruments. The package display turns them into cells, the command line
// prints them. Called under the document's lock. The formulas are OceanMath's and Attenuation's.
#pragma once

#include "session/Package.h"
#include "views/Attenuation.h"
#include "views/DerivedRows.h"
#include "views/OceanMath.h"

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
    using Instruments = std::span<const CQorViewIns* const>;

    CPackageRows() = default;
    /// Finds the sensors, first in list order over the instruments in package order.
    CPackageRows(Instruments instruments, const PackageSettings& settings);

    /// Whether there are scattering sensors and nothing to take a salinity from.
    bool LacksSalinity() const;

    const std::vector<DerivedRow>& Rows() const { return List; }

    /// Computes every row from the latest frames. To be called once for every frame of the package
    /// (attenuation and velocity follow the cast), with the package's instruments in the same order
    /// (null: no longer there), the settings as they are now, and the pressure read in air.
    const std::vector<DerivedRow>& Compute(Instruments instruments, const PackageSettings& settings,
                                           double pressureOffset, VelocityState& velocity);

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

    static Reading Read(Instruments instruments, SensorPlace place);
    static Reading ReadPar(Instruments instruments, int instrument);
    Reading ReadTilt(Instruments instruments) const;
    Reading ReadVelocity(Instruments instruments, const Reading& pressure, VelocityState& velocity);
    Reading ReadSalinity(Instruments instruments, const Reading& pressure,
                         const PackageSettings& settings);
    Reading ReadAttenuation(Instruments instruments, LightField& field, const Reading& depth,
                            double window);
    static void SetScattering(DerivedRow* rows, Instruments instruments,
                              const ScatteringChannel& channel, const Reading& salinity);
    void Set(ANCDATATYPE kind, const Reading& reading);

    std::vector<DerivedRow> List;
    SensorPlace TiltX, TiltY, Pressure, Timer, Temperature, Conductivity, Cdom, Nitrate;
    int InWater = -1, Surface = -1; ///< places of the irradiance instruments
    std::vector<ScatteringChannel> Scattering;
    std::array<LightField, 3> Fields; ///< ED, LU, EU
    PressureHistory History;
    std::optional<double> LastSalinity;
    bool SalinityMeasured = false;
    std::size_t FirstScatteringRow = 0;
};

} // namespace qor
