// SPDX-License-Identifier: GPL-3.0-or-later
//
// A bench of simulated instruments: which one sends next, when, and with which faults. It makes
// bytes and waits for nothing; the command decides where they go and keeps the pace.
#pragma once

#include "simulation/FrameMaker.h"

#include <deque>
#include <optional>
#include <random>

namespace qor {

/// Faults to train and test with.
struct SimulatedFaults {
    double drop = 0.0;     ///< probability that a frame is left out (its counter moves on)
    double corrupt = 0.0;  ///< probability that one byte behind the sync header is changed
    std::size_t noise = 0; ///< junk bytes before each frame
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

    /// Adds an instrument that sends `rate` frames a second; `immersed` when it is in the water.
    void Add(const CInstrument& instrument, double rate, bool immersed,
             CFrameMaker::ValueSource values = {});

    /// Seconds since the start at which the next frame is due.
    double NextDue() const;
    /// Seconds since the start of the frame that is being made, for a source of values.
    double Current() const { return CurrentSeconds; }
    /// Makes the next frame, in order of time.
    SimulatedFrame Next();

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
    double CurrentSeconds = 0.0;
    SimulatedFaults Faults;
};

} // namespace qor
