// SPDX-License-Identifier: GPL-3.0-or-later
//
// The other end of a practice port: simulated instruments that send in the clock's time whether or
// not anybody listens, and the switches that an instructor turns while they do. Switches are turned
// on any thread, the port listens on its worker's; the lock is a leaf.
#pragma once

#include "base/Lock.h"
#include "platform/Clock.h"
#include "platform/SerialPort.h"
#include "simulation/Simulator.h"

#include <memory>
#include <span>

namespace qor {

class CPracticeLine {
  public:
    /// The instruments start now. Same seed and clock, same bytes.
    CPracticeLine(CClock& clock, std::uint64_t seed);

    /// Adds an instrument to play. Before a port listens.
    void Add(std::unique_ptr<CInstrument> instrument, const PlayedAs& as) EXCLUDES(Guard);

    /// Dropped and damaged frames and junk, from the next frame on.
    void SetFaults(const SimulatedFaults& faults) EXCLUDES(Guard);
    /// The port is lost: whoever listens gets an error, and opening fails until it is back. The
    /// instruments go on meanwhile.
    void Unplug() EXCLUDES(Guard);
    void PlugIn() EXCLUDES(Guard);
    bool IsThere() const EXCLUDES(Guard);

  private:
    friend class CPracticePort;

    /// One program listens at a time, and hears what is sent from now on. `connection` tells
    /// whether the line was lost since.
    SystemError Listen(std::uint32_t& connection) EXCLUDES(Guard);
    void Leave() EXCLUDES(Guard);
    bool Holds(std::uint32_t connection) const EXCLUDES(Guard);
    void SetInputQueue(std::size_t bytes) EXCLUDES(Guard);
    void Purge() EXCLUDES(Guard);
    bool HasInput() EXCLUDES(Guard);
    std::size_t Take(std::span<std::uint8_t> buffer) EXCLUDES(Guard);
    bool HasErrors() const EXCLUDES(Guard);
    /// The line errors, which are then forgotten.
    std::uint32_t TakeErrors() EXCLUDES(Guard);
    /// At least 1; at most `most`.
    int MillisecondsToNext(int most) const EXCLUDES(Guard);

    double Elapsed() const;
    void Receive() REQUIRES(Guard);

    CClock& Clock;
    const std::int64_t Begun; ///< monotonic milliseconds
    mutable CMutex Guard;
    std::vector<std::unique_ptr<CInstrument>> Instruments GUARDED_BY(Guard);
    CSimulator Simulator GUARDED_BY(Guard);
    std::vector<std::uint8_t> Input GUARDED_BY(Guard); ///< sent and not read yet
    std::size_t InputQueue GUARDED_BY(Guard) = 8192;
    std::uint32_t Errors GUARDED_BY(Guard) = 0;
    std::uint32_t Connection GUARDED_BY(Guard) = 0; ///< counts losses
    bool There GUARDED_BY(Guard) = true;
    bool Listening GUARDED_BY(Guard) = false;
};

} // namespace qor
