// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every row of derived products shares, and the rows of a lone instrument.
#include "products/DerivedRows.h"

#include "base/Text.h"
#include "products/OceanMath.h"

#include <cmath>

namespace qor {

namespace {

constexpr const char* NoValueText = "--";

/// Tilt from two sensors of one frame; the failing axis' status otherwise.
ConversionStatus TiltOf(const CLiveInstrument& instrument, int x, int y, double& tilt) {
    const CSensor* sensorX = instrument.Definition().Sensor(x);
    const CSensor* sensorY = instrument.Definition().Sensor(y);
    if (!sensorX || !sensorY)
        return ConversionStatus::NotUsable;
    double degreesX = 0.0, degreesY = 0.0;
    ConversionStatus status = instrument.Value(*sensorX, degreesX);
    if (status == ConversionStatus::Good)
        status = instrument.Value(*sensorY, degreesY);
    if (status == ConversionStatus::Good)
        tilt = TiltDegrees(degreesX, degreesY);
    return status;
}

} // namespace

void SetRow(DerivedRow& row, std::optional<double> value, ConversionStatus status) {
    if (value && !std::isfinite(*value))
        status = ConversionStatus::NotFinite;
    row.status = status;
    row.value = status == ConversionStatus::Good ? value : std::nullopt;
}

std::string DerivedText(const DerivedRow& row) {
    if (row.status != ConversionStatus::Good)
        return std::string(ConversionStatusText(row.status));
    if (!row.value)
        return NoValueText;
    return FixedNumber(*row.value, row.decimals);
}

int FindTiltAxis(const CInstrument& instrument, std::string_view axis) {
    for (const CSensor& sensor : instrument.Sensors())
        if (EqualsNoCase(sensor.Type, "TILT") && EqualsNoCase(sensor.Id, axis))
            return sensor.Index;
    return -1;
}

std::string SensorName(const CSensor& sensor) {
    return sensor.Id.empty() ? sensor.Type : sensor.Type + "(" + sensor.Id + ")";
}

CInstrumentRows::CInstrumentRows(const CLiveInstrument& instrument) {
    const CInstrument& definition = instrument.Definition();
    TiltX = FindTiltAxis(definition, "X");
    TiltY = FindTiltAxis(definition, "Y");
    if (TiltX >= 0 && TiltY >= 0)
        List.push_back({ANCDATATYPE::Tilt, "TILT", "deg", {}, {}, {}});
    if (instrument.Unusable)
        return;
    if (HasParSeries(definition, "ES"))
        List.push_back({ANCDATATYPE::Par0, "PAR(0+)", ParUnits, {}, {}, {}});
    if (HasParSeries(definition, "ED"))
        List.push_back({ANCDATATYPE::ParZ, "PAR(Z)", ParUnits, {}, {}, {}});
}

void CInstrumentRows::Read(const CLiveInstrument& instrument, std::vector<DerivedRow>& rows,
                           std::int64_t now) const {
    rows = List;
    const bool stale = instrument.Stale(now);
    for (DerivedRow& row : rows) {
        row.stale = stale;
        double value = 0.0;
        ConversionStatus status = ConversionStatus::Good;
        if (!instrument.CurrentFrame()) {
            SetRow(row, {}, status);
            continue;
        }
        status = Compute(instrument, row.kind, value);
        SetRow(row, value, status);
    }
}

ConversionStatus CInstrumentRows::Compute(const CLiveInstrument& instrument, ANCDATATYPE kind,
                                          double& value) const {
    // Kept: an instrument with both series has one PAR list, so both of its rows show one value.
    return kind == ANCDATATYPE::Tilt ? TiltOf(instrument, TiltX, TiltY, value)
                                     : instrument.Par(value);
}

std::optional<double> CInstrumentRows::ReadRow(const CLiveInstrument& instrument,
                                               std::size_t row) const {
    double value = 0.0;
    if (row >= List.size() || !instrument.CurrentFrame() ||
        Compute(instrument, List[row].kind, value) != ConversionStatus::Good)
        return std::nullopt;
    return value;
}

} // namespace qor
