// SPDX-License-Identifier: GPL-3.0-or-later
//
// A practice port against what a port's worker relies on: step by step under a manual clock, then
// under the worker itself.
#include "simulation/PracticePort.h"

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"
#include "fakes/ManualClock.h"
#include "platform/SystemText.h"
#include "telemetry/TelemComm.h"

#include <gmock/gmock.h>
#include <thread>

namespace qor {
namespace {

using testing::ElementsAre;

/// A counting instrument of 10 Hz on COM7.
class APracticePort : public testing::Test {
  protected:
    APracticePort() { Line.Add(DefineFixed("FRAME COUNTER '' 1 BU 0 COUNT\n"), {.rate = 10}); }
    void Open() {
        ASSERT_EQ(Port->Open("COM7"), 0U);
        ASSERT_EQ(Port->SetQueues(12, 0), 0U); // three frames
        ASSERT_EQ(Port->SetEventMask(EventLineError), 0U);
    }
    /// The counters of the frames that reads bring until the line is silent for so long, with the
    /// worker's calls: "!" is an error that ends the reading, "?" a line error.
    std::vector<std::string> Read(int milliseconds) {
        std::vector<std::string> heard;
        std::uint32_t mask = 0, errors = 0;
        bool pending = false;
        Port->IssueStatusWait(mask);
        for (;;) {
            std::size_t got = 0;
            if (!pending && Port->IssueRead(Buffer, got) == IssueResult::Failed)
                return heard;
            pending = got == 0;
            if (pending) {
                const WaitResult result = Port->Wait(milliseconds);
                if (result == WaitResult::TimeOut)
                    return heard;
                if (result == WaitResult::StatusDone) {
                    EXPECT_EQ(Port->CollectStatus(mask), 0U);
                    EXPECT_EQ(Port->ReadLineErrors(errors), 0U);
                    EXPECT_EQ(errors, LineInputOverflow);
                    heard.push_back("?");
                    continue;
                }
                pending = false;
                if (SystemError error = Port->CollectRead(got)) {
                    EXPECT_EQ(error, SystemErrorGone);
                    heard.push_back("!");
                    return heard;
                }
            }
            EXPECT_EQ(got, 4U);
            heard.push_back(std::to_string(Buffer[3]));
        }
    }

    CManualClock Clock;
    CPracticeBench Bench{Clock};
    CPracticeLine& Line = Bench.AddLine("COM7", 1);
    std::unique_ptr<CSerialPort> Port = Bench.MakePort();
    std::uint8_t Buffer[4];
};

TEST_F(APracticePort, BringsFramesWhenTheyAreDueAndOnlyThose) {
    Open();
    std::size_t got = 1;
    std::uint32_t mask = 0;
    EXPECT_EQ(Port->IssueRead(Buffer, got), IssueResult::Done); // due at once
    EXPECT_EQ(Port->IssueStatusWait(mask), IssueResult::Pending);
    EXPECT_EQ(Port->Wait(0), WaitResult::TimeOut); // no read is pending
    EXPECT_EQ(Port->IssueRead(Buffer, got), IssueResult::Pending);
    EXPECT_EQ(Port->Wait(60), WaitResult::TimeOut);
    EXPECT_EQ(Port->Wait(60), WaitResult::ReadDone);
    EXPECT_EQ(Clock.MonotonicMilliseconds(), 100);
    EXPECT_EQ(Port->CollectRead(got), 0U);
    EXPECT_EQ(got, 4U);
    EXPECT_EQ(Buffer[3], 1);
}

TEST_F(APracticePort, IsLostUnderItsReaderAndComesBackWithTheFramesMissed) {
    EXPECT_EQ(Port->Open("COM8"), SystemErrorNoDevice);
    Open();
    EXPECT_EQ(Bench.MakePort()->Open("COM7"), SystemErrorInUse);
    EXPECT_THAT(Read(50), ElementsAre("0"));
    Line.Unplug();
    EXPECT_THAT(Read(50), ElementsAre("!"));
    EXPECT_NE(Port->SaveTimeouts(), 0U);
    EXPECT_EQ(Port->Open("COM7"), SystemErrorNoDevice);
    Clock.Advance(400);
    Line.PlugIn();
    EXPECT_EQ(Port->ReadSettings(), SystemErrorGone); // what was open stays lost
    Open();
    EXPECT_THAT(Read(60), ElementsAre("5"));
}

TEST_F(APracticePort, ItsSwitchesTurnWhileItIsRead) {
    Open();
    EXPECT_THAT(Read(40), ElementsAre("0"));
    Line.SetFaults({.drop = 1.0});
    EXPECT_THAT(Read(300), ElementsAre());
    Line.SetFaults({.corrupt = 1.0});
    const auto damaged = Read(90);
    ASSERT_EQ(damaged.size(), 1U);
    EXPECT_NE(damaged[0], "4");
    Line.SetFaults({});
    EXPECT_THAT(Read(80), ElementsAre("5"));
}

TEST_F(APracticePort, AReaderThatIsTooLateLosesBytesAndIsTold) {
    Open();
    EXPECT_THAT(Read(50), ElementsAre("0"));
    Clock.Advance(1000);
    EXPECT_THAT(Read(40), ElementsAre("1", "2", "3", "?"));
    EXPECT_THAT(Read(60), ElementsAre("11"));
}

TEST(APractice, FeedsTheWorkerOfAResourceThroughALoss) {
    CSystemClock clock;
    CCollectingSink sink;
    CProcessCommand commands(clock);
    CPracticeBench bench(clock);
    CPracticeLine& line = bench.AddLine("COM7", 1);
    line.Add(DefineFixed("X 1 '' 2 BU 0 COUNT\n"), {.rate = 500});
    CTelemComm comm(sink, &commands, clock, [&] { return bench.MakePort(); });
    SerialResourceSettings settings;
    settings.portName = "COM7";
    settings.globalSyncString.clear();
    ASSERT_EQ(comm.InitialiseSerial(settings), CommResult::Success);
    std::uint32_t abort = 0;
    for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(comm.Connect(), CommResult::Success);
        const std::uint64_t before = comm.Figures().bytesReceived;
        while (comm.Figures().bytesReceived == before)
            std::this_thread::yield();
        line.Unplug();
        while (comm.Figures().abortCode == 0)
            std::this_thread::yield();
        EXPECT_EQ(comm.Disconnect(), CommResult::Success);
        EXPECT_EQ(comm.ResetAbortCode(abort), CommResult::Success);
        EXPECT_EQ(abort, static_cast<std::uint32_t>(CommResult::ReadNotCollected));
        EXPECT_EQ(comm.Connect(), CommResult::PortNotOpened);
        line.PlugIn();
    }
}

} // namespace
} // namespace qor
