// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the time and position fits. Raw values are hostile: a double is turned into an
// integer only where it fits one.
#include "base/Text.h"
#include "instrument/FieldValue.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

namespace qor {

namespace {

/// The first two characters, the two in the middle and the rest from `last` on, joined.
std::string Split(const std::string& digits, char separator, std::size_t last) {
    return digits.substr(0, 2) + separator + digits.substr(2, 2) + separator +
           digits.substr(digits.size() - last);
}

std::string DateText(const RawValue& raw) {
    return Split(Format("%06lld", static_cast<long long>(raw.integer)), '/', 2);
}

std::string ClockText(const RawValue& raw) {
    char digits[330]; // the longest double has 309 digits before the point
    // Kept: the sign is dropped.
    const auto end = std::to_chars(digits, digits + sizeof digits, std::fabs(raw.number),
                                   std::chars_format::fixed, 2);
    std::string padded(digits, end.ptr);
    if (padded.size() < 9)
        padded.insert(0, 9 - padded.size(), '0');
    return Split(padded, ':', 5);
}

std::string PositionText(const RawValue& raw) {
    // Kept: the sign is dropped, and seconds may round to 60.
    double whole = 0.0, degrees = 0.0;
    const double fraction = std::modf(std::fabs(raw.number), &whole);
    const double partOfDegrees = std::modf(whole * 0.01, &degrees);
    return Format("%d %02d' %02d\"", static_cast<int>(degrees),
                  static_cast<int>(partOfDegrees * 100.0 + 0.5),
                  static_cast<int>(fraction * 60.0 + 0.5));
}

std::string CalendarText(const RawValue& raw, DataType data) {
    using namespace std::chrono;
    const std::int64_t count =
        IsInteger(data) ? raw.integer : static_cast<std::int64_t>(std::trunc(raw.number));
    const sys_seconds time{seconds(count)};
    const sys_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    const int year = ((static_cast<int>(date.year()) % 100) + 100) % 100;
    return Format("%02d-%02u-%02u %02d.%02d.%02d", year, static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
}

} // namespace

double TimeTextLimit(FitType fit, DataType data) {
    constexpr double None = std::numeric_limits<double>::infinity();
    // Decided: degrees that no 32-bit integer holds are no position.
    constexpr double Position = 2147483648.0 * 100.0;
    // Decided: what lies further than 28,800 years from 1970 is no time; the calendar's years end
    // not far behind.
    constexpr double Calendar = 9.1e11;
    const bool floating = data == DataType::BF || data == DataType::BD || data == DataType::AF;
    const bool whole = data == DataType::BU || data == DataType::BS || data == DataType::AI;
    switch (fit) {
    case FitType::DDMMYY:
        return whole ? None : 0.0;
    case FitType::HHMMSS:
        return floating ? None : 0.0;
    case FitType::DDMM:
        return floating ? Position : 0.0;
    case FitType::TIME2:
        return Calendar;
    default:
        return 0.0;
    }
}

ConversionStatus TimeText(const CSensor& sensor, const RawValue& raw, std::string* text) {
    const double limit = TimeTextLimit(sensor.Fit, sensor.Data);
    if (limit == 0.0)
        return IsTimeText(sensor.Fit) ? ConversionStatus::WrongDataType
                                      : ConversionStatus::NotUsable;
    if (std::fabs(raw.number) >= limit)
        return ConversionStatus::NotFinite;
    if (!text)
        return ConversionStatus::Good;
    switch (sensor.Fit) {
    case FitType::DDMMYY:
        *text = DateText(raw);
        break;
    case FitType::HHMMSS:
        *text = ClockText(raw);
        break;
    case FitType::DDMM:
        *text = PositionText(raw);
        break;
    default:
        *text = CalendarText(raw, sensor.Data);
        break;
    }
    return ConversionStatus::Good;
}

} // namespace qor
