// SPDX-License-Identifier: GPL-3.0-or-later
//
// A field's value: raw extraction, then the fit. These per-sensor functions define the values;
// CConversionPlan computes whole frames faster and gives the same bits.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/FitTypes.h"

#include <string>

namespace qor {

/// What the sensor's fit makes of its data type.
ValueKind KindOfValue(const CSensor& sensor);

/// The calibrated value of a sensor in a frame. `immersed` makes the OPTIC fits apply the immersion
/// coefficient. On failure `value` is left alone. A sensor whose fit gives no number reports the
/// extraction's failure first, else NotUsable.
ConversionStatus CalibratedValue(const CSensor& sensor, ByteSpan frame, bool immersed,
                                 double& value);

/// The raw value as a number, before the fit.
ConversionStatus RawNumber(const CSensor& sensor, ByteSpan frame, double& value);

/// The text of a text-valued sensor (AS field as cut, DDMMYY, HHMMSS, DDMM, TIME2).
ConversionStatus ValueText(const CSensor& sensor, ByteSpan frame, std::string& text);

} // namespace qor
