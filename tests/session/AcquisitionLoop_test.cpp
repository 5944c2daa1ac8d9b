// SPDX-License-Identifier: GPL-3.0-or-later
//
// The loop that brings frames from ports and files to the log and messages to the session log.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"
#include "session/AcquisitionLoop.h"
#include "telemetry/RawLogFormat.h"

namespace qor {
namespace {

using testing::HasSubstr;

/// Outlives the document whose ports it makes.
struct AScript {
    CPortScript Script;
};

class ALoop : public AScript, public ASession {
  protected:
    ALoop() : ASession(Script.Factory()), Loop(Doc) {}
    static std::string Frames(const std::string& name, int first, int count) {
        std::string all;
        for (int i = first; i < first + count; ++i)
            all += CounterFrame(name, i % 256);
        return all;
    }
    /// Another log at every round hour, with the sounds that tests listen to.
    void SetHourly() {
        Set([](LogOptions& options) {
            options.everyEnabled = options.loggingSounds = true;
            options.every = {1, 0, 0};
        });
    }
    /// The data of a log without its time tags, where every frame has one.
    static std::string Untagged(const std::string& path, std::size_t frameSize) {
        std::string data = Data(path), frames;
        for (std::size_t at = 0; at < data.size(); at += frameSize + TimeTagSize)
            frames += data.substr(at, frameSize);
        return frames;
    }

    CAcquisitionLoop Loop;
};

TEST_F(ALoop, ALostNoticeAndADisconnectionLoseNoFrame) {
    CQorViewIns* pro = Add("PRO", Port);
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Doc.ConnectAll());
    Script.Bytes(Frames("PRO", 0, 20)).Played();
    std::vector<QueuedCommand> lost;
    Doc.Controller()->Commands().Drain(lost, 0);
    EXPECT_TRUE(Loop.Step(0));
    EXPECT_EQ(pro->FramesReceived, 20u);
    Script.Bytes(Frames("PRO", 20, 20)).Played();
    EXPECT_EQ(Doc.DisconnectResource(Port), CommResult::Success);
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Untagged(Folder + "cast.raw", 6), Frames("PRO", 0, 40));
}

TEST_F(ALoop, StepTicksOnceASecondOfTheMonotonicClock) {
    Set([](LogOptions& options) {
        options.durationEnabled = options.timeStampEnabled = true;
        options.duration = {0, 0, 3};
    });
    ASSERT_TRUE(Begin());
    for (int i = 0; i < 80; ++i) {
        Loop.Step(0);
        Clock.Advance(50);
    }
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_EQ(Data(Folder + "cast.raw"), "$PCZDA,142306.00,03,05,2005,,\r\n"
                                         "$PCZDA,142307.00,03,05,2005,,\r\n"
                                         "$PCZDA,142308.00,03,05,2005,,\r\n");
}

TEST_F(ALoop, ARoundTimeThatComesWhileAPortIsDisconnectedCostsNoFrame) {
    Add("PRO", Port);
    SetHourly();
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    ASSERT_TRUE(Doc.ConnectAll());
    Loop.Step(0);
    Script.Bytes(Frames("PRO", 1, 5)).Played();
    CEvent ended, disconnected;
    std::thread ticker;
    const std::int64_t due = Doc.RawLog.NextTimer();
    Script.WhileClosing = [&] {
        Clock.Advance(due - Clock.MonotonicMilliseconds());
        ticker = std::thread([this] { Doc.RawLog.OnLogTick(); });
        ended.Wait();
    };
    User.WhileBeeping = [&] {
        if (ended.IsSet())
            return;
        ended.Set(); // the next one has not begun
        EXPECT_FALSE(disconnected.Wait(50)) << "the frames belong into the log to come";
    };
    EXPECT_EQ(Doc.DisconnectResource(Port), CommResult::Success);
    disconnected.Set();
    ticker.join();
    User.WhileBeeping = Script.WhileClosing = {};
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Doc.RawLog.Status().runUnstored, 0u);
    EXPECT_EQ(Untagged(Folder + "2005-123-150000.raw", 6), Frames("PRO", 1, 5));
}

TEST_F(ALoop, AStopThatComesWhileTheNextLogIsBegunEndsItBehindItsFrames) {
    Add("PRO", Port);
    SetHourly();
    SetMode(LogNamingMode::TimeStamp);
    ASSERT_TRUE(Doc.RawLog.BeginLogFile());
    ASSERT_TRUE(Doc.ConnectAll());
    Loop.Step(0);
    bool sent = false;
    User.WhileBeeping = [&] { // one has ended, the next has not begun
        if (!std::exchange(sent, true))
            Script.Bytes(Frames("PRO", 1, 5)).Played();
    };
    Doc.RawLog.OnFileBegun = [this](const std::string&) {
        EXPECT_FALSE(Doc.RawLog.EndLogFile(true)) << "it is still being begun";
    };
    Clock.Advance(Doc.RawLog.NextTimer() - Clock.MonotonicMilliseconds());
    Loop.Step(0);
    User.WhileBeeping = {};
    Doc.RawLog.OnFileBegun = nullptr;
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_EQ(Doc.RawLog.Status().runUnstored, 0u);
    EXPECT_EQ(Untagged(Folder + "2005-123-150000.raw", 6), Frames("PRO", 1, 5));
}

TEST_F(ALoop, FramesThatWaitForALogThatIsRefusedAreCountedAndSaid) {
    CQorViewIns* pro = Add("PRO", Port);
    SetHourly();
    ASSERT_TRUE(Begin()); // its name is not free for a second one
    ASSERT_TRUE(Doc.ConnectAll());
    Loop.Step(0);
    User.WhileBeeping = [this] {
        if (!Doc.RawLog.Status().logOpen)
            Script.Bytes(Frames("PRO", 1, 5)).Played();
    };
    Clock.Advance(3'600'000);
    Loop.Step(0);
    User.WhileBeeping = {};
    Script.Bytes(Frames("PRO", 6, 2)).Played();
    Loop.Step(0);
    EXPECT_EQ(pro->FramesReceived, 7u);
    const LogStatus status = Doc.RawLog.Status();
    EXPECT_TRUE(status.runFailed);
    EXPECT_EQ(status.runUnstored, 5u) << "those behind the end of the run are none of it";
    EXPECT_THAT(Reported(), HasSubstr("5 frames were received and not stored"));
}

TEST_F(ALoop, FramesAfterTheOperatorsStopAreNoLossWhileAQuestionIsOpen) {
    Add("PRO", Port);
    SetHourly();
    Set(&SessionState::NoDialogs, false);
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Doc.ConnectAll());
    const auto take = [this](int count) {
        Script.Bytes(Frames("PRO", 1, count)).Played();
        Doc.Acquisition.TakeFrames();
    };
    User.WhileAsked = [&] { // whether to replace the first log
        take(3);            // no log takes these, and the run still goes on
        EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
        take(2);
    };
    Clock.Advance(3'600'000);
    Loop.Step(0);
    User.WhileAsked = {};
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_EQ(Doc.RawLog.Status().runUnstored, 3u);
    EXPECT_THAT(Reported(), HasSubstr("3 frames were received and not stored"));
}

TEST_F(ALoop, PortsAreLookedAfterWhileTheNextLogIsWaitedFor) {
    Add("PRO", Port);
    SetHourly();
    Set(&SessionState::NoDialogs, false);
    ASSERT_TRUE(Begin());
    ASSERT_TRUE(Doc.ConnectAll());
    Script.ThenFail("CollectRead", 5);
    CEvent asked, lost;
    User.AnswersYes = false;
    User.WhileAsked = [&] { // whether to replace the first log
        asked.Set();
        EXPECT_TRUE(lost.Wait(20'000)) << "nobody said that the port was lost";
    };
    Doc.Acquisition.OnEvent = [&](const Event& event) {
        if (event.kind == EventKind::PortLost)
            lost.Set();
    };
    Clock.Advance(3'600'000);
    ASSERT_TRUE(Loop.Start());
    EXPECT_TRUE(asked.Wait(20'000));
    EXPECT_TRUE(lost.Wait(20'000));
    Loop.Stop();
}

class APlayback : public ALoop {
  protected:
    /// Two tagged instruments and an untagged GPS on one resource, with time stamps between.
    void SetUpInstruments(CQorViewDoc& doc, ResourceId resource) {
        for (const char* name : {"PRO", "REF", "GPS"})
            ASSERT_TRUE(
                doc.AddInstrument(Temp.Put(std::string(name) + ".cal", CounterDefinition(name)),
                                  resource)
                    .Added());
        doc.SetRole(InstrumentRole::Gps, doc.FindInstrument("GPS"));
    }
    std::string WriteLog(int rounds) {
        SetUpInstruments(Doc, Port);
        EXPECT_TRUE(Begin("first.raw"));
        for (int i = 0; i < rounds; ++i) {
            Offer(*Find("PRO"), {CounterFrame("PRO", i % 256)});
            Offer(*Find("GPS"), {CounterFrame("GPS", i % 256)});
            Clock.Advance(7);
            Offer(*Find("REF"), {CounterFrame("REF", i % 256)});
        }
        EXPECT_TRUE(Doc.RawLog.EndLogFile(true));
        return Folder + "first.raw";
    }
};

TEST_F(APlayback, LogReplayLogGivesTheSameBytes) {
    const std::string first = WriteLog(300);
    CQorViewDoc replay(Clock, Script.Factory(), User, Profile);
    const ResourceId file = replay.AddFileResource(first);
    ASSERT_NE(file, ResourceId::None);
    SetUpInstruments(replay, file);
    {
        CRecursiveLock lock(replay.DocLock);
        replay.NoDialogs = true;
        replay.Resources[0]->Playing = true;
        replay.Naming.logNamingMode = LogNamingMode::UserFileName;
        replay.Naming.logDirectory = Folder;
        replay.Naming.logUserFileName = "second.raw";
    }
    ASSERT_TRUE(replay.RawLog.BeginLogFile());
    CAcquisitionLoop loop(replay);
    while (replay.Acquisition.IsPlaying())
        loop.Step(0);
    EXPECT_EQ(replay.Snapshot().resources[0].frames, 900u);
    ASSERT_TRUE(replay.RawLog.EndLogFile(true));
    EXPECT_EQ(Data(Folder + "second.raw"), Data(first));
    EXPECT_EQ(replay.Snapshot().resources[0].dropped, 0u);
    EXPECT_EQ(replay.Snapshot().resources[0].figures.bytesDiscarded, 0u);
}

} // namespace
} // namespace qor
