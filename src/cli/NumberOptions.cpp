// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/NumberOptions.h"

#include "base/Text.h"
#include "platform/Clock.h"

#include <charconv>
#include <optional>

namespace qor {

namespace {

constexpr int FirstYear = 1970, LastYear = 2199; // of time tags, see telemetry/RawLogFormat.cpp

std::optional<std::uint64_t> CountOf(std::string_view text) {
    text.remove_prefix(text.starts_with('+') ? 1 : 0);
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, count);
    return read.ec == std::errc() && read.ptr == end ? std::optional(count) : std::nullopt;
}

} // namespace

CLI::Validator DecimalIn(double least, double greatest) {
    const std::string first = ShortestNumber(least), last = ShortestNumber(greatest);
    const auto take = [=](std::string& text) {
        const std::optional<double> number = WholeNumber(text);
        if (!number || !(*number >= least && *number <= greatest))
            return text + ": give a number from " + first + " to " + last;
        text = ShortestNumber(*number); // the parser would take a zero before it for octal
        return std::string();
    };
    return {take, "in [" + first + " - " + last + "]"};
}

CLI::Validator CountIn(std::uint64_t least, std::uint64_t greatest) {
    const std::string first = std::to_string(least), last = std::to_string(greatest);
    const auto take = [=](std::string& text) {
        const std::optional<std::uint64_t> count = CountOf(text);
        if (!count || *count < least || *count > greatest)
            return text + ": give a whole number from " + first + " to " + last;
        text = std::to_string(*count);
        return std::string();
    };
    return {take, "in [" + first + " - " + last + "]"};
}

CLI::Validator TimeOfLogs() {
    const auto look = [](std::string& text) {
        const std::optional<std::int64_t> seconds = SecondsFromText(text);
        const int year = seconds ? CalendarFromSeconds(*seconds).year : 0;
        return year >= FirstYear && year <= LastYear
                   ? std::string()
                   : text + ": give a time such as 2026-06-21T12:00:00, of the years " +
                         std::to_string(FirstYear) + " to " + std::to_string(LastYear);
    };
    return {look, ""};
}

CLI::Validator SomeValue() {
    return {[](std::string& text) {
                return text.empty() ? std::string("its value is empty; give one, or leave it out")
                                    : std::string();
            },
            ""};
}

} // namespace qor
