// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames and their queue, made so that a frame costs no allocation: a slot's memory is used again,
// and the texts of an instrument are copied only into slots that held another instrument's frame.
// Called under the frame lock of a resource.
#include "telemetry/FrameData.h"

#include <utility>

namespace qor {

namespace {

// Slots keep their memory for the next frame, but not that of a single giant.
constexpr std::size_t GiantFrame = 1U << 20;

bool SameAttachment(const CFrameInfo& a, const CFrameInfo& b) {
    return a.identity != 0 && a.identity == b.identity;
}

} // namespace

void CFrameData::Assign(const CFrameInfo& info, ByteSpan bytes, std::uint64_t streamOffset) {
    if (SameAttachment(Info, info)) {
        Info.frameCounter = info.frameCounter;
        Info.time = info.time;
    } else {
        Info = info;
    }
    if (Bytes.capacity() > GiantFrame && bytes.size() < Bytes.capacity() / 4)
        Bytes = {};
    Bytes.assign(bytes.begin(), bytes.end());
    StreamOffset = streamOffset;
    Error = bytes.empty();
}

void CFrameData::Exchange(CFrameData& other) {
    if (SameAttachment(Info, other.Info)) {
        std::swap(Info.frameCounter, other.Info.frameCounter);
        std::swap(Info.time, other.Info.time);
    } else {
        std::swap(Info, other.Info);
    }
    Bytes.swap(other.Bytes);
    std::swap(StreamOffset, other.StreamOffset);
    std::swap(Error, other.Error);
}

CFrameData& CFrameQueue::PushSlot() {
    if (Count == Slots.size())
        Grow();
    return Slots[Wrapped(First + Count++)];
}

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
    DropFront();
    return true;
}

void CFrameQueue::DropFront() {
    if (Count == 0)
        return;
    First = Wrapped(First + 1);
    // An emptied ring begins again at its start: a reader that keeps up stays in the same few
    // slots.
    if (--Count == 0)
        First = 0;
}

void CFrameQueue::Clear() {
    First = 0;
    Count = 0;
}

} // namespace qor
