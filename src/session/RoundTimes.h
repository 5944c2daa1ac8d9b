// SPDX-License-Identifier: GPL-3.0-or-later
//
// When the round times of the local day come: with a span of an hour every full hour, with 7 hours
// 00:00, 07:00, 14:00 and 21:00. Times of day are what the wall clock shows, whatever daylight
// saving or a hand makes of it; waiting runs on the monotonic clock. Plain arithmetic; one thread.
#pragma once

#include "platform/Clock.h"

namespace qor {

class CRoundTimes {
  public:
    static constexpr std::int64_t LongestSpan = 24 * 3600; // seconds

    /// Plans the next round time; one that comes at once is passed over.
    void Begin(std::int64_t spanSeconds, const FrameTime& now, std::int64_t monotonic);
    /// Whether it has come. Where the wall clock was moved meanwhile, it is planned anew.
    bool HasCome(const FrameTime& now, std::int64_t monotonic);
    /// When it comes, in milliseconds of the monotonic clock.
    std::int64_t Due() const { return DueMonotonic; }

  private:
    void Plan(std::int64_t local, std::int64_t after, std::int64_t monotonic);

    std::int64_t Span = 0; ///< milliseconds, as all of these
    std::int64_t Next = 0; ///< as a local time
    std::int64_t Difference = 0;
    std::int64_t DueMonotonic = 0;
};

} // namespace qor
