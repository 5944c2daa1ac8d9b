// SPDX-License-Identifier: GPL-3.0-or-later
//
// A virtual serial port: a pseudo-terminal whose other end any program opens as if it were a port.
// The simulator plays instruments into it. One thread at a time.
#pragma once

#include "base/Bytes.h"
#include "platform/SerialPort.h"

#include <string>

namespace qor {

class CVirtualPort {
  public:
    CVirtualPort() = default;
    ~CVirtualPort();
    CVirtualPort(const CVirtualPort&) = delete;
    CVirtualPort& operator=(const CVirtualPort&) = delete;

    /// Creates the port and names the end that programs open. On Windows there is none: the error
    /// says so.
    SystemError Open(std::string& name);
    /// True when a program has the port open; waits up to so many milliseconds for one.
    bool WaitForListener(int milliseconds);
    /// Writes as much as the line takes now, waiting up to so many milliseconds for room. As on a
    /// real line, bytes sent while nobody listens are lost (and count as written).
    SystemError Write(ByteSpan bytes, int milliseconds, std::size_t& written);
    /// True when the listener has read everything, or has gone.
    bool Drained() const;
    void Close();

  private:
    std::intptr_t Handle = -1;
    std::string ListenerName;
};

} // namespace qor
