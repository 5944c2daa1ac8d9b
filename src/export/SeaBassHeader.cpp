// SPDX-License-Identifier: GPL-3.0-or-later
#include "export/SeaBassHeader.h"

#include "base/NearName.h"
#include "base/Text.h"
#include "platform/Clock.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

struct KeyRow {
    std::string_view key;
    bool required;
    bool given = true;         ///< a call may give it
    std::string_view tag = {}; ///< of the log's header record that says it
};

constexpr KeyRow Keys[] = {
    {"investigators", true},
    {"affiliations", true},
    {"contact", true},
    {"experiment", true},
    {"cruise", true, true, "CRUISE-ID"},
    {"station", false, true, "STATION-ID"},
    {"data_file_name", true, false},
    {"original_file_name", false, false},
    {"documents", true},
    {"calibration_files", true},
    {"calibration_date", false},
    {"instrument_manufacturer", false},
    {"instrument_model", false},
    {"data_type", true},
    {"data_status", false},
    {"start_date", true, false},
    {"end_date", true, false},
    {"start_time", true, false},
    {"end_time", true, false},
    {"north_latitude", true},
    {"south_latitude", true},
    {"east_longitude", true},
    {"west_longitude", true},
    {"water_depth", false},
    {"measurement_depth", false},
    {"secchi_depth", false},
    {"cloud_percent", false},
    {"wind_speed", false},
    {"wave_height", false},
};

bool IsVisible(char c) {
    return c > ' ' && c <= '~';
}

const std::string* ValueIn(const SeaBassValues& values, std::string_view key) {
    const auto found = values.find(key);
    return found == values.end() ? nullptr : &found->second;
}

double LargestAngle(std::string_view key) {
    return key.ends_with("_latitude") ? 90.0 : key.ends_with("_longitude") ? 180.0 : 0.0;
}

std::string ValueOf(const KeyRow& row, const SeaBassValues& given, const SeaBassValues& found,
                    std::span<const HeaderRecord> header) {
    for (const SeaBassValues* values : {&given, &found})
        if (const std::string* value = ValueIn(*values, row.key))
            return SeaBassText(*value) + (LargestAngle(row.key) > 0.0 ? "[DEG]" : "");
    for (const HeaderRecord& record : header)
        if (!row.tag.empty() && record.tag == row.tag)
            return SeaBassText(record.value);
    return SeaBassText({});
}

} // namespace

std::string WhyNoSeaBassValue(std::string_view key, std::string_view value) {
    const auto row = std::find_if(std::begin(Keys), std::end(Keys),
                                  [key](const KeyRow& one) { return one.key == key; });
    if (row == std::end(Keys)) {
        std::vector<std::string> names;
        for (const KeyRow& one : Keys)
            if (one.given)
                names.emplace_back(one.key);
        return std::string(key) + ": the header has no such key." + NameAdvice(key, names);
    }
    if (!row->given)
        return std::string(key) + ": what is decoded says it itself.";
    if (const double most = LargestAngle(key); most > 0.0) {
        const std::optional<double> angle = WholeNumber(value);
        if (!angle || !(std::abs(*angle) <= most))
            return std::string(key) + ": give degrees up to " + ShortestNumber(most) +
                   ", south and west negative.";
        return {};
    }
    const bool visible =
        std::all_of(value.begin(), value.end(), [](char c) { return IsVisible(c) || c == ' '; });
    if (Trim(value).empty() || !visible)
        return std::string(key) + ": give a value of ASCII letters, digits and signs.";
    return {};
}

std::string SeaBassText(std::string_view value) {
    std::string text(Trim(value));
    std::replace_if(
        text.begin(), text.end(), [](char c) { return !IsVisible(c); }, '_');
    return text.empty() ? "NA" : text;
}

std::string SeaBassDate(std::int64_t seconds) {
    const CalendarTime time = CalendarFromSeconds(seconds);
    return Format("%04d%02d%02d", time.year, time.month, time.day);
}

std::string SeaBassTime(std::int64_t seconds) {
    const CalendarTime time = CalendarFromSeconds(seconds);
    return Format("%02d:%02d:%02d", time.hour, time.minute, time.second);
}

std::string SeaBassHeaderLines(const SeaBassValues& given, const SeaBassValues& found,
                               std::span<const HeaderRecord> header,
                               std::vector<std::string>& unknown) {
    std::string lines = "/begin_header\n";
    for (const KeyRow& row : Keys) {
        const std::string value = ValueOf(row, given, found, header);
        if (value == "NA" && row.required && !ValueIn(given, row.key))
            unknown.emplace_back(row.key);
        lines += "/" + std::string(row.key) + "=" + value + "\n";
    }
    return lines;
}

} // namespace qor
