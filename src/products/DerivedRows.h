// SPDX-License-Identifier: GPL-3.0-or-later
//
// The rows of derived products: what a row is, and those of a lone instrument. Rows carry unrounded
// values; the ancillary displays turn them into cells, the command line prints them. Called under
// the document's lock; labels and units are 8-bit Latin-1 text. Sensors are remembered by index, so
// rows outlive an instrument safely. The rows of a package are PackageRows'.
#pragma once

#include "products/LiveInstrument.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// What a row of derived products is.
enum class ANCDATATYPE : std::uint8_t {
    Tilt,
    Depth,
    Velocity,
    WaterTemperature,
    Salinity,
    Cdom,
    Nitrate,
    ParZ,
    Par0,
    LightSaturation,
    BetaP,
    Bbp,
    Bb,
    KEd,
    KLu,
    KEu,
    // the further rows
    AbsoluteSalinity,
    ConservativeTemperature,
    SigmaTheta,
    SoundSpeed,
    DepthInMetres,
    KPar,
    OnePercentDepth,
    Reflectance,
    ParRatio,
    KEdByEs,
    KLuByEs,
    KEuByEs,
    OxygenSaturation,
};

inline constexpr const char* ParUnits = "uMol/m^2/s";

/// One product at this moment. Without a value: the conversion status that prevented it, or Good
/// when there is nothing to compute it from yet (no frame, no setting, no full window).
struct DerivedRow {
    ANCDATATYPE kind = ANCDATATYPE::Tilt;
    std::string label;
    std::string units;
    std::optional<double> value;
    ConversionStatus status = ConversionStatus::Good;
    bool stale = false; ///< of an instrument that sends no more
    std::uint8_t decimals = 2;
};

/// The value with the decimals of its kind, the text of the status, or "--".
std::string DerivedText(const DerivedRow& row);

/// Puts a number, or the status that prevented it, into a row. What arithmetic made of good values
/// may still not be a number: that is NotFinite.
void SetRow(DerivedRow& row, std::optional<double> value, ConversionStatus status);

/// A tilt axis ("X" or "Y") of an instrument; index of the sensor or -1.
int FindTiltAxis(const CInstrument& instrument, std::string_view axis);

/// A sensor's name for people: its type, with the id in brackets when it has one.
std::string SensorName(const CSensor& sensor);

/// Tilt, PAR above and PAR below the surface of one instrument.
class CInstrumentRows {
  public:
    CInstrumentRows() = default;
    explicit CInstrumentRows(const CLiveInstrument& instrument);

    /// The rows without values: their kinds, labels and units.
    const std::vector<DerivedRow>& Rows() const { return List; }
    /// Every row for the instrument's current frame, into a list whose memory is used again. `now`:
    /// the monotonic clock (ms), for what is stale.
    void Read(const CLiveInstrument& instrument, std::vector<DerivedRow>& rows,
              std::int64_t now = 0) const;
    /// The value of one row, by its place in Rows.
    std::optional<double> ReadRow(const CLiveInstrument& instrument, std::size_t row) const;

  private:
    ConversionStatus Compute(const CLiveInstrument& instrument, ANCDATATYPE kind,
                             double& value) const;

    std::vector<DerivedRow> List;
    int TiltX = -1, TiltY = -1;
};

} // namespace qor
