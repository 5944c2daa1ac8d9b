// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the time and position fits. Raw values are hostile: a double is turned into an
// integer only where it fits one.
#include "base/Text.h"
#include "instrument/FieldValue.h"

#include <chrono>
#include <cmath>

namespace qor {

namespace {

/// The first two characters, the two in the middle and the rest from `last` on, joined.
std::string Split(const std::string& digits, char separator, std::size_t last) {
    return digits.substr(0, 2) + separator + digits.substr(2, 2) + separator +
           digits.substr(digits.size() - last);
}

} // namespace

std::string DateText(const RawValue& raw, DataType) {
    return Split(Format("%06lld", static_cast<long long>(raw.integer)), '/', 2);
}

std::string ClockText(const RawValue& raw, DataType) {
    // Kept: the sign is dropped.
    return Split(FixedNumber(std::fabs(raw.number), 2, 9, '0'), ':', 5);
}

std::string PositionText(const RawValue& raw, DataType) {
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

double TimeTextLimit(FitType fit, DataType data) {
    const FitRow& row = RowOf(fit);
    return row.allowed.Has(data) ? row.textLimit : 0.0;
}

ConversionStatus TimeText(const CSensor& sensor, const RawValue& raw, std::string* text) {
    const TextFit fit = RowOf(sensor.Fit).text;
    if (!fit)
        return ConversionStatus::NotUsable;
    const double limit = TimeTextLimit(sensor.Fit, sensor.Data);
    if (limit == 0.0)
        return ConversionStatus::WrongDataType;
    if (std::fabs(raw.number) >= limit)
        return ConversionStatus::NotFinite;
    if (text)
        *text = fit(raw, sensor.Data);
    return ConversionStatus::Good;
}

} // namespace qor
