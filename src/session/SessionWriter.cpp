// SPDX-License-Identifier: GPL-3.0-or-later
//
// From the records to a session file's bytes: a tree with every member in its place, then its one
// layout. Of resources, instruments and packages only what is said stands in the file; all else
// always, so that a person finds it.
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/WholeFile.h"
#include "session/InstrumentRole.h"
#include "session/SessionFields.h"
#include "session/SessionFile.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"

namespace qor {

namespace {

void AddUnknown(JsonValue& object, const JsonValue& unknown) {
    for (std::size_t i = 0; i < unknown.names.size(); ++i)
        object.Add(unknown.names[i], unknown.elements[i]);
}

JsonValue PathValue(const std::string& folder, const std::string& path) {
    return JsonValue::Text(path.empty() ? path : StoredPath(folder, path));
}

JsonValue SpanValue(const std::optional<LogSpan>& span) {
    return span ? JsonValue::Text(SpanText(*span)) : JsonValue();
}

void AddSettings(JsonValue& object, const InstrumentRecord& instrument) {
    if (instrument.title)
        object.Add("title", JsonValue::Text(*instrument.title));
    JsonValue roles = JsonValue::Array();
    for (const InstrumentRole role : instrument.roles)
        roles.elements.push_back(JsonValue::Text(std::string(RowOf(role).name)));
    if (!roles.elements.empty())
        object.Add("roles", std::move(roles));
    for (const InstrumentFlag& field : InstrumentFlags)
        if (const std::optional<bool>& flag = instrument.*field.flag)
            object.Add(field.name, JsonValue::Truth(*flag));
    AddUnknown(object, instrument.unknown);
}

JsonValue InstrumentTree(const std::string& folder, const InstrumentRecord& instrument) {
    JsonValue object = JsonValue::Object();
    object.Add("definition", PathValue(folder, instrument.definition));
    AddSettings(object, instrument);
    return object;
}

JsonValue PackageTree(const std::string& folder, const PackageRecord& package) {
    JsonValue object = JsonValue::Object();
    object.Add("file", PathValue(folder, package.file));
    for (const PackageNumber& field : PackageNumbers)
        if (const std::optional<double>& number = package.*field.number)
            object.Add(field.name, JsonValue::Number(*number));
    JsonValue members = JsonValue::Object();
    for (const InstrumentRecord& instrument : package.instruments) {
        JsonValue member = JsonValue::Object();
        AddSettings(member, instrument);
        members.Add(instrument.definition, std::move(member));
    }
    if (!members.elements.empty())
        object.Add("instruments", std::move(members));
    AddUnknown(object, package.unknown);
    return object;
}

JsonValue ResourceTree(const std::string& folder, const ResourceRecord& resource) {
    JsonValue object = JsonValue::Object();
    if (resource.IsFile())
        object.Add("file", PathValue(folder, resource.file));
    else
        object.Add("port", JsonValue::Text(resource.port));
    if (resource.baud)
        object.Add("baud", JsonValue::Number(*resource.baud));
    if (resource.format)
        object.Add("format", JsonValue::Text(LineFormatText(*resource.format)));
    if (resource.reconnect)
        object.Add("reconnect", JsonValue::Truth(true));
    JsonValue instruments = JsonValue::Array(), packages = JsonValue::Array();
    for (const InstrumentRecord& instrument : resource.instruments)
        instruments.elements.push_back(InstrumentTree(folder, instrument));
    for (const PackageRecord& package : resource.packages)
        packages.elements.push_back(PackageTree(folder, package));
    if (!instruments.elements.empty())
        object.Add("instruments", std::move(instruments));
    if (!packages.elements.empty())
        object.Add("packages", std::move(packages));
    AddUnknown(object, resource.unknown);
    return object;
}

JsonValue StationTree(const SessionRecord& session) {
    JsonValue object = JsonValue::Object();
    for (const StationText& field : StationTexts)
        object.Add(field.name, JsonValue::Text(session.station.*field.text));
    AddUnknown(object, session.unknownOfStation);
    return object;
}

JsonValue LogTree(const std::string& folder, const LogRecord& log) {
    JsonValue object = JsonValue::Object();
    object.Add("directory", PathValue(folder, log.directory));
    object.Add("naming", JsonValue::Text(std::string(NamingName(log.naming))));
    object.Add("name", JsonValue::Text(log.name));
    object.Add("sequence", JsonValue::Number(log.sequence));
    object.Add("time-stamps", JsonValue::Truth(log.timeStamps));
    object.Add("gps-header", JsonValue::Truth(log.gpsHeader));
    object.Add("duration", SpanValue(log.duration));
    object.Add("repeat", SpanValue(log.repeat));
    if (log.every)
        object.Add("every", SpanValue(log.every));
    object.Add("session-log", JsonValue::Truth(log.sessionLog));
    object.Add("session-log-directory", PathValue(folder, log.sessionLogDirectory));
    AddUnknown(object, log.unknown);
    return object;
}

JsonValue SessionTree(const std::string& folder, const SessionRecord& session) {
    JsonValue root = JsonValue::Object();
    root.Add(SessionVersionName, JsonValue::Number(SessionVersion));
    root.Add("title", JsonValue::Text(session.title));
    JsonValue resources = JsonValue::Array();
    for (const ResourceRecord& resource : session.resources)
        resources.elements.push_back(ResourceTree(folder, resource));
    root.Add("resources", std::move(resources));
    root.Add("station", StationTree(session));
    root.Add("log", LogTree(folder, session.log));
    root.Add("pressure-tare",
             session.pressureTare ? JsonValue::Number(*session.pressureTare) : JsonValue());
    root.Add("calibration-mode", JsonValue::Truth(session.calibrationMode));
    root.Add("windows", session.windows);
    AddUnknown(root, session.unknown);
    return root;
}

/// Where a text stands that is no UTF-8; empty when there is none. Such a path exists on POSIX.
std::string PlaceOfBadText(const JsonValue& value, const std::string& place) {
    if (value.kind == JsonValue::Kind::Text && !IsUtf8(value.text))
        return place;
    for (std::size_t i = 0; i < value.elements.size(); ++i) {
        const bool named = value.kind == JsonValue::Kind::Object;
        const std::string at = named ? MemberPlace(place, value.names[i]) : ElementPlace(place, i);
        if (named && !IsUtf8(value.names[i]))
            return at;
        if (std::string bad = PlaceOfBadText(value.elements[i], at); !bad.empty())
            return bad;
    }
    return {};
}

} // namespace

SessionWriting WriteSession(const SessionRecord& session, const std::string& path) {
    const JsonValue tree = SessionTree(SessionFolder(path), session);
    if (const std::string place = PlaceOfBadText(tree, {}); !place.empty())
        return {{},
                path + ": " + place + ": give a name in UTF-8; no session file can hold another."};
    std::string bytes = WriteJson(tree);
    std::string refusal = ReadSession(bytes, path).refusal;
    if (!refusal.empty())
        bytes.clear();
    return {std::move(bytes), std::move(refusal)};
}

std::string SaveSession(const SessionRecord& session, const std::string& path) {
    const SessionWriting written = WriteSession(session, path);
    if (!written.refusal.empty())
        return written.refusal;
    const FileCause cause = WriteWholeFile(path, written.bytes);
    if (cause == FileCause::None)
        return {};
    return path + ": cannot be saved. " + std::string(GetFileErrorText(cause));
}

} // namespace qor
