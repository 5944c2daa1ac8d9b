// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where a component reports what happened. One message is one session-log entry: lines that end in
// CR LF, continuation lines that begin with a TAB.
#pragma once

#include <string>

namespace qor {

/// A seam: the command queue in the program, a collecting list in tests. Callable from any thread
/// and under any lock of the chain: an implementation may take only a leaf lock.
class CMessageSink {
  public:
    virtual ~CMessageSink() = default;
    virtual void Report(std::string message) = 0;
};

} // namespace qor
