// SPDX-License-Identifier: GPL-3.0-or-later
//
// A simulation from first to last: what reaches its sink, and what ends it before its time.
#include "simulation/SimulationRun.h"

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"
#include "fakes/ManualClock.h"
#include "telemetry/RawLogFormat.h"

namespace qor {
namespace {

class SimulationRun : public testing::Test {
  protected:
    SimulationRun() { Instruments.push_back(DefineFixed("X 1 '' 4 BU 0 COUNT\n")); }

    /// Whether the plan was played to its end. The sink takes `Room` bytes.
    bool Play(SimulationPlan plan) {
        plan.rate = 1000.0;
        CSimulationRun run(plan, Instruments, Clock, Messages);
        const auto send = [this](ByteSpan bytes) {
            if (Sent + bytes.size() > Room)
                return false;
            Sent += bytes.size();
            return true;
        };
        const auto flush = [this] {
            ++Flushes;
            Stop.Set();
            return true;
        };
        return run.Play({send, flush}, Stop, [this](std::uint64_t) { ++Progress; });
    }

    CManualClock Clock;
    CCollectingSink Messages;
    PlayedInstruments Instruments;
    CEvent Stop;
    std::size_t Sent = 0, Room = 1U << 20;
    int Flushes = 0, Progress = 0;
};

TEST_F(SimulationRun, SendsEveryFrameAndWaitsForNothingWhenTimeNeedNotPass) {
    constexpr std::size_t frame = 3 + 4;
    EXPECT_TRUE(Play({.frames = 50, .faults = {.noise = 2}, .inTime = false}));
    EXPECT_EQ(Sent, 50 * (frame + 2));
    EXPECT_EQ(Progress, 50);
    EXPECT_EQ(Flushes, 0);
}

TEST_F(SimulationRun, ARawLogBeginsWithItsHeaderAndTagsEachFrame) {
    EXPECT_TRUE(Play({.frames = 1, .inTime = false, .rawLog = true}));
    const std::size_t one = Sent % HeaderRecordSize;
    EXPECT_TRUE(Play({.frames = 3, .inTime = false, .rawLog = true}));
    EXPECT_GT(one, 7U);
    EXPECT_EQ(Sent % HeaderRecordSize, 4 * one);
}

TEST_F(SimulationRun, EndsWhereTheSinkTakesNoMore) {
    Room = 5 * 7;
    EXPECT_FALSE(Play({.inTime = false}));
    EXPECT_EQ(Progress, 5);
}

TEST_F(SimulationRun, HandsOverWhatWasSentBeforeItWaitsAndEndsWhenStopped) {
    EXPECT_FALSE(Play({}));
    EXPECT_EQ(Flushes, 1);
    EXPECT_LT(Progress, 3);
    Sent = 0;
    EXPECT_FALSE(Play({.inTime = false})); // stopped before it began
    EXPECT_EQ(Sent, 0U);
}

} // namespace
} // namespace qor
