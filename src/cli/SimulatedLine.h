// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where `simulate` sends its bytes: a virtual port, or an output. On the command's thread.
#pragma once

#include "cli/Commands.h"
#include "cli/OutputOptions.h"
#include "cli/Report.h"
#include "platform/VirtualPort.h"

#include <optional>

namespace qor {

class CSimulatedLine {
  public:
    explicit CSimulatedLine(CommandContext& context) : Context(context) {}

    /// Makes a virtual port and prints its name, or opens an output. The exit status of a call that
    /// cannot go on; reported.
    int OpenPort();
    int OpenOutput(const std::string& path, const OutputRules& rules);
    /// Waits until a program has the virtual port open; false when stopped.
    bool WaitForListener();
    /// Sends everything; false when that failed or the run is stopped.
    bool Send(ByteSpan bytes);
    bool Flush() { return Port || Out.Flush(); }
    /// Lets the listener read what was sent. False when something was not written.
    bool Finish();

  private:
    CommandContext& Context;
    std::optional<CVirtualPort> Port;
    COutput Out{ReportError};
};

} // namespace qor
