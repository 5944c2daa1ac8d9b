// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's half of acquisition: takes frames and commands from the controller and leads each
// frame its way: owner, checks and conversion, products, listeners, raw log. Called by the
// acquisition loop on its thread, and by whoever plays a file without one.
#pragma once

#include "session/RawLog.h"
#include "session/SessionState.h"
#include "telemetry/TelemControl.h"

#include <functional>

namespace qor {

class CSessionLog;

class CAcquisition {
  public:
    /// What it leads frames and messages to; all belong to the document.
    CAcquisition(SessionState& session, CRawLog& rawLog, CSessionLog& sessionLog)
        : Session(session), RawLog(rawLog), SessionLog(sessionLog) {}

    /// The controller is lent once, before anything runs.
    void Use(CTelemControl& control) { Control = &control; }

    /// Takes the frames that wait on every resource and processes them; from a playing file, one
    /// batch. Returns how many there were.
    std::size_t TakeFrames();
    /// The same for one resource; a file's batch may be empty before its end: see AtEnd.
    std::size_t TakeFramesOf(ResourceId resource);
    /// The same for one resource, but only the frames of one instrument are processed: the others
    /// join `held`, in order.
    void TakeFramesOf(ResourceId resource, InstrumentId instrument, CFrameQueue& held);
    /// Frames that a port has cut, before one of its instruments goes; a file is not read on for
    /// it.
    /// Under the lock; messages are not shown.
    void TakeQueued(CQorViewRes& resource);
    /// Whether some file is being read on.
    bool IsPlaying() const;
    /// Files are not read on.
    void StopPlaying();
    /// True when a file resource has given all that it has (and for any other resource).
    bool AtEnd(ResourceId resource) const;

    /// Processes every frame of the queue and leaves it empty. Returns how many an instrument
    /// claimed. Without the lock when messages are to be shown soon; see CRawLog::ShowPending.
    std::size_t ProcessFrames(CFrameQueue& frames);

    /// Delivers queued events to the session log and to `OnEvent`, and notices to `OnNotice`, in
    /// order, waiting at most so long for the first command. True when a command came.
    bool TakeCommands(int milliseconds);

    // Set before anything runs; called on the thread that acquires, without the lock.
    /// Hears every notice about a resource (status changed, end of file, frames available).
    std::function<void(NoticeCode, const std::string& resource)> OnNotice;
    /// Hears every event that goes into the session log.
    std::function<void(const Event&)> OnEvent;

  private:
    std::size_t TakeBatch(CQorViewRes& resource) REQUIRES(Session.DocLock);
    CommResult ReadFile(CQorViewRes& resource) REQUIRES(Session.DocLock);
    bool ProcessFrame(CFrameData& frame, std::int64_t now) REQUIRES(Session.DocLock);

    SessionState& Session;
    CRawLog& RawLog;
    CSessionLog& SessionLog;
    CTelemControl* Control = nullptr;
    CFrameQueue Batch GUARDED_BY(Session.DocLock); ///< its memory is used from batch to batch
    std::vector<QueuedCommand> Taken;              ///< of the thread that acquires
};

} // namespace qor
