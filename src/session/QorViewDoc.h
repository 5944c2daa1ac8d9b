// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session document: owns the controller, the lists of resources, instruments and packages, the
// roles, the raw log and the session log. An owner, not a workshop: what its rooms do is in their
// files; acquisition is CAcquisition's.
//
// Threads: one thread commands the document (the user interface, or the command line's main
// thread); the acquisition loop works beside it. Operations take the document's lock themselves;
// those that may show a message or wait for a port or a disk are not called with it held. A face
// names instruments, resources and packages by their handles and asks for figures with Snapshot.
#pragma once

#include "session/Acquisition.h"
#include "session/DiskRoom.h"
#include "session/History.h"
#include "session/InstrumentList.h"
#include "session/LogManifests.h"
#include "session/LogStarter.h"
#include "session/PackageList.h"
#include "session/PortCaptures.h"
#include "session/PortKeeper.h"
#include "session/QorTelemetryDoc.h"
#include "session/RawLog.h"
#include "session/ResourceList.h"
#include "session/SessionDocument.h"
#include "session/SessionLog.h"
#include "session/SessionSnapshot.h"
#include "session/SessionState.h"

namespace qor {

/// What became of adding an instrument. Without an id it was not added; then either the load failed
/// (`definition` is not Success; `parseLog` says why) or the controller refused (`comm`).
struct AddedInstrument {
    InstrumentId id = InstrumentId::None;
    std::string name;
    DefinitionStatus definition = DefinitionStatus::NoError;
    CommResult comm = CommResult::Success;
    std::string parseLog;
    bool locked = false; ///< refused because the session is in calibration mode

    bool Added() const { return id != InstrumentId::None; }
};

class CQorViewDoc : public CQorTelemetryDoc, public SessionState {
  public:
    /// The seams live longer than the document. `makePort` makes the ports of serial resources.
    CQorViewDoc(CClock& clock, SerialPortFactory makePort, CUserService& user,
                CProfileStore& profile);
    /// Ends an open log, disconnects, and delivers what is still reported.
    ~CQorViewDoc() override;

    CHistory History;
    CSessionLog SessionLog;
    CRawLog RawLog;
    CLogManifests Manifests;
    CAcquisition Acquisition;
    CResourceList Sources;
    CInstrumentList Instruments;
    CPackageList Packages;
    CPortKeeper Ports;
    CPortCaptures Captures;
    CLogStarter Starter;
    CDiskRoom Room; ///< of the disk that logs go to; who shows it says of which folder
    CSessionDocument Session;

    /// Raw logs get manifests; before anything is loaded.
    void MakeManifests();
    /// Begins a session: opens the session log, reports "Beginning new session." or, with a path,
    /// "Beginning session ...".
    void BeginSession(const std::string& sessionPath = {});
    /// The application's settings of the session log and of logging sounds, from the profile store.
    void LoadSettings();

    // Each failure below has been reported when the call returns. In calibration mode no instrument
    // comes or goes; the operator is told.

    /// Adds a serial port. None when refused (the code in `result` when given).
    ResourceId AddSerialResource(const SerialResourceSettings& settings,
                                 CommResult* result = nullptr);
    /// Opens a file and adds it as a resource to be played.
    ResourceId AddFileResource(const std::string& path, const FileResourceSettings& settings = {},
                               CommResult* result = nullptr);
    CommResult RemoveResource(ResourceId resource);

    /// Loads a definition file and attaches it to a resource, acquisition enabled.
    AddedInstrument AddInstrument(const std::string& definitionPath, ResourceId resource);
    /// The same with a definition that is already loaded (a package's member).
    AddedInstrument AddInstrument(std::unique_ptr<CInstrument> definition, ResourceId resource);
    CommResult RemoveInstrument(InstrumentId instrument);
    /// The same under the lock, whatever the mode.
    CommResult Detach(InstrumentId instrument) REQUIRES(DocLock);

    /// Connecting and disconnecting wait for the port's worker, without the document's lock.
    /// Disconnecting processes the frames that are still queued, once a log that is to begin has,
    /// however slow the disk; a file is not read on.
    CommResult ConnectResource(ResourceId resource);
    CommResult DisconnectResource(ResourceId resource) EXCLUDES(PortsLock);
    /// Whether a port that was lost, or is not there yet, is tried again until it is disconnected.
    void SetReconnect(ResourceId resource, bool on);
    /// Every serial resource; false when one failed.
    bool ConnectAll();
    void DisconnectAll();
    /// Takes back a resource's abort code, so that it may connect again.
    CommResult ResetAbort(ResourceId resource, std::uint32_t& abortCode);

    /// Gives a role to an instrument, also a package's, or takes it away (None). What is wrong, or
    /// empty.
    std::string SetRole(InstrumentRole role, InstrumentId instrument);
    /// While it is on, packages and instruments can be neither added nor removed, moved or set.
    void SetCalibrationMode(bool on);
    /// The instrument of a name (byte for byte) over all resources, or None.
    InstrumentId FindInstrument(std::string_view name) const;
    /// The resource of a name, or None.
    ResourceId FindResource(std::string_view name) const;
    /// Immerses the instrument of that name, or all with an empty name; how many it were.
    int SetImmersed(std::string_view name, bool immersed);

    /// Figures of everything, taken under one hold of the lock.
    SessionSnapshot Snapshot() const;

    /// The derived rows that go with an instrument's frame: its package's, or its own. With values
    /// for the latest frames, into a list whose memory is used again.
    void ReadDerived(const CQorViewIns& instrument, std::vector<DerivedRow>& rows) const;
    /// The name of the package that the instrument belongs to; empty where it is alone.
    std::string PackageOf(const CQorViewIns& instrument) const;

  private:
    bool RefusesRemovalOf(ResourceId resource);
    CommResult Disconnect(ResourceId resource, CFrameQueue& left) EXCLUDES(PortsLock);
    CommResult NoResource(const char* operation);
    ResourceStatus StatusOf(const CQorViewRes& resource) const REQUIRES(DocLock);

    std::uint32_t LastResource GUARDED_BY(DocLock) = 0;
};

} // namespace qor
