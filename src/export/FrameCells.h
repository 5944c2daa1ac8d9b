// SPDX-License-Identifier: GPL-3.0-or-later
//
// A frame's values as tables hold them: a number with the status that says why there is none, or a
// text. Called while the frame is its instrument's current one. Pure.
#pragma once

#include "export/FrameVariables.h"

namespace qor {

/// NaN where there is no value.
struct FrameCell {
    double value;
    signed char status;
};

/// A number: of a sensor, of a product or of a position. `scratch` is memory that is used again.
FrameCell CellOf(FrameOrigin origin, int index, const ExportedFrame& frame, const FrameStyle& style,
                 std::string& scratch);
/// `text` gets the sensor's value, empty where there is none; the status.
signed char TextCell(const CLiveInstrument& live, int sensor, ValueView view, std::string& text);
/// The number of a status as it stands beside a value.
inline signed char CodeOf(ConversionStatus status) {
    return static_cast<signed char>(static_cast<std::uint32_t>(status) & 0x3F);
}
/// 0, 1 or NotChecked.
signed char CodeOf(const FrameFlag& flag);

} // namespace qor
