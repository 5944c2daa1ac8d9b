// SPDX-License-Identifier: GPL-3.0-or-later
//
// How docked windows fill their area: places in thousandths of it, and the steps that rebuild such
// a tiling by putting one window beside another. Places may come from a file and be anything.
// Pure functions, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qor {

/// In thousandths of the area. Windows of the same place stand behind each other.
struct TilePlace {
    static constexpr int Whole = 1000;

    int x = 0;
    int y = 0;
    int width = Whole;
    int height = Whole;

    /// Inside of the area and wider than nothing.
    bool IsUsable() const;
    bool operator==(const TilePlace&) const = default;
};

enum class TileSide : std::uint8_t { Right, Below, Behind };

/// A window takes its place from the room of one that stands already.
struct TileStep {
    std::size_t window = 0;
    std::size_t beside = 0;
    TileSide side = TileSide::Right;

    bool operator==(const TileStep&) const = default;
};

struct Tiling {
    std::size_t first = 0; ///< stands alone before the steps
    std::vector<TileStep> steps;
};

/// In how many columns so many windows of equal size stand.
std::size_t TileColumns(std::size_t windows);

/// For at least one place. Those that do not tile an area give some order of all of them.
Tiling TilingOf(const std::vector<TilePlace>& places);

} // namespace qor
