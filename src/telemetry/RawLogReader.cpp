// SPDX-License-Identifier: GPL-3.0-or-later
//
// Header records stand at the front of a log and are read one by one; what follows is looked
// through a piece of the file at a time, in bounded memory whatever the file holds.
#include "telemetry/RawLogReader.h"

#include "base/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace qor {

namespace {

/// Decided: a header block has some twenty records; what a hostile file has beyond these many is
/// read over, not kept.
constexpr std::size_t MostRecords = 10'000;
constexpr std::size_t PieceSize = 1 << 18;

/// What the header writes as "%a %b %d %H:%M:%S %Y"; empty when it is no date.
std::optional<std::int64_t> ReadBeginTime(const std::string& text) {
    constexpr std::string_view months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    char name[4] = {};
    int day = 0, hour = 0, minute = 0, second = 0, year = 0;
    if (std::sscanf(text.c_str(), "%*3s %3s %2d %2d:%2d:%2d %4d", name, &day, &hour, &minute,
                    &second, &year) != 6)
        return {};
    std::size_t month = months.find(name);
    if (month == std::string_view::npos)
        return {};
    return SecondsFromCalendar(year, static_cast<int>(month / 3) + 1, day, hour, minute, second);
}

} // namespace

const std::string* RawLogHeader::ValueOf(std::string_view tag) const {
    const auto found = std::ranges::find(records, tag, &HeaderRecord::tag);
    return found == records.end() ? nullptr : &found->value;
}

std::optional<std::int64_t> RawLogHeader::BeginTime() const {
    for (const HeaderRecord& record : records)
        if (record.tag == "TIME-STAMP")
            if (std::optional<std::int64_t> time = ReadBeginTime(record.value))
                return time;
    return {};
}

std::optional<double> RawLogHeader::PressureTare() const {
    for (const HeaderRecord& record : records)
        if (record.tag == "PRESSURE-TARE")
            if (std::optional<double> tare = WholeNumber(Trim(record.value));
                tare && std::isfinite(*tare))
                return tare;
    return {};
}

std::optional<int> RawLogHeader::ZoneMinutes() const {
    const std::string* zone = ValueOf("ZONE");
    return zone ? MinutesOfZone(*zone) : std::nullopt;
}

FileCause CRawLogReader::Open(const std::string& path) {
    *this = {};
    FileCause cause = File.OpenForReading(path);
    if (cause == FileCause::None)
        cause = ReadHeaderBlock();
    Begin = Block.BeginTime();
    Read = Block.size + Piece.size();
    return cause;
}

FileCause CRawLogReader::ReadHeaderBlock() {
    std::array<std::uint8_t, HeaderRecordSize> record{};
    for (;; Block.size += HeaderRecordSize) {
        std::size_t filled = 0;
        for (std::size_t got = 1; got > 0 && filled < record.size(); filled += got)
            if (FileCause cause = File.Read(std::span(record).subspan(filled), got);
                cause != FileCause::None)
                return cause;
        if (filled < record.size() || !BeginsHeaderRecord(record)) {
            const ByteSpan rest = ByteSpan(record).first(filled);
            Block.torn =
                filled < record.size() &&
                (BeginsHeaderRecord(rest) ||
                 (Block.size > 0 && filled > 0 && HeaderRecordStart.starts_with(AsText(rest))));
            Piece.assign(rest.begin(), rest.end());
            return FileCause::None;
        }
        std::optional<HeaderRecord> parsed = ParseHeaderRecord(record);
        Block.malformed += parsed ? 0 : 1;
        if (parsed && Block.records.size() < MostRecords)
            Block.records.push_back(std::move(*parsed));
    }
}

/// The last of the records that every log has is missing.
bool CRawLogReader::EndsEarly() const {
    return Block.IsRawLog() && Block.ValueOf("REF-DARK") == nullptr;
}

FileCause CRawLogReader::ReadOn() {
    if (Ended)
        return FileCause::None;
    const std::size_t kept = Piece.size();
    std::size_t got = 0;
    Piece.resize(kept + PieceSize);
    FileCause cause = File.Read(std::span(Piece).subspan(kept), got);
    Piece.resize(kept + got);
    Read += got;
    Ended = got == 0;
    FindTimeTags();
    CountTimeStamps();
    return cause;
}

void CRawLogReader::FindTimeTags() {
    constexpr std::int64_t day = 86400, longest = 366 * day;
    if (!Begin || Piece.size() < TimeTagSize)
        return;
    auto find = [&](std::size_t place, FrameTime& found) {
        std::optional<FrameTime> time = ParseTimeTag(ByteSpan(Piece).subspan(place, TimeTagSize));
        if (!time || time->seconds < *Begin - day || time->seconds > *Begin + longest)
            return false;
        found = *time;
        return true;
    };
    const std::size_t places = Piece.size() - TimeTagSize + 1;
    for (std::size_t i = 0; !Seen.firstTag.known && i < places; ++i)
        find(i, Seen.firstTag);
    for (std::size_t i = places; i > 0 && !find(i - 1, Seen.lastTag);)
        --i;
}

/// Leaves in the piece what may be the beginning of a sentence or of a tag.
void CRawLogReader::CountTimeStamps() {
    constexpr std::size_t tail = TimeStampStart.size() - 1;
    static_assert(tail >= TimeTagSize - 1);
    std::string_view text = AsText(Piece);
    std::size_t place = 0;
    for (;;) {
        std::size_t found = text.find(TimeStampStart, place);
        if (found == std::string_view::npos) {
            place = text.size() - std::min(text.size() - place, tail);
            break;
        }
        if (!Ended && text.size() - found < MaxTimeStampSize) {
            place = found;
            break;
        }
        std::size_t length = TimeStampLength(ByteSpan(Piece).subspan(found)).value_or(0);
        if (std::optional<FrameTime> time = ParseTimeStamp(text.substr(found, length))) {
            if (Seen.timeStamps++ == 0)
                Seen.firstTimeStamp = *time;
            Seen.lastTimeStamp = *time;
        }
        place = found + std::max<std::size_t>(length, 1);
    }
    Piece.erase(Piece.begin(), Piece.begin() + static_cast<std::ptrdiff_t>(place));
}

RawLogHeader HeaderOf(const std::string& path) {
    CRawLogReader reader;
    if (IsDevice(path) || reader.Open(path) != FileCause::None)
        return {};
    return reader.Header();
}

} // namespace qor
