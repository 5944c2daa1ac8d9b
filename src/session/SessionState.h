// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the rooms of the document share: its lock, the seams it was given, and the session's data
// under that lock. The document owns it (and is one); raw log and session log borrow it. It has no
// behaviour beyond look-ups.
#pragma once

#include "base/Lock.h"
#include "platform/Clock.h"
#include "products/SensorUnits.h"
#include "products/VelocityState.h"
#include "session/InstrumentRole.h"
#include "session/LogName.h"
#include "session/ProfileStore.h"
#include "session/QorViewRes.h"
#include "session/SessionPackage.h"
#include "session/StationInformation.h"
#include "session/UserService.h"

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Hours, minutes and seconds as the log options dialog has them.
struct LogSpan {
    std::int32_t hours = 0;
    std::int32_t minutes = 0;
    std::int32_t seconds = 0;

    std::int64_t Seconds() const {
        return std::int64_t{hours} * 3600 + std::int64_t{minutes} * 60 + seconds;
    }
};

struct LogOptions {
    bool timeStampEnabled = false; ///< "$PCZDA" sentences
    bool gpsHeaderEnabled = false; ///< position and NMEA sentences from the GPS instrument
    bool durationEnabled = false;
    LogSpan duration;
    bool repeatEnabled = false;
    LogSpan repeatInterval;
    bool everyEnabled = false; ///< logs begin at round times of the local day
    LogSpan every;             ///< at most a day
    bool loggingSounds = false;
    bool overwriteExisting = false; ///< where nobody can be asked: replace an existing log
};

/// Called for each frame right after its checks, conversions and products, under the document's
/// lock, on the thread that acquires: the instrument with the frame as its current one, and what
/// the checks found.
using FrameHook = std::function<void(CQorViewIns& instrument, const FrameCheckResult&)>;

struct SessionState {
    SessionState(CClock& clock, CUserService& user, CProfileStore& profile)
        : Clock(clock), User(user), Profile(profile) {}

    /// The document's lock, re-entrant, the first of the chain. User messages and questions are
    /// shown while it is released: do not hold it over a call that may show one.
    mutable CRecursiveMutex DocLock;

    /// One connecting, disconnecting or removing of a resource at a time; taken before DocLock,
    /// never with it held.
    mutable CMutex PortsLock;

    CClock& Clock;
    CUserService& User;
    CProfileStore& Profile;

    StationInformation Station GUARDED_BY(DocLock);
    LogOptions Options GUARDED_BY(DocLock);
    LogNaming Naming GUARDED_BY(DocLock);
    /// Taken from the first profiler, none was taken: empty; and the way from its units to dbar. No
    /// scale: it is in the units of whichever sensor it is for.
    std::optional<double> PressureTare GUARDED_BY(DocLock);
    std::optional<UnitScale> TareScale GUARDED_BY(DocLock);
    /// While on, packages and instruments can be neither added nor removed.
    bool CalibrationMode GUARDED_BY(DocLock) = false;
    bool NoDialogs GUARDED_BY(DocLock) = false;   ///< no dialog may be shown and nobody be asked
    bool ExitIfDone GUARDED_BY(DocLock) = false;  ///< the program ends when its log has ended
    bool ExitOnError GUARDED_BY(DocLock) = false; ///< a log whose file fails ends the run
    /// Folders for the log when its own takes none any more, in order.
    std::vector<std::string> SpareDirectories GUARDED_BY(DocLock);
    /// Who sees every frame; each is kept by its CFrameWatch.
    std::vector<const FrameHook*> Watches GUARDED_BY(DocLock);
    /// Delivers raised view updates, once a tick, without the lock; set before anything runs.
    std::function<void()> OnViewsUpdate;

    std::vector<std::unique_ptr<CQorViewRes>> Resources GUARDED_BY(DocLock);
    std::vector<std::unique_ptr<CPackage>> PackageTable GUARDED_BY(DocLock);
    std::array<InstrumentId, RoleTableSize> Roles GUARDED_BY(DocLock){};
    /// Whether packages have the further products too; before packages are added.
    DerivedChoice Derived GUARDED_BY(DocLock) = DerivedChoice::Usual;
    /// Kept: one for the process, not one a package.
    VelocityState Velocity GUARDED_BY(DocLock);

    /// The instrument of that role number, or None: unassigned, or no role of the table.
    InstrumentId Role(int role) const;
    InstrumentId Role(InstrumentRole role) const { return Role(static_cast<int>(role)); }
    /// The instrument that fills the role, or null when unassigned or not there.
    CQorViewIns* RoleInstrument(InstrumentRole role) const REQUIRES(DocLock);

    /// The instruments whose frames go into a log, in the order of their ports.
    std::vector<LoggedInstrument> LoggedInstruments() const REQUIRES(DocLock);

    /// What a frame concerns, by the identity of its attachment.
    struct FrameOwner {
        CQorViewIns* instrument = nullptr;
        CQorViewRes* resource = nullptr;
        CPackage* package = nullptr;    ///< null for a lone instrument
        CReplayPace* playing = nullptr; ///< of a file that is played; null for a port
    };
    /// Null when no instrument claims the frame.
    const FrameOwner* OwnerOf(std::uint32_t identity) const REQUIRES(DocLock) {
        if (identity - FirstIdentity >= Owners.size() ||
            !Owners[identity - FirstIdentity].instrument)
            return nullptr;
        return &Owners[identity - FirstIdentity];
    }
    const FrameOwner* OwnerOf(InstrumentId id) const REQUIRES(DocLock) {
        return OwnerOf(static_cast<std::uint32_t>(id));
    }
    /// Null when no instrument has the name.
    const FrameOwner* OwnerNamed(const std::string& name) const REQUIRES(DocLock);
    /// The instrument or resource of a handle; null when it has gone.
    CQorViewIns* Find(InstrumentId id) const REQUIRES(DocLock);
    CQorViewRes* Find(ResourceId id) const REQUIRES(DocLock);
    CPackage* Find(PackageId id) const REQUIRES(DocLock);

    /// Something that faces show has changed. From any thread, under any lock.
    void NoteChange();
    /// Takes the notice, so that the next change gives another, before the state is looked at.
    void TakeChange() { ChangeRaised = false; }
    /// Hears that there are changes, once until they are taken, from any thread and under any lock:
    /// may only post. Set before anything runs.
    std::function<void()> OnChange;

    /// Looks up the owners of all attachments anew and lets the packages know their instruments;
    /// after any change of resources, instruments or packages.
    void RebuildOwners() REQUIRES(DocLock);
    /// Changes whenever they were looked up anew: pointers to instruments and packages that were
    /// kept before are no longer good.
    std::uint32_t OwnersVersion GUARDED_BY(DocLock) = 0;

    /// What the products of a package are computed from.
    CPackageRows::Inputs InputsOf(const CPackage& package) const REQUIRES(DocLock);

  private:
    std::atomic<bool> ChangeRaised = false;
    std::vector<FrameOwner> Owners GUARDED_BY(DocLock); ///< by identity, from FirstIdentity on
    std::uint32_t FirstIdentity GUARDED_BY(DocLock) = 0;
};

/// When an instrument's current frame came, as a moment; not known without one.
FrameTime MomentOf(const SessionState& session, const CQorViewIns& instrument)
    REQUIRES(session.DocLock);

} // namespace qor
