// SPDX-License-Identifier: GPL-3.0-or-later
//
// A field as an operator reads it in a grid cell.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/Sensor.h"

#include <string>

namespace qor {

enum class FieldView { Calibrated, RawCounts, HexCounts };

/// The sensor's value in the frame as text: calibrated numbers with `decimals` places (0 to 20),
/// texts as they are; raw counts as integers, floating-point raw values shortest; hexadecimal
/// counts as "0x" and upper-case digits: the bytes of a binary field, the digits of a hexadecimal
/// one, the 32-bit value of an ASCII integer. ASCII floating-point fields have no hexadecimal form
/// and show their raw value, AS fields their text. When there is no value: the status, and its text
/// in `text`.
ConversionStatus FormatField(const CSensor& sensor, ByteSpan frame, bool immersed, FieldView view,
                             int decimals, std::string& text);

} // namespace qor
