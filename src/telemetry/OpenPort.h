// SPDX-License-Identifier: GPL-3.0-or-later
//
// The port of a connection: opened, set up, in the end restored and closed, each step with its own
// code and line in the session log. Used by one thread at a time: by the connecting one until the
// worker runs, by the worker until it has ended, by the disconnecting one after that; starting and
// joining the worker hand it over.
#pragma once

#include "base/MessageSink.h"
#include "platform/SerialPort.h"
#include "telemetry/CommResult.h"
#include "telemetry/ResourceSettings.h"

#include <functional>
#include <memory>

namespace qor {

/// Makes the port object of a connection; tests script one.
using SerialPortFactory = std::function<std::unique_ptr<CSerialPort>()>;

class COpenPort {
  public:
    COpenPort(CMessageSink& sink, SerialPortFactory makePort)
        : Sink(sink), MakePort(std::move(makePort)) {}

    /// Opens and sets up the port that the settings name; on failure it is closed again, and
    /// `error` says why. Every failure is reported but PortNotOpened, which is the caller's to
    /// tell.
    CommResult Open(const SerialResourceSettings& settings, SystemError& error);
    /// Every step is tried, whatever became of the one before: Success or NotRestored, reported.
    CommResult Close();
    /// Only while it is open.
    CSerialPort& operator*() const { return *Port; }

  private:
    CommResult Configure(const SerialResourceSettings& settings, SystemError& error);
    CommResult Fail(const char* deed, CommResult code, SystemError error);

    CMessageSink& Sink;
    const SerialPortFactory MakePort;
    std::unique_ptr<CSerialPort> Port;
    std::string Name;
    bool TimeoutsSaved = false;
};

} // namespace qor
