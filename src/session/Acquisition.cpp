// SPDX-License-Identifier: GPL-3.0-or-later
//
// The way of a frame through the session. See Acquisition.h.
#include "session/Acquisition.h"

#include "session/SessionLog.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qor {

/// Returns whether an instrument claimed the frame.
inline bool CAcquisition::ProcessFrame(CFrameData& frame, std::int64_t now) {
    const SessionState::FrameOwner* owner = Session.OwnerOf(frame.Info.identity);
    if (!owner)
        return false;
    CQorViewIns& instrument = *owner->instrument;
    if (owner->playing)
        owner->playing->Note(frame);
    const FrameCheckResult found = instrument.Process(frame);
    instrument.Live.ArrivalMonotonic = now;
    if (CPackage* package = owner->package)
        package->Products.Advance(Session.InputsOf(*package), Session.Velocity);
    for (const FrameHook* watch : Session.Watches)
        (*watch)(instrument, found);
    RawLog.LockIsHeld();
    RawLog.LogFrame(instrument, found);
    return true;
}

/// Retrieval and processing stand under one hold of the lock, so that frames that a disconnection
/// hands over cannot overtake those that were retrieved before.
std::size_t CAcquisition::TakeBatch(CQorViewRes& resource) {
    const CommResult result =
        resource.IsFile() ? ReadFile(resource) : Control->RetrieveFrames(resource.Name(), Batch);
    const std::size_t count = Batch.Size();
    ProcessFrames(Batch);
    resource.FramesReceived += count;
    const bool ended = result != CommResult::Success || resource.Comm.AtEnd();
    if (ended && resource.Pace.Waiting.Empty() && std::exchange(resource.Playing, false))
        Session.NoteChange();
    return count;
}

/// The frames of a file that are due. What was read and waits goes first.
CommResult CAcquisition::ReadFile(CQorViewRes& resource) {
    CReplayPace& pace = resource.Pace;
    CommResult result = CommResult::Success;
    Batch.Clear();
    if (!pace.Waiting.Empty())
        pace.TakeDue(Session.Clock.MonotonicMilliseconds(), Batch);
    if (pace.Waiting.Empty() && Batch.Empty()) {
        result = Control->RetrieveFrames(resource.Name(), pace.IsPaced() ? pace.Waiting : Batch);
        if (pace.IsPaced())
            pace.TakeDue(Session.Clock.MonotonicMilliseconds(), Batch);
    }
    return result;
}

std::size_t CAcquisition::TakeFrames() {
    std::size_t total = 0;
    for (std::size_t i = 0;; ++i) {
        CRecursiveLock lock(Session.DocLock);
        if (i >= Session.Resources.size())
            break;
        CQorViewRes& resource = *Session.Resources[i];
        const bool waits = RawLog.IsSwitching() ||
                           (resource.IsFile() && (!resource.Playing || RawLog.IsCrowded()));
        if (!waits)
            total += TakeBatch(resource);
    }
    RawLog.ShowPending();
    return total;
}

std::size_t CAcquisition::TakeFramesOf(ResourceId resource) {
    std::size_t count = 0;
    {
        CRecursiveLock lock(Session.DocLock);
        if (CQorViewRes* found = Session.Find(resource))
            count = TakeBatch(*found);
    }
    RawLog.ShowPending();
    return count;
}

void CAcquisition::TakeFramesOf(ResourceId resource, InstrumentId instrument, CFrameQueue& held) {
    {
        CRecursiveLock lock(Session.DocLock);
        const CQorViewRes* found = Session.Find(resource);
        if (!found)
            return;
        // A failure has been reported; a port that gives no frames holds nobody up here.
        [[maybe_unused]] CommResult result = Control->RetrieveFrames(found->Name(), Batch);
        for (; !Batch.Empty(); Batch.DropFront())
            if (Batch.Front().Info.identity == static_cast<std::uint32_t>(instrument))
                ProcessFrame(Batch.Front(), Session.Clock.MonotonicMilliseconds());
            else
                held.Push(Batch.Front().Info, Batch.Front().Bytes, Batch.Front().StreamOffset);
    }
    RawLog.ShowPending();
}

void CAcquisition::TakeQueued(CQorViewRes& resource) {
    CRecursiveLock lock(Session.DocLock);
    if (!resource.IsFile())
        TakeBatch(resource);
}

bool CAcquisition::IsPlaying() const {
    CRecursiveLock lock(Session.DocLock);
    return std::ranges::any_of(Session.Resources,
                               [](const auto& resource) { return resource->Playing; });
}

void CAcquisition::StopPlaying() {
    CRecursiveLock lock(Session.DocLock);
    for (const auto& resource : Session.Resources)
        resource->Playing = false;
}

bool CAcquisition::AtEnd(ResourceId resource) const {
    CRecursiveLock lock(Session.DocLock);
    const CQorViewRes* file = Session.Find(resource);
    return !file || !file->IsFile() || (file->Comm.AtEnd() && file->Pace.Waiting.Empty());
}

std::size_t CAcquisition::ProcessFrames(CFrameQueue& frames) {
    CRecursiveLock lock(Session.DocLock);
    const std::int64_t now = Session.Clock.MonotonicMilliseconds();
    std::size_t claimed = 0;
    for (; !frames.Empty(); frames.DropFront())
        try {
            claimed += ProcessFrame(frames.Front(), now) ? 1 : 0;
        } catch (const std::bad_alloc&) { // costs this frame, not the run
            RawLog.LoseFrame();
        }
    RawLog.LockIsHeld();
    RawLog.Flush();
    return claimed;
}

bool CAcquisition::TakeCommands(int milliseconds) {
    if (!Control->Commands().Drain(Taken, milliseconds))
        return false;
    for (const QueuedCommand& command : Taken)
        if (command.notice != NoticeCode::None) {
            if (command.notice != NoticeCode::FramesAvailable)
                Session.NoteChange();
            if (OnNotice)
                OnNotice(command.notice, command.event.subject);
        } else {
            SessionLog.AddSessionLogEntry(command.event.text);
            if (OnEvent)
                OnEvent(command.event);
        }
    Taken.clear();
    return true;
}

} // namespace qor
