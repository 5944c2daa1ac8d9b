// SPDX-License-Identifier: GPL-3.0-or-later
//
// From values back to fields: the raw value that a fit turns into a wanted value, and the bytes
// that stand for a raw value. The frame maker works with it; reentrant, no state.
#pragma once

#include "instrument/FieldValue.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace qor {

/// The raw values that a field can hold.
struct RawRange {
    double lowest = 0.0, highest = 0.0;
    bool whole = true; ///< integers only

    bool Holds(double raw) const { return raw >= lowest && raw <= highest; }
};
RawRange RangeOf(const CSensor& sensor);

/// The raw value whose calibrated value is nearest to the wanted one, not yet confined to the range
/// (but for OPTIC1, where it carries the gain). NaN when no raw value leads anywhere near.
double RawForValue(const CSensor& sensor, const RawRange& range, double value,
                   const IntegrationTimeValue& time, bool immersed);

/// Writes the raw value, which its range holds, into a fixed field of the sensor.
void EncodeRaw(const CSensor& sensor, double raw, std::span<std::uint8_t> field);

/// The raw value as the text of a delimited field without any of the forbidden characters; where
/// that is not possible something shorter that is a number still.
std::string TextOfRaw(const CSensor& sensor, double raw, std::string_view forbidden);

} // namespace qor
