// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/FormNumbers.h"

#include "base/Text.h"

#include <cmath>

namespace qor {

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
