// SPDX-License-Identifier: GPL-3.0-or-later
//
// Numbers as instruments send them in text fields. The raw extraction and the conversion plan read
// them here, so both see the same value; reentrant, no state.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/VariableFields.h"

#include <cstdint>

namespace qor {

/// An ASCII integer: bytes of 0x80 and above are skipped, and NULs before the first character; a
/// NUL behind it ends the text. Leading blanks and an optional sign; "12abc" reads as 12. NoNumber
/// without a digit, and for 2147483647, -2147483648 and everything beyond.
ConversionStatus ReadAsciiInteger(ByteSpan field, std::int32_t& value);

/// An ASCII floating-point number at the beginning of the field behind leading blanks, to the
/// nearest double. NoNumber without one, NotFinite beyond double's range.
ConversionStatus ReadAsciiFloat(ByteSpan field, double& value);

/// The same for a field of the frame, faster: bytes of the frame around the field may be looked at.
ConversionStatus ReadAsciiFloat(ByteSpan frame, FieldRange field, double& value);

/// The field is a number of digits and a point within a frame, and short: of a magnitude below
/// 1e11. False says nothing.
constexpr std::size_t ShortAsciiFloatLength = 11;
bool IsShortAsciiFloat(ByteSpan frame, FieldRange field);

} // namespace qor
