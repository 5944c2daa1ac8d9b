// SPDX-License-Identifier: GPL-3.0-or-later
//
// Raw extraction, one reader a data type. Field lengths come from a definition file that the reader
// has normalised, and are checked here all the same: a sensor may be built by other means.
#include "instrument/RawValue.h"

#include "instrument/AsciiNumber.h"
#include "instrument/Instrument.h"
#include "instrument/VariableFields.h"

#include <bit>
#include <cmath>

namespace qor {

namespace {

void SetInteger(std::int64_t integer, RawValue& raw) {
    raw = {static_cast<double>(integer), integer};
}

ConversionStatus SetFinite(double number, RawValue& raw) {
    if (!std::isfinite(number))
        return ConversionStatus::NotFinite;
    raw = {number, 0};
    return ConversionStatus::Good;
}

constexpr int HexDigit(std::uint8_t byte) {
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    const int letter = byte | 0x20;
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

/// Accumulates the field's hexadecimal digits.
ConversionStatus ReadDigits(ByteSpan field, std::uint64_t& value) {
    if (field.size() > 8)
        return ConversionStatus::NotUsable;
    std::uint64_t digits = 0;
    for (std::uint8_t byte : field) {
        const int digit = HexDigit(byte);
        if (digit < 0)
            return ConversionStatus::NoNumber;
        digits = digits << 4 | static_cast<std::uint64_t>(digit);
    }
    value = digits;
    return ConversionStatus::Good;
}

ConversionStatus VariableFieldOf(const CSensor& sensor, ByteSpan frame, ByteSpan& field) {
    if (!sensor.Instrument)
        return ConversionStatus::NotUsable;
    FieldRange range;
    if (sensor.VariableIndex < 0 ||
        !CutField(frame, sensor.Instrument->FieldDelimiter(), sensor.Instrument->Terminator(),
                  static_cast<std::size_t>(sensor.VariableIndex), range))
        return ConversionStatus::FieldNotFound;
    field = frame.subspan(range.begin, range.end - range.begin);
    return ConversionStatus::Good;
}

} // namespace

ConversionStatus ReadUnsigned(ByteSpan field, RawValue& raw) {
    if (field.size() > 4)
        return ConversionStatus::NotUsable;
    SetInteger(static_cast<std::int64_t>(GetBigEndian(field)), raw);
    return ConversionStatus::Good;
}

ConversionStatus ReadSigned(ByteSpan field, RawValue& raw) {
    if (field.size() > 4)
        return ConversionStatus::NotUsable;
    const std::uint64_t bits = GetBigEndian(field);
    // Decided: two's complement of the field's own width.
    const std::uint64_t sign = field.empty() ? 0 : std::uint64_t{1} << (8 * field.size() - 1);
    SetInteger(static_cast<std::int64_t>(bits ^ sign) - static_cast<std::int64_t>(sign), raw);
    return ConversionStatus::Good;
}

ConversionStatus ReadFloat(ByteSpan field, RawValue& raw) {
    if (field.size() != 4)
        return ConversionStatus::NotUsable;
    const auto bits = static_cast<std::uint32_t>(GetBigEndian(field));
    return SetFinite(static_cast<double>(std::bit_cast<float>(bits)), raw);
}

ConversionStatus ReadDouble(ByteSpan field, RawValue& raw) {
    if (field.size() != 8)
        return ConversionStatus::NotUsable;
    return SetFinite(std::bit_cast<double>(GetBigEndian(field)), raw);
}

ConversionStatus ReadHexUnsigned(ByteSpan field, RawValue& raw) {
    std::uint64_t digits = 0;
    const ConversionStatus status = ReadDigits(field, digits);
    if (status == ConversionStatus::Good)
        SetInteger(static_cast<std::int64_t>(digits), raw);
    return status;
}

ConversionStatus ReadHexSigned(ByteSpan field, RawValue& raw) {
    std::uint64_t digits = 0;
    const ConversionStatus status = ReadDigits(field, digits);
    if (status != ConversionStatus::Good)
        return status;
    // Kept: the sign is the first digit's bit of weight 4, and its bit of weight 8 means nothing.
    const std::uint64_t sign = field.empty() ? 0 : std::uint64_t{4} << 4 * (field.size() - 1);
    const auto magnitude = static_cast<std::int64_t>(field.empty() ? 0 : digits & (sign - 1));
    SetInteger((digits & sign) != 0 ? -magnitude : magnitude, raw);
    return ConversionStatus::Good;
}

ConversionStatus ReadTextInteger(ByteSpan field, RawValue& raw) {
    std::int32_t value = 0;
    const ConversionStatus status = ReadAsciiInteger(field, value);
    if (status == ConversionStatus::Good)
        SetInteger(value, raw);
    return status;
}

ConversionStatus ReadTextFloat(ByteSpan field, RawValue& raw) {
    double value = 0.0;
    const ConversionStatus status = ReadAsciiFloat(field, value);
    if (status == ConversionStatus::Good)
        raw = {value, 0};
    return status;
}

ConversionStatus ReadNoNumber(ByteSpan, RawValue&) {
    return ConversionStatus::WrongDataType;
}

ConversionStatus FieldOf(const CSensor& sensor, ByteSpan frame, ByteSpan& field) {
    if (!frame.data())
        return ConversionStatus::MissingArgument;
    if (sensor.VariableLength)
        return VariableFieldOf(sensor, frame, field);
    if (std::uint64_t{sensor.ByteOffset} + sensor.FieldLength > frame.size())
        return ConversionStatus::FrameTooShort;
    field = frame.subspan(sensor.ByteOffset, sensor.FieldLength);
    return ConversionStatus::Good;
}

ConversionStatus RawOfField(const CSensor& sensor, ByteSpan field, RawValue& raw) {
    return RowOf(sensor.Data).read(field, raw);
}

ConversionStatus RawOf(const CSensor& sensor, ByteSpan frame, RawValue& raw) {
    ByteSpan field;
    const ConversionStatus status = FieldOf(sensor, frame, field);
    return status == ConversionStatus::Good ? RawOfField(sensor, field, raw) : status;
}

} // namespace qor
