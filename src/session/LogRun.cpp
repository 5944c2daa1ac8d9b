// SPDX-License-Identifier: GPL-3.0-or-later
//
// The run of a log. See LogRun.h.
#include "session/LogRun.h"

#include "base/Text.h"
#include "session/FileKind.h"
#include "session/LogHeader.h"
#include "session/LogName.h"
#include "session/SessionPath.h"

#include <utility>

namespace qor {
namespace {

constexpr int StopLookMilliseconds = 100;

} // namespace

CLogRun::CLogRun(CQorViewDoc& doc, LogRunPlan plan)
    : Doc(doc), Setup(doc), Loop(doc), Plan(std::move(plan)) {
    if (Plan.manifests)
        Doc.MakeManifests();
    Doc.Acquisition.OnEvent = [this](const Event& event) { Note(event); };
    CRecursiveLock lock(Doc.DocLock);
    Doc.SessionLog.KeepText = false;
    Doc.NoDialogs = true;
    Doc.ExitIfDone = true;
    Doc.ExitOnError = Plan.exitOnError;
    for (const std::string& folder : Plan.spareDirectories)
        Doc.SpareDirectories.push_back(WithSeparator(FullPathOf(folder)));
    Doc.Options = Plan.log;
}

void CLogRun::Note(const Event& event) {
    CLock lock(EventLock);
    if (event.kind == EventKind::LogBegun || event.kind == EventKind::LogGoesOn)
        Files.push_back(event.subject);
    if (event.kind != EventKind::Note)
        Events.push_back(event);
}

std::vector<Event> CLogRun::TakeEvents() {
    CLock lock(EventLock);
    return std::exchange(Events, {});
}

std::vector<std::string> CLogRun::LogFiles() const {
    CLock lock(EventLock);
    return Files;
}

bool CLogRun::SetUp() {
    Refused = Doc.Session.OpenSession(PlannedSession(Plan), Plan.sessionPath, Setup);
    if (!Refused.empty())
        return false;
    for (const PortPlan& port : Plan.ports)
        SetUpPort(port);
    Setup.ApplyNames(Plan.names);
    Setup.JudgeReplay();
    Doc.RawLog.SetInputs(Inputs());
    Doc.Captures.Begin(Plan.captureAll ? CaptureRule::All : CaptureRule::Unframed);
    return PortsRefused.empty();
}

/// The instruments join those that a session has on the port.
void CLogRun::SetUpPort(const PortPlan& port) {
    std::vector<LoadedPackage> packages;
    std::vector<std::string> definitions;
    const ResourceId resource = AddPort(port, packages, definitions);
    if (resource == ResourceId::None)
        return;
    for (const std::string& path : definitions)
        Setup.AddDefinition(path, resource);
    for (LoadedPackage& loaded : packages)
        Setup.AddPackage(std::move(loaded), resource, port.instruments.packageOptions.Over({}));
}

/// A package brings up its port at its baud rate, unless the plan names another. A file of either
/// kind may stand in either list.
ResourceId CLogRun::AddPort(const PortPlan& port, std::vector<LoadedPackage>& packages,
                            std::vector<std::string>& definitions) {
    SerialResourceSettings settings = RunPort(port.settings, Plan.ports.size());
    bool baudKnown = port.baudGiven;
    std::vector<std::string> files = port.instruments.definitions;
    files.insert(files.end(), port.instruments.packages.begin(), port.instruments.packages.end());
    for (const std::string& path : files) {
        if (KindByName(path) != FileKind::Package) {
            definitions.push_back(path);
            continue;
        }
        packages.push_back(LoadPackage(path, Doc.User, Doc));
        if (!baudKnown && packages.back().ok) {
            settings = PackagePort(packages.back(), settings, Doc.User);
            baudKnown = true;
        }
    }
    if (Plan.session && HasPort(*Plan.session, settings.portName))
        return Doc.FindResource(settings.portName);
    CommResult result = CommResult::Success;
    const ResourceId resource = Doc.AddSerialResource(settings, &result);
    if (resource == ResourceId::None)
        PortsRefused.push_back({settings, result});
    else
        Doc.SetReconnect(resource, Plan.reconnect);
    return resource;
}

std::string CLogRun::Directory() const {
    CRecursiveLock lock(Doc.DocLock);
    return Doc.Naming.logDirectory;
}

std::string CLogRun::FirstLogPath() const {
    CRecursiveLock lock(Doc.DocLock);
    if (Doc.Naming.logNamingMode == LogNamingMode::TimeStamp)
        return {};
    const std::string name = LogDisplayName(Doc.Naming, Doc.Station);
    return name.empty() ? name : Doc.Naming.logDirectory + name;
}

bool CLogRun::WantsPosition() const {
    CRecursiveLock lock(Doc.DocLock);
    return Doc.Options.gpsHeaderEnabled;
}

bool CLogRun::HasInstruments() const {
    for (const ResourceStatus& resource : Doc.Snapshot().resources)
        if (!resource.isFile && !resource.instruments.empty())
            return true;
    return false;
}

bool CLogRun::Connect() {
    bool any = false;
    for (const ResourceStatus& resource : Doc.Snapshot().resources) {
        if (resource.isFile) // what a log holds already is not logged again
            continue;
        const CommResult result = Doc.ConnectResource(resource.id);
        if (result == CommResult::Success) {
            any = true;
            continue;
        }
        const SessionSnapshot now = Doc.Snapshot();
        const ResourceStatus& refused = *now.Find(resource.id);
        any = any || refused.reconnects;
        PortsRefused.push_back(
            {refused.serial, result, refused.figures.connectError, refused.reconnects});
    }
    return any;
}

void CLogRun::WaitForPosition(int milliseconds, const CEvent& stop) {
    const std::int64_t until = Doc.Clock.MonotonicMilliseconds() + milliseconds;
    ResourceId port = ResourceId::None;
    const InstrumentId gps = Doc.Role(InstrumentRole::Gps);
    {
        CRecursiveLock lock(Doc.DocLock);
        const SessionState::FrameOwner* owner = Doc.OwnerOf(gps);
        if (!owner)
            return;
        port = owner->resource->Id;
    }
    do {
        Doc.Acquisition.TakeCommands(0);
        Doc.Acquisition.TakeFramesOf(port, gps, Held);
        CRecursiveLock lock(Doc.DocLock);
        if (HasPosition(Doc, Doc.Clock.Now()))
            return;
    } while (Doc.Clock.MonotonicMilliseconds() < until && !stop.Wait(StopLookMilliseconds));
}

bool CLogRun::Begin() {
    if (!Doc.RawLog.BeginLogFile())
        return false;
    const CSettledLock lock(Doc.DocLock, Doc.RawLog); // its end may have come by now
    Doc.Acquisition.ProcessFrames(Held);
    return true;
}

CLogRun::State CLogRun::Look() const {
    const SessionSnapshot snapshot = Doc.Snapshot();
    if (!snapshot.log.loggingActive)
        return State::Done;
    for (const ResourceStatus& resource : snapshot.resources)
        if (resource.figures.connected || resource.reconnects)
            return State::Going;
    return State::NoPort;
}

void CLogRun::End() {
    Doc.DisconnectAll();
    Doc.RawLog.ShutDown(); // waits for the disk, whose last word the loop still hears
    Doc.Manifests.Stop();
    Loop.Stop();
}

} // namespace qor
