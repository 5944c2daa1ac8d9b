// SPDX-License-Identifier: GPL-3.0-or-later
//
// Times for the frames of a raw log that carry none of their own, such as those of the GPS: each
// takes the tag or time stamp that stands nearest to it. They wait here for the one behind them.
// Called by CFrameSync under the frame lock.
#pragma once

#include "telemetry/FrameQueue.h"

namespace qor {

class CNearTimes {
  public:
    /// Decided: so many frames without a tag behind them take the one before them, so that a stream
    /// that has no other frames is not held up.
    static constexpr std::size_t MostWaiting = 128;

    bool Empty() const { return Waiting.Empty(); }
    /// A frame without a time of its own. Goes on to `ready` when too many wait.
    void Take(const CFrameInfo& info, ByteSpan bytes, std::uint64_t offset, CFrameQueue& ready);
    /// A time stands at the offset and is `size` bytes long: what waited goes to `ready`.
    void Time(const FrameTime& time, std::uint64_t offset, std::size_t size, CFrameQueue& ready);
    /// No time comes: what waits takes the one before it, or none.
    void Release(CFrameQueue& ready) { Deliver(nullptr, 0, ready); }
    /// Another place of the stream, or another stream.
    void Clear() { *this = {}; }

  private:
    void Deliver(const FrameTime* behind, std::uint64_t offset, CFrameQueue& ready);

    CFrameQueue Waiting;
    FrameTime Before;
    std::uint64_t BeforeEnd = 0; ///< where it ends
};

} // namespace qor
