// SPDX-License-Identifier: GPL-3.0-or-later
//
// Rounds of taking messages and frames, and the planning of ticks. See AcquisitionLoop.h.
#include "session/AcquisitionLoop.h"

#include <algorithm>

namespace qor {
namespace {

/// Frames are looked for at least this often, also when a notice has been lost.
constexpr int RoundMilliseconds = 100;
/// The rest between two batches of a playing file, in which others get the document's lock.
constexpr int PlayingMilliseconds = 1;
/// Between two looks at ports and disk.
constexpr int WatchMilliseconds = 1000;
/// Between two looks at ports without a frame.
constexpr int CaptureMilliseconds = 250;

} // namespace

CAcquisitionLoop::~CAcquisitionLoop() {
    Stop();
}

bool CAcquisitionLoop::Start() {
    if (Running)
        return true;
    Stopping.Clear();
    SayEarlyClock();
    Running = Acquisition.Start(ThreadPriority::Normal, [this] { RunAcquisition(); });
    if (Running && (!Ticker.Start(ThreadPriority::Normal, [this] { RunTicker(); }) ||
                    !Watcher.Start(ThreadPriority::Normal, [this] { RunWatch(); }) ||
                    !Captures.Start(ThreadPriority::Normal, [this] { RunCaptures(); }))) {
        Stop();
        return false;
    }
    return Running;
}

/// A computer whose clock has lost its time tells a year in which the program did not exist.
void CAcquisitionLoop::SayEarlyClock() {
    const FrameTime now = Doc.Clock.Now();
    if (now.seconds >= BuildTime())
        return;
    Doc.Raise({EventKind::ClockEarly,
               {},
               "The system clock says " + FormatTime("%Y-%m-%d %H:%M", LocalCalendar(now)) +
                   ", a time before this program was made.\r\n"});
}

void CAcquisitionLoop::Stop() {
    if (!Running)
        return;
    Stopping.Set();
    Doc.User.CancelQuestions(); // the ticker may be waiting for an answer
    Doc.Controller()->Commands().Wake();
    Acquisition.Join();
    Ticker.Join();
    Watcher.Join();
    Captures.Join();
    Running = false;
    Doc.Captures.Finish();
    Doc.Acquisition.StopPlaying(); // where it is: its rest is not for this run
    while (Take(0)) {
    }
}

void CAcquisitionLoop::RunAcquisition() {
    while (!Stopping.IsSet())
        Take(Doc.Acquisition.IsPlaying() ? PlayingMilliseconds : RoundMilliseconds);
}

void CAcquisitionLoop::RunTicker() {
    while (!Stopping.IsSet()) {
        TickIfDue();
        std::int64_t rest = NextTick - Doc.Clock.MonotonicMilliseconds();
        Stopping.Wait(static_cast<int>(std::clamp<std::int64_t>(rest, 1, 1000)));
    }
}

void CAcquisitionLoop::RunWatch() {
    do
        Watch();
    while (!Stopping.Wait(WatchMilliseconds));
}

void CAcquisitionLoop::RunCaptures() {
    do
        Doc.Captures.Tend();
    while (!Stopping.Wait(CaptureMilliseconds));
}

bool CAcquisitionLoop::Take(int milliseconds) {
    bool commands = Doc.Acquisition.TakeCommands(milliseconds);
    return Doc.Acquisition.TakeFrames() > 0 || commands;
}

/// Ticks just behind the start of each second of the wall clock, so that each has its time stamp,
/// and at the moment at which a log is to begin or end; the waiting runs on the monotonic clock.
bool CAcquisitionLoop::TickIfDue() {
    if (TickPlanned && Doc.Clock.MonotonicMilliseconds() < NextTick)
        return false;
    Doc.RawLog.OnLogTick();
    if (Doc.RawLog.WantsLastFrames()) {
        Doc.Acquisition.TakeFrames();
        Doc.RawLog.EndWithLastFrames();
    }
    Doc.Starter.Tend();
    const std::int64_t now = Doc.Clock.MonotonicMilliseconds();
    const std::int64_t nextSecond = now + 1000 - Doc.Clock.Now().milliseconds;
    const std::int64_t timer = Doc.RawLog.NextTimer();
    NextTick = timer > now ? std::min(nextSecond, timer) : nextSecond;
    TickPlanned = true;
    return true;
}

void CAcquisitionLoop::Watch() {
    Doc.RawLog.WatchDisk();
    Doc.Ports.Tend();
}

bool CAcquisitionLoop::Step(int milliseconds) {
    bool taken = Take(milliseconds);
    bool ticked = TickIfDue();
    if (ticked)
        Watch();
    return taken || ticked;
}

bool CAcquisitionLoop::PlayBatch(ResourceId resource, std::size_t& frames) {
    frames = Doc.Acquisition.TakeFramesOf(resource);
    Doc.Acquisition.TakeCommands(0);
    if (TickIfDue())
        Watch();
    return !Doc.Acquisition.AtEnd(resource);
}

std::uint64_t CAcquisitionLoop::PlayFile(ResourceId resource, const std::atomic<bool>* stop) {
    std::uint64_t total = 0;
    for (bool more = true; more && !(stop && stop->load(std::memory_order_relaxed));) {
        std::size_t frames = 0;
        more = PlayBatch(resource, frames);
        total += frames;
    }
    return total;
}

} // namespace qor
