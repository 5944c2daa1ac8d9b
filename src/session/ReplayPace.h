// SPDX-License-Identifier: GPL-3.0-or-later
//
// When the frames of a file that is played are due: all at once, or as their time tags lie apart,
// so many times faster. Frames that are read and not due yet wait here. Guarded by the document's
// lock.
#pragma once

#include "telemetry/FrameQueue.h"

#include <cstdint>

namespace qor {

class CReplayPace {
  public:
    /// How many times faster than recorded; 0: as fast as it goes. The next frame is due at once.
    void SetSpeed(double times) { Speed = times, Anchored = false; }
    double Times() const { return Speed; }
    bool IsPaced() const { return Speed > 0; }
    /// The next frame is due at once: after a pause.
    void Resume() { Anchored = false; }
    /// Another place of the file: what waits is forgotten.
    void Restart(std::uint64_t offset);

    /// Frames that were read and are not due yet.
    CFrameQueue Waiting;
    /// Moves the frames that are due at this moment of the monotonic clock, in milliseconds.
    void TakeDue(std::int64_t now, CFrameQueue& due);
    /// Where the playing is: behind the last frame that was handed on, and its time.
    void Note(const CFrameData& frame);
    std::uint64_t Position() const { return Offset; }
    const FrameTime& Time() const { return LastTime; }

  private:
    bool IsDue(const FrameTime& time, std::int64_t now);

    double Speed = 0;
    bool Anchored = false;
    std::int64_t FileStart = 0; ///< of the anchor, in milliseconds of the tags
    std::int64_t Start = 0;     ///< the same moment of the monotonic clock
    std::int64_t Latest = 0;
    std::uint64_t Offset = 0;
    FrameTime LastTime;
};

} // namespace qor
