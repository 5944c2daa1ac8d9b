// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/FormNumbers.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>

namespace qor {

bool HasControlCharacter(std::string_view text) {
    return std::ranges::any_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

std::optional<double> NumberIn(std::string_view text) {
    const std::optional<double> number = WholeNumber(Trim(text));
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::string NumberFault(std::string_view text, double least, double greatest, bool whole) {
    const std::optional<double> number = NumberIn(text);
    const bool fits = number && least <= *number && *number <= greatest &&
                      (!whole || WholeCount(Trim(text)).has_value());
    return fits ? std::string()
                : std::string("Give a ") + (whole ? "whole " : "") + "number from " +
                      FixedNumber(least, whole || least == std::floor(least) ? 0 : 3) + " to " +
                      FixedNumber(greatest, 0) + ".";
}

} // namespace qor
