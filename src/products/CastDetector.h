// SPDX-License-Identifier: GPL-3.0-or-later
//
// When a cast begins and ends, told from the depth alone or by hand, so that histories can tell the
// current cast from the one before. Fed once a frame that brings a depth, in the order of time,
// under the document's lock. Which pressure the depth comes from is the caller's business.
#pragma once

#include <cstdint>
#include <optional>

namespace qor {

/// Times are seconds of the clock that the caller feeds, depths dbar.
struct Cast {
    std::uint32_t number = 0; ///< from 1
    double begin = 0.0;       ///< when it left the surface
    double deepest = 0.0;
    double deepestTime = 0.0;  ///< before it the way down, from it on the way up
    std::optional<double> end; ///< empty while it is under way
    bool byHand = false;       ///< begun by hand
};

enum class CastEvent { None, Begun, Ended };

class CCastDetector {
  public:
    /// The next depth. A cast begins when the depth passes 1 dbar downward at over 0.1 dbar/s,
    /// which is known a second later, and ends within half a dbar of the surface. Depths that are
    /// not numbers are passed over; a clock that went back only forgets what was about to begin.
    CastEvent Take(double time, double depth);

    /// Begins a cast now, ending the one under way. It ends at the surface once it has been below
    /// 1 dbar, so it may be begun on deck.
    void Begin(double time);
    /// Ends the cast under way, if there is one.
    void End(double time);

    bool UnderWay() const { return Latest && !Latest->end; }
    /// The cast under way, or the last one until the next begins.
    const std::optional<Cast>& Current() const { return Latest; }
    const std::optional<Cast>& Previous() const { return Before; }

  private:
    struct Sample {
        double time;
        double depth;
    };
    CastEvent Follow(const Sample& now);
    CastEvent Await(const Sample& now);
    void Start(const Sample& from, bool byHand);

    std::optional<Cast> Latest, Before;
    std::optional<Sample> Last;    ///< the sample before
    std::optional<Sample> Passing; ///< the last one above, while the speed below is awaited
    bool WasDown = false;          ///< the cast under way has left the surface
};

} // namespace qor
