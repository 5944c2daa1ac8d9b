// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a port's line errors mean to the operator. One decoder a resource, used by its worker (by
// the connecting thread before the worker runs); line errors are counted and reported, never acted
// upon.
#pragma once

#include "base/MessageSink.h"
#include "platform/SerialPort.h"
#include "telemetry/CommResult.h"

#include <array>
#include <atomic>
#include <string>

namespace qor {

enum class LineErrorKind : std::size_t {
    Break,
    Framing,
    Io,
    Mode,
    InputOverflow,
    Overrun,
    Parity,
    TransmitFull,
};
inline constexpr std::size_t LineErrorKinds = 8;

/// How many errors of each kind were found, those that are no longer reported included.
using LineErrorCounts = std::array<std::uint64_t, LineErrorKinds>;

class CLineStatus {
  public:
    explicit CLineStatus(CMessageSink& sink) : Sink(sink) {}

    /// Reads, clears and reports the port's line errors. `eventMask` is the communications event
    /// that led here, 0 for none. LineStatusNotRead (with the system's error) or Success.
    CommResult Decode(CSerialPort& port, const std::string& portName, std::uint32_t eventMask,
                      SystemError& error);
    /// A new connection counts its framing errors afresh.
    void ResetFraming() { FramingErrors = 0; }
    /// Since the construction; any thread.
    LineErrorCounts Counts() const;

  private:
    void Count(LineErrorKind kind);
    void ReportBreak(const std::string& portName);
    void ReportFraming(const std::string& portName);

    CMessageSink& Sink;
    int BreakErrors = 0;   ///< 0..5, reported while below 5
    int FramingErrors = 0; ///< 0..5
    std::array<std::atomic<std::uint64_t>, LineErrorKinds> Found{};
};

} // namespace qor
