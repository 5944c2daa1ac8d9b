// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/Track.h"

#include <algorithm>

namespace qor {

namespace {

constexpr double FirstSpacing = 1.0; ///< m, from the first thinning on

} // namespace

void CTrack::Add(const GeoPosition& position) {
    const bool near =
        !OpenGap && !Places.empty() && DistanceBetween(Places.back().position, position) <= Spacing;
    End = position;
    if (near)
        return;
    Places.push_back({position, OpenGap});
    OpenGap = false;
    End.reset();
    if (Places.size() >= Most)
        Thin();
}

/// Every other place goes; a gap stays before the place that is left behind it.
void CTrack::Thin() {
    Spacing = std::max(2.0 * Spacing, FirstSpacing);
    std::size_t kept = 0;
    bool gap = false;
    for (std::size_t i = 0; i < Places.size(); ++i) {
        gap = gap || Places[i].gap;
        if (i % 2 != 0 && i + 1 != Places.size())
            continue;
        Places[kept] = {Places[i].position, gap};
        gap = false;
        ++kept;
    }
    Places.resize(kept);
}

std::vector<CTrack::Place> CTrack::All() const {
    std::vector<Place> all = Places;
    if (End)
        all.push_back({*End, false});
    return all;
}

} // namespace qor
