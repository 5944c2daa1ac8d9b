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

/// The sensor's value in the frame as text: calibrated numbers with `decimals` places, texts as
/// they are, raw counts as integers (floating-point raw values shortest), hexadecimal counts as the
/// field's bytes. When there is no value: the status, and its text in `text`.
ConversionStatus FormatField(const CSensor& sensor, ByteSpan frame, bool immersed, FieldView view,
                             int decimals, std::string& text);

} // namespace qor
