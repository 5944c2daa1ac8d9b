// SPDX-License-Identifier: GPL-3.0-or-later
//
// Round times of the day by a manual clock that is also set by hand and by daylight saving.
#include "session/RoundTimes.h"

#include "base/Text.h"
#include "fakes/ManualClock.h"

#include <gtest/gtest.h>
#include <vector>

namespace qor {
namespace {

struct Change {
    int afterSeconds = 0; ///< from the beginning
    int step = 0;         ///< of the wall clock, in seconds
    int offset = 0;       ///< of the zone from then on, in minutes
};

/// The local times at which round times come, from this one on, in so many hours.
std::string TimesFrom(const char* begin, int spanSeconds, int seconds,
                      const std::vector<Change>& changes = {}) {
    CManualClock clock(*SecondsFromText(begin) * 1000);
    CRoundTimes times;
    times.Begin(spanSeconds, clock.Now(), clock.MonotonicMilliseconds());
    std::string text;
    for (int i = 0; i <= seconds; ++i, clock.Advance(1000)) {
        for (const Change& change : changes)
            if (change.afterSeconds == i) {
                clock.StepWall(change.step * 1000);
                clock.UtcOffsetMinutes = static_cast<std::int16_t>(change.offset);
            }
        if (!times.HasCome(clock.Now(), clock.MonotonicMilliseconds()))
            continue;
        text += FormatTime("%H:%M:%S ", LocalCalendar(clock.Now()));
        times.Begin(spanSeconds, clock.Now(), clock.MonotonicMilliseconds());
    }
    return text;
}

TEST(RoundTimes, ComeByTheLocalTimeOfDay) {
    constexpr int Hour = 3600;
    const struct {
        const char* begin;
        int span, seconds;
        std::vector<Change> changes;
        const char* expected;
    } cases[] = {
        {"2026-06-21T10:50:30", Hour, 2 * Hour, {}, "11:00:00 12:00:00 "},
        {"2026-06-21T10:59:59", 600, 1300, {}, "11:10:00 11:20:00 "},
        {"2026-06-21T20:00:00", 7 * Hour, 12 * Hour, {}, "21:00:00 00:00:00 07:00:00 "},
        {"2026-06-21T13:00:00", 24 * Hour, 36 * Hour, {}, "00:00:00 00:00:00 "},
        // Daylight saving begins: 02:00 becomes 03:00.
        {"2026-03-29T00:30:00", Hour, 3 * Hour, {{5400, 0, 60}}, "01:00:00 03:00:00 04:00:00 "},
        {"2026-03-29T00:30:00", 3 * Hour, 3 * Hour, {{5400, 0, 60}}, "03:00:00 "},
        {"2026-03-29T00:30:00", 4 * Hour, 3 * Hour, {{5400, 0, 60}}, "04:00:00 "},
        // It ends: 03:00 becomes 02:00.
        {"2026-10-25T01:30:00", Hour, 3 * Hour, {{5400, 0, -60}}, "02:00:00 02:00:00 03:00:00 "},
        {"2026-10-25T01:30:00", 4 * Hour, 4 * Hour, {{5400, 0, -60}}, "04:00:00 "},
        // Somebody sets the clock.
        {"2026-06-21T10:30:00", Hour, Hour, {{600, 1200, 0}}, "11:00:00 "},
        {"2026-06-21T10:30:00", Hour, Hour, {{600, 7200, 0}}, "12:40:00 13:00:00 "},
        {"2026-06-21T10:30:00", Hour, 2 * Hour, {{600, -2100, 0}}, "11:00:00 "},
    };
    for (const auto& one : cases)
        EXPECT_EQ(TimesFrom(one.begin, one.span, one.seconds, one.changes), one.expected)
            << one.begin << " every " << one.span << " s";
}

} // namespace
} // namespace qor
