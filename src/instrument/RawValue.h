// SPDX-License-Identifier: GPL-3.0-or-later
//
// From a frame to a sensor's field, and from the field's bytes to its raw value. Calibration, the
// frame checks and the cell texts build on it; reentrant, no state.
#pragma once

#include "instrument/DataTypes.h"

namespace qor {

/// The bytes of the sensor's field. MissingArgument for a null frame, FrameTooShort, FieldNotFound.
ConversionStatus FieldOf(const CSensor& sensor, ByteSpan frame, ByteSpan& field);

/// The raw value of the sensor's field. Binary fields are big-endian; BS is sign-extended from the
/// field's width; no bytes give 0. NoNumber, NotFinite; WrongDataType for texts (AS); NotUsable for
/// a field length that the data type cannot have. On failure `raw` is left alone.
ConversionStatus RawOfField(const CSensor& sensor, ByteSpan field, RawValue& raw);

/// FieldOf, then RawOfField.
ConversionStatus RawOf(const CSensor& sensor, ByteSpan frame, RawValue& raw);

} // namespace qor
