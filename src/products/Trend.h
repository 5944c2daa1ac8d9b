// SPDX-License-Identifier: GPL-3.0-or-later
//
// What weather did over the last hours and minutes: how a value has changed since three hours ago,
// and from where the wind blew. Bounded; fed with every frame on the acquisition thread and read by
// displays, both under the document's lock. Times are seconds of the frames' clock.
#pragma once

#include "products/Wind.h"

#include <array>
#include <deque>
#include <optional>

namespace qor {

/// One value a minute over three hours.
class CTrend {
  public:
    struct Change {
        double difference = 0.0;
        double seconds = 0.0; ///< over so long, three hours at most
    };

    void Add(double time, double value);
    /// Since three hours ago, or since it began; nothing before a minute has passed.
    std::optional<Change> SinceThreeHours() const;
    void Clear() { *this = {}; }

  private:
    struct Sample {
        double time;
        double value;
    };
    std::deque<Sample> Minutes;
    std::optional<Sample> Latest;
};

/// From where the wind came during the last ten minutes.
class CWindRose {
  public:
    static constexpr std::size_t Sectors = 16; ///< the first one about north

    void Add(double time, const Wind& wind);
    /// Ten minutes end with the station's latest frame, also when there was no such wind in it.
    void Forget(double now);
    /// The part of the winds that came from each sector; calms count in the whole alone.
    std::array<double, Sectors> Shares() const;
    std::size_t Count() const { return Winds.size(); }
    void Clear() { Winds.clear(); }

  private:
    struct Sample {
        double time;
        int sector; ///< -1: calm
    };
    std::deque<Sample> Winds;
};

} // namespace qor
