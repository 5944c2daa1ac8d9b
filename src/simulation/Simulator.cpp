// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/Simulator.h"

#include "simulation/CastModel.h"

#include <algorithm>
#include <cmath>

namespace qor {

CSimulator::CSimulator(std::uint64_t seed, double startSeconds, SimulatedFaults faults)
    : Random(seed), Seed(seed), Start(startSeconds), Faults(faults) {}

void CSimulator::Add(const CInstrument& instrument, const PlayedAs& as) {
    const double period = 1.0 / (as.rate > 0.0 ? as.rate : 1.0);
    // Instruments of one rate on one line take turns instead of talking at the same moment.
    double phase = period * (1.0 - 1.0 / static_cast<double>(Players.size() + 1));
    Player& player = Players.emplace_back(
        Player{&instrument, CFrameMaker(instrument, Seed + Players.size()), period, phase});
    player.maker.SetImmersed(as.immersed);
    if (as.castDepth > 0.0)
        player.maker.SetValues(CastValues(as.castDepth, [this] { return Current; }));
}

const CSimulator::Player& CSimulator::NextPlayer() const {
    return *std::min_element(Players.begin(), Players.end(),
                             [](const Player& a, const Player& b) { return a.Due() < b.Due(); });
}

double CSimulator::NextDue() const {
    return NextPlayer().Due();
}

bool CSimulator::Chance(double probability) {
    return probability > 0.0 && static_cast<double>(Random() >> 11) * 0x1p-53 < probability;
}

SimulatedFrame CSimulator::Next() {
    Player& player = const_cast<Player&>(NextPlayer()); // one of ours
    SimulatedFrame frame;
    frame.instrument = player.instrument;
    frame.seconds = Current = player.Due();
    ++player.sent;
    for (std::size_t i = 0; i < Faults.noise; ++i)
        frame.noise.push_back(static_cast<std::uint8_t>(Random()));
    if (Chance(Faults.drop)) {
        player.maker.Skip(1);
        return frame;
    }
    frame.bytes = player.maker.Next(Start + frame.seconds);
    std::size_t header = player.instrument->SyncHeader().size();
    std::size_t tail = player.instrument->Terminator().size();
    if (Chance(Faults.corrupt) && frame.bytes.size() > header + tail) {
        std::size_t place = header + Random() % (frame.bytes.size() - header - tail);
        frame.bytes[place] = static_cast<std::uint8_t>(frame.bytes[place] ^ (1u << Random() % 7));
    }
    return frame;
}

void CSimulator::SkipTo(double seconds) {
    for (Player& player : Players) {
        const double left = std::ceil((seconds - player.Due()) / player.period);
        if (!(left > 0.0))
            continue;
        player.maker.Skip(static_cast<std::uint64_t>(left));
        player.sent += static_cast<std::uint64_t>(left);
    }
}

} // namespace qor
