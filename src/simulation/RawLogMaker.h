// SPDX-License-Identifier: GPL-3.0-or-later
//
// Raw logs of simulated instruments: the header block of a session in which no role is given, then
// each frame with its time tag. The bytes of records and tags are the raw log format's; who wants
// the log decides where it goes. One thread a maker.
#pragma once

#include "platform/Clock.h"
#include "simulation/Simulator.h"

#include <string>
#include <string_view>
#include <vector>

namespace qor {

class CRawLogMaker {
  public:
    /// A log that begins at this moment, the simulator's start.
    explicit CRawLogMaker(const FrameTime& begin) : Begin(begin) {}

    /// The instrument's sentences carry their own time (the GPS role): the header names them, and
    /// their frames have no tag. Before the header block is made.
    void LeaveUntagged(const CInstrument& instrument) { Untagged.push_back(&instrument); }

    std::vector<std::uint8_t> HeaderBlock(std::string_view comment) const;
    /// Adds to `bytes` what a line carried for the frame: noise, the frame unless it was dropped,
    /// and its tag.
    void Append(const SimulatedFrame& frame, std::vector<std::uint8_t>& bytes) const;

  private:
    FrameTime Begin;
    std::vector<const CInstrument*> Untagged;
};

/// The moment so many seconds after another.
FrameTime TimeAfter(const FrameTime& begin, double seconds);

} // namespace qor
