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
#include "products/FurtherRows.h"
#include "products/OceanMath.h"
#include "products/PackageSensors.h"
#include "products/PackageSettings.h"
#include "products/SensorUnits.h"

#include <array>

namespace qor {

/// Which rows a package shows: the usual ones, or also those that are off by default.
enum class DerivedChoice { Usual, All };

/// The products of a package, in display order; a row exists when its inputs do.
class CPackageRows {
  public:
    using Instruments = PackageInstruments;

    CPackageRows() = default;
    /// Finds the sensors, first in list order over the instruments in package order.
    CPackageRows(Instruments instruments, const PackageSettings& settings,
                 DerivedChoice choice = DerivedChoice::Usual);

    /// Whether there are scattering sensors and nothing to take a salinity from.
    bool LacksSalinity(const PackageSettings& settings) const;

    /// What to tell the operator once: a sentence for each sensor in units that are not known, from
    /// which nothing is derived (but the depth, which is in the pressure's own units).
    const std::vector<std::string>& UnitFaults() const { return Faults; }

    /// The rows without values: their kinds, labels and units.
    const std::vector<DerivedRow>& Rows() const { return List; }

    /// From the units of the pressure, and so of the depth, to dbar; none where they are not known.
    const std::optional<UnitScale>& PressureUnits() const { return ToDbar; }

    /// What the rows are computed from beside the latest frames.
    struct Inputs {
        Instruments instruments; ///< in package order; null: no longer there
        const PackageSettings& settings;
        double pressureOffset = 0.0; ///< the pressure that was read in air, in the sensor's units
        std::int64_t now = 0;        ///< monotonic clock, ms, for what is stale
        std::optional<GeoPosition> position = {}; ///< where it is, for gravity and the Baltic
    };
    /// Follows the cast: to be called once for every frame of the package's instruments.
    void Advance(const Inputs& inputs, VelocityState& velocity);
    /// Every row for the latest frames, into a list whose memory is used again.
    void Read(const Inputs& inputs, std::vector<DerivedRow>& rows) const;
    /// The value of one row, by its place in Rows, at the cost of that row alone.
    std::optional<double> ReadRow(const Inputs& inputs, std::size_t row) const;
    /// The places of the instruments that a row ages with.
    const std::vector<int>& CarriersOf(std::size_t row) const { return Carriers[row]; }

  private:
    struct ScatteringChannel {
        SensorPlace place;
        double wavelength = 0.0;
        double waterBackscattering = 0.0;
    };
    struct FieldFollowed {
        std::uint32_t lastFrame = 0;
        CAttenuation attenuation;
    };

    void BuildRows(Instruments instruments);
    void AddFurtherRows(Instruments instruments);
    CWaterNow ReadWater(const Inputs& inputs) const;
    void AddRow(ANCDATATYPE kind, std::string label, std::string units,
                std::initializer_list<SensorPlace> from);

    void ReadUnits(Instruments instruments);
    /// Sea pressure in dbar, depth in dbar, temperature in degrees C, conductivity in mS/cm.
    Reading ReadPressure(const Inputs& inputs) const;
    Reading ReadDbarDepth(const Inputs& inputs) const;
    Reading ReadTemperature(const Inputs& inputs) const;
    Reading ReadConductivity(const Inputs& inputs) const;
    Reading ReadTilt(Instruments instruments) const;
    Reading ReadDepth(const Inputs& inputs) const;
    Reading ReadSalinity(const Inputs& inputs) const;
    Reading ReadShownSalinity(const Reading& salinity) const;
    Reading ReadAttenuation(const Inputs& inputs, std::size_t field, const Reading& depth) const;
    void AdvanceVelocity(const Inputs& inputs, const Reading& pressure, VelocityState& velocity);
    void AdvanceSalinity(const Inputs& inputs);
    void AdvanceAttenuation(const Inputs& inputs, std::size_t field, const Reading& depth);
    Reading ReadSaturation(const Inputs& inputs, Reading par) const;
    /// A row that is neither scattering nor one of the further ones.
    Reading ReadUsual(const Inputs& inputs, ANCDATATYPE kind) const;
    /// BETAp, bbp and bb of a channel.
    static std::array<Reading, 3> ReadScattering(Instruments instruments,
                                                 const ScatteringChannel& channel,
                                                 const Reading& salinity);

    std::vector<DerivedRow> List;
    std::vector<std::vector<int>> Carriers; ///< places of the instruments behind each row
    std::vector<std::string> Faults;
    PackageSensors Sensors;
    std::optional<UnitScale> ToDbar, ToCelsius, ToMilliSiemens; ///< empty: not found or not known
    std::vector<ScatteringChannel> Scattering;
    std::array<FieldFollowed, LightFieldCount> Fields;
    PressureHistory History;
    Reading LastVelocity; ///< of the package's latest frame
    std::optional<double> LastSalinity;
    bool SalinityMeasured = false;
    std::size_t FirstScatteringRow = 0;
    DerivedChoice Choice = DerivedChoice::Usual;
    CFurtherRows Further;
    std::size_t FirstFurtherRow = 0;
};

} // namespace qor
