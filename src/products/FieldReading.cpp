// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/FieldReading.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/RawValue.h"

#include <cmath>

namespace qor {

namespace {

bool IsText(DataType data) {
    switch (data) {
    case DataType::AI:
    case DataType::AF:
    case DataType::AS:
        return true;
    case DataType::BU:
    case DataType::BS:
    case DataType::BF:
    case DataType::BD:
    case DataType::HU:
    case DataType::HS:
        return false;
    }
    return false;
}

} // namespace

std::string FieldName(const CSensor& sensor) {
    std::string name = sensor.Type + (sensor.Id.empty() ? "" : " " + sensor.Id);
    for (char& c : name)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return name;
}

std::string FieldAsText(const CLiveInstrument& instrument, const CSensor& sensor) {
    if (!instrument.CurrentFrame())
        return {};
    const ByteSpan frame = instrument.CurrentFrame()->Span();
    ByteSpan field;
    double raw = 0.0;
    if (IsText(sensor.Data))
        return FieldOf(sensor, frame, field) == ConversionStatus::Good
                   ? std::string(Trim(AsText(field)))
                   : std::string();
    return RawNumber(sensor, frame, raw) == ConversionStatus::Good ? ShortestNumber(raw)
                                                                   : std::string();
}

std::optional<double> FieldAsNumber(const CLiveInstrument& instrument, const CSensor& sensor) {
    double value = 0.0;
    if (instrument.Value(sensor, value) == ConversionStatus::Good)
        return value;
    if (sensor.Data != DataType::AS)
        return std::nullopt;
    const std::optional<double> number = WholeNumber(FieldAsText(instrument, sensor));
    return number && std::isfinite(*number) ? number : std::nullopt;
}

} // namespace qor
