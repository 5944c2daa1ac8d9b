// SPDX-License-Identifier: GPL-3.0-or-later
//
// What can go wrong when a frame's field becomes a value.
#pragma once

#include <cstdint>
#include <string_view>

namespace qor {

enum class [[nodiscard]] ConversionStatus : std::uint32_t{
    Good = 0,
    WrongDataType = 0x20000001,   ///< the data type is not one that this extraction handles
    FrameTooShort = 0x20000002,   ///< the fixed field lies beyond the frame's end
    GainOutOfRange = 0x20000003,  ///< OPTIC1: no coefficient line for the gain index
    NotUsable = 0x20000004,       ///< the fit type has no numeric conversion
    MissingArgument = 0x20000005, ///< no frame or no destination
    NoNumber = 0x20000006,        ///< the field holds no number, or an integer that overflows
    NotFinite = 0x20000007,       ///< the value is not finite
    FieldNotFound = 0x20000008,   ///< the variable-length field is not in the frame
    Rejected = 0x2000000A,        ///< a check of values has failed it (export/QcTests.h)
};

/// A short English text for a display cell or a log line; no line end.
std::string_view ConversionStatusText(ConversionStatus status);

} // namespace qor
