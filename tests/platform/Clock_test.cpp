// SPDX-License-Identifier: GPL-3.0-or-later
//
// The calendar against known dates and against itself, and the system clock against the system's.
#include "platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ctime>

namespace qor {
namespace {

std::string Shown(const CalendarTime& time) {
    return FormatTime("%Y-%m-%d %j %a %H:%M:%S", time);
}

// Not std::time: on Linux that clock lags behind by up to a tick of the kernel's.
std::int64_t WholeSecondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::floor<std::chrono::seconds>(now).count();
}

TEST(Clock, CalendarHoldsAtItsCorners) {
    const struct {
        std::int64_t seconds;
        const char* text;
    } cases[] = {
        {0, "1970-01-01 001 Thu 00:00:00"},          {-1, "1969-12-31 365 Wed 23:59:59"},
        {1115125679, "2005-05-03 123 Tue 13:07:59"}, {253402300799, "9999-12-31 365 Fri 23:59:59"},
        {INT64_MAX, "9999-12-31 365 Fri 23:59:59"},  {INT64_MIN, "0-01-01 001 Sat 00:00:00"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Shown(CalendarFromSeconds(c.seconds)), c.text) << c.seconds;
}

TEST(Clock, CalendarReadsBackAndAgreesWithTheCLibrary) {
    for (std::int64_t seconds = -3000000000; seconds < 8000000000; seconds += 9999991) {
        CalendarTime time = CalendarFromSeconds(seconds);
        EXPECT_EQ(SecondsFromCalendar(time.year, time.month, time.day, time.hour, time.minute,
                                      time.second),
                  seconds);
        auto moment = static_cast<std::time_t>(seconds);
        const std::tm* expected = std::gmtime(&moment);
        if (expected == nullptr && seconds < 0)
            continue; // the Windows library knows no time before 1970
        ASSERT_NE(expected, nullptr);
        char text[40];
        std::strftime(text, sizeof text, "%Y-%m-%d %j %a %H:%M:%S", expected);
        EXPECT_EQ(Shown(time), text);
    }
}

TEST(Clock, SecondsFromCalendarCarriesAndStaysInRange) {
    EXPECT_EQ(SecondsFromCalendar(2005, 1, 123, 0, 0, 0), SecondsFromCalendar(2005, 5, 3, 0, 0, 0));
    EXPECT_EQ(SecondsFromCalendar(2004, 14, 1, 0, 0, 0), SecondsFromCalendar(2005, 2, 1, 0, 0, 0));
    EXPECT_EQ(SecondsFromCalendar(INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX, INT32_MAX),
              253402300799);
    EXPECT_EQ(SecondsFromCalendar(INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN, INT32_MIN),
              -62167219200);
}

TEST(Clock, LocalTimeIsTheStampsOwnOffsetAndUnknownFieldsStandForThemselves) {
    FrameTime stamp{.seconds = 1115125679, .utcOffsetMinutes = -210, .known = true};
    EXPECT_EQ(Shown(LocalCalendar(stamp)), "2005-05-03 123 Tue 09:37:59");
    EXPECT_EQ(FormatTime("%b %y %% %Q %", CalendarFromSeconds(0)), "Jan 70 % %Q %");
}

TEST(Clock, SystemClockTellsTheSystemsTimeAndZone) {
    CSystemClock clock;
    for (int round = 0; round < 2; ++round) { // the second answer comes from the kept offset
        std::int64_t before = WholeSecondsNow();
        FrameTime now = clock.Now();
        EXPECT_TRUE(now.known);
        EXPECT_LE(before, now.seconds);
        EXPECT_LE(now.seconds, WholeSecondsNow());
        auto moment = static_cast<std::time_t>(now.seconds);
        const std::tm* local = std::localtime(&moment);
        EXPECT_EQ(LocalCalendar(now).hour, local->tm_hour);
        EXPECT_EQ(LocalCalendar(now).minute, local->tm_min);
        EXPECT_EQ(now.daylight, local->tm_isdst > 0);
    }
}

} // namespace
} // namespace qor
