// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/WindowTiling.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qor {

namespace {

constexpr int Slack = 12; ///< what lies between windows, and rounding

class CTiler {
  public:
    CTiler(const std::vector<TilePlace>& places, Tiling& tiling) : Places(places), Result(tiling) {}

    using Set = std::vector<std::size_t>;

    /// Cuts a set, one of which stands already for all, into two again and again.
    void Split(const Set& set, std::size_t standing) {
        if (set.size() < 2)
            return;
        Set one, other;
        TileSide side = TileSide::Right;
        if (!Cut(set, &TilePlace::x, &TilePlace::width, one, other)) {
            side = TileSide::Below;
            if (!Cut(set, &TilePlace::y, &TilePlace::height, one, other)) {
                side = TileSide::Right;
                one = {standing};
                other = set;
                std::erase(other, standing);
            }
        }
        if (std::ranges::find(one, standing) == one.end())
            std::swap(one, other);
        const std::size_t next = Corner(other);
        Result.steps.push_back({next, standing, side});
        Split(one, standing);
        Split(other, next);
    }

    /// The one nearest to the upper left.
    std::size_t Corner(const Set& set) const {
        return *std::ranges::min_element(
            set, {}, [this](std::size_t window) { return Places[window].x + Places[window].y; });
    }

  private:
    /// At the first line that crosses no window.
    bool Cut(const Set& set, int TilePlace::*from, int TilePlace::*size, Set& before,
             Set& behind) const {
        for (const std::size_t at : set) {
            const int line = Places[at].*from;
            before.clear();
            behind.clear();
            bool crossed = false;
            for (const std::size_t window : set) {
                const TilePlace& place = Places[window];
                const bool left = place.*from + place.*size <= line + Slack;
                const bool right = place.*from >= line - Slack;
                crossed = crossed || (!left && !right);
                (left ? before : behind).push_back(window);
            }
            if (!crossed && !before.empty() && !behind.empty())
                return true;
        }
        return false;
    }

    const std::vector<TilePlace>& Places;
    Tiling& Result;
};

} // namespace

bool TilePlace::IsUsable() const {
    const auto inside = [](int from, int size) {
        return from >= 0 && size > 0 && from <= Whole && size <= Whole && from + size <= Whole;
    };
    return inside(x, width) && inside(y, height);
}

std::size_t TileColumns(std::size_t windows) {
    return static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(windows))));
}

Tiling TilingOf(const std::vector<TilePlace>& places) {
    Tiling tiling;
    CTiler::Set fronts;
    std::vector<TileStep> tabs;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto front =
            std::ranges::find_if(fronts, [&](std::size_t one) { return places[one] == places[i]; });
        if (front == fronts.end())
            fronts.push_back(i);
        else
            tabs.push_back({i, *front, TileSide::Behind});
    }
    CTiler tiler(places, tiling);
    tiling.first = tiler.Corner(fronts);
    tiler.Split(fronts, tiling.first);
    // Beside one of several tabs nothing can be put any more.
    tiling.steps.insert(tiling.steps.end(), tabs.begin(), tabs.end());
    return tiling;
}

} // namespace qor
