// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/ReplayPace.h"

namespace qor {

void CReplayPace::Restart(std::uint64_t offset) {
    Waiting.Clear();
    Anchored = false;
    Offset = offset;
    LastTime = {};
}

void CReplayPace::TakeDue(std::int64_t now, CFrameQueue& due) {
    for (; !Waiting.Empty() && IsDue(Waiting.Front().Info.time, now); Waiting.DropFront()) {
        const CFrameData& frame = Waiting.Front();
        due.Push(frame.Info, frame.Bytes, frame.StreamOffset).Error = frame.Error;
    }
}

/// Frames without a time go with those before them. Decided: tags that run backwards, as after a
/// clock that was set, begin a new count instead of a wait.
bool CReplayPace::IsDue(const FrameTime& time, std::int64_t now) {
    if (!IsPaced() || !time.known)
        return true;
    const std::int64_t tag = time.seconds * 1000 + time.milliseconds;
    if (!Anchored || tag < Latest) {
        Anchored = true;
        FileStart = tag;
        Start = now;
    }
    const bool due =
        static_cast<double>(tag - FileStart) <= static_cast<double>(now - Start) * Speed;
    if (due)
        Latest = tag;
    return due;
}

void CReplayPace::Note(const CFrameData& frame) {
    Offset = frame.StreamOffset + frame.Bytes.size();
    if (frame.Info.time.known)
        LastTime = frame.Info.time;
}

} // namespace qor
