// SPDX-License-Identifier: GPL-3.0-or-later
//
// From a session file's bytes to the records. Every object is read through CObjectReader, which
// knows its place, lets the first fault win, and keeps what nobody asked for.
#include "base/TerminalText.h"
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/WholeFile.h"
#include "session/InstrumentRole.h"
#include "session/SessionFields.h"
#include "session/SessionFile.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace qor {

namespace {

constexpr std::size_t LongestText = 4096;
constexpr std::size_t UnknownMembersShown = 12;

/// What the objects of one file share.
struct FileReading {
    std::string folder;
    std::string refusal; ///< of the first fault: its place and what would be right
    std::vector<std::string> unknown;
    std::map<InstrumentRole, std::string> holders;
    std::map<std::string, std::string> ports;

    bool Refused() const { return !refusal.empty(); }
    void Refuse(const std::string& place, const std::string& what) {
        if (!Refused())
            refusal = place.empty() ? what : place + ": " + what;
    }
    /// Makes a text of the file the path of what is read when the session is opened.
    void Resolve(const std::string& place, std::string& path) {
        path = ResolvedPath(folder, path);
        if (LeadsToServer(folder, path))
            Refuse(place, "is on another computer; name a file of this one, or of the share that "
                          "the session is on.");
    }
};

std::string Described(const JsonValue& value) {
    switch (value.kind) {
    case JsonValue::Kind::Null:
        return "null";
    case JsonValue::Kind::Truth:
        return value.truth ? "true" : "false";
    case JsonValue::Kind::Number:
        return value.text.size() > 24 ? value.text.substr(0, 24) + "..." : value.text;
    case JsonValue::Kind::Text:
        return Quoted(value.text);
    case JsonValue::Kind::Array:
        return "an array";
    case JsonValue::Kind::Object:
        return "an object";
    }
    return {};
}

std::string RangeText(const Range& range) {
    return "from " + JsonValue::Number(range.least).text + " to " +
           JsonValue::Number(range.greatest).text;
}

/// What is wrong with a text of a session, or nothing.
std::string TextFault(std::string_view text) {
    if (text.size() > LongestText)
        return Format("give a text of at most %zu bytes.", LongestText);
    return HasControlCharacter(text) ? "give a text without control characters." : "";
}

class CObjectReader {
  public:
    /// The value has to be an object; one that is not has no members.
    CObjectReader(FileReading& file, const JsonValue& value, std::string place)
        : File(file), Object(value), Place(std::move(place)), Asked(value.names.size(), false) {
        if (value.kind != JsonValue::Kind::Object)
            Wrong(Place, value, "an object");
    }

    std::string PlaceOf(std::string_view name) const { return MemberPlace(Place, name); }

    /// The member, now asked for; null when it is not there or the file is refused already.
    const JsonValue* Take(std::string_view name) {
        const auto found = std::ranges::find(Object.names, name);
        if (File.Refused() || found == Object.names.end())
            return nullptr;
        const auto index = static_cast<std::size_t>(found - Object.names.begin());
        Asked[index] = true;
        return &Object.elements[index];
    }
    /// The same when the member has a kind; any other is refused.
    const JsonValue* Take(std::string_view name, JsonValue::Kind kind, const std::string& right) {
        const JsonValue* value = Take(name);
        if (!value || value->kind == kind)
            return value;
        Wrong(PlaceOf(name), *value, right);
        return nullptr;
    }
    /// The same where null stands for a member that is not there.
    const JsonValue* TakeUnlessNull(std::string_view name) {
        const JsonValue* value = Take(name);
        return value && value->kind == JsonValue::Kind::Null ? nullptr : value;
    }

    bool Text(std::string_view name, std::string& text) {
        const JsonValue* value = Take(name, JsonValue::Kind::Text, "a text");
        if (!value)
            return false;
        if (const std::string fault = TextFault(value->text); !fault.empty()) {
            File.Refuse(PlaceOf(name), fault);
            return false;
        }
        text = value->text;
        return true;
    }
    void Text(std::string_view name, std::optional<std::string>& text) {
        if (std::string given; Text(name, given))
            text = std::move(given);
    }
    /// A text that must be there and say something.
    void Required(std::string_view name, std::string& text, const std::string& right) {
        Text(name, text);
        if (text.empty())
            File.Refuse(PlaceOf(name), "is required: give " + right + '.');
    }
    void Path(std::string_view name, std::string& path) {
        if (Text(name, path) && !path.empty())
            path = ResolvedPath(File.folder, path);
    }
    void Truth(std::string_view name, bool& truth) {
        if (const JsonValue* value = Take(name, JsonValue::Kind::Truth, "true or false"))
            truth = value->truth;
    }
    void Truth(std::string_view name, std::optional<bool>& truth) {
        if (const JsonValue* value = Take(name, JsonValue::Kind::Truth, "true or false"))
            truth = value->truth;
    }
    std::optional<double> Number(std::string_view name, const Range& range) {
        return InRange(name, Take(name), range, false);
    }
    std::optional<double> NumberOrNull(std::string_view name, const Range& range) {
        return InRange(name, TakeUnlessNull(name), range, false);
    }
    std::optional<double> Whole(std::string_view name, const Range& range) {
        return InRange(name, Take(name), range, true);
    }
    /// A text that `parse` understands.
    template <class Parse>
    auto Parsed(std::string_view name, const JsonValue* value, Parse parse,
                const std::string& right) {
        decltype(parse(std::string_view())) parsed;
        if (value && value->kind == JsonValue::Kind::Text)
            parsed = parse(value->text);
        if (value && !parsed)
            Wrong(PlaceOf(name), *value, right);
        return parsed;
    }
    /// Calls `read` with each element of an array and its place.
    template <class Read> void Each(std::string_view name, const std::string& right, Read read) {
        const JsonValue* list = Take(name, JsonValue::Kind::Array, right);
        for (std::size_t i = 0; list && !File.Refused() && i < list->elements.size(); ++i)
            read(list->elements[i], ElementPlace(PlaceOf(name), i));
    }

    /// What nobody asked for, to be kept; it is named in the warning.
    JsonValue Rest() {
        JsonValue rest = JsonValue::Object();
        for (std::size_t i = 0; !File.Refused() && i < Asked.size(); ++i) {
            if (Asked[i])
                continue;
            File.unknown.push_back(PlaceOf(Object.names[i]));
            rest.Add(Object.names[i], Object.elements[i]);
        }
        return rest;
    }

    void Wrong(const std::string& place, const JsonValue& value, const std::string& right) {
        File.Refuse(place, "give " + right + ", not " + Described(value) + '.');
    }

  private:
    std::optional<double> InRange(std::string_view name, const JsonValue* value, const Range& range,
                                  bool whole) {
        if (!value)
            return std::nullopt;
        const std::optional<double> number = value->AsNumber();
        if (number && *number >= range.least && *number <= range.greatest &&
            (!whole || std::floor(*number) == *number))
            return number;
        Wrong(PlaceOf(name), *value, (whole ? "a whole number " : "a number ") + RangeText(range));
        return std::nullopt;
    }

    FileReading& File;
    const JsonValue& Object;
    const std::string Place;
    std::vector<bool> Asked; ///< by member
};

void ReadRoles(FileReading& file, CObjectReader& object, const std::string& holder,
               std::vector<InstrumentRole>& roles) {
    object.Each("roles", "an array of roles", [&](const JsonValue& value, const std::string&) {
        const std::optional<InstrumentRole> role =
            object.Parsed("roles", &value, RoleOfName, AllRoleNames());
        if (!role)
            return;
        const auto [other, first] = file.holders.try_emplace(*role, holder);
        if (!first)
            file.Refuse(object.PlaceOf("roles"),
                        '"' + std::string(RowOf(*role).name) + "\" is given twice, already to " +
                            other->second + "; give a role to one instrument.");
        roles.push_back(*role);
    });
}

/// What an instrument and a package's member have in common.
void ReadSettings(FileReading& file, CObjectReader& object, const std::string& place,
                  InstrumentRecord& instrument) {
    object.Text("title", instrument.title);
    ReadRoles(file, object, place, instrument.roles);
    for (const InstrumentFlag& field : InstrumentFlags)
        object.Truth(field.name, instrument.*field.flag);
    instrument.unknown = object.Rest();
}

InstrumentRecord ReadInstrument(FileReading& file, const JsonValue& value,
                                const std::string& place) {
    InstrumentRecord instrument;
    CObjectReader object(file, value, place);
    object.Required("definition", instrument.definition, "the path of a definition file");
    file.Resolve(object.PlaceOf("definition"), instrument.definition);
    ReadSettings(file, object, place, instrument);
    return instrument;
}

void ReadMembers(FileReading& file, CObjectReader& package,
                 std::vector<InstrumentRecord>& members) {
    constexpr const char* Name = "instruments";
    const JsonValue* list = package.Take(Name, JsonValue::Kind::Object,
                                         "an object with the names of the package's files");
    for (std::size_t i = 0; list && !file.Refused() && i < list->names.size(); ++i) {
        const std::string place = MemberPlace(package.PlaceOf(Name), list->names[i]);
        if (const std::string fault = TextFault(list->names[i]); !fault.empty())
            file.Refuse(place, fault);
        InstrumentRecord member;
        member.definition = list->names[i];
        CObjectReader object(file, list->elements[i], place);
        ReadSettings(file, object, place, member);
        members.push_back(std::move(member));
    }
}

PackageRecord ReadPackage(FileReading& file, const JsonValue& value, const std::string& place) {
    PackageRecord package;
    CObjectReader object(file, value, place);
    object.Required("file", package.file, "the path of a package");
    file.Resolve(object.PlaceOf("file"), package.file);
    for (const PackageNumber& field : PackageNumbers)
        package.*field.number = object.Number(field.name, field.range);
    ReadMembers(file, object, package.instruments);
    package.unknown = object.Rest();
    return package;
}

void ReadPort(FileReading& file, CObjectReader& object, const std::string& place,
              ResourceRecord& resource) {
    object.Required("port", resource.port, "the name of a port");
    if (const auto baud = object.Whole("baud", BaudRange))
        resource.baud = static_cast<std::uint32_t>(*baud);
    resource.format =
        object.Parsed("format", object.Take("format"), ParseLineFormat,
                      "data bits 5 to 8, parity N, O, E, M or S and stop bits, as in \"8N1\"");
    object.Truth("reconnect", resource.reconnect);
    const auto [other, first] = file.ports.try_emplace(resource.port, place);
    if (!first)
        file.Refuse(object.PlaceOf("port"), Quoted(resource.port) + " is named twice, already by " +
                                                other->second + "; put its instruments together.");
}

ResourceRecord ReadResource(FileReading& file, const JsonValue& value, const std::string& place) {
    ResourceRecord resource;
    CObjectReader object(file, value, place);
    const bool isPort = value.Member("port") != nullptr;
    if (isPort == (value.Member("file") != nullptr))
        file.Refuse(place, "give \"port\" or \"file\", one of the two.");
    if (isPort) {
        ReadPort(file, object, place, resource);
    } else {
        object.Required("file", resource.file, "the path of a file to be played");
        file.Resolve(object.PlaceOf("file"), resource.file);
    }
    object.Each("instruments", "an array of instruments",
                [&](const JsonValue& element, const std::string& at) {
                    resource.instruments.push_back(ReadInstrument(file, element, at));
                });
    object.Each("packages", "an array of packages",
                [&](const JsonValue& element, const std::string& at) {
                    resource.packages.push_back(ReadPackage(file, element, at));
                });
    resource.unknown = object.Rest();
    return resource;
}

void ReadStation(FileReading& file, const JsonValue& value, SessionRecord& session) {
    CObjectReader object(file, value, "station");
    for (const StationText& field : StationTexts)
        object.Text(field.name, session.station.*field.text);
    session.unknownOfStation = object.Rest();
}

void ReadLog(FileReading& file, const JsonValue& value, LogRecord& log) {
    CObjectReader object(file, value, "log");
    object.Path("directory", log.directory);
    if (const auto naming =
            object.Parsed("naming", object.Take("naming"), NamingOfName, AllNamingNames()))
        log.naming = *naming;
    object.Text("name", log.name);
    if (log.name.find_first_of("/\\") != std::string::npos)
        file.Refuse(object.PlaceOf("name"),
                    "give the file's name alone, and its folder as \"directory\".");
    if (const auto sequence = object.Whole("sequence", SequenceRange))
        log.sequence = static_cast<std::int32_t>(*sequence);
    object.Truth("time-stamps", log.timeStamps);
    object.Truth("gps-header", log.gpsHeader);
    constexpr const char* SpanForm = "hours, minutes and seconds as in \"00:10:00\", or null";
    log.duration =
        object.Parsed("duration", object.TakeUnlessNull("duration"), ParseFullSpan, SpanForm);
    log.repeat = object.Parsed("repeat", object.TakeUnlessNull("repeat"), ParseFullSpan, SpanForm);
    log.every = object.Parsed("every", object.TakeUnlessNull("every"), ParseFullSpan, SpanForm);
    object.Truth("session-log", log.sessionLog);
    object.Path("session-log-directory", log.sessionLogDirectory);
    log.unknown = object.Rest();
}

/// Comes first, so that a later version's file is called that, whatever else it holds.
void ReadVersion(FileReading& file, CObjectReader& object) {
    const JsonValue* value = object.Take(SessionVersionName);
    const std::optional<double> version = value ? value->AsNumber() : std::nullopt;
    if (!value)
        file.Refuse(SessionVersionName, "is required: give 1. Without it this is no session file.");
    else if (version && *version > SessionVersion)
        file.Refuse(SessionVersionName, Described(*value) +
                                            ": written by a newer version; this one reads " +
                                            std::to_string(SessionVersion) + '.');
    else if (!version || *version != SessionVersion)
        object.Wrong(SessionVersionName, *value, std::to_string(SessionVersion));
}

void ReadWhole(FileReading& file, const JsonValue& root, SessionRecord& session) {
    CObjectReader object(file, root, {});
    ReadVersion(file, object);
    object.Text("title", session.title);
    object.Each("resources", "an array of ports and files",
                [&](const JsonValue& value, const std::string& place) {
                    session.resources.push_back(ReadResource(file, value, place));
                });
    if (const JsonValue* station = object.Take("station"))
        ReadStation(file, *station, session);
    if (const JsonValue* log = object.Take("log"))
        ReadLog(file, *log, session.log);
    session.pressureTare = object.NumberOrNull("pressure-tare", TareRange);
    object.Truth("calibration-mode", session.calibrationMode);
    object.Each("windows", "an array of objects",
                [&](const JsonValue& value, const std::string& at) {
                    CObjectReader window(file, value, at);
                    session.windows.elements.push_back(value);
                });
    session.unknown = object.Rest();
}

std::string UnknownWarning(const FileReading& file) {
    std::string warning = "unknown members, kept as they are: ";
    const std::size_t shown = std::min(file.unknown.size(), UnknownMembersShown);
    for (std::size_t i = 0; i < shown; ++i)
        warning += (i > 0 ? ", " : "") + file.unknown[i];
    if (shown < file.unknown.size())
        warning += Format(" and %zu more", file.unknown.size() - shown);
    return warning + '.';
}

} // namespace

SessionReading ReadSession(std::string_view bytes, const std::string& path) {
    SessionReading reading;
    const JsonReading tree = ReadJson(bytes);
    FileReading file;
    file.folder = SessionFolder(path);
    file.refusal = tree.fault;
    SessionRecord session;
    if (!file.Refused())
        ReadWhole(file, tree.value, session);
    if (file.Refused()) {
        reading.refusal = path + ": " + file.refusal;
        return reading;
    }
    if (!file.unknown.empty())
        reading.warnings.push_back(path + ": " + UnknownWarning(file));
    reading.session = std::move(session);
    return reading;
}

SessionReading LoadSession(const std::string& path) {
    std::string bytes;
    const FileCause cause = ReadWholeFile(path, JsonLimits().bytes, bytes);
    if (cause == FileCause::None)
        return ReadSession(bytes, path);
    SessionReading reading;
    reading.refusal = path + ": cannot be read. " +
                      (cause == FileCause::InvalidFile ? "It is too large for a session file."
                                                       : std::string(GetFileErrorText(cause)));
    return reading;
}

} // namespace qor
