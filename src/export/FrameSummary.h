// SPDX-License-Identifier: GPL-3.0-or-later
//
// A table for people: each sensor of an instrument with the least, mean, greatest and last of its
// calibrated values.
#pragma once

#include "export/CheckCounts.h"
#include "export/FrameSink.h"

#include <string>
#include <vector>

namespace qor {

class CFrameSummary {
  public:
    explicit CFrameSummary(const CInstrument& instrument);

    /// Takes the instrument's current frame in.
    void LeaveOut(const FrameCheckResult& checks);
    void AddFrame(const CLiveInstrument& instrument, const FrameCheckResult& checks);
    void Write(COutput& output) const;

  private:
    struct Row {
        const CSensor* sensor;
        bool text;
        std::uint64_t count = 0;
        double least = 0.0, sum = 0.0, greatest = 0.0, last = 0.0;
        std::string lastText;
    };
    const CInstrument& Instrument;
    std::vector<Row> Rows;
    CheckCounts Checks; ///< of all frames
    std::uint64_t LeftOut = 0;
};

/// A table an instrument at the end of each log.
std::unique_ptr<CFrameSink> MakeFrameSummaries(const ExportSettings& settings);

} // namespace qor
