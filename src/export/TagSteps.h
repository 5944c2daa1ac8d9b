// SPDX-License-Identifier: GPL-3.0-or-later
//
// The time tags of one instrument of a played log: where they run backwards, and where they jump
// far beyond the period in which it sends. Fed frame by frame by whoever plays the log, in bounded
// memory whatever it holds; one thread.
#pragma once

#include "platform/Clock.h"

#include <array>
#include <cstdint>
#include <vector>

namespace qor {

/// Two neighbouring tags; the place is that of the second one's frame.
struct TagStep {
    std::uint64_t offset = 0, length = 0;
    FrameTime from, to;
};

/// Steps of which the first ones are kept.
struct TagSteps {
    std::uint64_t count = 0;
    std::vector<TagStep> first;
};

class CTagSteps {
  public:
    /// The tag of the next frame, whose first byte stands there.
    void Take(const FrameTime& time, std::uint64_t offset, std::uint64_t length);

    const TagSteps& Backwards() const { return Back; }
    /// Decided: a gap is a step of more than five periods and more than two seconds; the period is
    /// the median step of the log, so that an instrument need not say its rate.
    TagSteps Gaps() const;
    /// The median step in milliseconds, to an eighth; 0 without steps.
    std::int64_t Period() const;

  private:
    void Keep(const TagStep& step, std::int64_t milliseconds);

    FrameTime Last;
    TagSteps Back;
    std::vector<TagStep> Long;    ///< of more than two seconds, while they may be gaps
    bool Full = false;            ///< too many are: what comes is counted alone
    std::uint64_t LongUnkept = 0; ///< those
    std::uint64_t StepCount = 0;
    std::array<std::uint64_t, 400> StepsOfSize{}; ///< by SizeOf in the source
};

} // namespace qor
