// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's life and its lists: settings, resources, instruments, roles. What it does while
// telemetry flows is DocTelemetry.cpp. See QorViewDoc.h.
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
                instrument->Live.Immersed = immersed;
                ++count;
            }
    return count;
}

} // namespace qor
