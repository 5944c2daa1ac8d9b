// SPDX-License-Identifier: GPL-3.0-or-later
#include "telemetry/NearTimes.h"

namespace qor {

void CNearTimes::Take(const CFrameInfo& info, ByteSpan bytes, std::uint64_t offset,
                      CFrameQueue& ready) {
    Waiting.Push(info, bytes, offset);
    if (Waiting.Size() >= MostWaiting)
        Release(ready);
}

void CNearTimes::Time(const FrameTime& time, std::uint64_t offset, std::size_t size,
                      CFrameQueue& ready) {
    if (!Waiting.Empty())
        Deliver(&time, offset, ready);
    Before = time;
    BeforeEnd = offset + size;
}

/// Nearest is counted in bytes of the file: the frames stand in it as they came. Of two that are as
/// near the one before counts.
void CNearTimes::Deliver(const FrameTime* behind, std::uint64_t offset, CFrameQueue& ready) {
    for (; !Waiting.Empty(); Waiting.DropFront()) {
        CFrameData& frame = Waiting.Front();
        const std::uint64_t end = frame.StreamOffset + frame.Bytes.size();
        const bool isBehind =
            behind && (!Before.known || offset - end < frame.StreamOffset - BeforeEnd);
        frame.Info.time = isBehind ? *behind : Before;
        ready.Push(frame.Info, frame.Span(), frame.StreamOffset);
    }
}

} // namespace qor
