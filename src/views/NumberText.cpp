// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/NumberText.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {

std::string CountText(std::uint64_t count) {
    constexpr const char* ThinSpace = "\xE2\x80\x89";
    std::string text = std::to_string(count);
    for (std::size_t place = text.size(); place > 3;) {
        place -= 3;
        text.insert(place, ThinSpace);
    }
    return text;
}

std::string AgeText(std::int64_t milliseconds) {
    constexpr std::int64_t Second = 1000, Minute = 60 * Second, Hour = 60 * Minute;
    if (milliseconds < 0)
        return "--";
    if (milliseconds < 10 * Second)
        return FixedNumber(static_cast<double>(milliseconds / 100) / 10.0, 1) + " s";
    if (milliseconds < 2 * Minute)
        return std::to_string(milliseconds / Second) + " s";
    return milliseconds < 2 * Hour ? std::to_string(milliseconds / Minute) + " min"
                                   : std::to_string(milliseconds / Hour) + " h";
}

std::string UtcText(const FrameTime& time) {
    return time.known ? FormatTime("%Y-%m-%d %H:%M:%S UTC", CalendarFromSeconds(time.seconds)) : "";
}

std::string TimeOfDayText(const FrameTime& time) {
    return FormatTime("%H:%M:%S", LocalCalendar(time));
}

std::string DayAndTimeText(const FrameTime& time) {
    return FormatTime("%Y-%m-%d  %H:%M:%S", LocalCalendar(time));
}

std::string ElapsedText(double seconds) {
    const auto whole = static_cast<long long>(std::max(seconds, 0.0));
    return whole < 3600 ? Format("%02lld:%02lld", whole / 60, whole % 60)
                        : Format("%02lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace qor
