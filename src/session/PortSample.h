// SPDX-License-Identifier: GPL-3.0-or-later
//
// A port read for a while without a session: opened, its bytes handed on as they come, restored and
// closed. Runs on the thread that calls it, which waits; no lock, no worker.
#pragma once

#include "platform/Clock.h"
#include "platform/Worker.h"
#include "telemetry/OpenPort.h"

#include <functional>

namespace qor {

struct PortSample {
    CommResult result = CommResult::Success; ///< how opening or reading ended
    SystemError error = 0;                   ///< the system's reason when it failed
    std::uint64_t lineErrors = 0;            ///< looks at which framing or parity errors had come
};

/// Reads until `take` says no, for so many milliseconds, or until the event is set. A failure while
/// closing does not count.
PortSample ReadPort(const SerialResourceSettings& settings, const SerialPortFactory& makePort,
                    CClock& clock, int milliseconds, const CEvent& stop,
                    const std::function<bool(ByteSpan)>& take);

} // namespace qor
