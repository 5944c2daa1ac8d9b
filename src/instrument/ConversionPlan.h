// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition compiled once into runs of equal (data type, width, fit), each a plain loop over
// coefficient arrays that the compiler vectorises. Const after construction; shared between
// threads, each with FrameValues of its own.
#pragma once

#include "base/Bytes.h"
#include "instrument/ConversionStatus.h"
#include "instrument/Instrument.h"

#include <memory>
#include <string>
#include <vector>

namespace qor {

/// The values of one frame, parallel to the instrument's sensors. Reused from frame to frame.
struct FrameValues {
    std::vector<double> numbers; ///< valid where the status is Good and the value is a number
    std::vector<ConversionStatus> statuses; ///< Good also for a text that can be formed
    bool anyFailed =
        false; ///< some status is not Good (a sensor whose fit gives no value included)

    /// What the plan that filled these values keeps from frame to frame; nobody else's business.
    struct Memory {
        std::uint64_t plan = 0;               ///< which plan
        bool failed = false;                  ///< the statuses are to be restored
        std::vector<double> integrationTimes; ///< for each OPTIC3 run, of its scales
        std::vector<double> scales;           ///< c3 / t
        std::vector<std::size_t> cuts;        ///< of a delimited frame, see CFieldCutter
        std::size_t fieldCount = 0;
    };
    Memory memory;
};

class CConversionPlan {
  public:
    /// Compiles the definition, which must outlive the plan.
    explicit CConversionPlan(const CInstrument& instrument);
    ~CConversionPlan();

    /// Converts every sensor of the frame, equal to CalibratedValue (numbers) and ValueText's
    /// status (texts) bit for bit.
    void Convert(ByteSpan frame, bool immersed, FrameValues& values) const;

    /// ValueText of a sensor of the instrument in the frame that was last converted into `values`,
    /// without cutting a delimited frame once more.
    ConversionStatus Text(const CSensor& sensor, ByteSpan frame, const FrameValues& values,
                          std::string& text) const;

  private:
    struct Impl;
    std::unique_ptr<Impl> Compiled;
};

} // namespace qor
