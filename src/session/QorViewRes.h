// SPDX-License-Identifier: GPL-3.0-or-later
//
// A communications resource as the session sees it: the operator's settings and the instruments on
// it, in the order in which they were added. Guarded by the document's lock. The resource that does
// the work is the controller's CTelemComm of the same name.
#pragma once

#include "session/QorViewIns.h"
#include "session/ReplayPace.h"
#include "telemetry/TelemComm.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

class CQorViewRes {
  public:
    CQorViewRes(ResourceId id, CTelemComm& comm, const SerialResourceSettings& settings);
    CQorViewRes(ResourceId id, CTelemComm& comm, const FileResourceSettings& settings);

    const std::string& Name() const { return Comm.Name(); }
    bool IsFile() const { return File; }

    /// The instrument of a name (compared byte for byte), or null.
    CQorViewIns* Instrument(std::string_view name) const;

    const ResourceId Id;
    CTelemComm& Comm;              ///< the controller's; lives as long as this
    SerialResourceSettings Serial; ///< of a serial port
    FileResourceSettings Playback; ///< of a file
    std::vector<std::unique_ptr<CQorViewIns>> Instruments;
    bool Playing = false; ///< a file that the acquisition loop reads on
    CReplayPace Pace;     ///< at which it does
    std::uint64_t FileSize = 0;
    std::optional<int> ZoneMinutes; ///< what a file's times are ahead of UTC, where it says
    bool Reconnect = false;         ///< a port that was lost is tried again
    bool Wanted = false;            ///< a port that is to be connected
    std::uint64_t FramesReceived = 0;
    /// Counts what no curve may cross: a new connection, a file that is read from another place.
    std::uint32_t Breaks = 0;

    /// A frame's time as a moment: the tags of a file are local times of its zone, and stay as they
    /// are where that is not known.
    FrameTime Moment(FrameTime time) const;
    /// Whether that can be held against another clock.
    bool KnowsMoments() const { return !File || ZoneMinutes; }

    /// What came before a connection says nothing about the frames after it.
    void BeginConnection();

  private:
    bool File;
};

} // namespace qor
