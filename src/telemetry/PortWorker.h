// SPDX-License-Identifier: GPL-3.0-or-later
//
// The worker of a connected port: a thread that reads with overlapped input and hands the bytes to
// its resource. It takes no lock of its own; the resource takes StatusLock and FrameLock for it
// and, through sink and notices, the queue's leaf lock: never a lock that a display or a disk could
// hold. In a silent or steady stream it allocates nothing and makes no texts.
#pragma once

#include "platform/Clock.h"
#include "platform/SerialPort.h"
#include "platform/Worker.h"
#include "telemetry/CommResult.h"

#include <atomic>
#include <cstdlib>
#include <memory>

namespace qor {

class CTelemComm;

class CPortWorker {
  public:
    explicit CPortWorker(CTelemComm& resource) : Resource(resource) {}

    /// Starts the thread, which has the port for itself until it has ended; returns when it has
    /// issued its first reads (true) or has ended without. Not while it works.
    bool Start(CSerialPort& port);
    /// Tells it to end, and returns at once.
    void RequestStop() { Stop.Set(); }
    bool StopRequested() const { return Stop.IsSet(); }
    bool HasEnded() const { return Finished.IsSet(); }
    /// Waits for its end, looking every 50 ms and at most so long by this clock; whether it has
    /// ended.
    bool WaitForEnd(CClock& clock, int longestMilliseconds) const;
    /// Waits for its end as long as that takes.
    void Join() { Thread.Join(); }

  private:
    struct FreeMemory {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };

    void Run();
    CommResult Work();
    CommResult Prepare();
    CommResult IssueRead();
    CommResult IssueStatusWait();
    CommResult WaitForEither();
    void ReadRest();
    void Receive(std::size_t got);
    CommResult CollectRead();
    CommResult CollectStatus();
    CommResult DecodeStatus(std::uint32_t mask);
    void CountSilence();
    CommResult Failed(CommResult code, SystemError error) {
        LastError = error;
        return code;
    }

    CTelemComm& Resource;
    CSerialPort* Port = nullptr;
    std::unique_ptr<std::uint8_t, FreeMemory> Memory;
    SystemError LastError = 0;
    std::int32_t Idle = 0; ///< waits without input
    std::uint64_t BytesRead = 0;
    bool ReadPending = false;
    bool StatusPending = false;

    CEvent Answered; ///< it runs, or has ended without
    CEvent Finished; ///< it has ended
    CEvent Stop;
    std::atomic<bool> Running = false; ///< it has issued its first read and status wait
    CWorker Thread;                    ///< the last member: joined before what it uses goes
};

} // namespace qor
