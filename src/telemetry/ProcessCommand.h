// SPDX-License-Identifier: GPL-3.0-or-later
//
// The command queue: what port workers and components tell the acquisition loop, in the order in
// which they tell it. Its lock is the last of the chain: nothing is called while it is held.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/Clock.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

enum class NoticeCode : std::uint32_t {
    None = 0,
    StatusChanged = 1, ///< initialised, connected, disconnected, waiting for telemetry
    EndOfFile = 2,
    FramesAvailable = 4,
};

/// What waits in the queue: an event (notice None), or a notice about the named resource.
struct QueuedCommand {
    NoticeCode notice = NoticeCode::None;
    Event event; ///< of a notice only its subject, the resource's name
};

class CProcessCommand : public CMessageSink {
  public:
    explicit CProcessCommand(CClock& clock) : Clock(clock) {}

    /// A text without a line end gets one, so that nothing reported is lost.
    void Raise(Event event) override;
    /// A notice that still waits in the queue is not posted again.
    void PostNotice(NoticeCode notice, const std::string& resourceName);
    /// The notices of a pass that queued frames (status changed, frames available) with one
    /// wake-up.
    void PostFramesQueued(const std::string& resourceName);

    /// Waits up to so many milliseconds for a command, then hands over all there are. False: none
    /// came. Rounds that follow one another at once rest a few milliseconds, but never longer than
    /// the given time.
    bool Drain(std::vector<QueuedCommand>& commands, int milliseconds);
    /// Makes a waiting Drain return at once.
    void Wake();

  private:
    CClock& Clock;
    CMutex QueueLock;
    CCondition Arrived;
    std::vector<QueuedCommand> Commands GUARDED_BY(QueueLock);
    bool Woken GUARDED_BY(QueueLock) = false;
    bool LoopWaits GUARDED_BY(QueueLock) = false;    ///< for a command, and nobody has woken it yet
    std::int64_t RestEnds GUARDED_BY(QueueLock) = 0; ///< of the loop, on the monotonic clock
};

} // namespace qor
