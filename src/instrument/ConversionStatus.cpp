// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the conversion status codes, as a display cell or a session-log line shows them.
#include "instrument/ConversionStatus.h"

#include <array>

namespace qor {

namespace {

constexpr std::uint32_t FirstCode = 0x20000001;
constexpr std::array<std::string_view, 8> Texts = { // from FirstCode on
    "Wrong data type",     "Frame too short", "Gain range not defined", "No numeric value",
    "No frame to convert", "Not a number",    "Value not finite",       "Field not found"};

} // namespace

std::string_view ConversionStatusText(ConversionStatus status) {
    if (status == ConversionStatus::Good)
        return "Good";
    const std::uint32_t place = static_cast<std::uint32_t>(status) - FirstCode;
    return place < Texts.size() ? Texts[place] : "Unknown conversion error";
}

} // namespace qor
