// SPDX-License-Identifier: GPL-3.0-or-later
//
// A simulation from its first frame to its last: who plays and how fast, the wait until a frame is
// due, and the bytes of a line or of a raw log. Where the bytes go is the caller's business, and
// what is said of it. On the caller's thread, without a lock.
#pragma once

#include "base/MessageSink.h"
#include "platform/Worker.h"
#include "simulation/PlayedInstruments.h"
#include "simulation/RawLogMaker.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qor {

struct SimulationPlan {
    std::uint64_t frames = 0; ///< in all; 0: without end
    std::uint64_t seed = 1;
    FrameTime start = {};
    std::optional<double> rate = {}; ///< frames a second of each instrument; empty: its own
    double castDepth = 0.0;          ///< m; 0: on the bench
    SimulatedFaults faults = {};
    bool allWet = false;
    std::vector<std::string> wet = {};      ///< names of instruments
    std::vector<std::string> untagged = {}; ///< names of those in the GPS role
    bool inTime = true;                     ///< each frame waits until it is due
    bool rawLog = false;                    ///< header block and time tags beside the frames
    std::string comment = {};               ///< of the raw log's header
};

/// Where the bytes go. False when there is to be no more.
struct SimulationSink {
    std::function<bool(ByteSpan)> send;
    std::function<bool()> flush; ///< nothing comes for a while
};

class CSimulationRun {
  public:
    /// The instruments outlive the run; `messages` hears what is odd about their rates.
    CSimulationRun(SimulationPlan plan, const PlayedInstruments& instruments, CClock& clock,
                   CMessageSink& messages);

    /// Plays to the end; false when the sink takes no more or the stop is set. `sent` hears how
    /// many frames went before the latest one.
    bool Play(const SimulationSink& sink, const CEvent& stop,
              const std::function<void(std::uint64_t)>& sent);

  private:
    bool Wait(const SimulationSink& sink, const CEvent& stop);
    bool SendFrame(const SimulationSink& sink, const SimulatedFrame& frame);

    const SimulationPlan Plan;
    CClock& Clock;
    CSimulator Simulator;
    CRawLogMaker RawLog;
    std::vector<std::uint8_t> Bytes; ///< of the frame being sent
    std::int64_t Begun = 0;          ///< monotonic milliseconds
};

} // namespace qor
