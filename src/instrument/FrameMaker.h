// SPDX-License-Identifier: GPL-3.0-or-later
//
// Well-formed frames from a definition: the other direction of the conversions. The simulator, the
// tests and the benchmarks make their telemetry here.
#pragma once

#include "instrument/Instrument.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qor {

class CFrameMaker {
  public:
    explicit CFrameMaker(const CInstrument& instrument, std::uint64_t seed = 1);

    /// Wanted calibrated value of a sensor; return NaN for "choose a plausible one".
    using ValueSource = std::function<double(const CSensor&)>;
    void SetValues(ValueSource source) { Values = std::move(source); }

    /// The next frame: sync header, counter one up from the last, fields whose calibrated values
    /// are as near to the wanted ones as the data type allows, delimiters, terminator, checksum.
    /// `secondsOfTime` (UTC since 1970, with fraction) fills time and date fields and drives the
    /// plausible values.
    std::vector<std::uint8_t> Next(double secondsOfTime);

    /// Leaves out frames: the counter moves on as if they had been sent.
    void Skip(int frames) { Counter += static_cast<std::uint32_t>(frames); }

  private:
    const CInstrument& Instrument;
    ValueSource Values;
    std::uint64_t Random;
    std::uint32_t Counter = 0;
};

} // namespace qor
