// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of cells: what a display shows, apart from any widget. Views fill it, the desktop paints
// it, the command line prints it, tests read it.
#pragma once

#include "views/PageHead.h"

#include <cstdint>
#include <optional>
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
    std::optional<double> number = {}; ///< what a further column's text was made from

    bool operator==(const GridCell&) const = default;
};

/// One row: what it is, in which unit, and its value.
struct GridRow {
    std::string label;
    std::string units;
    GridCell value;
    std::vector<GridCell> more = {}; ///< the cells of the page's further columns
    std::uint64_t id = 0;            ///< what the row is to its view; keeps the operator's place
    Sign sign = Sign::None;
    std::optional<double> number = {}; ///< what the value's text was made from, unrounded
    bool stale = false;                ///< its frame is old
    std::string age = {};              ///< beside the value when it is stale, "38 s"
    bool opens = false;                ///< activating the row leads somewhere (its ranges)

    bool operator==(const GridRow&) const = default;
};

/// A column of a page that is a table: column 0 heads the labels, 1 the values, n the cells
/// `more[n - 2]`. Such a page shows no units of its own.
struct GridColumn {
    std::string title;
    bool number = false; ///< right-aligned

    bool operator==(const GridColumn&) const = default;
};

struct GridPage {
    std::string title;
    std::vector<GridRow> rows;
    std::vector<GridColumn> columns = {}; ///< empty: label, value and unit
    PageHead head = {};
    /// True: the cells' own colours are shown, on a black grid. False: the face's colours.
    bool ownColours = true;
    bool newestLast = false; ///< lines that come at the end: it is kept in sight
    bool cutLast = false;    ///< the last column is cut at the edge, its tip has the rest
    bool beep = false;       ///< this update asks for the alarm sound
};

} // namespace qor
