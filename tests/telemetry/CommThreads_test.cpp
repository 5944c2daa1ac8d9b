// SPDX-License-Identifier: GPL-3.0-or-later
//
// A resource used from several threads at once: what the thread sanitizer has to say.
#include "fakes/ScriptedPort.h"
#include "telemetry/StreamRun.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace qor {
namespace {

TEST(CommThreads, AnyThreadMayAskWhileAnotherConnectsAndDisconnects) {
    CPortScript script;
    CCollectingSink sink;
    CProcessCommand queue;
    CSystemClock clock;
    CTelemComm comm(sink, &queue, clock, script.Factory());
    SerialResourceSettings settings;
    settings.portName = "COM1";
    ASSERT_EQ(comm.InitialiseSerial(settings), CommResult::Success);
    ASSERT_EQ(comm.Attach(Fixed("RAD", "$R", 6)), CommResult::Success);
    ASSERT_EQ(comm.EnableAcquisition("RAD"), CommResult::Success);

    std::atomic<bool> done = false;
    std::size_t frames = 0;
    std::thread acquisition([&] {
        std::vector<ProcessCommand> commands;
        CFrameQueue batch;
        while (!done) {
            queue.Drain(commands, 1);
            EXPECT_EQ(comm.RetrieveFrames(batch), CommResult::Success);
            frames += batch.Size();
        }
    });
    std::thread display([&] {
        while (!done) {
            comm.Figures();
            comm.IdentityOf("RAD");
            EXPECT_EQ(comm.EnableAcquisition("RAD"), CommResult::Success);
        }
    });
    CFrameQueue left;
    std::size_t handedOver = 0;
    for (int round = 0; round < 20; ++round) {
        bool aborts = round % 4 == 3;
        ASSERT_EQ(comm.Connect(), CommResult::Success);
        script.Bytes("$Rabcd$Refgh").FramingError().Bytes("$Rijkl").Played();
        if (aborts)
            script.ThenFail("CollectRead", 5);
        ASSERT_EQ(comm.Disconnect(&left), CommResult::Success);
        handedOver += left.Size();
        std::uint32_t code = 0;
        ASSERT_EQ(comm.ResetAbortCode(code), CommResult::Success);
        script.Repair();
    }
    done = true;
    acquisition.join();
    display.join();
    EXPECT_EQ(comm.Figures().framesCut, 60u);
    EXPECT_EQ(frames + handedOver, 60u) << "a frame is retrieved or handed over";
}

} // namespace
} // namespace qor
