// SPDX-License-Identifier: GPL-3.0-or-later
//
// The records of the header block, as a table in file order: each row gives its values, none, one
// or several. See LogHeader.h.
#include "session/LogHeader.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "telemetry/RawLogFormat.h"

#include <optional>

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
    auto resource = static_cast<std::size_t>(session.Role(InstrumentRole::Gps).resource);
    for (const auto& instrument : session.Resources[resource]->Instruments)
        if (instrument->Definition().SyncHeader().starts_with('$'))
            sentences.push_back(instrument->Definition().SyncHeader());
    return sentences;
}

struct HeaderRow {
    HeaderTag tag;
    Values values;
};

/// All rows in file order, which differs from the order of the tags.
std::vector<HeaderRow> HeaderRows(const SessionState& session, const CalendarTime& local)
    REQUIRES(session.DocLock) {
    const StationInformation& station = session.Station;
    const bool profiler = session.Role(InstrumentRole::Profiler).Assigned();
    const bool weather = session.Role(InstrumentRole::WeatherStation).Assigned();
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
        {HeaderTag::PressureTare, {profiler ? Format("%f", session.PressureTare) : "OFF"}},
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

} // namespace

bool RefreshPosition(SessionState& session) {
    const CQorViewIns* gps = session.RoleInstrument(InstrumentRole::Gps);
    if (!session.Options.gpsHeaderEnabled || !gps || !gps->Live.CurrentFrame())
        return false;
    bool latitude = false, longitude = false;
    for (const CSensor& sensor : gps->Definition().Sensors()) {
        std::optional<Coordinate> found = ReadCoordinate(sensor, gps->Live.CurrentFrame()->Span());
        if (!found)
            continue;
        bool isLatitude = found->hemisphere == 'N' || found->hemisphere == 'S';
        (isLatitude ? latitude : longitude) = true;
        (isLatitude ? session.Station.latitude : session.Station.longitude) =
            Format("%s %c", found->text.c_str(), found->hemisphere);
    }
    return latitude && longitude;
}

std::vector<std::string> HeaderLines(const SessionState& session, const CalendarTime& local) {
    std::vector<std::string> lines;
    for (const HeaderRow& row : HeaderRows(session, local))
        for (const std::string& value : row.values)
            lines.push_back(FormatHeaderLine(static_cast<int>(row.tag), value));
    return lines;
}

} // namespace qor
