// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition compiled once into runs of equal (data type, width, fit), each a plain loop over
// coefficient arrays that the compiler vectorises. Const after construction; shared between threads,
// each with FrameValues of its own.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/Instrument.h"

#include <memory>
#include <vector>

namespace qor {

/// The values of one frame, parallel to the instrument's sensors. Reused from frame to frame.
struct FrameValues {
    std::vector<double> numbers;           ///< valid where the status is Good and the value is a number
    std::vector<ConversionStatus> statuses; ///< Good also for a text that can be formed
    bool anyFailed = false;                ///< some status is not Good
};

class CConversionPlan {
  public:
    explicit CConversionPlan(const CInstrument& instrument);
    ~CConversionPlan();

    /// Converts every sensor of the frame, equal to CalibratedValue (numbers) and ValueText's status
    /// (texts) bit for bit.
    void Convert(ByteSpan frame, bool immersed, FrameValues& values) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> Compiled;
};

} // namespace qor
