// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ring of frames. Called under the frame lock of a resource, or by the one who took the queue.
#include "telemetry/FrameQueue.h"

#include <utility>

namespace qor {

void CFrameQueue::Grow() {
    std::vector<CFrameData> larger(Slots.empty() ? 16 : Slots.size() * 2);
    for (std::size_t i = 0; i < Count; ++i)
        larger[i] = std::move(Slots[Wrapped(First + i)]);
    Slots = std::move(larger);
    First = 0;
}

bool CFrameQueue::Pop(CFrameData& frame) {
    if (Count == 0)
        return false;
    frame.Exchange(Slots[First]);
    Release(frame.Bytes.size());
    return true;
}

void CFrameQueue::Clear() {
    First = 0;
    Count = 0;
    Held = 0;
}

} // namespace qor
