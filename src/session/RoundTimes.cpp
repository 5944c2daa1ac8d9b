// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/RoundTimes.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::int64_t Day = 24 * 3600 * 1000;
/// The two clocks are read one after the other, and a thread may be woken a little early.
constexpr std::int64_t Early = 50;
/// A difference between the clocks that is a step and no drift.
constexpr std::int64_t Step = 500;
/// A round time so near is the one that is just being kept.
constexpr std::int64_t AtOnce = 1000;

std::int64_t LocalMilliseconds(const FrameTime& time) {
    return (time.seconds + std::int64_t{time.utcOffsetMinutes} * 60) * 1000 + time.milliseconds;
}

} // namespace

void CRoundTimes::Plan(std::int64_t local, std::int64_t after, std::int64_t monotonic) {
    const std::int64_t sinceMidnight = ((after % Day) + Day) % Day;
    Next = after - sinceMidnight + std::min((sinceMidnight / Span + 1) * Span, Day);
    Difference = local - monotonic;
    DueMonotonic = Next - Difference;
}

void CRoundTimes::Begin(std::int64_t spanSeconds, const FrameTime& now, std::int64_t monotonic) {
    Span = spanSeconds * 1000;
    const std::int64_t local = LocalMilliseconds(now);
    Plan(local, local + std::min(AtOnce, Span / 2), monotonic);
}

/// Both clocks count: where the wall clock is put back at a round time, as at the end of daylight
/// saving, that time has come by the monotonic one; where it leaps over one, by the wall clock.
bool CRoundTimes::HasCome(const FrameTime& now, std::int64_t monotonic) {
    const std::int64_t local = LocalMilliseconds(now);
    if (local >= Next || monotonic + Early >= DueMonotonic)
        return true;
    const std::int64_t moved = local - monotonic - Difference;
    if (moved > Step || moved < -Step)
        Plan(local, local, monotonic);
    return false;
}

} // namespace qor
