// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SpanText.h"

#include "base/Text.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::int32_t MostHours = 999'999; // six digits, as a session file holds them

/// The parts between colons, from the right; how many there are, at most four.
int SplitFromRight(std::string_view text, std::string_view (&parts)[4]) {
    int count = 0;
    while (count < 4) {
        const std::size_t colon = text.rfind(':');
        const bool last = colon == std::string_view::npos || count == 3;
        parts[count++] = last ? text : text.substr(colon + 1);
        if (last)
            break;
        text = text.substr(0, colon);
    }
    return count;
}

/// Digits and nothing else, at most so many.
bool IsNumber(std::string_view text, std::size_t most) {
    return !text.empty() && text.size() <= most && std::ranges::all_of(text, IsDigit);
}

} // namespace

std::optional<LogSpan> ParseSpan(std::string_view text) {
    std::string_view parts[4];
    const int count = SplitFromRight(text, parts);
    if (count > 3)
        return std::nullopt;
    std::int32_t numbers[3] = {0, 0, 0}; // seconds, minutes, hours
    for (int i = 0; i < count; ++i) {
        constexpr std::uint32_t Limit = 1'000'000;
        const std::optional<std::uint32_t> number = WholeCount(parts[i]);
        if (!number || *number > Limit)
            return std::nullopt;
        numbers[i] = static_cast<std::int32_t>(*number);
    }
    const LogSpan span{numbers[2], numbers[1], numbers[0]};
    return span.Seconds() == 0 ? std::nullopt : std::optional(span);
}

std::optional<LogSpan> ParseFullSpan(std::string_view text) {
    std::string_view parts[4];
    if (SplitFromRight(text, parts) != 3 || !IsNumber(parts[2], 6))
        return std::nullopt;
    for (const std::string_view part : {parts[0], parts[1]})
        if (part.size() != 2 || !IsNumber(part, 2) || part[0] > '5')
            return std::nullopt;
    return ParseSpan(text);
}

std::string SpanText(const LogSpan& span) {
    const long long seconds = span.Seconds();
    return Format("%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

std::string OptionsFault(const LogOptions& options) {
    const auto usable = [](const LogSpan& span) {
        return span.hours >= 0 && span.minutes >= 0 && span.seconds >= 0 && span.Seconds() > 0 &&
               span.hours <= MostHours;
    };
    if (options.durationEnabled && !usable(options.duration))
        return "The length of a log is not more than zero and below a million hours.";
    if (options.repeatEnabled && !usable(options.repeatInterval))
        return "The pause between logs is not more than zero and below a million hours.";
    return {};
}

} // namespace qor
