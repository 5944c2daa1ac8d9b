// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/LogManifest.h"

#include "base/Sha256.h"
#include "base/Text.h"
#include "platform/WholeFile.h"
#include "session/FileKind.h"
#include "session/JsonValue.h"
#include "session/SessionPath.h"

#include <algorithm>
#include <array>

namespace qor {

namespace {

constexpr const char* VersionName = "qorview-manifest";
constexpr std::size_t LargestManifest = std::size_t{4} << 20;

JsonValue CountValue(const std::optional<std::uint64_t>& count) {
    return count ? JsonValue::Number(static_cast<double>(*count)) : JsonValue();
}

/// A text whose bytes are no UTF-8 is taken byte by byte, as everywhere in JSON.
JsonValue TextValue(const std::string& text) {
    return JsonValue::Text(IsUtf8(text) ? text : Utf8Of(text));
}

JsonValue TextOrNull(const std::string& text) {
    return text.empty() ? JsonValue() : TextValue(text);
}

std::string TimeOf(const CalendarTime& time, const FrameTime& moment) {
    return FormatTime("%Y-%m-%dT%H:%M:%S", time) +
           Format(".%03d", static_cast<int>(moment.milliseconds));
}

JsonValue TimeValue(const FrameTime& time, bool zoneKnown) {
    JsonValue object = JsonValue::Object();
    const bool utc = time.known && zoneKnown;
    object.Add("utc", utc ? JsonValue::Text(TimeOf(CalendarFromSeconds(time.seconds), time) + "Z")
                          : JsonValue());
    object.Add("local",
               time.known ? JsonValue::Text(TimeOf(LocalCalendar(time), time)) : JsonValue());
    return object;
}

std::string ZoneText(const FrameTime& time) {
    const int minutes = time.utcOffsetMinutes < 0 ? -time.utcOffsetMinutes : time.utcOffsetMinutes;
    return Format("%c%02d:%02d", time.utcOffsetMinutes < 0 ? '-' : '+', minutes / 60, minutes % 60);
}

void AddSource(JsonValue& object, const char* name, const ManifestSource& source,
               const std::string& folder) {
    object.Add(name,
               source.path.empty() ? JsonValue() : TextValue(StoredPath(folder, source.path)));
    object.Add("sha256", TextOrNull(source.sha256));
}

JsonValue InstrumentValue(const LogManifest::Instrument& instrument, const std::string& folder) {
    JsonValue object = JsonValue::Object();
    object.Add("name", JsonValue::Text(Utf8Of(instrument.name)));
    AddSource(object, instrument.member.empty() ? "definition" : "package", instrument.source,
              folder);
    if (!instrument.member.empty())
        object.Add("member", TextValue(instrument.member));
    object.Add("received", CountValue(instrument.received));
    object.Add("logged", CountValue(instrument.logged));
    object.Add("dropped", CountValue(instrument.dropped));
    object.Add("checksum-errors", CountValue(instrument.checksumErrors));
    return object;
}

JsonValue PortValue(const LogManifest::Port& port, const std::string& folder) {
    JsonValue object = JsonValue::Object();
    object.Add("port", TextOrNull(port.name));
    object.Add("line", TextOrNull(port.line));
    object.Add("bytes-received", CountValue(port.bytesReceived));
    object.Add("bytes-discarded", CountValue(port.bytesDiscarded));
    object.Add("bytes-cut-short", CountValue(port.bytesCutShort));
    object.Add("frames-lost", CountValue(port.framesLost));
    JsonValue instruments = JsonValue::Array();
    for (const LogManifest::Instrument& instrument : port.instruments)
        instruments.elements.push_back(InstrumentValue(instrument, folder));
    object.Add("instruments", std::move(instruments));
    return object;
}

JsonValue StepValue(const ClockStep& step) {
    JsonValue object = TimeValue(step.after, true);
    object.Add("seconds", JsonValue::Number(static_cast<double>(step.milliseconds) / 1000.0));
    object.Add("of", JsonValue::Text(step.ofZone ? "zone" : "clock"));
    return object;
}

/// A text member of an object, or empty.
std::string TextIn(const JsonValue& object, std::string_view name) {
    const JsonValue* value = object.Member(name);
    return value && value->kind == JsonValue::Kind::Text ? value->text : std::string();
}

std::optional<std::uint64_t> CountIn(const JsonValue& object, std::string_view name) {
    const JsonValue* value = object.Member(name);
    const std::optional<double> number =
        value && value->kind == JsonValue::Kind::Number ? value->AsNumber() : std::nullopt;
    if (!number || !(*number >= 0.0) || *number > 9e15)
        return {};
    return static_cast<std::uint64_t>(*number);
}

std::span<const JsonValue> ElementsIn(const JsonValue& object, std::string_view name) {
    const JsonValue* value = object.Member(name);
    return value && value->kind == JsonValue::Kind::Array ? std::span(value->elements)
                                                          : std::span<const JsonValue>();
}

/// 64 hexadecimal digits, or empty.
std::string HashIn(const JsonValue& object) {
    std::string hash = TextIn(object, "sha256");
    const bool right =
        hash.size() == 64 && hash.find_first_not_of("0123456789abcdef") == std::string::npos;
    return right ? hash : std::string();
}

ManifestSource SourceIn(const JsonValue& object, std::string_view name, const std::string& folder) {
    const std::string stored = TextIn(object, name);
    std::string path = stored.empty() ? stored : ResolvedPath(folder, stored);
    if (LeadsToServer(folder, path) || path.find('\0') != std::string::npos)
        path.clear();
    return {std::move(path), HashIn(object)};
}

/// A text of code points below 256 as the bytes that they stand for.
std::string BytesOfName(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const bool two = (lead == 0xC2 || lead == 0xC3) && i + 1 < text.size();
        bytes += two ? static_cast<char>(lead << 6 | (text[++i] & 0x3F)) : static_cast<char>(lead);
    }
    return bytes;
}

LogManifest::Instrument InstrumentIn(const JsonValue& object, const std::string& folder) {
    LogManifest::Instrument instrument;
    instrument.name = BytesOfName(TextIn(object, "name"));
    instrument.member = TextIn(object, "member");
    instrument.source =
        SourceIn(object, instrument.member.empty() ? "definition" : "package", folder);
    instrument.received = CountIn(object, "received");
    instrument.logged = CountIn(object, "logged");
    instrument.dropped = CountIn(object, "dropped");
    instrument.checksumErrors = CountIn(object, "checksum-errors");
    return instrument;
}

std::optional<ClockStep> StepIn(const JsonValue& object) {
    const JsonValue* number = object.Member("seconds");
    const std::optional<double> seconds =
        number && number->kind == JsonValue::Kind::Number ? number->AsNumber() : std::nullopt;
    const std::optional<std::int64_t> local =
        SecondsFromText(TextIn(object, "local").substr(0, sizeof "2026-06-21T12:00:00" - 1));
    if (!seconds || !local || !(*seconds > -1e12 && *seconds < 1e12))
        return {};
    ClockStep step;
    step.after.seconds = *local; // local time, as tags are read
    step.after.known = true;
    step.milliseconds = static_cast<std::int64_t>(*seconds * 1000.0);
    step.ofZone = TextIn(object, "of") == "zone";
    return step;
}

/// The name of the log within its folder, unpacked.
std::string LogNameOf(const std::string& rawLog) {
    std::string name(LastPartOf(rawLog));
    for (const std::string_view packed : {".gz", ".zst"})
        if (name.size() > packed.size() && name.ends_with(packed))
            name.resize(name.size() - packed.size());
    return name;
}

} // namespace

std::string ManifestPathOf(const std::string& rawLog) {
    return std::string(FolderPartOf(rawLog)) + LogNameOf(rawLog) + ".json";
}

std::string ManifestText(const LogManifest& manifest, const std::string& folder) {
    JsonValue object = JsonValue::Object();
    object.Add(VersionName, JsonValue::Number(1));
    object.Add("log", TextValue(manifest.log));
    object.Add("size", JsonValue::Number(static_cast<double>(manifest.size)));
    object.Add("sha256", JsonValue::Text(manifest.sha256));
    object.Add("program", TextOrNull(manifest.program));
    object.Add("repaired", JsonValue::Truth(manifest.repaired));
    object.Add("begin", TimeValue(manifest.begin, manifest.zoneKnown));
    object.Add("end", TimeValue(manifest.end, manifest.zoneKnown));
    object.Add("time-zone",
               manifest.zoneKnown ? JsonValue::Text(ZoneText(manifest.begin)) : JsonValue());
    JsonValue steps = JsonValue::Array(), ports = JsonValue::Array();
    for (const ClockStep& step : manifest.steps)
        steps.elements.push_back(StepValue(step));
    object.Add("clock-steps", std::move(steps));
    object.Add("frames-unstored", CountValue(manifest.framesUnstored));
    JsonValue session;
    if (!manifest.session.path.empty()) {
        session = JsonValue::Object();
        AddSource(session, "file", manifest.session, folder);
    }
    object.Add("session", std::move(session));
    for (const LogManifest::Port& port : manifest.ports)
        ports.elements.push_back(PortValue(port, folder));
    object.Add("ports", std::move(ports));
    return WriteJson(object);
}

ManifestReading ReadManifest(std::string_view bytes, const std::string& folder) {
    ManifestReading reading;
    const JsonReading json = ReadJson(bytes);
    const JsonValue& object = json.value;
    const auto version = json.fault.empty() && object.kind == JsonValue::Kind::Object
                             ? CountIn(object, VersionName)
                             : std::nullopt;
    LogManifest& manifest = reading.manifest;
    manifest.log = TextIn(object, "log");
    manifest.sha256 = HashIn(object);
    const std::optional<std::uint64_t> size = CountIn(object, "size");
    if (!json.fault.empty())
        reading.fault = json.fault;
    else if (!version)
        reading.fault = "it is no manifest of a raw log.";
    else if (*version != 1)
        reading.fault = "it was written by a newer version.";
    else if (manifest.log.empty() || manifest.sha256.empty() || !size)
        reading.fault = "it does not say which bytes its log had.";
    if (!reading.fault.empty())
        return reading;
    manifest.size = *size;
    for (const JsonValue& step : ElementsIn(object, "clock-steps"))
        if (const std::optional<ClockStep> known = StepIn(step))
            manifest.steps.push_back(*known);
    for (const JsonValue& port : ElementsIn(object, "ports")) {
        manifest.ports.emplace_back().name = TextIn(port, "port");
        for (const JsonValue& instrument : ElementsIn(port, "instruments"))
            manifest.ports.back().instruments.push_back(InstrumentIn(instrument, folder));
    }
    return reading;
}

ManifestReading LoadManifest(const std::string& rawLog, bool& there) {
    const std::string path = ManifestPathOf(rawLog);
    there = FileExists(path);
    std::string bytes;
    const FileCause cause =
        IsDevice(path) ? FileCause::InvalidFile : ReadWholeFile(path, LargestManifest, bytes);
    if (cause != FileCause::None)
        return {{}, std::string(GetFileErrorText(cause))};
    ManifestReading reading = ReadManifest(bytes, SessionFolder(path));
    if (reading.fault.empty() && reading.manifest.log != LogNameOf(rawLog))
        reading.fault = "it is the manifest of " + Quoted(reading.manifest.log) + ".";
    return reading;
}

std::string SaveManifest(const LogManifest& manifest, const std::string& rawLog) {
    const std::string path = ManifestPathOf(rawLog);
    const std::string begin = path + ": the manifest could not be written: ";
    if (IsSymbolicLink(path))
        return begin + "its name is that of a symbolic link.";
    bool there = false;
    const ManifestReading earlier = LoadManifest(rawLog, there);
    if (there && !earlier.fault.empty())
        return begin + "another file has its name (" + earlier.fault + ") Move that away.";
    const FileCause cause = WriteWholeFile(path, ManifestText(manifest, SessionFolder(path)));
    return cause == FileCause::None ? "" : begin + std::string(GetFileErrorText(cause));
}

std::string Sha256OfFile(const std::string& path) {
    CFile file;
    if (IsDevice(path) || file.OpenForReading(path) != FileCause::None)
        return {};
    CSha256 hash;
    std::array<std::uint8_t, 65536> buffer{};
    for (std::size_t got = 1; got > 0;) {
        if (file.Read(buffer, got) != FileCause::None)
            return {};
        hash.Update(ByteSpan(buffer).first(got));
    }
    return hash.Digits();
}

} // namespace qor
