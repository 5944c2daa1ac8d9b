// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/RawLogMaker.h"

#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

/// The records of a session without roles and options, in file order. TIME-STAMP, COMMENT and ZONE
/// are filled in.
struct HeaderRow {
    HeaderTag tag;
    std::string_view value;
};
constexpr HeaderRow HeaderRows[] = {
    {HeaderTag::CruiseId, "SIMULATED"},
    {HeaderTag::Operator, ""},
    {HeaderTag::Latitude, ""},
    {HeaderTag::Longitude, ""},
    {HeaderTag::Zone, ""},
    {HeaderTag::Comment, ""},
    {HeaderTag::StationId, ""},
    {HeaderTag::Cast, ""},
    {HeaderTag::TimeStamp, ""},
    {HeaderTag::Mode, "NONE"},
    {HeaderTag::PressureTare, "OFF"},
    {HeaderTag::TimeTag, "OFF"},
    {HeaderTag::DateTag, "ON"},
    {HeaderTag::TimeTag2, "ON"},
    {HeaderTag::Profiler, "OFF"},
    {HeaderTag::Reference, "OFF"},
    {HeaderTag::ProDark, "OFF"},
    {HeaderTag::RefDark, "OFF"},
};

void AppendRecord(HeaderTag tag, std::string_view value, std::vector<std::uint8_t>& bytes) {
    const auto record = MakeHeaderRecord(FormatHeaderLine(static_cast<int>(tag), value));
    bytes.insert(bytes.end(), record.begin(), record.end());
}

} // namespace

std::vector<std::uint8_t> CRawLogMaker::HeaderBlock(std::string_view comment) const {
    const std::string begun = FormatTime("%a %b %d %H:%M:%S %Y", LocalCalendar(Begin));
    const std::string zone = UtcOffsetText(Begin.utcOffsetMinutes);
    std::vector<std::uint8_t> bytes;
    for (const HeaderRow& row : HeaderRows)
        AppendRecord(row.tag,
                     row.tag == HeaderTag::Comment     ? comment
                     : row.tag == HeaderTag::TimeStamp ? std::string_view(begun)
                     : row.tag == HeaderTag::Zone      ? std::string_view(zone)
                                                       : row.value,
                     bytes);
    for (const CInstrument* instrument : Untagged)
        AppendRecord(HeaderTag::Nmea, instrument->SyncHeader(), bytes);
    return bytes;
}

void CRawLogMaker::Append(const SimulatedFrame& frame, std::vector<std::uint8_t>& bytes) const {
    bytes.insert(bytes.end(), frame.noise.begin(), frame.noise.end());
    bytes.insert(bytes.end(), frame.bytes.begin(), frame.bytes.end());
    if (frame.bytes.empty() || std::ranges::find(Untagged, frame.instrument) != Untagged.end())
        return;
    const auto tag = MakeTimeTag(TimeAfter(Begin, frame.seconds));
    bytes.insert(bytes.end(), tag.begin(), tag.end());
}

FrameTime TimeAfter(const FrameTime& begin, double seconds) {
    FrameTime time = begin;
    const std::int64_t milliseconds = std::llround(seconds * 1000.0) + begin.milliseconds;
    time.seconds += milliseconds / 1000;
    time.milliseconds = static_cast<std::uint16_t>(milliseconds % 1000);
    return time;
}

} // namespace qor
