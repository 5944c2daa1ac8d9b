// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of cells: what a display shows, apart from any widget. Views fill it, the desktop paints
// it, the command line prints it, tests read it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

/// 0x00BBGGRR.
using Colour = std::uint32_t;
inline constexpr Colour Black = 0x000000, Red = 0x0000FF, Yellow = 0x00FFFF, Cyan = 0xFFFF00;

struct GridCell {
    std::string text;
    Colour textColour = Yellow;
    Colour background = Black;

    bool operator==(const GridCell&) const = default;
};

/// One row: what it is, in which unit, and its value.
struct GridRow {
    std::string label;
    std::string units;
    GridCell value;
};

struct GridPage {
    std::string title;
    std::vector<GridRow> rows;
    bool beep = false; ///< this update asks for the alarm sound
};

} // namespace qor
