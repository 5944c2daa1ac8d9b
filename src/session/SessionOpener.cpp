// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SessionOpener.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/PressureTare.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"

#include <algorithm>

namespace qor {
namespace {

/// The application's own options stay.
void ApplyOptions(const LogRecord& log, LogOptions& options) {
    options.timeStampEnabled = log.timeStamps;
    options.gpsHeaderEnabled = log.gpsHeader;
    options.durationEnabled = log.duration.has_value();
    options.duration = log.duration.value_or(LogSpan());
    options.repeatEnabled = log.repeat.has_value();
    options.repeatInterval = log.repeat.value_or(LogSpan());
    options.everyEnabled = log.every.has_value();
    options.every = log.every.value_or(LogSpan());
}

const InstrumentRecord* RecordOfMember(const PackageRecord& package, const std::string& member) {
    const auto found =
        std::ranges::find(package.instruments, member, &InstrumentRecord::definition);
    return found == package.instruments.end() ? nullptr : &*found;
}

} // namespace

LogNaming NamingOf(const LogRecord& log) {
    LogNaming naming;
    naming.logNamingMode = log.naming;
    naming.logDirectory = WithSeparator(log.directory);
    (log.naming == LogNamingMode::Sqm ? naming.sqmBaseName : naming.logUserFileName) = log.name;
    naming.sqmSequence = log.sequence;
    naming.numbered = log.naming == LogNamingMode::UserFileName && (log.repeat || log.every);
    return naming;
}

std::string SessionFault(const SessionRecord& session) {
    if (const std::string fault = StoredStationFault(session.station, session.log.naming);
        !fault.empty())
        return "station: " + fault;
    if (const std::string fault = NamingFault(NamingOf(session.log)); !fault.empty())
        return "log.name: " + fault;
    LogOptions options;
    ApplyOptions(session.log, options);
    if (const std::string fault = EveryFault(options); !fault.empty())
        return "log.every: " + fault;
    if (const std::string fault = OptionsFault(options); !fault.empty())
        return "log: " + fault;
    return {};
}

void CSessionOpener::ApplySettings(const SessionRecord& session) {
    const LogRecord& log = session.log;
    Kept.title = session.title;
    Kept.windows = session.windows;
    Kept.unknown = session.unknown;
    Kept.unknownOfStation = session.unknownOfStation;
    Kept.log = log;
    const bool own = !log.sessionLogDirectory.empty();
    Doc.SessionLog.SetFile(log.sessionLog, own ? log.sessionLogDirectory : log.directory);
    Kept.sessionLogDirectory = Doc.SessionLog.SessionLogDirectory();
    CRecursiveLock lock(Doc.DocLock);
    Doc.Station = session.station;
    LogOptions options = Doc.Options;
    ApplyOptions(log, options);
    static_cast<void>(Doc.RawLog.SetLogOptions(options)); // both were looked at before
    static_cast<void>(Doc.RawLog.SetNaming(NamingOf(log)));
}

void CSessionOpener::OpenAll(const SessionRecord& session) {
    std::vector<OpenResource> resources;
    PortCount = session.resources.size();
    for (const ResourceRecord& record : session.resources)
        if (OpenResource opened = AddResource(record); opened.id != ResourceId::None)
            resources.push_back(std::move(opened));
    for (const OpenResource& resource : resources)
        AddInstruments(resource);
    for (OpenResource& resource : resources)
        AddPackages(resource);
    GiveRoles();
    CRecursiveLock lock(Doc.DocLock);
    TakeSavedTare(Doc, session.pressureTare);
    Doc.CalibrationMode = session.calibrationMode;
}

void CSessionOpener::OpenOn(ResourceId resource, const SessionRecord& session,
                            const PackageOptions& said) {
    const InstrumentDefaultsReading defaults = LoadInstrumentDefaults(InstrumentDefaultsPath());
    Played = &defaults;
    for (const ResourceRecord& record : session.resources) {
        OpenResource opened{resource, &record, {}};
        for (const PackageRecord& package : record.packages)
            opened.packages.push_back(LoadPackage(package.file, Doc.User, Doc));
        AddInstruments(opened);
        AddPackages(opened, said);
    }
    GiveRoles();
    Played = nullptr;
}

void CSessionOpener::GiveRoles() {
    for (const auto& [role, instrument] : Roles)
        static_cast<void>(Doc.SetRole(role, instrument)); // it was added just now
}

CSessionOpener::OpenResource CSessionOpener::AddResource(const ResourceRecord& record) {
    OpenResource opened;
    if (!record.IsFile()) {
        opened = AddPort(record);
    } else {
        CommResult result = CommResult::Success;
        opened.id = Doc.AddFileResource(record.file, {}, &result);
        if (opened.id == ResourceId::None) {
            CFile file;
            const FileCause cause = file.OpenForReading(record.file);
            Setup.Refuse(Refusal::Kind::Resource, record.file,
                         cause == FileCause::None
                             ? "cannot be played. " + OneLine(CommDetail(result))
                             : "cannot be read. " + std::string(GetFileErrorText(cause)));
        }
        for (const PackageRecord& package : record.packages)
            if (opened.id != ResourceId::None)
                opened.packages.push_back(LoadPackage(package.file, Doc.User, Doc));
    }
    if (opened.id == ResourceId::None) {
        Kept.unopened.push_back(record);
        return opened;
    }
    opened.record = &record;
    KeptResource& kept = Kept.resources[opened.id];
    kept.said = record;
    kept.said.instruments.clear();
    kept.said.packages.clear();
    CRecursiveLock lock(Doc.DocLock);
    const SerialResourceSettings& serial = Doc.Find(opened.id)->Serial;
    kept.baud = serial.baudRate;
    kept.format = {serial.dataBits, serial.parity, serial.stopBits};
    return opened;
}

CSessionOpener::OpenResource CSessionOpener::AddPort(const ResourceRecord& record) {
    OpenResource opened;
    SerialResourceSettings settings;
    settings.portName = record.port;
    settings.baudRate = record.baud.value_or(SessionBaud);
    const LineFormat format = record.format.value_or(LineFormat());
    settings.dataBits = format.dataBits;
    settings.parity = format.parity;
    settings.stopBits = format.stopBits;
    settings = RunPort(std::move(settings), PortCount);
    bool baudKnown = record.baud.has_value();
    for (const PackageRecord& package : record.packages) {
        opened.packages.push_back(LoadPackage(package.file, Doc.User, Doc));
        if (!baudKnown && opened.packages.back().ok) {
            settings = PackagePort(opened.packages.back(), settings, Doc.User);
            baudKnown = true;
        }
    }
    CommResult result = CommResult::Success;
    opened.id = Doc.AddSerialResource(settings, &result);
    if (opened.id == ResourceId::None)
        Setup.Refuse(Refusal::Kind::Resource, record.port,
                     "cannot be used. " + OneLine(CommDetail(result)));
    else
        Doc.SetReconnect(opened.id, record.reconnect);
    return opened;
}

void CSessionOpener::AddInstruments(const OpenResource& resource) {
    for (const InstrumentRecord& record : resource.record->instruments) {
        const InstrumentId id = Setup.AddDefinition(record.definition, resource.id);
        if (id == InstrumentId::None)
            Kept.resources[resource.id].said.instruments.push_back(record);
        else
            Settle(id, record);
    }
}

void CSessionOpener::AddPackages(OpenResource& resource, const PackageOptions& said) {
    for (std::size_t i = 0; i < resource.packages.size(); ++i) {
        const PackageRecord& record = resource.record->packages[i];
        const PackageId id = Setup.AddPackage(std::move(resource.packages[i]), resource.id,
                                              said.Over(record.Over({})));
        if (id == PackageId::None)
            Kept.resources[resource.id].said.packages.push_back(record);
        else
            AddMembers(id, record);
    }
}

void CSessionOpener::AddMembers(PackageId package, const PackageRecord& record) {
    std::vector<std::pair<std::string, InstrumentId>> members;
    {
        CRecursiveLock lock(Doc.DocLock);
        const CPackage& added = *Doc.Find(package);
        for (std::size_t i = 0; i < added.Members.size(); ++i)
            members.emplace_back(added.Members[i], added.Attached[i]);
    }
    for (const auto& [member, id] : members) {
        const InstrumentRecord* said = RecordOfMember(record, member);
        if (said || Played)
            Settle(id, said ? *said : InstrumentRecord());
    }
    PackageRecord& kept = Kept.packages[package] = record;
    std::erase_if(kept.instruments, [&members](const InstrumentRecord& said) {
        return std::ranges::any_of(members,
                                   [&](const auto& one) { return one.first == said.definition; });
    });
    for (const InstrumentRecord& lost : kept.instruments) {
        const std::string subject = record.file + "(" + lost.definition + ")";
        if (std::ranges::find(Setup.Refusals(), subject, &Refusal::subject) ==
            Setup.Refusals().end())
            Setup.Refuse(Refusal::Kind::Member, subject, "there is no such file in the package.");
    }
}

/// What a session says of an instrument that is there.
void CSessionOpener::Settle(InstrumentId instrument, const InstrumentRecord& record) {
    std::string name;
    {
        CRecursiveLock lock(Doc.DocLock);
        name = Doc.Find(instrument)->Name();
    }
    InstrumentDefaults settings = Doc.Instruments.Settings(instrument);
    if (Played)
        settings.Immersed = record.immersed.value_or(Played->Of(name).Immersed);
    else
        settings = SettingsOf(record, settings);
    if (const std::string fault = Doc.Instruments.ChangeSettings(instrument, settings);
        !fault.empty())
        Setup.Refuse(Refusal::Kind::Name, name, fault);
    Kept.instruments[name] = record;
    for (const InstrumentRole role : record.roles)
        Roles.emplace_back(role, instrument);
}

} // namespace qor
