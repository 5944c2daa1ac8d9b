// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/SimulationRun.h"

#include "instrument/FrameChecks.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

bool Names(const std::vector<std::string>& names, const CInstrument& instrument) {
    return std::ranges::count(names, instrument.Name()) > 0;
}

} // namespace

CSimulationRun::CSimulationRun(SimulationPlan plan, const PlayedInstruments& instruments,
                               CClock& clock, CMessageSink& messages)
    : Plan(std::move(plan)), Clock(clock),
      Simulator(Plan.seed,
                static_cast<double>(Plan.start.seconds) + Plan.start.milliseconds / 1000.0,
                Plan.faults),
      RawLog(Plan.start) {
    for (const std::unique_ptr<CInstrument>& instrument : instruments) {
        Simulator.Add(*instrument,
                      {.rate = Plan.rate.value_or(NominalFrameRate(*instrument, messages)),
                       .immersed = Plan.allWet || Names(Plan.wet, *instrument),
                       .castDepth = Plan.castDepth});
        if (Names(Plan.untagged, *instrument))
            RawLog.LeaveUntagged(*instrument);
    }
}

bool CSimulationRun::Wait(const SimulationSink& sink, const CEvent& stop) {
    const auto due = Begun + static_cast<std::int64_t>(Simulator.NextDue() * 1000.0);
    const std::int64_t late = Clock.MonotonicMilliseconds() - due;
    if (late >= 0)
        return !stop.IsSet();
    return sink.flush() && !stop.Wait(static_cast<int>(-late));
}

bool CSimulationRun::SendFrame(const SimulationSink& sink, const SimulatedFrame& frame) {
    if (!Plan.rawLog)
        return (frame.noise.empty() || sink.send(frame.noise)) &&
               (frame.bytes.empty() || sink.send(frame.bytes));
    Bytes.clear();
    RawLog.Append(frame, Bytes);
    return sink.send(Bytes);
}

bool CSimulationRun::Play(const SimulationSink& sink, const CEvent& stop,
                          const std::function<void(std::uint64_t)>& sent) {
    if (Plan.rawLog && !sink.send(RawLog.HeaderBlock(Plan.comment)))
        return false;
    Begun = Clock.MonotonicMilliseconds();
    for (std::uint64_t i = 0; Plan.frames == 0 || i < Plan.frames; ++i) {
        const bool timely = Plan.inTime ? Wait(sink, stop) : !stop.IsSet();
        if (!timely || !SendFrame(sink, Simulator.Next()))
            return false;
        sent(i);
    }
    return true;
}

} // namespace qor
