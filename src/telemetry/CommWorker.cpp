// SPDX-License-Identifier: GPL-3.0-or-later
//
// The worker of a connected port: reads with overlapped input, hands the bytes to the frame
// synchroniser and posts notices. Runs on a thread of its own, takes StatusLock and FrameLock in
// this order and, through sink and notices, the queue's leaf lock; never a lock that a display or
// a disk could hold. In a silent or steady stream it allocates nothing and makes no texts.
#include "base/Text.h"
#include "platform/SystemText.h"
#include "telemetry/TelemCommImpl.h"

#include <cstdlib>
#include <utility>

namespace qor {

namespace {

constexpr int WaitMilliseconds = 100;
constexpr std::size_t BufferReserve = 100;

struct FreeMemory {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
};

} // namespace

/// The state of one run of the worker.
class CTelemComm::Impl::CRun {
  public:
    explicit CRun(Impl& resource) : Resource(resource), Port(*resource.Port) {}

    /// Works until it is told to stop (Success) or something fails (the abort code).
    CommResult Work();
    /// Cuts what has been received; the last read of an ending worker may have completed a frame.
    void Process() EXCLUDES(Resource.StatusLock, Resource.FrameLock);
    SystemError Error() const { return LastError; }

  private:
    CommResult Prepare();
    CommResult IssueRead();
    CommResult IssueStatusWait();
    CommResult WaitForEither();
    void TakeBytes(std::size_t count) EXCLUDES(Resource.FrameLock);
    void CountSilence();
    void ReportIdle() EXCLUDES(Resource.StatusLock, Resource.FrameLock);
    CommResult Decode(std::uint32_t mask) {
        return Resource.Line.Decode(Port, Resource.Name, mask, LastError);
    }
    CommResult Failed(CommResult code, SystemError error) {
        LastError = error;
        return code;
    }

    Impl& Resource;
    CSerialPort& Port;
    std::unique_ptr<std::uint8_t, FreeMemory> Memory;
    FrameTime LastRead; ///< when the last bytes were read
    SystemError LastError = 0;
    std::int32_t Idle = 0; ///< waits without input
    bool Received = false; ///< bytes that no pass has seen
    bool ReadPending = false;
    bool StatusPending = false;
};

void CTelemComm::Impl::RunWorker() {
    CRun run(*this);
    CommResult result = run.Work();
    run.Process();
    if (result != CommResult::Success)
        Abort(result, run.Error());
    Answered.Set();
    Finished.Set();
}

CommResult CTelemComm::Impl::CRun::Prepare() {
    // calloc's memory is zero without being touched: a large buffer costs only what is used of it.
    Memory.reset(static_cast<std::uint8_t*>(
        std::calloc(std::size_t{Resource.Serial.bufferSize} + BufferReserve, 1)));
    if (Memory == nullptr)
        return Failed(CommResult::ReadBufferNotAllocated, SystemErrorNoMemory);
    if (SystemError error = Port.CreateInput())
        return Failed(CommResult::InputEventNotCreated, error);
    // Clears errors from before. A failure is left to the first decoding that matters: bytes may
    // well come without it.
    std::ignore = Decode(0);
    return CommResult::Success;
}

CommResult CTelemComm::Impl::CRun::Work() {
    if (CommResult result = Prepare(); result != CommResult::Success)
        return result;
    for (;;) {
        if (!ReadPending)
            if (CommResult result = IssueRead(); result != CommResult::Success)
                return result;
        if (!StatusPending)
            if (CommResult result = IssueStatusWait(); result != CommResult::Success)
                return result;
        if (!Resource.Running) {
            Resource.Running = true;
            Resource.Answered.Set();
        }
        Process();
        if (ReadPending || StatusPending)
            if (CommResult result = WaitForEither(); result != CommResult::Success)
                return result;
        if (Resource.Stop.IsSet())
            return CommResult::Success;
    }
}

CommResult CTelemComm::Impl::CRun::IssueRead() {
    std::size_t got = 0;
    IssueResult issued = Port.IssueRead({Memory.get(), Resource.Serial.bufferSize}, got);
    if (issued == IssueResult::Failed)
        return Failed(CommResult::ReadNotIssued, Port.LastError());
    ReadPending = issued == IssueResult::Pending;
    if (!ReadPending)
        TakeBytes(got);
    Idle = 0;
    return CommResult::Success;
}

CommResult CTelemComm::Impl::CRun::IssueStatusWait() {
    std::uint32_t mask = 0;
    IssueResult issued = Port.IssueStatusWait(mask);
    if (issued == IssueResult::Failed)
        return Failed(CommResult::StatusWaitNotIssued, Port.LastError());
    StatusPending = issued == IssueResult::Pending;
    return StatusPending ? CommResult::Success : Decode(mask);
}

CommResult CTelemComm::Impl::CRun::WaitForEither() {
    // A read that completed at once may have left bytes behind: only look, then read again.
    switch (Port.Wait(ReadPending ? WaitMilliseconds : 0)) {
    case WaitResult::ReadDone: {
        std::size_t got = 0;
        if (SystemError error = Port.CollectRead(got))
            return Failed(CommResult::ReadNotCollected, error);
        TakeBytes(got);
        ReadPending = false;
        Idle = 0;
        // At once: the next read may complete too and would make these frames look later.
        Process();
        return CommResult::Success;
    }
    case WaitResult::StatusDone: {
        std::uint32_t mask = 0;
        if (SystemError error = Port.CollectStatus(mask))
            return Failed(CommResult::StatusNotCollected, error);
        StatusPending = false;
        return Decode(mask);
    }
    case WaitResult::TimeOut:
        if (ReadPending)
            CountSilence();
        break;
    }
    return CommResult::Success;
}

void CTelemComm::Impl::CRun::TakeBytes(std::size_t count) {
    if (count == 0)
        return;
    LastRead = Resource.Clock.Now();
    Received = true;
    bool wasWaiting;
    {
        CLock lock(Resource.FrameLock);
        Resource.Sync->Append({Memory.get(), count});
        Resource.BytesReceived += count;
        wasWaiting = std::exchange(Resource.Waiting, false);
    }
    if (wasWaiting)
        Resource.Sink.Report(Format("%s reading telemetry.\r\n", Resource.Name.c_str()));
}

void CTelemComm::Impl::CRun::Process() {
    if (!std::exchange(Received, false))
        return;
    PassResult pass;
    {
        CLock status(Resource.StatusLock);
        CLock lock(Resource.FrameLock);
        pass = Resource.Sync->Process(LastRead, Resource.Waiting);
        Resource.FramesCut += pass.framesCut;
    }
    if (Resource.Commands == nullptr)
        return;
    if (pass.framesQueued)
        Resource.Commands->PostFramesQueued(Resource.Name);
    else if (pass.globalSyncFound)
        Resource.PostStatus();
}

void CTelemComm::Impl::CRun::CountSilence() {
    if (Idle < Resource.IdleTimeoutCount)
        ++Idle;
    else
        ReportIdle();
}

void CTelemComm::Impl::CRun::ReportIdle() {
    bool wasWaiting;
    {
        CLock status(Resource.StatusLock);
        CLock lock(Resource.FrameLock);
        Resource.Sync->ResetSync();
        wasWaiting = std::exchange(Resource.Waiting, true);
    }
    if (wasWaiting || Resource.Commands == nullptr)
        return;
    Resource.PostStatus();
    Resource.Sink.Report(Format("%s waiting for telemetry.\r\n", Resource.Name.c_str()));
}

} // namespace qor
