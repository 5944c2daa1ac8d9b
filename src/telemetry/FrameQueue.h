// SPDX-License-Identifier: GPL-3.0-or-later
//
// The queue that carries frames from where they are cut to where they are logged: a ring of slots
// whose memory is used again, so that a frame costs no allocation once the ring is warm. Not
// thread-safe: guarded by the frame lock of its resource, or its taker's own.
#pragma once

#include "telemetry/FrameData.h"

namespace qor {

/// First in, first out.
class CFrameQueue {
  public:
    std::size_t Size() const { return Count; }
    bool Empty() const { return Count == 0; }
    /// What the queued frames take: their bytes, and a record each. It holds as long as nobody
    /// exchanges the bytes of a frame in place.
    std::uint64_t Memory() const { return Held + Count * sizeof(CFrameData); }
    /// Appends a frame of these bytes and this instrument's record.
    CFrameData& Push(const CFrameInfo& info, ByteSpan bytes, std::uint64_t streamOffset) {
        if (Count == Slots.size())
            Grow();
        CFrameData& slot = Slots[Wrapped(First + Count++)];
        slot.Assign(info, bytes, streamOffset);
        Held += bytes.size();
        return slot;
    }
    /// The oldest frame; the queue must not be empty.
    const CFrameData& Front() const { return Slots[First]; }
    /// The oldest frame in place, to be used and then dropped: cheaper than Pop.
    CFrameData& Front() { return Slots[First]; }
    /// Moves the oldest frame out by exchanging it with `frame`, whose memory the ring keeps. False
    /// when empty.
    bool Pop(CFrameData& frame);
    /// Drops the oldest frame.
    void DropFront() {
        if (Count != 0)
            Release(Slots[First].Bytes.size());
    }
    void Clear();

  private:
    std::size_t Wrapped(std::size_t index) const {
        return index < Slots.size() ? index : index - Slots.size();
    }
    void Grow();
    // An emptied ring begins again at its start: a reader that keeps up stays in the same few
    // slots.
    void Release(std::size_t bytes) {
        First = Wrapped(First + 1);
        Held -= bytes;
        if (--Count == 0)
            First = Held = 0;
    }

    std::vector<CFrameData> Slots;
    std::size_t First = 0;
    std::size_t Count = 0;
    std::uint64_t Held = 0; ///< bytes of the queued frames
};

} // namespace qor
