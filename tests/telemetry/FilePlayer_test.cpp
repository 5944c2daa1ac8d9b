// SPDX-License-Identifier: GPL-3.0-or-later
//
// A file played as a resource: the same frames at every read size, one end, one failure.
#include "fakes/ManualClock.h"
#include "telemetry/StreamRun.h"
#include "telemetry/TelemComm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace qor {
namespace {

using Lines = std::vector<std::string>;

class APlayback : public testing::Test {
  protected:
    ~APlayback() override { std::ignore = RemoveFile(Path); }

    CFile Opened(const std::string& content) {
        std::ofstream(Path, std::ios::binary) << content;
        CFile file;
        EXPECT_EQ(file.OpenForReading(Path), FileCause::None);
        return file;
    }
    std::unique_ptr<CTelemComm> Play(CFile file, std::uint32_t chunk = 2048) {
        auto comm = std::make_unique<CTelemComm>(Sink, &Queue, Clock, nullptr);
        EXPECT_EQ(comm->InitialiseFile({7, chunk}, std::move(file)), CommResult::Success);
        EXPECT_EQ(comm->Attach(Fixed("RAD", "$R", 6)), CommResult::Success);
        EXPECT_EQ(comm->EnableAcquisition("RAD"), CommResult::Success);
        return comm;
    }
    static Lines Frames(CTelemComm& comm) {
        Lines texts;
        CFrameQueue frames;
        while (!comm.AtEnd()) {
            EXPECT_EQ(comm.RetrieveFrames(frames), CommResult::Success);
            for (CFrameData frame; frames.Pop(frame);)
                texts.push_back(std::to_string(frame.StreamOffset) + ":" +
                                std::string(frame.Text()));
        }
        return texts;
    }
    std::size_t EndNotices() {
        std::vector<QueuedCommand> commands;
        Queue.Drain(commands, 0);
        return static_cast<std::size_t>(
            std::ranges::count(commands, NoticeCode::EndOfFile, &QueuedCommand::notice));
    }

    const std::string Path = testing::TempDir() + "qor_playback_" +
                             testing::UnitTest::GetInstance()->current_test_info()->name() + ".raw";
    CCollectingSink Sink;
    CManualClock Clock;
    CProcessCommand Queue{Clock};
};

TEST_F(APlayback, EveryReadSizeGivesTheSameFramesAndOneEnd) {
    const std::string content = "xx$R1000$j$R1001$R1002$Rcut";
    const Lines expected{"2:$R1000", "10:$R1001", "16:$R1002"};
    for (std::uint32_t chunk : {1u, 5u, 7u, 2048u, 0u, 0xFFFFFFFFu}) {
        auto comm = Play(Opened(content), chunk);
        EXPECT_EQ(Frames(*comm), expected) << chunk;
        CFrameData frame;
        bool found = true;
        EXPECT_EQ(comm->RetrieveFrame(frame, found), CommResult::Success);
        EXPECT_FALSE(found);
        EXPECT_EQ(EndNotices(), 1u);
        Lines messages = Sink.Take();
        EXPECT_EQ(messages.front(), "Initializing file resource: " + Path + ".\r\n");
        EXPECT_EQ(messages.back(), "End of file resource reached for " + Path + ".\r\n");
        EXPECT_EQ(std::ranges::count(messages, messages.back()), 1);
        EXPECT_EQ(comm->Figures().bytesReceived, content.size());
    }
}

#if defined(__linux__)
TEST_F(APlayback, ReadFailureIsToldOnceAndEndsThePlayback) {
    CFile unreadable;
    ASSERT_EQ(unreadable.OpenForReading("/proc/self/mem"), FileCause::None);
    auto comm = Play(std::move(unreadable));
    Sink.Take();
    CFrameQueue frames;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(comm->RetrieveFrames(frames), CommResult::FileError);
    EXPECT_EQ(Sink.Take(), Lines{"Error reading file resource /proc/self/mem.\r\n"
                                 "\tThere was a hardware error.\r\n"});
    EXPECT_TRUE(comm->AtEnd());
    EXPECT_EQ(EndNotices(), 1u);
}
#endif

} // namespace
} // namespace qor
