// SPDX-License-Identifier: GPL-3.0-or-later
//
// A resource used from several threads at once, and on a real line: what the thread sanitizer and
// the operating system have to say.
#include "fakes/CollectingSink.h"
#include "fakes/ScriptedPort.h"
#include "platform/SystemText.h"
#include "platform/VirtualPort.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace qor {
namespace {

AttachRequest Radiometer() {
    AttachRequest request;
    request.instrumentName = "RAD";
    request.syncHeader = "$R";
    request.frameSize = 6;
    return request;
}

TEST(CommThreads, AnyThreadMayAskWhileAnotherConnectsAndDisconnects) {
    CPortScript script;
    CCollectingSink sink;
    CProcessCommand queue;
    CSystemClock clock;
    CTelemComm comm(sink, &queue, clock, script.Factory());
    SerialResourceSettings settings;
    settings.portName = "COM1";
    ASSERT_EQ(comm.InitialiseSerial(settings), CommResult::Success);
    ASSERT_EQ(comm.Attach(Radiometer()), CommResult::Success);
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
    for (int round = 0; round < 20; ++round) {
        bool aborts = round % 4 == 3;
        ASSERT_EQ(comm.Connect(), CommResult::Success);
        script.Bytes("$Rabcd$Refgh").FramingError().Bytes("$Rijkl").Played();
        if (aborts)
            script.ThenFail("CollectRead", 5);
        ASSERT_EQ(comm.Disconnect(&left), CommResult::Success);
        std::uint32_t code = 0;
        ASSERT_EQ(comm.ResetAbortCode(code), CommResult::Success);
        script.Repair();
    }
    done = true;
    acquisition.join();
    display.join();
    EXPECT_EQ(comm.Figures().framesCut, 60u);
    EXPECT_LE(frames, 60u);
}

TEST(CommThreads, RealLineGivesItsFramesAndItsEndAborts) {
    CVirtualPort line;
    SerialResourceSettings settings;
    if (line.Open(settings.portName) != 0)
        GTEST_SKIP() << "this system has no virtual ports";
    CCollectingSink sink;
    CProcessCommand queue;
    CSystemClock clock;
    CTelemComm comm(sink, &queue, clock, MakeSystemSerialPort);
    ASSERT_EQ(comm.InitialiseSerial(settings), CommResult::Success);
    ASSERT_EQ(comm.Attach(Radiometer()), CommResult::Success);
    ASSERT_EQ(comm.EnableAcquisition("RAD"), CommResult::Success);
    ASSERT_EQ(comm.Connect(), CommResult::Success);
    std::size_t written = 0;
    ASSERT_EQ(line.Write(AsBytes("?$Rabcd$R\r\n\x11\x13"), 10'000, written), 0u);
    std::vector<ProcessCommand> commands;
    CFrameQueue frames;
    std::string text;
    while (text.size() < 12 && queue.Drain(commands, 10'000)) {
        EXPECT_EQ(comm.RetrieveFrames(frames), CommResult::Success);
        for (CFrameData frame; frames.Pop(frame);)
            text += frame.Text();
    }
    EXPECT_EQ(text, "$Rabcd$R\r\n\x11\x13");
    line.Close();
    while (comm.Figures().connected && queue.Drain(commands, 10'000))
        ;
    EXPECT_EQ(comm.Figures().abortCode, static_cast<std::uint32_t>(CommResult::ReadNotCollected));
    EXPECT_TRUE(sink.Has("Telemetry acquisition aborted on " + settings.portName +
                         ".\r\n\tOverlapped read error:" + SystemErrorText(EIO)));
}

} // namespace
} // namespace qor
