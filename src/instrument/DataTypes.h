// SPDX-License-Identifier: GPL-3.0-or-later
//
// The data types of definition files, one row each: keyword, field length, raw extraction. To add
// one: an enumerator in Sensor.h, its row here, its reader in RawValue.cpp.
#pragma once

#include "base/Bytes.h"
#include "base/EnumTable.h"
#include "instrument/ConversionStatus.h"
#include "instrument/DefinitionStatus.h"
#include "instrument/Sensor.h"

#include <cstdint>
#include <iterator>
#include <limits>
#include <string_view>

namespace qor {

/// A field's raw value. Integer data types set both members, the number being exact.
struct RawValue {
    double number = 0.0;
    std::int64_t integer = 0;
};

/// Takes the raw value from a field's bytes; on failure `raw` is left alone.
using RawReader = ConversionStatus (*)(ByteSpan field, RawValue& raw);
ConversionStatus ReadUnsigned(ByteSpan field, RawValue& raw);
ConversionStatus ReadSigned(ByteSpan field, RawValue& raw);
ConversionStatus ReadFloat(ByteSpan field, RawValue& raw);
ConversionStatus ReadDouble(ByteSpan field, RawValue& raw);
ConversionStatus ReadHexUnsigned(ByteSpan field, RawValue& raw);
ConversionStatus ReadHexSigned(ByteSpan field, RawValue& raw);
ConversionStatus ReadTextInteger(ByteSpan field, RawValue& raw);
ConversionStatus ReadTextFloat(ByteSpan field, RawValue& raw);
ConversionStatus ReadNoNumber(ByteSpan field, RawValue& raw);

struct DataTypeRow {
    DataType data;
    std::string_view keyword;
    std::uint32_t shortest, longest; ///< the field lengths allowed, in bytes
    std::uint32_t otherLength;       ///< what any other length becomes
    CorrectiveAction otherAction;    ///< what the parse log says of it
    bool integer;                    ///< the raw value is an integer
    bool characters;                 ///< a field of a delimited frame can hold it
    RawReader read;
};

inline constexpr std::uint32_t AnyLength = std::numeric_limits<std::uint32_t>::max();

// clang-format off
inline constexpr DataTypeRow DataTypeTable[] = {
    {DataType::BU, "BU", 0, 4, 4, CorrectiveAction::FieldLength4, true, false, ReadUnsigned},
    {DataType::BS, "BS", 0, 4, 4, CorrectiveAction::FieldLength4, true, false, ReadSigned},
    {DataType::BF, "BF", 4, 4, 4, CorrectiveAction::FieldLength4, false, false, ReadFloat},
    {DataType::BD, "BD", 8, 8, 8, CorrectiveAction::FieldLength8, false, false, ReadDouble},
    // Kept: the log says 4 while the length becomes 8.
    {DataType::HU, "HU", 0, 8, 8, CorrectiveAction::FieldLength4, true, false, ReadHexUnsigned},
    {DataType::HS, "HS", 0, 8, 8, CorrectiveAction::FieldLength4, true, false, ReadHexSigned},
    {DataType::AI, "AI", 0, AnyLength, 0, CorrectiveAction::None, true, true, ReadTextInteger},
    {DataType::AF, "AF", 0, AnyLength, 0, CorrectiveAction::None, false, true, ReadTextFloat},
    {DataType::AS, "AS", 0, AnyLength, 0, CorrectiveAction::None, false, true, ReadNoNumber},
};
// clang-format on
static_assert(IsWholeTable(DataTypeTable, &DataTypeRow::data));

constexpr const DataTypeRow& RowOf(DataType data) {
    return DataTypeTable[static_cast<std::size_t>(data)];
}

/// BU, BS, HU, HS and AI give integers, the others do not.
constexpr bool IsInteger(DataType data) {
    return RowOf(data).integer;
}

/// The integers whose bytes are the number itself.
constexpr bool IsBinaryInteger(DataType data) {
    return data == DataType::BU || data == DataType::BS;
}

/// A set of data types.
struct DataTypes {
    unsigned bits;
    constexpr bool Has(DataType data) const {
        return (bits >> static_cast<unsigned>(data) & 1U) != 0;
    }
};
template <class... Types> constexpr DataTypes SetOf(Types... types) {
    return {((1U << static_cast<unsigned>(types)) | ...)};
}
inline constexpr DataTypes AnyDataType{~0U};
inline constexpr DataTypes AnyButText{AnyDataType.bits & ~SetOf(DataType::AS).bits};
inline constexpr DataTypes TextOnly = SetOf(DataType::AS);
inline constexpr DataTypes WholeNumbers = SetOf(DataType::BU, DataType::BS, DataType::AI);
inline constexpr DataTypes FloatingNumbers = SetOf(DataType::BF, DataType::BD, DataType::AF);

} // namespace qor
