// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's life and its lists: settings, resources, instruments, roles, figures. What happens
// to a frame is Acquisition.cpp. See QorViewDoc.h.
#include "session/QorViewDoc.h"

#include "platform/FileErrorText.h"
#include "session/ProgramSettings.h"
#include "telemetry/RawLogReader.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace qor {

CQorViewDoc::CQorViewDoc(CClock& clock, SerialPortFactory makePort, CUserService& user,
                         CProfileStore& profile)
    : SessionState(clock, user, profile), History(*this), SessionLog(*this), RawLog(*this, *this),
      Manifests(*this, *this, [this] { return Snapshot(); }),
      Acquisition(*this, RawLog, SessionLog), Sources(*this), Instruments(*this), Packages(*this),
      Ports(*this, *this), Captures(*this, *this), Starter(*this), Session(*this) {
    AttachController(std::make_unique<CTelemControl>(clock, std::move(makePort)));
    Acquisition.Use(*Controller());
}

CQorViewDoc::~CQorViewDoc() {
    Acquisition.OnEvent = nullptr; // who listened may be gone; the session log hears the rest
    Acquisition.OnNotice = nullptr;
    DisconnectAll();
    RawLog.ShutDown();
    Manifests.Stop();
    while (Acquisition.TakeCommands(0)) {
    }
}

void CQorViewDoc::MakeManifests() {
    Manifests.Enable();
    RawLog.SetHashing(true);
    RawLog.OnFileBegun = [this](const std::string& path) { Manifests.Begin(path); };
    RawLog.OnFileEnded = [this](const FinishedFile& file) { Manifests.End(file); };
}

void CQorViewDoc::BeginSession(const std::string& sessionPath) {
    if (sessionPath.empty())
        SessionLog.OpenSessionLog();
    else
        SessionLog.HoldBack();
    ReportMessage(sessionPath.empty() ? "Beginning new session.\r\n"
                                      : "Beginning session \"" + sessionPath + "\".\r\n");
}

void CQorViewDoc::LoadSettings() {
    const ProgramSettings settings = ReadProgramSettings(Profile);
    SessionLog.SetFile(settings.sessionLog, settings.sessionLogDirectory);
    CRecursiveLock lock(DocLock);
    Options.loggingSounds = settings.loggingSounds;
}

CommResult CQorViewDoc::NoResource(const char* operation) {
    ReportMessage(std::string(operation) + "\r\n" +
                  std::string(CommDetail(CommResult::ResourceReference)));
    return CommResult::ResourceReference;
}

ResourceId CQorViewDoc::AddSerialResource(const SerialResourceSettings& settings,
                                          CommResult* result) {
    CRecursiveLock lock(DocLock);
    CommResult added = Controller()->AddResource(settings);
    if (result)
        *result = added;
    CTelemComm* comm = Controller()->Resource(settings.portName);
    if (added != CommResult::Success || !comm)
        return ResourceId::None;
    const auto id = static_cast<ResourceId>(++LastResource);
    Resources.push_back(std::make_unique<CQorViewRes>(id, *comm, settings));
    NoteChange();
    return id;
}

ResourceId CQorViewDoc::AddFileResource(const std::string& path,
                                        const FileResourceSettings& settings, CommResult* result) {
    const std::optional<int> zone = HeaderOf(path).ZoneMinutes();
    CRecursiveLock lock(DocLock);
    CFile file;
    FileCause cause = file.OpenForReading(path);
    CommResult added = CommResult::FileError;
    std::uint64_t size = 0;
    if (cause != FileCause::None || IsDevice(path) || file.Size(size) != FileCause::None)
        size = 0;
    if (cause == FileCause::None)
        added = Controller()->AddResource(settings, std::move(file));
    else
        ReportMessage("Unable to add communications resource: " + path + ".\r\n\t" +
                      std::string(ResourceFileErrorText(cause)));
    if (result)
        *result = added;
    std::string name;
    if (added != CommResult::Success ||
        Controller()->ResourceIdentification(Controller()->ResourceCount() - 1, name) !=
            CommResult::Success)
        return ResourceId::None;
    const auto id = static_cast<ResourceId>(++LastResource);
    Resources.push_back(std::make_unique<CQorViewRes>(id, *Controller()->Resource(name), settings));
    Resources.back()->FileSize = size;
    Resources.back()->ZoneMinutes = zone;
    NoteChange();
    return id;
}

/// Whether a resource holds instruments that calibration mode keeps where they are.
bool CQorViewDoc::RefusesRemovalOf(ResourceId resource) {
    {
        CRecursiveLock lock(DocLock);
        const CQorViewRes* found = Find(resource);
        if (!found || found->Instruments.empty())
            return false;
    }
    return Packages.RefuseInCalibrationMode();
}

CommResult CQorViewDoc::RemoveResource(ResourceId resource) {
    if (RefusesRemovalOf(resource))
        return CommResult::ResourceReference;
    CommResult disconnected = DisconnectResource(resource);
    if (disconnected == CommResult::ResourceReference || disconnected == CommResult::StillConnected)
        return disconnected;
    CLock ports(PortsLock);
    CRecursiveLock lock(DocLock);
    CQorViewRes* removed = Find(resource);
    if (!removed)
        return NoResource("Unable to remove communications resource.");
    while (!removed->Instruments.empty()) {
        CommResult result = Detach(removed->Instruments.back()->Id);
        if (result != CommResult::Success)
            return result;
    }
    CommResult result = Controller()->RemoveResource(removed->Name());
    if (result != CommResult::Success)
        return result;
    std::erase_if(Resources, [resource](const auto& one) { return one->Id == resource; });
    // A package without an instrument shows nothing, and nothing shows it: it goes with the last.
    std::erase_if(PackageTable, [this](const auto& package) REQUIRES(DocLock) {
        return std::ranges::none_of(package->Attached, [this](InstrumentId member) REQUIRES(
                                                           DocLock) { return Find(member); });
    });
    RebuildOwners();
    return result;
}

AddedInstrument CQorViewDoc::AddInstrument(const std::string& definitionPath, ResourceId resource) {
    AddedInstrument added;
    added.locked = Packages.RefuseInCalibrationMode();
    if (added.locked)
        return added;
    auto definition = std::make_unique<CInstrument>();
    DefinitionStatus status = definition->Load(definitionPath);
    const std::string parseLog = definition->ParseLog();
    if (!parseLog.empty())
        ReportMessage(parseLog);
    Manifests.NoteSource(definitionPath);
    if (status == DefinitionStatus::Success)
        added = AddInstrument(std::move(definition), resource);
    added.definition = status;
    added.parseLog = parseLog;
    return added;
}

AddedInstrument CQorViewDoc::AddInstrument(std::unique_ptr<CInstrument> definition,
                                           ResourceId resource) {
    AddedInstrument added;
    added.definition = DefinitionStatus::Success;
    added.parseLog = definition->ParseLog();
    added.name = definition->Name();
    added.locked = Packages.RefuseInCalibrationMode();
    if (added.locked)
        return added;
    const std::string& name = added.name;
    const InstrumentDefaults defaults = Instruments.DefaultsOf(name);

    CRecursiveLock lock(DocLock);
    CQorViewRes* owner = Find(resource);
    if (!owner) {
        added.comm = NoResource("Unable to add instrument.");
        return added;
    }
    added.comm = Controller()->AddInstrument(std::move(definition));
    if (added.comm != CommResult::Success)
        return added;
    added.comm = Controller()->AttachInstrument(name, owner->Name());
    if (added.comm == CommResult::Success)
        added.comm = Controller()->StartAcquisition(name);
    const CInstrument* loaded = Controller()->Instrument(name);
    const auto id = static_cast<InstrumentId>(owner->Comm.IdentityOf(name));
    if (added.comm != CommResult::Success || !loaded) {
        CommResult first = added.comm;
        added.comm = Controller()->RemoveInstrument(name);
        if (first != CommResult::Success)
            added.comm = first;
        return added;
    }
    owner->Instruments.push_back(std::make_unique<CQorViewIns>(*loaded, id, owner->Name(), *this));
    added.id = id;
    RebuildOwners();
    if (const std::string fault = Instruments.ChangeSettings(id, defaults); !fault.empty())
        ReportMessage(Instruments.DefaultsPath + ": " + fault + "\r\n");
    return added;
}

CommResult CQorViewDoc::RemoveInstrument(InstrumentId instrument) {
    if (Packages.RefuseInCalibrationMode())
        return CommResult::InstrumentReference;
    CommResult result;
    {
        const CSettledLock lock(DocLock, RawLog);
        result = Detach(instrument);
    }
    RawLog.ShowPending();
    return result;
}

CommResult CQorViewDoc::Detach(InstrumentId instrument) {
    const FrameOwner* owner = OwnerOf(instrument);
    if (!owner) {
        ReportMessage("Unable to remove instrument.\r\n" +
                      std::string(CommDetail(CommResult::InstrumentReference)));
        return CommResult::InstrumentReference;
    }
    const std::string name = owner->instrument->Name();
    // It cuts no more frames, and those that it has cut are still its own. Refused: none to stop.
    std::ignore = Controller()->StopAcquisition(name);
    Acquisition.TakeQueued(*owner->resource);
    for (const RoleRow& row : RoleTable)
        if (Role(row.role) == instrument)
            SetRole(row.role, InstrumentId::None);
    // The session's instrument goes first: it refers to the definition that the controller owns.
    std::erase_if(owner->resource->Instruments,
                  [instrument](const auto& one) { return one->Id == instrument; });
    RebuildOwners();
    return Controller()->RemoveInstrument(name);
}

CommResult CQorViewDoc::ConnectResource(ResourceId resource) {
    SessionLog.OpenHeld();
    CLock ports(PortsLock);
    CTelemComm* comm = nullptr; // not removed meanwhile
    {
        CRecursiveLock lock(DocLock);
        CQorViewRes* found = Find(resource);
        if (!found)
            return NoResource("Unable to connect communications resource.");
        comm = &found->Comm;
        found->Wanted = true;
        if (!comm->Figures().connected)
            found->BeginConnection();
    }
    return Controller()->ConnectResource(*comm);
}

void CQorViewDoc::SetReconnect(ResourceId resource, bool on) {
    CRecursiveLock lock(DocLock);
    if (CQorViewRes* found = Find(resource))
        found->Reconnect = on;
    NoteChange();
}

CommResult CQorViewDoc::DisconnectResource(ResourceId resource) {
    CFrameQueue left;
    const CommResult result = Disconnect(resource, left);
    {
        // Without the ports' lock: the disk may take its time, and ports are looked after.
        const CSettledLock lock(DocLock, RawLog);
        Acquisition.ProcessFrames(left);
    }
    RawLog.ShowPending();
    return result;
}

/// `left`: the frames that are queued when the worker has ended.
CommResult CQorViewDoc::Disconnect(ResourceId resource, CFrameQueue& left) {
    CLock ports(PortsLock);
    CTelemComm* comm = nullptr; // not removed meanwhile
    {
        CRecursiveLock lock(DocLock);
        CQorViewRes* found = Find(resource);
        if (!found)
            return NoResource("Unable to disconnect communications resource.");
        if (found->IsFile()) {
            found->Playing = false;
            return CommResult::Success;
        }
        comm = &found->Comm;
        found->Wanted = false;
    }
    return Controller()->DisconnectResource(*comm, &left);
}

bool CQorViewDoc::ConnectAll() {
    bool all = true;
    for (const ResourceStatus& resource : Snapshot().resources)
        if (!resource.isFile && ConnectResource(resource.id) != CommResult::Success)
            all = false;
    return all;
}

void CQorViewDoc::DisconnectAll() {
    {
        // All workers end at the same time instead of one after the other.
        CRecursiveLock lock(DocLock);
        for (const auto& resource : Resources)
            resource->Comm.RequestStop();
    }
    for (const ResourceStatus& resource : Snapshot().resources)
        (void)DisconnectResource(resource.id); // reported where it fails; the others are to go on
}

CommResult CQorViewDoc::ResetAbort(ResourceId resource, std::uint32_t& abortCode) {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* found = Find(resource);
    if (!found)
        return NoResource("Unable to retrieve telemetry aquisition abort code.");
    return Controller()->AbortCode(found->Name(), abortCode);
}

std::string CQorViewDoc::SetRole(InstrumentRole role, InstrumentId instrument) {
    CRecursiveLock lock(DocLock);
    if (instrument != InstrumentId::None && !OwnerOf(instrument))
        return "There is no such instrument in the session any more.";
    InstrumentId& holder = Roles[static_cast<std::size_t>(role)];
    const auto setUntagged = [this, role, &holder](bool untagged) REQUIRES(DocLock) {
        const FrameOwner* owner = OwnerOf(holder);
        if (role == InstrumentRole::Gps && owner)
            owner->resource->Comm.SetUntagged(owner->instrument->Name(), untagged);
    };
    setUntagged(false);
    holder = instrument;
    setUntagged(true);
    NoteChange();
    return {};
}

void CQorViewDoc::SetCalibrationMode(bool on) {
    CRecursiveLock lock(DocLock);
    if (std::exchange(CalibrationMode, on) != on)
        NoteChange();
}

InstrumentId CQorViewDoc::FindInstrument(std::string_view name) const {
    CRecursiveLock lock(DocLock);
    for (const auto& resource : Resources)
        if (const CQorViewIns* found = resource->Instrument(name))
            return found->Id;
    return InstrumentId::None;
}

ResourceId CQorViewDoc::FindResource(std::string_view name) const {
    CRecursiveLock lock(DocLock);
    for (const auto& resource : Resources)
        if (resource->Name() == name)
            return resource->Id;
    return ResourceId::None;
}

int CQorViewDoc::SetImmersed(std::string_view name, bool immersed) {
    CRecursiveLock lock(DocLock);
    int count = 0;
    for (const auto& resource : Resources)
        for (const auto& instrument : resource->Instruments)
            if (name.empty() || instrument->Name() == name) {
                instrument->Live.Immersed = immersed;
                ++count;
            }
    NoteChange();
    return count;
}

namespace {

/// Sentences and the like; a definition does not say how long delimited frames may be.
constexpr std::uint64_t UsualTextFrame = 256;

} // namespace

ResourceStatus CQorViewDoc::StatusOf(const CQorViewRes& resource) const {
    RawLog.LockIsHeld();
    ResourceStatus status;
    status.id = resource.Id;
    status.name = resource.Name();
    status.isFile = resource.IsFile();
    status.playing = resource.Playing;
    status.playSpeed = resource.Pace.Times();
    status.filePosition = resource.Pace.Position();
    status.fileSize = resource.FileSize;
    status.fileTime = resource.Moment(resource.Pace.Time());
    status.reconnects = resource.Reconnect && resource.Wanted;
    status.serial = resource.Serial;
    status.figures = resource.Comm.Figures();
    for (const auto& instrument : resource.Instruments) {
        const CFrameChecks& checks = instrument->Checks;
        status.instruments.push_back(
            {instrument->Id, instrument->ShownName(), instrument->FramesReceived,
             checks.DroppedCount, checks.ChecksumErrorCount, checks.ValueErrorCount,
             RawLog.FramesThisLog(*instrument).written, instrument->Live.FrameRate,
             instrument->Live.Immersed, instrument->AcquisitionEnabled, checks.ChecksCounter(),
             checks.ChecksSum()});
        status.frames += instrument->FramesReceived;
        const CInstrument& definition = instrument->Definition();
        status.longestFrame =
            std::max(status.longestFrame, definition.Type() == FrameType::Fixed
                                              ? std::uint64_t(definition.FrameSize())
                                              : UsualTextFrame);
        status.dropped += checks.DroppedCount;
        status.checksumErrors += checks.ChecksumErrorCount;
        status.checksCounter = status.checksCounter || checks.ChecksCounter();
        status.checksSum = status.checksSum || checks.ChecksSum();
    }
    return status;
}

SessionSnapshot CQorViewDoc::Snapshot() const {
    CRecursiveLock lock(DocLock);
    SessionSnapshot snapshot;
    for (const auto& resource : Resources)
        snapshot.resources.push_back(StatusOf(*resource));
    snapshot.log = RawLog.Status();
    return snapshot;
}

void CQorViewDoc::ReadDerived(const CQorViewIns& instrument, std::vector<DerivedRow>& rows) const {
    CRecursiveLock lock(DocLock);
    const FrameOwner* owner = OwnerOf(instrument.Id);
    if (owner && owner->package)
        owner->package->Products.Read(InputsOf(*owner->package), rows);
    else
        instrument.Products.Read(instrument.Live, rows);
}

std::string CQorViewDoc::PackageOf(const CQorViewIns& instrument) const {
    CRecursiveLock lock(DocLock);
    const FrameOwner* owner = OwnerOf(instrument.Id);
    return owner && owner->package ? owner->package->Name : std::string();
}

} // namespace qor
