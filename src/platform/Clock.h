// SPDX-License-Identifier: GPL-3.0-or-later
//
// Time: the wall clock for stamps, names and tags, the monotonic clock for durations. A seam, so
// that tests move time by hand.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>

namespace qor {

/// A moment of the wall clock together with the local time zone's offset at that moment, so that
/// turning it into local time is arithmetic and never asks the system again.
struct FrameTime {
    std::int64_t seconds = 0;          ///< since 1970-01-01 00:00:00 UTC
    std::uint16_t milliseconds = 0;    ///< 0..999
    std::int16_t utcOffsetMinutes = 0; ///< local time minus UTC, daylight saving included
    bool daylight = false;             ///< daylight saving was in force
    bool known = false;                ///< false: no time is known (a capture without tags)

    bool operator==(const FrameTime&) const = default;
};

/// Seconds since 1970 UTC, with their part.
inline double SecondsOf(const FrameTime& time) {
    return static_cast<double>(time.seconds) + time.milliseconds / 1000.0;
}

/// A calendar date and time of day, in whatever zone its maker says.
struct CalendarTime {
    int year = 1970;
    int month = 1;     ///< 1..12
    int day = 1;       ///< 1..31
    int dayOfYear = 1; ///< 1..366
    int weekday = 4;   ///< 0 = Sunday
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// Seconds since 1970 as a proleptic Gregorian date and time, and back; pure arithmetic, no zone.
/// Moments outside the years 0 to 9999 give the nearest moment inside them.
CalendarTime CalendarFromSeconds(std::int64_t seconds);
std::int64_t SecondsFromCalendar(int year, int month, int day, int hour, int minute, int second);

/// "2026-06-21T12:00:00" as seconds since 1970 of whatever zone it is meant in; empty when the text
/// is no such time or the time does not exist.
std::optional<std::int64_t> SecondsFromText(const std::string& text);

/// The stamp's local date and time.
CalendarTime LocalCalendar(const FrameTime& time);

/// strftime with English names whatever the locale, for the fields of a CalendarTime (%a %b %d %H
/// %M %S %Y %m %y %j and %%).
std::string FormatTime(const char* format, const CalendarTime& time);

/// When the program was made, in seconds since 1970 UTC, to the day: a clock that says less is
/// wrong.
std::int64_t BuildTime();

class CClock {
  public:
    virtual ~CClock() = default;
    /// The wall clock now, with the local offset.
    virtual FrameTime Now() = 0;
    /// Milliseconds of a clock that never steps.
    virtual std::int64_t MonotonicMilliseconds() = 0;
    /// Lets the calling thread rest.
    virtual void Sleep(int milliseconds) = 0;
};

/// The local time zone's offset at a moment, as the operating system knows it.
struct LocalOffset {
    std::int16_t minutes = 0;
    bool daylight = false;
};
LocalOffset SystemLocalOffset(std::int64_t seconds);

/// The system's clocks. Safe to share between threads.
class CSystemClock : public CClock {
  public:
    FrameTime Now() override;
    std::int64_t MonotonicMilliseconds() override;
    void Sleep(int milliseconds) override;

  private:
    LocalOffset OffsetAt(std::int64_t seconds);

    /// The offset of one quarter hour, packed with the quarter's number; 0 = none asked for yet.
    std::atomic<std::uint64_t> Cached{0};
};

} // namespace qor
