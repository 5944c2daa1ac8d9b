// SPDX-License-Identifier: GPL-3.0-or-later
//
// A bench of simulated instruments: which one sends next, when, and with which faults. It makes
// bytes and waits for nothing; whoever plays them keeps the pace and decides where they go. One
// thread.
#pragma once

#include "simulation/FrameMaker.h"

#include <deque>
#include <random>

namespace qor {

/// Faults to train and test with.
struct SimulatedFaults {
    double drop = 0.0;     ///< probability that a frame is left out (its counter moves on)
    double corrupt = 0.0;  ///< probability that one byte behind the sync header is changed
    std::size_t noise = 0; ///< junk bytes before each frame
};

/// How an instrument is played.
struct PlayedAs {
    double rate = 1.0; ///< frames a second; 1 when it is not positive
    bool immersed = false;
    double castDepth = 0.0; ///< m: lowered through a water column; 0: on the bench
};

/// One frame as the line carries it.
struct SimulatedFrame {
    const CInstrument* instrument = nullptr;
    double seconds = 0.0;            ///< when its last byte is sent, since the start
    std::vector<std::uint8_t> noise; ///< junk that precedes it
    std::vector<std::uint8_t> bytes; ///< empty: dropped
};

class CSimulator {
  public:
    /// Same seed, same bytes. `startSeconds` is the first frame's time (UTC since 1970).
    CSimulator(std::uint64_t seed, double startSeconds, SimulatedFaults faults);
    CSimulator(const CSimulator&) = delete;
    CSimulator& operator=(const CSimulator&) = delete;

    /// Adds an instrument, which must outlive the simulator.
    void Add(const CInstrument& instrument, const PlayedAs& as);
    /// From the next frame on.
    void SetFaults(const SimulatedFaults& faults) { Faults = faults; }

    bool Empty() const { return Players.empty(); }
    /// Seconds since the start at which the next frame is due. There must be an instrument here
    /// and below.
    double NextDue() const;
    /// Makes the next frame, in order of time.
    SimulatedFrame Next();
    /// Leaves out every frame that is due before this time, as if nobody had listened.
    void SkipTo(double seconds);

  private:
    struct Player {
        const CInstrument* instrument;
        CFrameMaker maker;
        double period;
        double phase;
        std::uint64_t sent = 0;
        double Due() const { return phase + period * static_cast<double>(sent); }
    };
    const Player& NextPlayer() const;
    bool Chance(double probability);

    std::deque<Player> Players;
    std::mt19937_64 Random;
    std::uint64_t Seed;
    double Start;
    double Current = 0.0; ///< seconds since the start of the frame that is being made
    SimulatedFaults Faults;
};

} // namespace qor
