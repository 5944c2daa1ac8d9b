// SPDX-License-Identifier: GPL-3.0-or-later
//
// The median comes from a histogram of eight sizes an octave; long steps are kept until it is known
// which of them are ordinary for the instrument. See TagSteps.h.
#include "export/TagSteps.h"

#include <algorithm>
#include <bit>

namespace qor {

namespace {

constexpr std::size_t MostKept = 1000, MostLong = 4096;
constexpr std::int64_t ShortestGap = 2000; // milliseconds
constexpr std::int64_t PeriodsOfGap = 5;
constexpr std::int64_t LongestStep = std::int64_t{1} << 45;

std::int64_t Milliseconds(const TagStep& step) {
    const std::int64_t seconds = step.to.seconds - step.from.seconds;
    return seconds * 1000 + step.to.milliseconds - step.from.milliseconds;
}

/// Eight sizes an octave, each number below sixteen its own.
std::size_t SizeOf(std::int64_t step) {
    const auto number = static_cast<std::uint64_t>(std::min(step, LongestStep));
    if (number < 16)
        return number;
    const auto octave = static_cast<std::size_t>(std::bit_width(number)) - 4;
    return 8 * octave + (number >> octave);
}

/// The smallest step of a size.
std::int64_t StepOf(std::size_t size) {
    if (size < 16)
        return static_cast<std::int64_t>(size);
    const std::size_t octave = size / 8 - 1;
    return static_cast<std::int64_t>((size - 8 * octave) << octave);
}

std::int64_t GapLimit(std::int64_t period) {
    return std::max(ShortestGap, PeriodsOfGap * period);
}

void AddStep(TagSteps& steps, const TagStep& step) {
    ++steps.count;
    if (steps.first.size() < MostKept)
        steps.first.push_back(step);
}

} // namespace

void CTagSteps::Take(const FrameTime& time, std::uint64_t offset, std::uint64_t length) {
    if (!time.known)
        return;
    const TagStep step{offset, length, Last, time};
    Last = time;
    if (!step.from.known)
        return;
    const std::int64_t milliseconds = Milliseconds(step);
    if (milliseconds < 0) {
        AddStep(Back, step);
        return;
    }
    ++StepCount;
    ++StepsOfSize[SizeOf(milliseconds)];
    if (milliseconds > ShortestGap)
        Keep(step, milliseconds);
}

void CTagSteps::Keep(const TagStep& step, std::int64_t milliseconds) {
    if (Long.size() == MostLong && !Full) {
        const std::int64_t limit = GapLimit(Period());
        std::erase_if(Long, [limit](const TagStep& one) { return Milliseconds(one) <= limit; });
        Full = Long.size() > MostLong / 2; // more of them would be looked through too often
    }
    if (!Full)
        Long.push_back(step);
    else
        LongUnkept += milliseconds > GapLimit(Period());
}

std::int64_t CTagSteps::Period() const {
    std::uint64_t seen = 0;
    for (std::size_t size = 0; size < StepsOfSize.size(); ++size) {
        seen += StepsOfSize[size];
        if (StepCount > 0 && 2 * seen >= StepCount)
            return StepOf(size);
    }
    return 0;
}

TagSteps CTagSteps::Gaps() const {
    TagSteps gaps;
    const std::int64_t limit = GapLimit(Period());
    for (const TagStep& step : Long)
        if (Milliseconds(step) > limit)
            AddStep(gaps, step);
    gaps.count += LongUnkept;
    return gaps;
}

} // namespace qor
