// SPDX-License-Identifier: GPL-3.0-or-later
//
// Units as definitions write them, in the spelling of UDUNITS, which files for other programs take,
// with their dimension, by which a quantity is told from another of the same name. It changes
// spellings, never values. Pure; any thread.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qor {

/// Powers of metre, kilogram, second, ampere, kelvin, mole and radian; a steradian is two of the
/// last.
using UnitDimension = std::array<std::int8_t, 7>;

struct UnitText {
    std::string text; ///< as "uW cm-2 nm-1"; "1" for a plain number
    UnitDimension dimension{};
};

/// Empty when the units are not known to us in every part, or are none.
std::optional<UnitText> ReadUnits(std::string_view units);

} // namespace qor
