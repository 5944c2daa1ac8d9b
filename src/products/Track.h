// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where the ship has been, for a plot: places in the order in which they were passed, thinned
// evenly when they become too many, so that a voyage keeps its shape in bounded memory. Under the
// document's lock.
#pragma once

#include "products/Position.h"

#include <optional>
#include <vector>

namespace qor {

class CTrack {
  public:
    explicit CTrack(std::size_t most = 20'000) : Most(most) {}

    struct Place {
        GeoPosition position;
        bool gap = false; ///< no line leads here from the place before
    };

    /// The next place; one that is hardly away from the last only moves the end.
    void Add(const GeoPosition& position);
    /// The fix was lost: no line leads to the next place.
    void MarkGap() { OpenGap = !Places.empty(); }
    void Clear() { *this = CTrack(Most); }

    /// The places, the latest last.
    std::vector<Place> All() const;

  private:
    void Thin();

    std::size_t Most;
    double Spacing = 0.0; ///< metres between places that are kept
    std::vector<Place> Places;
    std::optional<GeoPosition> End; ///< the latest, when it is not kept
    bool OpenGap = false;
};

} // namespace qor
