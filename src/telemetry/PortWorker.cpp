// SPDX-License-Identifier: GPL-3.0-or-later
//
// The loop of a port's worker: a read and a status wait are always under way, and whichever is done
// is collected and issued again.
#include "telemetry/PortWorker.h"

#include "platform/SystemText.h"
#include "telemetry/TelemComm.h"

#include <algorithm>
#include <new>
#include <tuple>

namespace qor {

namespace {

constexpr int WaitMilliseconds = 100;
constexpr int PauseMilliseconds = 50;
constexpr std::size_t BufferReserve = 100;
/// What is still read of a port that is to stop; a line that never pauses must not hold it up.
constexpr std::uint64_t MostAtTheEnd = 1U << 20;
/// Reads that are waited for then: the one that is under way, the last one, and time between them.
constexpr int MostWaitsAtTheEnd = 3;
/// All of them together, on the slowest of lines too: a disconnection gives up soon after.
constexpr int MostMillisecondsAtTheEnd = 3000;

} // namespace

bool CPortWorker::Start(CSerialPort& port) {
    Port = &port;
    Answered.Clear();
    Finished.Clear();
    Stop.Clear();
    Running = ReadPending = StatusPending = false;
    Idle = 0;
    LastError = 0;
    if (!Thread.Start(ThreadPriority::TimeCritical, [this] { Run(); }))
        return false;
    Answered.Wait();
    if (!Running)
        Thread.Join();
    return Running;
}

bool CPortWorker::WaitForEnd(CClock& clock, int longestMilliseconds) const {
    const std::int64_t begun = clock.MonotonicMilliseconds();
    while (!Finished.Wait(PauseMilliseconds))
        if (clock.MonotonicMilliseconds() - begun >= longestMilliseconds)
            return false;
    return true;
}

void CPortWorker::Run() {
    CommResult result;
    try {
        result = Work();
    } catch (const std::bad_alloc&) { // ends this port, not the program
        result = Failed(CommResult::ReadBufferNotAllocated, SystemErrorNoMemory);
    }
    Memory.reset();
    Resource.WorkerEnds(result, LastError);
    Answered.Set();
    Finished.Set();
}

/// Works until it is told to stop (Success) or something fails (the abort code).
CommResult CPortWorker::Work() {
    if (CommResult result = Prepare(); result != CommResult::Success)
        return result;
    for (bool started = false;; started = true) {
        if (!ReadPending)
            if (CommResult result = IssueRead(); result != CommResult::Success)
                return result;
        if (!StatusPending)
            if (CommResult result = IssueStatusWait(); result != CommResult::Success)
                return result;
        if (!started) {
            Running = true;
            Answered.Set();
        }
        if (ReadPending || StatusPending)
            if (CommResult result = WaitForEither(); result != CommResult::Success)
                return result;
        if (Stop.IsSet()) {
            ReadRest();
            return CommResult::Success;
        }
    }
}

/// What the driver holds came before the stop. A failure no longer matters. A read that is pending
/// may have bytes of it: each is waited for, until the time for all is over.
void CPortWorker::ReadRest() {
    const int longest = Port->LongestRead();
    const std::int64_t end = Resource.Clock.MonotonicMilliseconds() +
                             std::min(MostWaitsAtTheEnd * longest, MostMillisecondsAtTheEnd);
    for (const std::uint64_t begun = BytesRead; BytesRead - begun < MostAtTheEnd;) {
        if (!ReadPending && IssueRead() != CommResult::Success)
            return;
        if (!ReadPending)
            continue;
        const std::uint64_t before = BytesRead;
        const std::int64_t left = end - Resource.Clock.MonotonicMilliseconds();
        const WaitResult waited =
            Port->Wait(static_cast<int>(std::clamp<std::int64_t>(left, 0, longest)));
        const bool status = waited == WaitResult::StatusDone;
        if (waited == WaitResult::TimeOut ||
            (status ? CollectStatus() : CollectRead()) != CommResult::Success ||
            (!status && BytesRead == before))
            return;
    }
}

CommResult CPortWorker::Prepare() {
    // calloc's memory is zero without being touched: a large buffer costs only what is used of it.
    Memory.reset(static_cast<std::uint8_t*>(
        std::calloc(std::size_t{Resource.Serial.bufferSize} + BufferReserve, 1)));
    if (Memory == nullptr)
        return Failed(CommResult::ReadBufferNotAllocated, SystemErrorNoMemory);
    if (SystemError error = Port->CreateInput())
        return Failed(CommResult::InputEventNotCreated, error);
    // Clears errors from before. A failure is left to the first decoding that matters: bytes may
    // well come without it.
    std::ignore = DecodeStatus(0);
    return CommResult::Success;
}

CommResult CPortWorker::IssueRead() {
    std::size_t got = 0;
    IssueResult issued = Port->IssueRead({Memory.get(), Resource.Serial.bufferSize}, got);
    if (issued == IssueResult::Failed)
        return Failed(CommResult::ReadNotIssued, Port->LastError());
    ReadPending = issued == IssueResult::Pending;
    Idle = 0;
    if (!ReadPending)
        Receive(got);
    return CommResult::Success;
}

CommResult CPortWorker::IssueStatusWait() {
    std::uint32_t mask = 0;
    IssueResult issued = Port->IssueStatusWait(mask);
    if (issued == IssueResult::Failed)
        return Failed(CommResult::StatusWaitNotIssued, Port->LastError());
    StatusPending = issued == IssueResult::Pending;
    return StatusPending ? CommResult::Success : DecodeStatus(mask);
}

CommResult CPortWorker::WaitForEither() {
    // A read that completed at once may have left bytes behind: only look, then read again.
    switch (Port->Wait(ReadPending ? WaitMilliseconds : 0)) {
    case WaitResult::ReadDone:
        return CollectRead();
    case WaitResult::StatusDone:
        return CollectStatus();
    case WaitResult::TimeOut:
        if (ReadPending)
            CountSilence();
        break;
    }
    return CommResult::Success;
}

CommResult CPortWorker::CollectRead() {
    std::size_t got = 0;
    if (SystemError error = Port->CollectRead(got))
        return Failed(CommResult::ReadNotCollected, error);
    ReadPending = false;
    Idle = 0;
    Receive(got);
    return CommResult::Success;
}

void CPortWorker::Receive(std::size_t got) {
    BytesRead += got;
    Resource.ReceiveBytes({Memory.get(), got});
}

CommResult CPortWorker::CollectStatus() {
    std::uint32_t mask = 0;
    if (SystemError error = Port->CollectStatus(mask))
        return Failed(CommResult::StatusNotCollected, error);
    StatusPending = false;
    return DecodeStatus(mask);
}

CommResult CPortWorker::DecodeStatus(std::uint32_t mask) {
    return Resource.Line.Decode(*Port, Resource.Name(), mask, LastError);
}

void CPortWorker::CountSilence() {
    if (Idle < Resource.IdleTimeoutCount)
        ++Idle;
    else
        Resource.ReportSilence();
}

} // namespace qor
