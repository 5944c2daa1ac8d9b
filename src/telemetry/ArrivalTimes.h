// SPDX-License-Identifier: GPL-3.0-or-later
//
// When the bytes of a live stream arrived: a frame is stamped with the read that brought its last
// byte, also when it is cut later. Guarded by the frame lock of its resource.
#pragma once

#include "platform/Clock.h"

#include <cstddef>
#include <deque>

namespace qor {

class CArrivalTimes {
  public:
    /// All bytes before the stream offset `end` have arrived by `now`; those before `head` are
    /// gone.
    void Note(std::uint64_t head, std::uint64_t end, const FrameTime& now);
    /// The arrival of the byte before the offset, which was noted. Offsets never go back.
    const FrameTime& At(std::uint64_t end);
    void Clear() { Reads.clear(); }

  private:
    struct Read {
        std::uint64_t end;
        FrameTime time;
    };
    std::deque<Read> Reads;
};

} // namespace qor
