// SPDX-License-Identifier: GPL-3.0-or-later
//
// The fits. Coefficients are applied in the order written and never fused, so that every machine
// gives the same value to the last bit.
#include "instrument/Calibration.h"

#include "instrument/FieldValue.h"

#include <cmath>

namespace qor {

namespace {

/// The coefficients of a gain range, or none when there are fewer than the fit needs.
std::span<const double> CoefficientsOf(const CSensor& sensor, std::size_t gain) {
    if (gain >= sensor.Coefficients.size() ||
        sensor.Coefficients[gain].size() < RowOf(sensor.Fit).fewestCoefficients)
        return {};
    return sensor.Coefficients[gain];
}

ConversionStatus SetFinite(double number, double& value) {
    if (!std::isfinite(number))
        return ConversionStatus::NotFinite;
    value = number;
    return ConversionStatus::Good;
}

/// The integration-time sensor's value in the frame. It stands earlier in the list, which also ends
/// the chain when it is an OPTIC3 sensor itself.
IntegrationTimeValue TimeOf(const CSensor& sensor, ByteSpan frame, bool immersed) {
    IntegrationTimeValue time;
    const CSensor* const source = sensor.IntegrationTime;
    if (sensor.Fit == FitType::OPTIC3 && source && source->Index < sensor.Index)
        time.status = CalibratedValue(*source, frame, immersed, time.seconds);
    return time;
}

} // namespace

ConversionStatus CountValue(const FitInput& input, double& value) {
    return SetFinite(input.raw.number, value);
}

ConversionStatus Optic1Value(const FitInput& input, double& value) {
    const CSensor& sensor = input.sensor;
    if (!RowOf(sensor.Fit).allowed.Has(sensor.Data))
        return ConversionStatus::WrongDataType;
    // The gain is two's complement's low bits for negative raw values too.
    const auto gain = static_cast<std::size_t>(input.raw.integer & 3);
    const auto counts = static_cast<double>(input.raw.integer & ~std::int64_t{3});
    // Decided: the gain index just behind the last coefficient line passes the range test of the
    // lines read and still has no coefficients; it gets the range test's status.
    if (gain >= sensor.Coefficients.size())
        return ConversionStatus::GainOutOfRange;
    const std::span<const double> c = CoefficientsOf(sensor, gain);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((counts - c[0]) * (input.immersed ? c[2] : 1.0) * c[1], value);
}

ConversionStatus Optic2Value(const FitInput& input, double& value) {
    const std::span<const double> c = CoefficientsOf(input.sensor, 0);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((input.raw.number - c[0]) * (input.immersed ? c[2] : 1.0) * c[1], value);
}

ConversionStatus Optic3Value(const FitInput& input, double& value) {
    if (input.time.status != ConversionStatus::Good)
        return input.time.status;
    const std::span<const double> c = CoefficientsOf(input.sensor, 0);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((input.raw.number - c[0]) * (c[3] / input.time.seconds) *
                         (input.immersed ? c[2] : 1.0) * c[1],
                     value);
}

ConversionStatus FactoredValue(const FitInput& input, double& value) {
    const std::span<const double> c = CoefficientsOf(input.sensor, 0);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite(FactoredPolynomial(c, input.raw.number), value);
}

ConversionStatus UnfactoredValue(const FitInput& input, double& value) {
    const std::span<const double> c = CoefficientsOf(input.sensor, 0);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite(UnfactoredPolynomial(c, input.raw.number), value);
}

ValueKind KindOfValue(const CSensor& sensor) {
    const FitRow& row = RowOf(sensor.Fit);
    return sensor.Data == DataType::AS ? row.ofText : row.ofNumbers;
}

ConversionStatus ApplyFit(const CSensor& sensor, const RawValue& raw,
                          const IntegrationTimeValue& time, bool immersed, double& value) {
    const NumberFit fit = RowOf(sensor.Fit).number;
    return fit ? fit({sensor, raw, time, immersed}, value) : ConversionStatus::NotUsable;
}

ConversionStatus NumberOfField(const CSensor& sensor, ByteSpan field,
                               const IntegrationTimeValue& time, bool immersed, double& value) {
    // A text is extracted without fault, so that only the missing conversion is to be reported.
    if (sensor.Data == DataType::AS && !RowOf(sensor.Fit).number)
        return ConversionStatus::NotUsable;
    RawValue raw;
    const ConversionStatus status = RawOfField(sensor, field, raw);
    return status == ConversionStatus::Good ? ApplyFit(sensor, raw, time, immersed, value) : status;
}

ConversionStatus TextOfField(const CSensor& sensor, ByteSpan field, std::string* text) {
    if (sensor.Data == DataType::AS) {
        if (KindOfValue(sensor) != ValueKind::Text)
            return IsTimeText(sensor.Fit) ? ConversionStatus::WrongDataType
                                          : ConversionStatus::NotUsable;
        if (text)
            *text = AsText(field).substr(0, AsText(field).find('\0'));
        return ConversionStatus::Good;
    }
    RawValue raw;
    const ConversionStatus status = RawOfField(sensor, field, raw);
    return status == ConversionStatus::Good ? TimeText(sensor, raw, text) : status;
}

ConversionStatus CalibratedValue(const CSensor& sensor, ByteSpan frame, bool immersed,
                                 double& value) {
    ByteSpan field;
    const ConversionStatus status = FieldOf(sensor, frame, field);
    if (status != ConversionStatus::Good)
        return status;
    return NumberOfField(sensor, field, TimeOf(sensor, frame, immersed), immersed, value);
}

ConversionStatus RawNumber(const CSensor& sensor, ByteSpan frame, double& value) {
    RawValue raw;
    const ConversionStatus status = RawOf(sensor, frame, raw);
    if (status == ConversionStatus::Good)
        value = raw.number;
    return status;
}

ConversionStatus ValueText(const CSensor& sensor, ByteSpan frame, std::string& text) {
    ByteSpan field;
    const ConversionStatus status = FieldOf(sensor, frame, field);
    return status == ConversionStatus::Good ? TextOfField(sensor, field, &text) : status;
}

} // namespace qor
