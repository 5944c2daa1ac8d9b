// SPDX-License-Identifier: GPL-3.0-or-later
//
// The rows of derived products that a package shows only when they are asked for, behind the usual
// ones: sea water by TEOS-10, light that is left, reflectance, oxygen. Each is one row of one table
// in the source, which also names where its formula is published. PackageRows reads what they are
// computed from and owns this; under the document's lock.
#pragma once

#include "products/Attenuation.h"
#include "products/DerivedRows.h"
#include "products/PackageSensors.h"
#include "products/Position.h"
#include "products/SensorUnits.h"

#include <array>
#include <span>
#include <string>

namespace qor {

/// What the further rows are computed from.
enum class WaterQuantity : std::uint8_t {
    // read by the package's rows
    Salinity,    ///< practical
    Temperature, ///< degrees C
    Pressure,    ///< of the sea, dbar
    Par,
    SurfacePar,
    Ed, ///< in their own units, at 490 nm
    Lu,
    Eu,
    LuAttenuation, ///< 1/m
    // read or made here
    Es,
    Oxygen, ///< umol/kg
    ParAttenuation,
    EdByEsAttenuation,
    LuByEsAttenuation,
    EuByEsAttenuation,
    Absolute,     ///< salinity, g/kg
    Conservative, ///< temperature, degrees C
};
constexpr std::size_t WaterQuantityCount = 17;

class CWaterNow {
  public:
    Reading& operator[](WaterQuantity quantity) { return All[static_cast<std::size_t>(quantity)]; }
    const Reading& operator[](WaterQuantity quantity) const {
        return All[static_cast<std::size_t>(quantity)];
    }

    std::optional<GeoPosition> position;
    double attenuationWindow = 0.0;

  private:
    std::array<Reading, WaterQuantityCount> All;
};

class CFurtherRows {
  public:
    struct Row {
        DerivedRow row;
        std::vector<int> carriers; ///< places of the instruments behind it
    };

    CFurtherRows() = default;
    CFurtherRows(PackageInstruments instruments, const PackageSensors& sensors);

    /// The rows that the package's sensors allow, without values.
    const std::vector<Row>& Rows() const { return List; }
    /// As CPackageRows::UnitFaults, for the oxygen.
    const std::vector<std::string>& UnitFaults() const { return Faults; }

    /// Follows the light; once for every frame of the package.
    void Advance(PackageInstruments instruments, CWaterNow water);
    /// Fills the values of `rows`, which are Rows() in their order.
    void Read(PackageInstruments instruments, CWaterNow water, std::span<DerivedRow> rows) const;
    /// One of them, by its place in Rows.
    Reading ReadRow(PackageInstruments instruments, CWaterNow water, std::size_t row) const;

  private:
    /// A light whose attenuation is followed, one sample a frame of its instrument.
    struct Followed {
        std::uint32_t lastFrame = 0;
        CAttenuation attenuation;
    };

    void FindMore(PackageInstruments instruments);
    void FindCarriers();
    void BuildRows();
    void ReadMore(PackageInstruments instruments, CWaterNow& water) const;
    static void Follow(Followed& followed, const CLiveInstrument* instrument, const Reading& light,
                       const CWaterNow& water);

    PackageSensors Sensors;
    SensorPlace SurfaceLight, Oxygen;
    std::optional<OxygenScale> OxygenUnits;
    bool SameLightUnits = false; ///< LU is ES per steradian
    /// The instruments behind each quantity; none: it cannot be had.
    std::array<std::vector<int>, WaterQuantityCount> Carriers;
    std::vector<Row> List;
    std::vector<std::size_t> TableRows; ///< of each row
    std::vector<std::string> Faults;
    Followed FollowedPar;
    std::array<Followed, LightFieldCount> FollowedByEs;
};

} // namespace qor
