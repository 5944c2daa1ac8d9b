// SPDX-License-Identifier: GPL-3.0-or-later
//
// What frame counters and time tags say is missing.
#include "export/LogVerdict.h"

#include <gmock/gmock.h>

namespace qor {
namespace {

constexpr std::int64_t Damaged = -1;

TEST(MissingFrames, AreCountedBetweenReadableCounters) {
    const struct {
        std::vector<std::int64_t> counters;
        std::vector<std::uint64_t> missing;
    } cases[] = {
        {{7, 8, 9}, {0, 0, 0}},
        {{254, 255, 0, 1}, {0, 0, 0, 0}},
        {{250, 4}, {0, 9}},
        {{7, 9, 12}, {0, 1, 2}},                   // each place, also of two in a row
        {{7, Damaged, 9}, {0, 0, 0}},              // it is there
        {{7, Damaged, Damaged, 12}, {0, 0, 0, 2}}, // and what is missing beside it is counted
        {{255, 256, 257}, {0, 0, 0}},              // a text counter that goes on
        {{9999, 0, 1}, {0, 1, 0}},                 // and begins anew: how many is not known
        {{7, 7}, {0, 255}},
    };
    for (const auto& row : cases) {
        CMissingFrames frames;
        std::vector<std::uint64_t> missing;
        for (const std::int64_t counter : row.counters)
            missing.push_back(
                frames.Take(counter == Damaged ? std::nullopt : std::optional(counter)));
        EXPECT_EQ(missing, row.missing) << row.counters.front();
    }
}

/// The tag so many milliseconds after the first.
FrameTime Tag(std::int64_t milliseconds) {
    FrameTime time;
    time.seconds = 1'700'000'000 + milliseconds / 1000;
    time.milliseconds = static_cast<std::uint16_t>(milliseconds % 1000);
    time.known = true;
    return time;
}

TEST(TagSteps, FindGapsByTheInstrumentsOwnPeriod) {
    const struct {
        std::int64_t period, step;
        std::uint64_t gaps, backwards;
    } cases[] = {
        {100, 1900, 0, 0}, // no more than two seconds
        {100, 2100, 1, 0},       {1000, 4000, 0, 0}, {1000, 5700, 1, 0}, {60'000, 240'000, 0, 0},
        {60'000, 400'000, 1, 0}, {100, -50, 0, 1},   {0, 2500, 1, 0},
    };
    for (const auto& row : cases) {
        CTagSteps steps;
        std::int64_t now = 1'000'000;
        for (std::uint64_t frame = 0; frame < 10'000; ++frame) {
            now += frame == 9000 ? row.step : row.period;
            steps.Take(Tag(now), 10 * frame, 8);
        }
        EXPECT_EQ(steps.Gaps().count, row.gaps) << row.period << ' ' << row.step;
        EXPECT_EQ(steps.Backwards().count, row.backwards) << row.period << ' ' << row.step;
        for (const TagStep& step : steps.Gaps().first)
            EXPECT_EQ(step.offset, 90'000U);
    }
}

TEST(TagSteps, CountMoreGapsThanTheyKeep) {
    CTagSteps steps;
    std::int64_t now = 0;
    for (std::uint64_t frame = 0; frame < 60'000; ++frame)
        steps.Take(Tag(now += frame % 6 == 5 ? 60'000 : 100), frame, 1);
    EXPECT_EQ(steps.Gaps().count, 10'000U);
    EXPECT_EQ(steps.Gaps().first.size(), 1000U);
}

} // namespace
} // namespace qor
