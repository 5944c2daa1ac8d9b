// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the rooms of the document share: its lock, the seams it was given, and the session's data
// under that lock. The document owns it (and is one); raw log and session log borrow it. It has no
// behaviour beyond look-ups.
#pragma once

#include "base/Lock.h"
#include "platform/Clock.h"
#include "session/LogName.h"
#include "session/ProfileStore.h"
#include "session/QorViewRes.h"
#include "session/UserService.h"

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qor {

/// Entered in the station dialog and stored with the session; goes into the raw log's header.
struct StationInformation {
    std::string cruiseId;
    std::string operatorName;
    std::string latitude;
    std::string longitude;
    std::string zone;
    std::string comment;
    std::string stationId;
    std::string cast; ///< two letters in AUTOCAST mode
};

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
    bool loggingSounds = false;
    bool overwriteExisting = false; ///< where nobody can be asked: replace an existing log
};

/// The roles that an instrument of the session can fill.
enum class InstrumentRole : std::int32_t {
    Profiler = 1,
    Reference = 2,
    Tracker = 4,
    SqmInstrument = 5,
    DeviceUnderTest = 6,
    WeatherStation = 7,
    Gps = 8,
};

/// Who fills a role: indices of the resource and of the instrument within it, -1 when nobody does.
struct RoleHolder {
    int resource = -1;
    int instrument = -1;

    bool Assigned() const { return resource != -1 && instrument != -1; }
};
inline constexpr std::size_t RoleTableSize = 9;

/// Called for each frame right after its checks and conversions, under the document's lock, on the
/// thread that acquires: the index of the resource, the instrument with the frame as its current
/// one, and what the checks found.
using FrameHook =
    std::function<void(int resource, CQorViewIns& instrument, const FrameCheckResult&)>;

struct SessionState {
    SessionState(CClock& clock, CUserService& user, CProfileStore& profile)
        : Clock(clock), User(user), Profile(profile) {}

    /// The document's lock, re-entrant, the first of the chain. User messages and questions are
    /// shown while it is released: do not hold it over a call that may show one.
    mutable CRecursiveMutex DocLock;

    CClock& Clock;
    CUserService& User;
    CProfileStore& Profile;

    StationInformation Station GUARDED_BY(DocLock);
    LogOptions Options GUARDED_BY(DocLock);
    LogNaming Naming GUARDED_BY(DocLock);
    double PressureTare GUARDED_BY(DocLock) = 0.0; ///< taken from the first profiler
    bool NoDialogs GUARDED_BY(DocLock) = false;    ///< no dialog may be shown and nobody be asked
    bool ExitIfDone GUARDED_BY(DocLock) = false;   ///< the program ends when its log has ended
    FrameHook OnFrame GUARDED_BY(DocLock);
    /// Delivers raised view updates, once a tick, without the lock; set before anything runs.
    std::function<void()> OnViewsUpdate;

    std::vector<std::unique_ptr<CQorViewRes>> Resources GUARDED_BY(DocLock);
    std::array<RoleHolder, RoleTableSize> Roles GUARDED_BY(DocLock);

    /// The stored holder when the role number is one of the table, else nobody. Re-entrant.
    RoleHolder Role(int role) const;
    RoleHolder Role(InstrumentRole role) const { return Role(static_cast<int>(role)); }
    /// The instrument that fills the role, or null when unassigned or not there.
    CQorViewIns* RoleInstrument(InstrumentRole role) const REQUIRES(DocLock);

    /// Whose a frame is, by the identity of its attachment; null when no instrument claims it.
    struct FrameOwner {
        CQorViewIns* instrument = nullptr;
        int resource = -1;
        int index = -1;
    };
    const FrameOwner* OwnerOf(std::uint32_t identity) const REQUIRES(DocLock) {
        if (identity - FirstIdentity >= Owners.size() ||
            !Owners[identity - FirstIdentity].instrument)
            return nullptr;
        return &Owners[identity - FirstIdentity];
    }
    /// Looks up the identities of all attachments anew; after any change of resources or
    /// instruments.
    void RebuildOwners() REQUIRES(DocLock);

  private:
    std::vector<FrameOwner> Owners GUARDED_BY(DocLock); ///< by identity, from FirstIdentity on
    std::uint32_t FirstIdentity GUARDED_BY(DocLock) = 0;
};

} // namespace qor
