// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log does with time: its end and the begin of the next, time-stamp sentences, and a
// look once a second at the disk and the clock. The tick comes from the loop, without the lock.
#include "session/RawLog.h"

#include "base/Text.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace qor {
namespace {

/// A step of the wall clock against the monotonic one that is worth a note, in milliseconds.
constexpr std::int64_t NotedClockStep = 50;
/// Reading the two clocks further apart than this says nothing about a step.
constexpr std::int64_t ReadingSpan = 10;
/// Steps of one log that are kept.
constexpr std::size_t MostSteps = 1000;
/// A write that takes longer than this is worth saying, in milliseconds.
constexpr std::int64_t NotedStall = 2000;

} // namespace

void CRawLog::PlanRoundEnd() {
    const LogOptions options = Session.Options;
    Rounds.Begin(options.every.Seconds(), State.logStartTime, StartMonotonic);
    if (options.durationEnabled && EndMonotonic <= Rounds.Due())
        return;
    State.logEndTime = State.logStartTime;
    State.logEndTime.seconds += (Rounds.Due() - StartMonotonic + 500) / 1000;
}

void CRawLog::OnLogTick() {
    bool beginNext, updateViews;
    {
        CRecursiveLock lock(Session.DocLock);
        NoteClockStep();
        beginNext = TickLocked();
    }
    CompleteEnd();
    ShowPending();
    {
        CRecursiveLock lock(Session.DocLock);
        beginNext = beginNext || (State.waitingForNextLog && IsSwitching());
    }
    if (beginNext && !Begin(StartedBy::Timer)) {
        {
            CRecursiveLock lock(Session.DocLock);
            // Else the operator has ended it meanwhile, or begins a log.
            beginNext = State.waitingForNextLog && !IsStarting();
            State.runFailed = State.runFailed || beginNext;
        }
        if (beginNext)
            EndLogFile(true);
    }
    {
        CRecursiveLock lock(Session.DocLock);
        updateViews = std::exchange(ViewsUpdate, false);
    }
    if (updateViews && Session.OnViewsUpdate)
        Session.OnViewsUpdate();
}

/// Returns whether the next log of an interval run is to begin.
bool CRawLog::TickLocked() {
    if (!State.loggingActive)
        return false;
    const std::int64_t monotonic = Session.Clock.MonotonicMilliseconds();
    State.logElapsed = (monotonic - StartMonotonic) / 1000;
    if (Session.Options.timeStampEnabled)
        WriteTimeStamp(Session.Clock.Now());
    const bool rounds = Session.Options.everyEnabled;
    const bool round = rounds && Rounds.HasCome(Session.Clock.Now(), monotonic);
    if (State.waitingForNextLog && (rounds ? round : monotonic >= StartMonotonic))
        return true;
    if (!State.logOpen || State.recovering)
        return false;
    if (round || (Session.Options.durationEnabled && monotonic >= EndMonotonic))
        MarkEnd(false, round);
    return false;
}

std::int64_t CRawLog::NextTimer() const {
    CRecursiveLock lock(Session.DocLock);
    constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
    const std::int64_t round = Session.Options.everyEnabled ? Rounds.Due() : never;
    if (State.waitingForNextLog)
        return std::min(StartMonotonic, round);
    if (!State.logOpen)
        return never;
    return Session.Options.durationEnabled ? std::min(EndMonotonic, round) : round;
}

void CRawLog::WriteTimeStamp(const FrameTime& now) {
    if (!State.logOpen || now.seconds == LastTimeStamp)
        return;
    LastTimeStamp = now.seconds;
    Records.Add(0, AsBytes(MakeTimeStamp(LocalCalendar(now))));
    Flush();
}

/// Says once that the disk has stopped, and once what that cost.
void CRawLog::WatchDisk() {
    CRecursiveLock lock(Session.DocLock);
    if (!State.loggingActive)
        return;
    const StageFigures figures = Stage.Figures();
    if (figures.stalledMilliseconds < NotedStall) {
        SayDiskTakesAgain();
    } else if (!std::exchange(StallSaid, true)) {
        Messages.Raise({EventKind::DiskStalled, State.logFilePath,
                        Format("The disk has taken nothing of \"%s\" for %lld s; %zu bytes wait "
                               "in memory.\r\n",
                               State.logFilePath.c_str(),
                               static_cast<long long>(figures.stalledMilliseconds / 1000),
                               figures.waitingBytes)});
    }
    NoteUnstored();
}

/// Once, of the log that stalled; of one that failed then it is said what became of it.
void CRawLog::SayDiskTakesAgain() {
    if (std::exchange(StallSaid, false) && Stage.Figures().cause == FileCause::None)
        Messages.Report(
            Format("The disk takes data again: \"%s\".\r\n", State.logFilePath.c_str()));
}

/// Losses are said as they begin, and what came after that once they have ended: two messages a
/// burst, whose numbers add up.
void CRawLog::NoteUnstored() {
    const std::uint64_t unstored = Stage.Figures().totalUnstored;
    const std::uint64_t before = std::exchange(UnstoredSeen, unstored);
    if (before == UnstoredSaid || before == unstored)
        SayUnstored();
}

void CRawLog::SayUnstored() {
    const std::uint64_t unstored = Stage.Figures().totalUnstored;
    if (unstored <= UnstoredSaid)
        return;
    Messages.Raise({EventKind::FramesUnstored, State.logFilePath,
                    Format("%llu frames were received and not stored in \"%s\".\r\n",
                           static_cast<unsigned long long>(unstored - UnstoredSaid),
                           State.logFilePath.c_str())});
    UnstoredSaid = unstored;
}

void CRawLog::NoteStep(const FrameTime& now, std::int64_t milliseconds, bool ofZone) {
    if (State.logOpen && Steps.size() < MostSteps)
        Steps.push_back({now, milliseconds, ofZone});
}

void CRawLog::NoteClockStep() {
    const std::int64_t before = Session.Clock.MonotonicMilliseconds();
    const FrameTime wall = Session.Clock.Now();
    if (Session.Clock.MonotonicMilliseconds() - before > ReadingSpan)
        return;
    const std::int16_t zone = std::exchange(ZoneMinutes, wall.utcOffsetMinutes);
    if (ClockKnown && zone != ZoneMinutes)
        NoteStep(wall, (ZoneMinutes - zone) * std::int64_t{60'000}, true);
    const std::int64_t difference = wall.seconds * 1000 + wall.milliseconds - before;
    const std::int64_t step = difference - std::exchange(ClockDifference, difference);
    if (!std::exchange(ClockKnown, true) || (step > -NotedClockStep && step < NotedClockStep))
        return;
    NoteStep(wall, step, false);
    const std::int64_t size = step < 0 ? -step : step;
    Messages.Raise({EventKind::ClockStepped,
                    {},
                    Format("The system clock was set %s by %lld.%03lld seconds.\r\n",
                           step < 0 ? "back" : "forward", static_cast<long long>(size / 1000),
                           static_cast<long long>(size % 1000))});
}

} // namespace qor
