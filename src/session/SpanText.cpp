// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SpanText.h"

#include "base/Text.h"
#include "session/RoundTimes.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::int64_t EndOfSpans = 1'000'000LL * 3600; // six digits, as a session file holds them

/// More than zero and below a million hours, in whatever units.
bool IsUsable(const LogSpan& span) {
    return span.hours >= 0 && span.minutes >= 0 && span.seconds >= 0 && span.Seconds() > 0 &&
           span.Seconds() < EndOfSpans;
}

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

/// The largest unit first, each at most once.
std::optional<LogSpan> ParseUnits(std::string_view text) {
    constexpr std::string_view Units = "hms";
    std::int32_t numbers[Units.size()] = {};
    for (std::size_t next = 0; !text.empty();) {
        const auto digits =
            static_cast<std::size_t>(std::ranges::find_if_not(text, IsDigit) - text.begin());
        const std::string unit = ToLower(text.substr(digits, 1));
        const std::size_t place = unit.empty() ? Units.npos : Units.find(unit, next);
        if (place == Units.npos || !IsNumber(text.substr(0, digits), 6))
            return std::nullopt;
        numbers[place] = static_cast<std::int32_t>(*WholeCount(text.substr(0, digits)));
        next = place + 1;
        text.remove_prefix(digits + 1);
    }
    const LogSpan span{numbers[0], numbers[1], numbers[2]};
    return IsUsable(span) ? std::optional(span) : std::nullopt;
}

} // namespace

std::optional<LogSpan> ParseSpan(std::string_view text) {
    std::string_view parts[4];
    const int count = SplitFromRight(text, parts);
    if (count == 1)
        return ParseUnits(text);
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
    return IsUsable(span) ? std::optional(span) : std::nullopt;
}

std::string SpanFault(std::string_view text) {
    if (ParseSpan(text))
        return {};
    if (IsNumber(text, 6) && WholeCount(text) != 0U) {
        const auto number = static_cast<std::int32_t>(*WholeCount(text));
        return "Is that " + std::to_string(number) + "m or " + SpanText({0, 0, number}) + "?";
    }
    return "Give a time such as 10m, 1h30m or 00:10:00.";
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
    if (options.durationEnabled && !IsUsable(options.duration))
        return "The length of a log is not more than zero and below a million hours.";
    if (options.repeatEnabled && !IsUsable(options.repeatInterval))
        return "The pause between logs is not more than zero and below a million hours.";
    return EveryFault(options);
}

std::string EveryFault(const LogOptions& options) {
    if (!options.everyEnabled)
        return {};
    const std::int64_t span = options.every.Seconds();
    if (span <= 0 || span > CRoundTimes::LongestSpan)
        return "Round times of the day are at most 24 hours apart.";
    if (options.repeatEnabled)
        return "Logs begin at round times or so long after one has ended, not both.";
    if (options.durationEnabled && options.duration.Seconds() > span)
        return "A log is no longer than from one round time to the next.";
    return {};
}

} // namespace qor
