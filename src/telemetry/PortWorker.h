// SPDX-License-Identifier: GPL-3.0-or-later
//
// One run of the worker of a connected port: reads with overlapped input and hands the bytes to its
// resource. Made and used on the worker's thread, for which it holds the port. It takes no lock of
// its own; the resource takes StatusLock and FrameLock for it and, through sink and notices, the
// queue's leaf lock: never a lock that a display or a disk could hold. In a silent or steady stream
// it allocates nothing and makes no texts.
#pragma once

#include "platform/SerialPort.h"
#include "telemetry/CommResult.h"

#include <cstdlib>
#include <memory>

namespace qor {

class CTelemComm;

class CPortWorker {
  public:
    CPortWorker(CTelemComm& resource, CSerialPort& port) : Resource(resource), Port(port) {}

    /// Works until it is told to stop (Success) or something fails (the abort code).
    CommResult Work();
    /// The system's error behind an abort code.
    SystemError Error() const { return LastError; }

  private:
    struct FreeMemory {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };

    CommResult Prepare();
    CommResult IssueRead();
    CommResult IssueStatusWait();
    CommResult WaitForEither();
    CommResult CollectRead();
    CommResult CollectStatus();
    CommResult DecodeStatus(std::uint32_t mask);
    void CountSilence();
    CommResult Failed(CommResult code, SystemError error) {
        LastError = error;
        return code;
    }

    CTelemComm& Resource;
    CSerialPort& Port;
    std::unique_ptr<std::uint8_t, FreeMemory> Memory;
    SystemError LastError = 0;
    std::int32_t Idle = 0; ///< waits without input
    bool ReadPending = false;
    bool StatusPending = false;
};

} // namespace qor
