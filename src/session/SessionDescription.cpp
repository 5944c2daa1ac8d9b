// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SessionDescription.h"

#include "platform/File.h"
#include "session/PressureTare.h"
#include "session/SessionPath.h"

#include <algorithm>
#include <iterator>

namespace qor {
namespace {

std::string StoredFolder(const std::string& folder) {
    return folder.empty() ? folder : ResolvedPath({}, FullPathOf(folder));
}

template <class Key, class Record>
const Record* FindIn(const std::map<Key, Record>& records, const Key& key) {
    const auto found = records.find(key);
    return found == records.end() ? nullptr : &found->second;
}

class CDescriber {
  public:
    CDescriber(const CQorViewDoc& doc, const KeptSession& kept,
               const InstrumentDefaultsReading& defaults)
        : Kept(kept), Defaults(defaults), Doc(doc) {}

    ResourceRecord Resource(const CQorViewRes& resource) const REQUIRES(Doc.DocLock) {
        const KeptResource* kept = FindIn(Kept.resources, resource.Id);
        ResourceRecord record = kept ? kept->said : ResourceRecord();
        std::vector<InstrumentRecord> lostInstruments = std::exchange(record.instruments, {});
        std::vector<PackageRecord> lostPackages = std::exchange(record.packages, {});
        if (resource.IsFile())
            record.file = FullPathOf(resource.Name());
        else
            DescribePort(resource, kept, record);
        for (const auto& instrument : resource.Instruments)
            if (!Doc.OwnerOf(instrument->Id)->package)
                record.instruments.push_back(
                    Instrument(*instrument, instrument->Definition().FilePath()));
        for (const auto& package : Doc.PackageTable)
            if (IsOn(*package, resource))
                record.packages.push_back(Package(*package));
        for (InstrumentRecord& lost : lostInstruments)
            record.instruments.push_back(WithFreeRoles(std::move(lost)));
        for (PackageRecord& lost : lostPackages)
            record.packages.push_back(WithFreeRoles(std::move(lost)));
        return record;
    }

    /// A resource that was not opened; its roles may have other holders by now.
    ResourceRecord Lost(ResourceRecord record) const {
        for (InstrumentRecord& instrument : record.instruments)
            instrument = WithFreeRoles(std::move(instrument));
        for (PackageRecord& package : record.packages)
            package = WithFreeRoles(std::move(package));
        return record;
    }

    LogRecord Log() const REQUIRES(Doc.DocLock) {
        LogRecord log = Kept.log;
        const LogNaming& naming = Doc.Naming;
        log.directory = StoredFolder(naming.logDirectory);
        log.naming = naming.logNamingMode;
        log.name = log.naming == LogNamingMode::Sqm ? naming.sqmBaseName : naming.logUserFileName;
        log.sequence = naming.sqmSequence;
        const LogOptions& options = Doc.Options;
        log.timeStamps = options.timeStampEnabled;
        log.gpsHeader = options.gpsHeaderEnabled;
        log.duration = options.durationEnabled ? std::optional(options.duration) : std::nullopt;
        log.repeat = options.repeatEnabled ? std::optional(options.repeatInterval) : std::nullopt;
        log.every = options.everyEnabled ? std::optional(options.every) : std::nullopt;
        log.sessionLog = Doc.SessionLog.SessionLogEnabled();
        const std::string directory = Doc.SessionLog.SessionLogDirectory();
        if (directory != Kept.sessionLogDirectory)
            log.sessionLogDirectory =
                directory == naming.logDirectory ? "" : StoredFolder(directory);
        return log;
    }

    std::optional<double> Tare() const REQUIRES(Doc.DocLock) {
        return Doc.PressureTare ? std::optional(TareInDbar(Doc, *Doc.PressureTare)) : std::nullopt;
    }

  private:
    static void DescribePort(const CQorViewRes& resource, const KeptResource* kept,
                             ResourceRecord& record) {
        const SerialResourceSettings& serial = resource.Serial;
        const LineFormat format = {serial.dataBits, serial.parity, serial.stopBits};
        record.port = resource.Name();
        if (!kept || serial.baudRate != kept->baud)
            record.baud = serial.baudRate;
        if (format != (kept ? kept->format : LineFormat()))
            record.format = format;
        record.reconnect = resource.Reconnect;
    }

    InstrumentRecord Instrument(const CQorViewIns& instrument, std::string definition) const
        REQUIRES(Doc.DocLock) {
        const InstrumentRecord* said = FindIn(Kept.instruments, instrument.Name());
        InstrumentRecord record =
            RecordOf(Doc.Instruments.Settings(instrument.Id), Defaults.Of(instrument.Name()),
                     said ? *said : InstrumentRecord());
        record.definition = std::move(definition);
        record.roles.clear();
        for (const RoleRow& row : RoleTable)
            if (Doc.Role(row.role) == instrument.Id)
                record.roles.push_back(row.role);
        return record;
    }

    PackageRecord Package(const CPackage& package) const REQUIRES(Doc.DocLock) {
        const PackageRecord* said = FindIn(Kept.packages, package.Id);
        PackageRecord record = said ? *said : PackageRecord();
        const PackageSettings& settings = package.Settings;
        const PackageSettings usual;
        record.file = ResolvedPath({}, FullPathOf(package.Path));
        record.defaultSalinity =
            settings.UseDefSalinity ? std::optional(settings.DefaultSalinity) : std::nullopt;
        if (record.saturationIrradiance ||
            settings.SaturationIrradiance != usual.SaturationIrradiance)
            record.saturationIrradiance = settings.SaturationIrradiance;
        if (record.attenuationWindow || settings.AttenuationWindow != usual.AttenuationWindow)
            record.attenuationWindow = settings.AttenuationWindow;
        std::vector<InstrumentRecord> lost = std::exchange(record.instruments, {});
        for (std::size_t i = 0; i < package.Members.size(); ++i)
            if (const CQorViewIns* instrument = Doc.Find(package.Attached[i]))
                AddMember(Instrument(*instrument, package.Members[i]), record);
        for (InstrumentRecord& member : lost)
            record.instruments.push_back(WithFreeRoles(std::move(member)));
        return record;
    }

    /// Only those of which anything is said stand there, each file's name once.
    void AddMember(InstrumentRecord member, PackageRecord& package) const {
        InstrumentRecord nothing;
        nothing.definition = member.definition;
        if (member != nothing &&
            std::ranges::find(package.instruments, member.definition,
                              &InstrumentRecord::definition) == package.instruments.end())
            package.instruments.push_back(std::move(member));
    }

    bool IsOn(const CPackage& package, const CQorViewRes& resource) const REQUIRES(Doc.DocLock) {
        return std::ranges::any_of(package.Attached, [&](InstrumentId id) REQUIRES(Doc.DocLock) {
            const SessionState::FrameOwner* owner = Doc.OwnerOf(id);
            return owner && owner->resource == &resource;
        });
    }

    InstrumentRecord WithFreeRoles(InstrumentRecord lost) const {
        std::erase_if(lost.roles,
                      [this](InstrumentRole role) { return Doc.Role(role) != InstrumentId::None; });
        return lost;
    }
    PackageRecord WithFreeRoles(PackageRecord lost) const {
        for (InstrumentRecord& member : lost.instruments)
            member = WithFreeRoles(std::move(member));
        return lost;
    }

    const KeptSession& Kept;
    const InstrumentDefaultsReading& Defaults;

  public:
    const CQorViewDoc& Doc; ///< whoever asks holds its lock
};

} // namespace

SessionRecord DescribeSession(const CQorViewDoc& doc, const KeptSession& kept,
                              const InstrumentDefaultsReading& defaults) {
    const CDescriber describer(doc, kept, defaults);
    SessionRecord session;
    session.title = kept.title;
    session.windows = kept.windows;
    session.unknown = kept.unknown;
    session.unknownOfStation = kept.unknownOfStation;
    CRecursiveLock lock(describer.Doc.DocLock);
    for (const auto& resource : describer.Doc.Resources)
        session.resources.push_back(describer.Resource(*resource));
    for (const ResourceRecord& lost : kept.unopened) {
        const auto isThere = [&lost](const ResourceRecord& one) {
            return one.port == lost.port && one.file == lost.file;
        };
        if (std::ranges::none_of(session.resources, isThere))
            session.resources.push_back(describer.Lost(lost));
    }
    session.station = describer.Doc.Station;
    session.log = describer.Log();
    session.pressureTare = describer.Tare();
    session.calibrationMode = describer.Doc.CalibrationMode;
    return session;
}

} // namespace qor
