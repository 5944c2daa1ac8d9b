// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's lists of resources and instruments, their connection, and the taking of frames and
// messages. See QorViewDoc.h.
#include "session/QorViewDoc.h"

#include "platform/FileErrorText.h"

#include <utility>

namespace qor {
namespace {

constexpr const char* SettingsSection = "Settings";
constexpr const char* EnableSessionLogKey = "Enable Session Log File";
constexpr const char* SessionLogDirectoryKey = "Session Log Directory";
constexpr const char* LoggingSoundsKey = "Logging Sounds";

} // namespace

CQorViewDoc::CQorViewDoc(CClock& clock, SerialPortFactory makePort, CUserService& user,
                         CProfileStore& profile)
    : SessionState(clock, user, profile), SessionLog(*this), RawLog(*this, *this) {
    AttachController(std::make_unique<CTelemControl>(clock, std::move(makePort)));
}

CQorViewDoc::~CQorViewDoc() {
    DisconnectAll();
    RawLog.ShutDown();
    while (TakeCommands(0)) {
    }
}

void CQorViewDoc::AddSessionLogEntry(const std::string& message) {
    SessionLog.AddSessionLogEntry(message);
}

void CQorViewDoc::BeginSession(const std::string& sessionPath) {
    SessionLog.OpenSessionLog();
    ReportMessage(sessionPath.empty() ? "Beginning new session.\r\n"
                                      : "Beginning session \"" + sessionPath + "\".\r\n");
}

void CQorViewDoc::LoadSettings() {
    SessionLog.SetFile(Profile.ReadInteger(SettingsSection, EnableSessionLogKey, 0) != 0,
                       Profile.ReadText(SettingsSection, SessionLogDirectoryKey));
    CRecursiveLock lock(DocLock);
    Options.loggingSounds = Profile.ReadInteger(SettingsSection, LoggingSoundsKey, 0) != 0;
}

void CQorViewDoc::SaveSettings() {
    Profile.WriteInteger(SettingsSection, EnableSessionLogKey, SessionLog.SessionLogEnabled());
    Profile.WriteText(SettingsSection, SessionLogDirectoryKey, SessionLog.SessionLogDirectory());
    CRecursiveLock lock(DocLock);
    Profile.WriteInteger(SettingsSection, LoggingSoundsKey, Options.loggingSounds);
}

CQorViewRes* CQorViewDoc::ResourceAt(int resource) const {
    if (resource < 0 || static_cast<std::size_t>(resource) >= Resources.size())
        return nullptr;
    return Resources[static_cast<std::size_t>(resource)].get();
}

CommResult CQorViewDoc::NoResource(const char* operation) {
    ReportMessage(std::string(operation) + "\r\n" +
                  std::string(CommDetail(CommResult::ResourceReference)));
    return CommResult::ResourceReference;
}

int CQorViewDoc::AddSerialResource(const SerialResourceSettings& settings, CommResult* result) {
    CRecursiveLock lock(DocLock);
    CommResult added = Controller()->AddResource(settings);
    if (result)
        *result = added;
    CTelemComm* comm = Controller()->Resource(settings.portName);
    if (added != CommResult::Success || !comm)
        return -1;
    Resources.push_back(std::make_unique<CQorViewRes>(*comm, settings));
    return static_cast<int>(Resources.size()) - 1;
}

int CQorViewDoc::AddFileResource(const std::string& path, const FileResourceSettings& settings,
                                 CommResult* result) {
    CRecursiveLock lock(DocLock);
    CFile file;
    FileCause cause = file.OpenForReading(path);
    CommResult added = CommResult::FileError;
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
        return -1;
    Resources.push_back(std::make_unique<CQorViewRes>(*Controller()->Resource(name), settings));
    return static_cast<int>(Resources.size()) - 1;
}

CommResult CQorViewDoc::RemoveResource(int resource) {
    CommResult disconnected = DisconnectResource(resource);
    if (disconnected == CommResult::ResourceReference || disconnected == CommResult::StillConnected)
        return disconnected;
    CRecursiveLock lock(DocLock);
    CQorViewRes* removed = ResourceAt(resource);
    if (!removed)
        return NoResource("Unable to remove communications resource.");
    while (!removed->Instruments.empty()) {
        CommResult result =
            RemoveInstrument(resource, static_cast<int>(removed->Instruments.size()) - 1);
        if (result != CommResult::Success)
            return result;
    }
    const std::string name = removed->Name();
    CommResult result = Controller()->RemoveResource(name);
    if (result != CommResult::Success)
        return result;
    Resources.erase(Resources.begin() + resource);
    for (RoleHolder& holder : Roles)
        if (holder.resource == resource)
            holder = {};
        else if (holder.resource > resource)
            --holder.resource;
    RebuildOwners();
    return result;
}

AddedInstrument CQorViewDoc::AddInstrument(const std::string& definitionPath, int resource) {
    auto definition = std::make_unique<CInstrument>();
    DefinitionStatus status = definition->Load(definitionPath);
    const std::string parseLog = definition->ParseLog();
    if (!parseLog.empty())
        ReportMessage(parseLog);
    AddedInstrument added;
    if (status == DefinitionStatus::Success)
        added = AddInstrument(std::move(definition), resource);
    added.definition = status;
    added.parseLog = parseLog;
    return added;
}

AddedInstrument CQorViewDoc::AddInstrument(std::unique_ptr<CInstrument> definition, int resource) {
    AddedInstrument added;
    added.definition = DefinitionStatus::Success;
    added.parseLog = definition->ParseLog();
    const std::string name = definition->Name();

    CRecursiveLock lock(DocLock);
    CQorViewRes* owner = ResourceAt(resource);
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
    if (added.comm != CommResult::Success || !loaded) {
        CommResult first = added.comm;
        added.comm = Controller()->RemoveInstrument(name);
        if (first != CommResult::Success)
            added.comm = first;
        return added;
    }
    owner->Instruments.push_back(std::make_unique<CQorViewIns>(*loaded, owner->Name(), *this));
    added.instrument = owner->Instruments.back().get();
    added.index = static_cast<int>(owner->Instruments.size()) - 1;
    RebuildOwners();
    return added;
}

CommResult CQorViewDoc::RemoveInstrument(int resource, int instrument) {
    CRecursiveLock lock(DocLock);
    CQorViewRes* owner = ResourceAt(resource);
    CQorViewIns* removed = owner ? owner->Instrument(instrument) : nullptr;
    if (!removed) {
        ReportMessage("Unable to remove instrument.\r\n" +
                      std::string(CommDetail(CommResult::InstrumentReference)));
        return CommResult::InstrumentReference;
    }
    // The session's instrument goes first: it refers to the definition that the controller owns.
    const std::string name = removed->Name();
    owner->Instruments.erase(owner->Instruments.begin() + instrument);
    for (RoleHolder& holder : Roles)
        if (holder.resource == resource && holder.instrument == instrument)
            holder = {};
        else if (holder.resource == resource && holder.instrument > instrument)
            --holder.instrument;
    CommResult result = Controller()->RemoveInstrument(name);
    RebuildOwners();
    return result;
}

/// The name of a resource, empty when there is none of the index.
std::string CQorViewDoc::NameOf(int resource) const {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* found = ResourceAt(resource);
    return found ? found->Name() : "";
}

CommResult CQorViewDoc::ConnectResource(int resource) {
    const std::string name = NameOf(resource);
    if (name.empty())
        return NoResource("Unable to connect communications resource.");
    return Controller()->ConnectResource(name);
}

CommResult CQorViewDoc::DisconnectResource(int resource) {
    const std::string name = NameOf(resource);
    if (name.empty())
        return NoResource("Unable to disconnect communications resource.");
    {
        CRecursiveLock lock(DocLock);
        if (ResourceAt(resource)->IsFile()) {
            ResourceAt(resource)->Playing = false;
            return CommResult::Success;
        }
    }
    CFrameQueue left;
    CommResult result = Controller()->DisconnectResource(name, &left);
    RawLog.LogFrames(left);
    RawLog.ShowPending();
    return result;
}

bool CQorViewDoc::ConnectAll() {
    bool all = true;
    for (int i = 0; i < static_cast<int>(ResourceCount()); ++i)
        if (!StatusOf(i).isFile && ConnectResource(i) != CommResult::Success)
            all = false;
    return all;
}

void CQorViewDoc::DisconnectAll() {
    for (int i = 0; i < static_cast<int>(ResourceCount()); ++i)
        (void)DisconnectResource(i); // reported where it fails; the others are to go on
}

CommResult CQorViewDoc::ResetAbort(int resource, std::uint32_t& abortCode) {
    CRecursiveLock lock(DocLock);
    const CQorViewRes* found = ResourceAt(resource);
    if (!found)
        return NoResource("Unable to retrieve telemetry aquisition abort code.");
    return Controller()->AbortCode(found->Name(), abortCode);
}

void CQorViewDoc::SetRole(InstrumentRole role, int resource, int instrument) {
    CRecursiveLock lock(DocLock);
    const auto number = static_cast<std::size_t>(role);
    if (number >= Roles.size())
        return;
    auto setUntagged = [this, role](bool untagged) REQUIRES(DocLock) {
        CQorViewIns* holder = RoleInstrument(role);
        if (role == InstrumentRole::Gps && holder)
            ResourceAt(Role(role).resource)->Comm.SetUntagged(holder->Name(), untagged);
    };
    setUntagged(false);
    Roles[number] = {resource, instrument};
    setUntagged(true);
}

CQorViewIns* CQorViewDoc::FindInstrument(std::string_view name, RoleHolder* place) const {
    CRecursiveLock lock(DocLock);
    for (std::size_t r = 0; r < Resources.size(); ++r) {
        int index = Resources[r]->FindInstrument(name);
        if (index < 0)
            continue;
        if (place)
            *place = {static_cast<int>(r), index};
        return Resources[r]->Instrument(index);
    }
    return nullptr;
}

int CQorViewDoc::SetImmersed(std::string_view name, bool immersed) {
    CRecursiveLock lock(DocLock);
    int count = 0;
    for (const auto& resource : Resources)
        for (const auto& instrument : resource->Instruments)
            if (name.empty() || instrument->Name() == name) {
                instrument->Immersed = immersed;
                ++count;
            }
    return count;
}

std::size_t CQorViewDoc::ResourceCount() const {
    CRecursiveLock lock(DocLock);
    return Resources.size();
}

ResourceStatus CQorViewDoc::StatusOf(int resource) const {
    CRecursiveLock lock(DocLock);
    ResourceStatus status;
    const CQorViewRes* found = ResourceAt(resource);
    if (!found)
        return status;
    status.name = found->Name();
    status.isFile = found->IsFile();
    status.figures = found->Comm.Figures();
    for (const InstrumentFigures& figures : FiguresOf(resource)) {
        status.frames += figures.frames;
        status.dropped += figures.dropped;
        status.checksumErrors += figures.checksumErrors;
    }
    return status;
}

std::vector<InstrumentFigures> CQorViewDoc::FiguresOf(int resource) const {
    CRecursiveLock lock(DocLock);
    std::vector<InstrumentFigures> all;
    for (std::size_t r = 0; r < Resources.size(); ++r) {
        if (resource >= 0 && static_cast<std::size_t>(resource) != r)
            continue;
        for (const auto& instrument : Resources[r]->Instruments)
            all.push_back({instrument->Name(), static_cast<int>(r), instrument->FramesReceived,
                           instrument->Checks.DroppedCount, instrument->Checks.ChecksumErrorCount,
                           instrument->Checks.ValueErrorCount, instrument->FramesThisLog});
    }
    return all;
}

/// Retrieval and processing stand under one hold of the lock, so that frames that a disconnection
/// hands over cannot overtake those that were retrieved before.
std::size_t CQorViewDoc::TakeBatch(CQorViewRes& resource) {
    std::size_t count = 0;
    CommResult result;
    do {
        result = Controller()->RetrieveFrames(resource.Name(), Batch);
        count = Batch.Size();
        RawLog.LogFrames(Batch);
    } while (count == 0 && result == CommResult::Success && resource.IsFile() &&
             !resource.Comm.AtEnd());
    resource.FramesReceived += count;
    if (count == 0)
        resource.Playing = false;
    return count;
}

std::size_t CQorViewDoc::TakeFrames() {
    std::size_t total = 0;
    for (int i = 0;; ++i) {
        {
            CRecursiveLock lock(DocLock);
            CQorViewRes* resource = ResourceAt(i);
            if (!resource)
                break;
            if (resource->IsFile() && !resource->Playing)
                continue;
            total += TakeBatch(*resource);
        }
        RawLog.ShowPending();
    }
    return total;
}

std::size_t CQorViewDoc::TakeFileFrames(int resource) {
    std::size_t count = 0;
    {
        CRecursiveLock lock(DocLock);
        CQorViewRes* file = ResourceAt(resource);
        if (file && file->IsFile())
            count = TakeBatch(*file);
    }
    RawLog.ShowPending();
    return count;
}

bool CQorViewDoc::TakeCommands(int milliseconds) {
    if (!Controller()->Commands().Drain(Taken, milliseconds))
        return false;
    for (const ProcessCommand& command : Taken)
        if (command.notice == NoticeCode::None)
            AddSessionLogEntry(command.text);
        else if (OnNotice)
            OnNotice(command.notice, command.text);
    Taken.clear();
    return true;
}

} // namespace qor
