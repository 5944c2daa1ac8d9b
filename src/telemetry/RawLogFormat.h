// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bytes of a raw log beside the frames themselves, made and read in this one room: header
// records, time tags, time-stamp sentences.
#pragma once

#include "base/Bytes.h"
#include "platform/Clock.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace qor {

inline constexpr std::size_t HeaderRecordSize = 128;
inline constexpr std::size_t TimeTagSize = 7;
inline constexpr std::size_t MaxTimeStampSize =
    82; ///< the CR LF of a sentence stands within these bytes
inline constexpr std::string_view HeaderRecordStart = "QORHDR ";
inline constexpr std::string_view TimeStampStart = "$PCZDA,";

/// The header tags; RawLogFormat.cpp has a row for each.
enum class HeaderTag : int {
    CruiseId,
    Operator,
    Latitude,
    Longitude,
    Zone,
    Comment,
    StationId,
    Cast,
    TimeStamp,
    Mode,
    PressureTare,
    TimeTag,
    DateTag,
    TimeTag2,
    Profiler,
    Reference,
    ProDark,
    RefDark,
    ProId,
    RefId,
    TrkId,
    SqmId,
    DutId,
    Weather,
    Nmea
};

/// "QORHDR value (TAG)" CR LF, the value cut so that the line fits a record; empty when the index
/// is outside 0..24.
std::string FormatHeaderLine(int index, std::string_view value);
/// The line in a record filled up with NUL bytes.
std::array<std::uint8_t, HeaderRecordSize> MakeHeaderRecord(std::string_view line);

/// "UTC+13:00": what local times are ahead of UTC.
std::string UtcOffsetText(int minutes);

/// Minutes of "+13:00" or "-03:30"; empty when the text is no offset of a zone.
std::optional<int> MinutesOfOffset(std::string_view text);

/// The same of a log's ZONE record as people write it: "UTC+13:00", "GMT", "-0330", "UTC+1"; empty
/// for the name of a zone.
std::optional<int> MinutesOfZone(std::string_view text);

/// A header record's tag name and value.
struct HeaderRecord {
    std::string tag;
    std::string value;
};
/// Reads one record; empty when the bytes do not begin a well-formed one.
std::optional<HeaderRecord> ParseHeaderRecord(ByteSpan record);
/// True when the bytes begin a header record.
bool BeginsHeaderRecord(ByteSpan bytes);

/// The time tag of a moment in its local time.
std::array<std::uint8_t, TimeTagSize> MakeTimeTag(const FrameTime& time);
/// The local time that a tag says, as a FrameTime with offset 0; empty unless it is a tag (year
/// 1970 to 2199; a day, hour, minute, second and millisecond that exist).
std::optional<FrameTime> ParseTimeTag(ByteSpan tag);

/// False when no tag begins with the byte: the quick test for most places.
bool MayBeginTimeTag(std::uint8_t first);

/// Reads the tags of a log one after another, working out each date only once.
class CTimeTagReader {
  public:
    /// As ParseTimeTag.
    std::optional<FrameTime> Read(ByteSpan tag);

  private:
    std::uint32_t Date = 0; ///< the tag's date number that DayStart belongs to; 0 = none
    std::int64_t DayStart = 0;
};

/// "$PCZDA,HHMMSS.00,DD,MM,YYYY,," CR LF of a local time.
std::string MakeTimeStamp(const CalendarTime& local);
/// Length of the time-stamp sentence at the start of the bytes, CR LF included; 0 when there is
/// none (its CR LF does not come within MaxTimeStampSize), empty when more bytes are needed to
/// tell.
std::optional<std::size_t> TimeStampLength(ByteSpan bytes);
/// The local time of a sentence, as a FrameTime with offset 0; empty when malformed.
std::optional<FrameTime> ParseTimeStamp(std::string_view sentence);

} // namespace qor
