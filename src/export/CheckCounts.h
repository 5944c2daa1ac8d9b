// SPDX-License-Identifier: GPL-3.0-or-later
//
// How many frames of an export failed their checks: of an instrument for its summary, and of a
// whole log for one sentence. Fed by whoever plays the log, on one thread; what the checks are is
// CFrameChecks'.
#pragma once

#include "instrument/FrameChecks.h"

#include <map>
#include <string>

namespace qor {

/// Of the frames of one instrument. A frame with two errors counts in both and has failed once.
struct CheckCounts {
    std::uint64_t frames = 0, failed = 0, dropped = 0, checksumErrors = 0, valueErrors = 0;
    bool checksCounter = false, checksSum = false;

    void Add(const FrameCheckResult& checks);
    /// "2 dropped, checksum errors not checked", and value errors where there are any.
    std::string Text() const;
};

/// Of the frames of a log.
class CFailedFrames {
  public:
    void Add(const std::string& instrument, const FrameCheckResult& checks);
    /// "3 of 120 frames failed their checks (...).", empty when none did.
    std::string Sentence() const;

  private:
    std::uint64_t Frames = 0, Failed = 0;
    std::map<std::string, CheckCounts> Instruments; ///< those with failed frames
};

} // namespace qor
