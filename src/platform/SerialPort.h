// SPDX-License-Identifier: GPL-3.0-or-later
//
// The seam to a serial port: one function for each step that has a result code of its own, so that
// a scripted port can fail any step. The shape is that of overlapped input (issue, wait, collect):
// Win32 has it by nature, POSIX gives it with non-blocking reads and poll. One port object is used
// by one thread at a time: by the connecting thread until the worker runs, by the worker after.
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <memory>
#include <string>

namespace qor {

/// 0 = success, else the operating system's error number.
using SystemError = std::uint32_t;

/// Line settings, with the operating system's codes of the parity (0 none, 1 odd, 2 even, 3 mark,
/// 4 space) and of the stop bits (0 one, 1 one and a half, 2 two).
struct LineSettings {
    std::uint32_t baudRate = 9600;
    std::uint8_t dataBits = 8;
    std::uint8_t parity = 0;
    std::uint8_t stopBits = 0;
};

/// Communications events (a mask) and line errors (flags), valued as Win32 has them.
enum : std::uint32_t { EventBreak = 0x40, EventLineError = 0x80 };
enum : std::uint32_t {
    LineInputOverflow = 0x0001,
    LineOverrun = 0x0002,
    LineParity = 0x0004,
    LineFraming = 0x0008,
    LineBreak = 0x0010,
    LineTransmitFull = 0x0100,
    LineIoError = 0x0400,
    LineModeError = 0x8000,
};

enum class IssueResult { Done, Pending, Failed };
enum class WaitResult { ReadDone, StatusDone, TimeOut };

class CSerialPort {
  public:
    virtual ~CSerialPort() = default;

    /// Opens the named port for reading and writing, not shared. A name that is no serial device is
    /// refused.
    virtual SystemError Open(const std::string& name) = 0;
    /// Reads the port's time-outs and keeps them for RestoreTimeouts.
    virtual SystemError SaveTimeouts() = 0;
    /// Reads the current control block (kept inside, so that flags that nobody sets stay as they
    /// were).
    virtual SystemError ReadSettings() = 0;
    /// Writes the control block: these settings, parity checking on, DTR and RTS on, no flow
    /// control of any kind, no character replaced or stripped, no abort on error.
    virtual SystemError WriteSettings(const LineSettings& settings) = 0;
    /// Sets the read interval time-out, all other time-outs 0.
    virtual SystemError SetReadInterval(std::uint32_t milliseconds) = 0;
    virtual SystemError SetQueues(std::uint32_t inputBytes, std::uint32_t outputBytes) = 0;
    virtual SystemError SetEventMask(std::uint32_t mask) = 0;
    /// Makes what overlapped input needs (two events).
    virtual SystemError CreateInput() = 0;

    /// Reads and clears the line errors (Line... flags).
    virtual SystemError ReadLineErrors(std::uint32_t& errors) = 0;
    /// Starts a read into a buffer that lives until the read is collected. Done: got bytes are
    /// there.
    virtual IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) = 0;
    /// Starts a wait for a communications event. Done: mask holds it.
    virtual IssueResult IssueStatusWait(std::uint32_t& mask) = 0;
    /// Waits for a pending operation (0 ms: only looks). When both are done, the read is named
    /// first.
    virtual WaitResult Wait(int milliseconds) = 0;
    /// How long a pending read may keep what has come to itself before it ends, in milliseconds.
    virtual int LongestRead() const { return 0; }
    /// Collects the pending read; got may be 0.
    virtual SystemError CollectRead(std::size_t& got) = 0;
    virtual SystemError CollectStatus(std::uint32_t& mask) = 0;
    /// The error of the last Issue... that failed.
    virtual SystemError LastError() const = 0;

    virtual SystemError RestoreTimeouts() = 0;
    /// Drops both directions' buffers and aborts pending transfers.
    virtual SystemError Purge() = 0;
    /// Puts back what Open and WriteSettings changed and closes. Harmless when not open.
    virtual void Close() = 0;
};

/// A port of this operating system.
std::unique_ptr<CSerialPort> MakeSystemSerialPort();

} // namespace qor
