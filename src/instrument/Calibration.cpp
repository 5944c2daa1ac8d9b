// SPDX-License-Identifier: GPL-3.0-or-later
//
// The fits. Coefficients are applied in the order written and never fused, so that every machine
// gives the same value to the last bit.
#include "instrument/Calibration.h"

#include "instrument/FieldValue.h"

#include <cmath>

namespace qor {

namespace {

constexpr bool IsNumeric(FitType fit) {
    return fit == FitType::COUNT || IsOptic(fit) || fit == FitType::POLYF || fit == FitType::POLYU;
}

/// The coefficients of a gain range, or none when there are fewer than the fit needs.
std::span<const double> CoefficientsOf(const CSensor& sensor, std::size_t gain, std::size_t least) {
    if (gain >= sensor.Coefficients.size() || sensor.Coefficients[gain].size() < least)
        return {};
    return sensor.Coefficients[gain];
}

ConversionStatus SetFinite(double number, double& value) {
    if (!std::isfinite(number))
        return ConversionStatus::NotFinite;
    value = number;
    return ConversionStatus::Good;
}

ConversionStatus ApplyOptic1(const CSensor& sensor, const RawValue& raw, bool immersed,
                             double& value) {
    if (sensor.Data != DataType::BU && sensor.Data != DataType::BS && sensor.Data != DataType::AI)
        return ConversionStatus::WrongDataType;
    // The gain is two's complement's low bits for negative raw values too.
    const auto gain = static_cast<std::size_t>(raw.integer & 3);
    const auto counts = static_cast<double>(raw.integer & ~std::int64_t{3});
    // Decided: the gain index just behind the last coefficient line passes the range test of the
    // lines read and still has no coefficients; it gets the range test's status.
    if (gain >= sensor.Coefficients.size())
        return ConversionStatus::GainOutOfRange;
    const std::span<const double> c = CoefficientsOf(sensor, gain, 3);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((counts - c[0]) * (immersed ? c[2] : 1.0) * c[1], value);
}

ConversionStatus ApplyOptic2(const CSensor& sensor, double x, bool immersed, double& value) {
    const std::span<const double> c = CoefficientsOf(sensor, 0, 3);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((x - c[0]) * (immersed ? c[2] : 1.0) * c[1], value);
}

ConversionStatus ApplyOptic3(const CSensor& sensor, double x, const IntegrationTimeValue& time,
                             bool immersed, double& value) {
    if (time.status != ConversionStatus::Good)
        return time.status;
    const std::span<const double> c = CoefficientsOf(sensor, 0, 4);
    if (c.empty())
        return ConversionStatus::NotUsable;
    return SetFinite((x - c[0]) * (c[3] / time.seconds) * (immersed ? c[2] : 1.0) * c[1], value);
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

ValueKind KindOfValue(const CSensor& sensor) {
    if (sensor.Data == DataType::AS)
        return sensor.Fit == FitType::NONE || sensor.Fit == FitType::COUNT ? ValueKind::Text
                                                                           : ValueKind::None;
    if (IsTimeText(sensor.Fit))
        return ValueKind::Text;
    return IsNumeric(sensor.Fit) ? ValueKind::Number : ValueKind::None;
}

ConversionStatus ApplyFit(const CSensor& sensor, const RawValue& raw,
                          const IntegrationTimeValue& time, bool immersed, double& value) {
    switch (sensor.Fit) {
    case FitType::COUNT:
        return SetFinite(raw.number, value);
    case FitType::OPTIC1:
        return ApplyOptic1(sensor, raw, immersed, value);
    case FitType::OPTIC2:
        return ApplyOptic2(sensor, raw.number, immersed, value);
    case FitType::OPTIC3:
        return ApplyOptic3(sensor, raw.number, time, immersed, value);
    case FitType::POLYF:
    case FitType::POLYU: {
        const std::span<const double> c = CoefficientsOf(sensor, 0, 1);
        if (c.empty())
            return ConversionStatus::NotUsable;
        return SetFinite(sensor.Fit == FitType::POLYF ? FactoredPolynomial(c, raw.number)
                                                      : UnfactoredPolynomial(c, raw.number),
                         value);
    }
    default:
        return ConversionStatus::NotUsable;
    }
}

ConversionStatus NumberOfField(const CSensor& sensor, ByteSpan field,
                               const IntegrationTimeValue& time, bool immersed, double& value) {
    // A text is extracted without fault, so that only the missing conversion is to be reported.
    if (sensor.Data == DataType::AS && !IsNumeric(sensor.Fit))
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
