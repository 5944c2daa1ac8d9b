// SPDX-License-Identifier: GPL-3.0-or-later
//
// The records of the header block, as a table in file order: each row gives its values, none, one
// or several. See LogHeader.h.
#include "session/LogHeader.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "session/PressureTare.h"
#include "telemetry/RawLogFormat.h"

namespace qor {
namespace {

/// A coordinate text and the letter of its hemisphere.
struct Coordinate {
    std::string text;
    char hemisphere;
};

/// The hemisphere that follows a coordinate among the sensors, before the next coordinate.
std::optional<char> HemisphereAfter(const CSensor& coordinate, ByteSpan frame) {
    const CInstrument& instrument = *coordinate.Instrument;
    for (std::int32_t i = coordinate.Index + 1; const CSensor* sensor = instrument.Sensor(i); ++i) {
        if (sensor->Fit == FitType::DDMM)
            return std::nullopt;
        std::string text;
        if (KindOfValue(*sensor) != ValueKind::Text ||
            ValueText(*sensor, frame, text) != ConversionStatus::Good)
            continue;
        std::string_view letter = Trim(text);
        if (letter.size() == 1 && std::string_view("NSEW").find(letter[0]) != std::string::npos)
            return letter[0];
    }
    return std::nullopt;
}

std::optional<Coordinate> ReadCoordinate(const CSensor& sensor, ByteSpan frame) {
    std::string text;
    if (sensor.Fit != FitType::DDMM || ValueText(sensor, frame, text) != ConversionStatus::Good)
        return std::nullopt;
    std::optional<char> hemisphere = HemisphereAfter(sensor, frame);
    if (!hemisphere)
        return std::nullopt;
    return Coordinate{text, *hemisphere};
}

using Values = std::vector<std::string>;

std::string ImmersionOf(const SessionState& session, InstrumentRole role)
    REQUIRES(session.DocLock) {
    const CQorViewIns* instrument = session.RoleInstrument(role);
    if (!instrument)
        return "OFF";
    return instrument->Live.Immersed ? "WET" : "DRY";
}

Values IdentifierOf(const SessionState& session, InstrumentRole role) REQUIRES(session.DocLock) {
    const CQorViewIns* instrument = session.RoleInstrument(role);
    return instrument ? Values{instrument->Name()} : Values{};
}

/// The sentences that arrive where the GPS instrument is: sync headers that begin with "$".
Values NmeaSentences(const SessionState& session) REQUIRES(session.DocLock) {
    Values sentences;
    if (!session.Options.gpsHeaderEnabled || !session.RoleInstrument(InstrumentRole::Gps))
        return sentences;
    const auto* owner = session.OwnerOf(session.Role(InstrumentRole::Gps));
    for (const auto& instrument : owner->resource->Instruments)
        if (instrument->Definition().SyncHeader().starts_with('$'))
            sentences.push_back(instrument->Definition().SyncHeader());
    return sentences;
}

struct HeaderRow {
    HeaderTag tag;
    Values values;
};

/// All rows in file order, which differs from the order of the tags.
std::vector<HeaderRow> HeaderRows(const SessionState& session, const StationInformation& station,
                                  const CalendarTime& local) REQUIRES(session.DocLock) {
    const bool profiler = session.Role(InstrumentRole::Profiler) != InstrumentId::None;
    const bool weather = session.Role(InstrumentRole::WeatherStation) != InstrumentId::None;
    return {
        {HeaderTag::CruiseId, {station.cruiseId}},
        {HeaderTag::Operator, {station.operatorName}},
        {HeaderTag::Latitude, {station.latitude}},
        {HeaderTag::Longitude, {station.longitude}},
        {HeaderTag::Zone, {station.zone}},
        {HeaderTag::Comment, {station.comment}},
        {HeaderTag::StationId, {station.stationId}},
        {HeaderTag::Cast, {station.cast}},
        {HeaderTag::TimeStamp, {FormatTime("%a %b %d %H:%M:%S %Y", local)}},
        {HeaderTag::Mode, {"NONE"}},
        {HeaderTag::PressureTare, {profiler ? FixedNumber(TareOfProfiler(session), 6) : "OFF"}},
        {HeaderTag::TimeTag, {"OFF"}},
        {HeaderTag::DateTag, {"ON"}},
        {HeaderTag::TimeTag2, {"ON"}},
        {HeaderTag::Nmea, session.Options.timeStampEnabled ? Values{"$PCZDA"} : Values{}},
        {HeaderTag::Profiler, {ImmersionOf(session, InstrumentRole::Profiler)}},
        {HeaderTag::Reference, {ImmersionOf(session, InstrumentRole::Reference)}},
        {HeaderTag::ProDark, {"OFF"}},
        {HeaderTag::RefDark, {"OFF"}},
        {HeaderTag::ProId, IdentifierOf(session, InstrumentRole::Profiler)},
        {HeaderTag::RefId, IdentifierOf(session, InstrumentRole::Reference)},
        {HeaderTag::TrkId, IdentifierOf(session, InstrumentRole::Tracker)},
        {HeaderTag::Weather, weather ? Values{"ON"} : Values{}},
        {HeaderTag::Nmea, NmeaSentences(session)},
        {HeaderTag::SqmId, IdentifierOf(session, InstrumentRole::SqmInstrument)},
        {HeaderTag::DutId, IdentifierOf(session, InstrumentRole::DeviceUnderTest)},
    };
}

constexpr std::int64_t OldestPosition = 60; // seconds

/// What the GPS instrument says, or why that may not stand in a header.
struct MeasuredPosition {
    std::optional<Coordinate> latitude, longitude;
    const char* refused = nullptr;
};

/// A receiver without a fix goes on sending: "V" as the status of RMC and GLL, quality 0 in GGA.
bool IsVoidFix(const CLiveInstrument& gps) {
    for (const CSensor& sensor : gps.Definition().Sensors()) {
        std::string text;
        const bool isText =
            KindOfValue(sensor) == ValueKind::Text && sensor.Fit != FitType::DDMM &&
            ValueText(sensor, gps.CurrentFrame()->Span(), text) == ConversionStatus::Good;
        if (isText && Trim(text) == "V")
            return true;
        const bool isQuality = ToLower(sensor.Type).find("qual") != std::string::npos;
        double quality = 1.0;
        if (isQuality && isText && Trim(text) == "0")
            return true;
        if (isQuality && gps.Value(sensor, quality) == ConversionStatus::Good && quality == 0.0)
            return true;
    }
    return false;
}

MeasuredPosition ReadPosition(const SessionState& session, const FrameTime& now)
    REQUIRES(session.DocLock) {
    MeasuredPosition position;
    const CQorViewIns* gps = session.RoleInstrument(InstrumentRole::Gps);
    const CFrameData* frame = gps ? gps->Live.CurrentFrame() : nullptr;
    if (!frame) {
        position.refused = "it has sent nothing yet";
        return position;
    }
    if (frame->Info.time.known && now.seconds - frame->Info.time.seconds > OldestPosition) {
        position.refused = "its latest position is older than a minute";
        return position;
    }
    if (IsVoidFix(gps->Live)) {
        position.refused = "its receiver has no fix";
        return position;
    }
    for (const CSensor& sensor : gps->Definition().Sensors())
        if (std::optional<Coordinate> found = ReadCoordinate(sensor, frame->Span())) {
            const bool isLatitude = found->hemisphere == 'N' || found->hemisphere == 'S';
            (isLatitude ? position.latitude : position.longitude) = found;
        }
    if (!position.latitude || !position.longitude)
        position.refused = "its latest frame gives none";
    return position;
}

} // namespace

bool HasPosition(const SessionState& session, const FrameTime& now) {
    return !ReadPosition(session, now).refused;
}

StationInformation StationAt(const SessionState& session, const FrameTime& now,
                             std::optional<Event>& kept) {
    kept.reset();
    StationInformation station = session.Station;
    if (station.zone.empty())
        station.zone = UtcOffsetText(now.utcOffsetMinutes);
    const CQorViewIns* gps = session.RoleInstrument(InstrumentRole::Gps);
    if (!session.Options.gpsHeaderEnabled || !gps)
        return station;
    const MeasuredPosition measured = ReadPosition(session, now);
    if (measured.refused)
        kept = {EventKind::PositionKept, gps->ShownName(),
                Format("The position in the log's header is not that of %s: %s.\r\n",
                       gps->ShownName().c_str(), measured.refused)};
    const auto put = [](const std::optional<Coordinate>& coordinate, std::string& text) {
        if (coordinate)
            text = Format("%s %c", coordinate->text.c_str(), coordinate->hemisphere);
    };
    put(measured.latitude, station.latitude);
    put(measured.longitude, station.longitude);
    return station;
}

std::vector<std::string> HeaderLines(const SessionState& session, const StationInformation& station,
                                     const CalendarTime& local) {
    std::vector<std::string> lines;
    for (const HeaderRow& row : HeaderRows(session, station, local))
        for (const std::string& value : row.values)
            lines.push_back(FormatHeaderLine(static_cast<int>(row.tag), value));
    return lines;
}

} // namespace qor
