// SPDX-License-Identifier: GPL-3.0-or-later
//
// Making and reading the bytes of a raw log beside the frames. The raw log writer and the playback
// call it, each under its own lock; nothing here keeps state but a reader's last date.
#include "telemetry/RawLogFormat.h"

#include "base/EnumTable.h"
#include "base/Text.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace qor {

namespace {

struct HeaderRow {
    HeaderTag tag;
    std::string_view name;
};

constexpr HeaderRow HeaderTable[] = {
    {HeaderTag::CruiseId, "CRUISE-ID"},
    {HeaderTag::Operator, "OPERATOR"},
    {HeaderTag::Latitude, "LATITUDE"},
    {HeaderTag::Longitude, "LONGITUDE"},
    {HeaderTag::Zone, "ZONE"},
    {HeaderTag::Comment, "COMMENT"},
    {HeaderTag::StationId, "STATION-ID"},
    {HeaderTag::Cast, "CAST"},
    {HeaderTag::TimeStamp, "TIME-STAMP"},
    {HeaderTag::Mode, "MODE"},
    {HeaderTag::PressureTare, "PRESSURE-TARE"},
    {HeaderTag::TimeTag, "TIMETAG"},
    {HeaderTag::DateTag, "DATETAG"},
    {HeaderTag::TimeTag2, "TIMETAG2"},
    {HeaderTag::Profiler, "PROFILER"},
    {HeaderTag::Reference, "REFERENCE"},
    {HeaderTag::ProDark, "PRO-DARK"},
    {HeaderTag::RefDark, "REF-DARK"},
    {HeaderTag::ProId, "PRO-ID"},
    {HeaderTag::RefId, "REF-ID"},
    {HeaderTag::TrkId, "TRK-ID"},
    {HeaderTag::SqmId, "SQM-ID"},
    {HeaderTag::DutId, "DUT-ID"},
    {HeaderTag::Weather, "WEATHER"},
    {HeaderTag::Nmea, "NMEA"},
};
static_assert(IsWholeTable(HeaderTable, &HeaderRow::tag));

constexpr std::string_view TagBegin = " (";
constexpr std::string_view TagEnd = ")\r\n";
constexpr std::string_view LineEnd = "\r\n";

// '#' stands for a digit.
constexpr std::string_view TimeStampForm = "$PCZDA,######.##,##,##,####,,";

constexpr std::uint32_t FirstTagYear = 1970;
constexpr std::uint32_t LastTagYear = 2199;

/// The digits as a number.
int Number(std::string_view digits) {
    int value = 0;
    for (char c : digits)
        value = value * 10 + (c - '0');
    return value;
}

bool HasForm(std::string_view text, std::string_view form) {
    return std::equal(text.begin(), text.end(), form.begin(), form.end(),
                      [](char c, char wanted) { return wanted == '#' ? IsDigit(c) : c == wanted; });
}

constexpr std::uint32_t DaysInYear(std::uint32_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0) ? 366 : 365;
}

bool Exists(const CalendarTime& time) {
    CalendarTime real = CalendarFromSeconds(
        SecondsFromCalendar(time.year, time.month, time.day, time.hour, time.minute, time.second));
    return real.year == time.year && real.month == time.month && real.day == time.day &&
           real.hour == time.hour && real.minute == time.minute && real.second == time.second;
}

} // namespace

std::string UtcOffsetText(int minutes) {
    const int size = std::abs(minutes);
    return Format("UTC%c%02d:%02d", minutes < 0 ? '-' : '+', size / 60, size % 60);
}

std::string FormatHeaderLine(int index, std::string_view value) {
    if (index < 0 || index >= static_cast<int>(std::size(HeaderTable)))
        return {};
    std::string tag(TagBegin);
    tag.append(HeaderTable[index].name).append(TagEnd);
    std::string line(HeaderRecordStart);
    // A NUL would end the line for every reader: the value ends there.
    value = value.substr(0, value.find('\0'));
    line += value.substr(0, HeaderRecordSize - line.size() - tag.size());
    return line + tag;
}

std::array<std::uint8_t, HeaderRecordSize> MakeHeaderRecord(std::string_view line) {
    std::array<std::uint8_t, HeaderRecordSize> record{};
    std::copy_n(line.begin(), std::min(line.size(), record.size()), record.begin());
    return record;
}

bool BeginsHeaderRecord(ByteSpan bytes) {
    return BeginsWith(bytes, HeaderRecordStart);
}

// The last " (" begins the tag: values may hold parentheses, tags do not.
std::optional<HeaderRecord> ParseHeaderRecord(ByteSpan record) {
    if (record.size() < HeaderRecordSize || !BeginsHeaderRecord(record))
        return {};
    std::string_view line = AsText(record.first(HeaderRecordSize));
    line = line.substr(0, line.find('\0'));
    std::size_t tagBegin = line.rfind(TagBegin);
    if (!line.ends_with(TagEnd) || tagBegin == std::string_view::npos ||
        tagBegin < HeaderRecordStart.size())
        return {};
    HeaderRecord parsed;
    parsed.value = line.substr(HeaderRecordStart.size(), tagBegin - HeaderRecordStart.size());
    tagBegin += TagBegin.size();
    parsed.tag = line.substr(tagBegin, line.size() - TagEnd.size() - tagBegin);
    return parsed;
}

std::array<std::uint8_t, TimeTagSize> MakeTimeTag(const FrameTime& time) {
    CalendarTime local = LocalCalendar(time);
    std::array<std::uint8_t, TimeTagSize> tag{};
    std::span<std::uint8_t> bytes(tag);
    const int date = local.year * 1000 + local.dayOfYear;
    const int clock = local.hour * 10000000 + local.minute * 100000 + local.second * 1000;
    PutBigEndian(static_cast<std::uint64_t>(date), bytes.first(3));
    PutBigEndian(static_cast<std::uint64_t>(clock) + time.milliseconds, bytes.subspan(3));
    return tag;
}

std::optional<FrameTime> ParseTimeTag(ByteSpan tag) {
    return CTimeTagReader().Read(tag);
}

bool MayBeginTimeTag(std::uint8_t first) {
    return first >= FirstTagYear * 1000 >> 16 && first <= (LastTagYear * 1000 + 366) >> 16;
}

std::optional<FrameTime> CTimeTagReader::Read(ByteSpan tag) {
    if (tag.size() < TimeTagSize)
        return {};
    auto date = static_cast<std::uint32_t>(GetBigEndian(tag.first<3>()));
    if (date != Date || Date == 0) {
        std::uint32_t year = date / 1000;
        std::uint32_t day = date % 1000;
        if (year < FirstTagYear || year > LastTagYear || day < 1 || day > DaysInYear(year))
            return {};
        DayStart = SecondsFromCalendar(static_cast<int>(year), 1, static_cast<int>(day), 0, 0, 0);
        Date = date;
    }
    auto digits = static_cast<std::uint32_t>(GetBigEndian(tag.subspan<3, 4>()));
    std::uint32_t minutes = digits / 100000;
    std::uint32_t hour = minutes / 100;
    std::uint32_t minute = minutes - hour * 100;
    std::uint32_t milliseconds = digits - minutes * 100000;
    std::uint32_t second = milliseconds / 1000;
    milliseconds -= second * 1000;
    if (hour > 23 || minute > 59 || second > 59)
        return {};
    FrameTime time;
    const std::uint32_t secondOfDay = hour * 3600 + minute * 60 + second;
    time.seconds = DayStart + secondOfDay;
    time.milliseconds = static_cast<std::uint16_t>(milliseconds);
    time.known = true;
    return time;
}

std::string MakeTimeStamp(const CalendarTime& local) {
    return FormatTime("$PCZDA,%H%M%S.00,%d,%m,%Y,,\r\n", local);
}

std::optional<std::size_t> TimeStampLength(ByteSpan bytes) {
    std::size_t known = std::min(bytes.size(), TimeStampStart.size());
    if (!BeginsWith(bytes, TimeStampStart.substr(0, known)))
        return 0;
    std::string_view text = AsText(bytes.first(std::min(bytes.size(), MaxTimeStampSize)));
    std::size_t end = text.find(LineEnd);
    if (end != std::string_view::npos)
        return end + LineEnd.size();
    if (text.size() == MaxTimeStampSize)
        return 0;
    return {};
}

std::optional<FrameTime> ParseTimeStamp(std::string_view sentence) {
    if (sentence.ends_with(LineEnd))
        sentence.remove_suffix(LineEnd.size());
    if (!HasForm(sentence, TimeStampForm))
        return {};
    CalendarTime local;
    local.hour = Number(sentence.substr(7, 2));
    local.minute = Number(sentence.substr(9, 2));
    local.second = Number(sentence.substr(11, 2));
    local.day = Number(sentence.substr(17, 2));
    local.month = Number(sentence.substr(20, 2));
    local.year = Number(sentence.substr(23, 4));
    if (!Exists(local))
        return {};
    FrameTime time;
    time.seconds = SecondsFromCalendar(local.year, local.month, local.day, local.hour, local.minute,
                                       local.second);
    time.milliseconds = static_cast<std::uint16_t>(Number(sentence.substr(14, 2)) * 10);
    time.known = true;
    return time;
}

std::optional<int> MinutesOfOffset(std::string_view text) {
    if (text.size() != 6 || (text[0] != '+' && text[0] != '-') || text[3] != ':' ||
        !IsDigit(text[1]) || !IsDigit(text[2]) || !IsDigit(text[4]) || !IsDigit(text[5]))
        return std::nullopt;
    const int hours = (text[1] - '0') * 10 + text[2] - '0';
    const int minutes = (text[4] - '0') * 10 + text[5] - '0';
    if (hours > 14 || minutes > 59)
        return std::nullopt;
    return (text[0] == '-' ? -1 : 1) * (hours * 60 + minutes);
}

std::optional<int> MinutesOfZone(std::string_view text) {
    text = Trim(text);
    const bool zulu = EqualsNoCase(text, "Z");
    const std::string_view start = text.substr(0, 3);
    const bool universal = EqualsNoCase(start, "UTC") || EqualsNoCase(start, "GMT");
    text = Trim(zulu ? std::string_view() : universal ? text.substr(3) : text);
    if (text.empty())
        return zulu || universal ? std::optional(0) : std::nullopt;
    std::string digits;
    for (char c : text.substr(1))
        if (c != ':' || digits.size() > 2)
            digits += c;
        else if (digits.size() == 1)
            digits.insert(0, "0");
    if (digits.size() == 1)
        digits.insert(0, "0");
    if (digits.size() == 2)
        digits += "00";
    if (digits.size() != 4)
        return std::nullopt;
    return MinutesOfOffset(text[0] + digits.substr(0, 2) + ":" + digits.substr(2));
}

} // namespace qor
