// SPDX-License-Identifier: GPL-3.0-or-later
//
// Calendar arithmetic and the system's clocks, whatever the operating system; asking for the local
// time zone is Clock_posix.cpp and Clock_win32.cpp. Any thread may call; nothing here locks.
#include "platform/Clock.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

namespace qor {

namespace {

constexpr std::int64_t SecondsPerDay = 86400;
constexpr std::int64_t SecondsPerQuarter = 900;
constexpr std::int64_t DaysPerEra = 146097;        // 400 years of the Gregorian calendar
constexpr std::int64_t DaysFromMarch0000 = 719468; // 0000-03-01 to 1970-01-01
constexpr std::int64_t FirstSecond = -62167219200; // 0000-01-01 00:00:00
constexpr std::int64_t LastSecond = 253402300799;  // 9999-12-31 23:59:59

constexpr std::int64_t FloorDivide(std::int64_t value, std::int64_t divisor) {
    return value / divisor - (value % divisor < 0 ? 1 : 0);
}

constexpr bool IsLeap(int year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

constexpr std::array<int, 12> DaysBeforeMonth{0,   31,  59,  90,  120, 151,
                                              181, 212, 243, 273, 304, 334};

// Years begin in March here, so that the leap day is the last day of its year.
constexpr std::int64_t DayNumber(std::int64_t year, std::int64_t month, std::int64_t day) {
    std::int64_t marchYear = month > 2 ? year : year - 1;
    std::int64_t era = FloorDivide(marchYear, 400);
    std::int64_t yearOfEra = marchYear - era * 400;
    std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    return era * DaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear -
           DaysFromMarch0000;
}

void SetDate(CalendarTime& time, std::int64_t days) {
    std::int64_t shifted = days + DaysFromMarch0000;
    std::int64_t era = FloorDivide(shifted, DaysPerEra);
    std::int64_t dayOfEra = shifted - era * DaysPerEra;
    std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    std::int64_t month = (5 * dayOfYear + 2) / 153;
    time.day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    time.month = static_cast<int>(month < 10 ? month + 3 : month - 9);
    time.year = static_cast<int>(yearOfEra + era * 400 + (time.month <= 2 ? 1 : 0));
    time.dayOfYear = DaysBeforeMonth[static_cast<std::size_t>(time.month - 1)] + time.day +
                     (time.month > 2 && IsLeap(time.year) ? 1 : 0);
    std::int64_t weekday = (days + 4) % 7; // 1970-01-01 was a Thursday
    time.weekday = static_cast<int>(weekday < 0 ? weekday + 7 : weekday);
}

constexpr std::array<const char*, 7> DayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> MonthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

template <std::size_t N> std::string NameAt(const std::array<const char*, N>& names, int index) {
    return index >= 0 && index < static_cast<int>(N) ? names[static_cast<std::size_t>(index)] : "?";
}

std::string FormatField(char field, const CalendarTime& time) {
    switch (field) {
    case 'a':
        return NameAt(DayNames, time.weekday);
    case 'b':
        return NameAt(MonthNames, time.month - 1);
    case 'd':
        return Format("%02d", time.day);
    case 'H':
        return Format("%02d", time.hour);
    case 'M':
        return Format("%02d", time.minute);
    case 'S':
        return Format("%02d", time.second);
    case 'Y':
        return Format("%d", time.year);
    case 'y':
        return Format("%02d", (time.year % 100 + 100) % 100);
    case 'm':
        return Format("%02d", time.month);
    case 'j':
        return Format("%03d", time.dayOfYear);
    case '%':
        return "%";
    default:
        return std::string{'%', field};
    }
}

} // namespace

CalendarTime CalendarFromSeconds(std::int64_t seconds) {
    seconds = std::clamp(seconds, FirstSecond, LastSecond);
    std::int64_t days = FloorDivide(seconds, SecondsPerDay);
    int secondOfDay = static_cast<int>(seconds - days * SecondsPerDay);
    CalendarTime time;
    SetDate(time, days);
    time.hour = secondOfDay / 3600;
    time.minute = secondOfDay / 60 % 60;
    time.second = secondOfDay % 60;
    return time;
}

std::int64_t SecondsFromCalendar(int year, int month, int day, int hour, int minute, int second) {
    std::int64_t months = std::int64_t{year} * 12 + month - 1;
    std::int64_t wholeYear = FloorDivide(months, 12);
    std::int64_t days = DayNumber(wholeYear, months - wholeYear * 12 + 1, 1) + day - 1;
    std::int64_t seconds =
        days * SecondsPerDay + std::int64_t{hour} * 3600 + std::int64_t{minute} * 60 + second;
    return std::clamp(seconds, FirstSecond, LastSecond);
}

std::optional<std::int64_t> SecondsFromText(const std::string& text) {
    constexpr std::string_view Form = "0000-00-00T00:00:00";
    int part[6] = {}; // in the order of the text
    if (text.size() != Form.size())
        return std::nullopt;
    for (std::size_t i = 0, at = 0; i < Form.size(); ++i) {
        if (Form[i] == '0' ? !IsDigit(text[i]) : text[i] != Form[i])
            return std::nullopt;
        if (Form[i] == '0')
            part[at] = part[at] * 10 + (text[i] - '0');
        else
            ++at;
    }
    const std::int64_t seconds =
        SecondsFromCalendar(part[0], part[1], part[2], part[3], part[4], part[5]);
    const CalendarTime real = CalendarFromSeconds(seconds);
    const int there[6] = {real.year, real.month, real.day, real.hour, real.minute, real.second};
    return std::ranges::equal(part, there) ? std::optional(seconds) : std::nullopt;
}

CalendarTime LocalCalendar(const FrameTime& time) {
    std::int64_t seconds = std::clamp(time.seconds, FirstSecond, LastSecond);
    return CalendarFromSeconds(seconds + std::int64_t{time.utcOffsetMinutes} * 60);
}

std::string FormatTime(const char* format, const CalendarTime& time) {
    std::string text;
    for (; *format != '\0'; ++format) {
        if (*format != '%' || format[1] == '\0')
            text += *format;
        else
            text += FormatField(*++format, time);
    }
    return text;
}

FrameTime CSystemClock::Now() {
    auto now = std::chrono::system_clock::now().time_since_epoch();
    std::int64_t milliseconds = std::chrono::floor<std::chrono::milliseconds>(now).count();
    FrameTime time;
    time.seconds = FloorDivide(milliseconds, 1000);
    time.milliseconds = static_cast<std::uint16_t>(milliseconds - time.seconds * 1000);
    LocalOffset offset = OffsetAt(time.seconds);
    time.utcOffsetMinutes = offset.minutes;
    time.daylight = offset.daylight;
    time.known = true;
    return time;
}

// Time zones change their offset at quarter hours, so one answer of the system serves for fifteen
// minutes. Quarter, offset and daylight flag share one word: threads never see halves of two
// answers.
LocalOffset CSystemClock::OffsetAt(std::int64_t seconds) {
    auto quarter = static_cast<std::uint64_t>(FloorDivide(seconds, SecondsPerQuarter) + 1);
    std::uint64_t cached = Cached.load(std::memory_order_relaxed);
    if (cached != 0 && cached >> 17 == (quarter & 0x7FFFFFFFFFFF))
        return {static_cast<std::int16_t>(cached >> 1 & 0xFFFF), (cached & 1) != 0};
    LocalOffset offset = SystemLocalOffset(seconds);
    Cached.store(quarter << 17 | std::uint64_t{static_cast<std::uint16_t>(offset.minutes)} << 1 |
                     (offset.daylight ? 1U : 0U),
                 std::memory_order_relaxed);
    return offset;
}

std::int64_t CSystemClock::MonotonicMilliseconds() {
    auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

void CSystemClock::Sleep(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace qor
