// SPDX-License-Identifier: GPL-3.0-or-later
//
// A session that is played for the eye: the example package on a cast, a receiver of positions and
// a weather station, all in the time of a manual clock, so that hours pass at once and the same
// pictures come each time.
#pragma once

#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "fakes/TempFolder.h"
#include "session/QorViewDoc.h"
#include "simulation/Simulator.h"

#include <memory>

namespace qor {

class CPlayedSession {
  public:
    CPlayedSession();

    /// The package of the examples, profiler and reference with their roles.
    void AddCast();
    /// A receiver that sails a circle, and an anemometer beside it.
    void AddShip();
    /// An instrument on a port of its own, played at so many frames a second.
    InstrumentId AddPlayed(const std::string& name, const std::string& definition, double rate);

    /// So much time passes and everything that was sent meanwhile is taken.
    void Play(double seconds);
    /// Time passes in silence.
    void Silence(double seconds);

    CManualClock Clock;
    CScriptedUser User;
    CMemoryProfileStore Profile;
    CTempFolder Temp;
    CQorViewDoc Doc;

  private:
    ResourceId AddPort(const std::string& name);
    void AddPlayed(InstrumentId instrument, double rate, bool immersed);
    void Send(InstrumentId instrument, const std::vector<std::uint8_t>& bytes);
    void SendShip();

    CSimulator Simulator;
    std::vector<std::pair<const CInstrument*, InstrumentId>> Played;
    InstrumentId Receiver = InstrumentId::None, Weather = InstrumentId::None;
    std::uint32_t Sent = 0;
    double Now = 0.0, NextShip = 0.0;
};

} // namespace qor
