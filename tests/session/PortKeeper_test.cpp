// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports that are lost and come back, by a manual clock and a scripted port.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"

namespace qor {
namespace {

using testing::HasSubstr;

struct AScriptedLine {
    CPortScript Script;
};

class APortKeeper : public AScriptedLine, public ASession {
  protected:
    APortKeeper() : ASession(Script.Factory()) {}

    ResourceFigures Figures() { return Doc.Snapshot().Find(Port)->figures; }
    /// The port is pulled out: its next read cannot be collected.
    void Pull() {
        Script.ThenFail("CollectRead", 5);
        while (Figures().connected || Figures().abortCode == 0)
            Doc.Acquisition.TakeCommands(1000);
        Doc.Acquisition.TakeFrames();
    }
    void Frames(int first, int last) {
        for (int i = first; i <= last; ++i)
            Script.Bytes(CounterFrame("PRO", i));
        Script.Played();
        Doc.Acquisition.TakeFrames();
    }
    /// How often the port was tried in so many seconds.
    std::size_t TriesIn(int seconds) {
        Script.TakeCalls();
        for (int i = 0; i < seconds; ++i) {
            Clock.Advance(1000);
            Doc.Ports.Tend();
        }
        const std::vector<std::string> calls = Script.TakeCalls();
        return static_cast<std::size_t>(std::ranges::count(calls, "Open"));
    }
};

TEST_F(APortKeeper, BringsAPortBackAndSaysWhatItsCountersMiss) {
    CQorViewIns* pro = Add("PRO", Port);
    Doc.SetReconnect(Port, true);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    Frames(1, 5);
    Pull();
    Reported();
    Doc.Ports.Tend();
    EXPECT_THAT(Reported(), HasSubstr("PORT1 was lost (0x10000003).|\tIt is tried again"));
    Script.Fail("Open", 2);
    EXPECT_EQ(TriesIn(62), 6u) << "after 1, 2, 4, 8, 16 and 30 seconds";
    EXPECT_THAT(Reported(), testing::Not(HasSubstr("Unable to open")));
    Script.Repair();
    while (!Figures().connected)
        TriesIn(1);
    Frames(9, 10);
    Doc.Ports.Tend();
    EXPECT_THAT(Reported(),
                HasSubstr("PORT1 is back after 91 s. Frames missing by their counters: 3 of PRO."));
    EXPECT_EQ(pro->FramesReceived, 7u);
    EXPECT_EQ(pro->Checks.DroppedCount, 0u) << "what the port missed is no fault of the frame";
    Doc.Ports.Tend();
    EXPECT_EQ(Reported(), "");
}

TEST_F(APortKeeper, NamesTheFramesOfEachGapWhenItIsLostAgainAtOnce) {
    Add("PRO", Port);
    Doc.SetReconnect(Port, true);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    const struct {
        int first, last;
        const char* said;
    } connections[] = {{1, 5, "PORT1 was lost"},
                       {46, 50,
                        "PORT1 is back after 1 s. Frames missing by their counters: 40 of "
                        "PRO.|PORT1 was lost"},
                       {58, 59, "missing by their counters: 7 of PRO.|PORT1 was lost"}};
    for (const auto& one : connections) {
        while (!Figures().connected)
            TriesIn(1);
        Frames(one.first, one.last);
        Pull();
        Reported();
        Doc.Ports.Tend();
        EXPECT_THAT(Reported(), HasSubstr(one.said));
        Script.Repair();
    }
}

TEST_F(APortKeeper, LeavesAloneWhatIsNotToBeTried) {
    Add("PRO", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    Pull();
    EXPECT_EQ(TriesIn(60), 0u);
    EXPECT_THAT(Reported(), HasSubstr("It is not tried again."));
    Doc.SetReconnect(Port, true);
    ASSERT_EQ(Doc.DisconnectResource(Port), CommResult::Success);
    EXPECT_EQ(TriesIn(60), 0u) << "the operator has disconnected it";
}

TEST_F(APortKeeper, NoticesAPortThatTheOperatorHasConnectedAgain) {
    Add("PRO", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    const struct {
        int first, last;
        const char* said;
    } connections[] = {
        {1, 5, ""},
        {9, 10, "PORT1 is back after 60 s. Frames missing by their counters: 3 of PRO.|"}};
    for (const auto& one : connections) {
        Frames(one.first, one.last);
        Doc.Ports.Tend();
        Pull();
        Doc.Ports.Tend();
        const std::string said = Reported();
        EXPECT_THAT(said, testing::AllOf(HasSubstr(one.said), HasSubstr("PORT1 was lost")));
        Script.Repair();
        TriesIn(60);
        EXPECT_EQ(Doc.Sources.ResetAndConnect(Port), "");
        Doc.Ports.Tend();
    }
}

TEST_F(APortKeeper, TakesAPortThatIsStillBeingClosedForLost) {
    Add("PRO", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    CEvent closing, closed;
    Script.WhileClosing = [&] {
        closing.Set();
        closed.Wait();
    };
    Script.ThenFail("CollectRead", 5);
    closing.Wait();
    EXPECT_TRUE(Figures().connected);
    TriesIn(3);
    closed.Set();
    while (Figures().connected)
        Doc.Acquisition.TakeCommands(1000);
    Script.WhileClosing = {};
    TriesIn(3);
    const std::string said = Reported();
    EXPECT_THAT(said, HasSubstr("was lost"));
    EXPECT_THAT(said, testing::Not(HasSubstr("is back")));
}

TEST_F(APortKeeper, TellsTheLossBeforeTheEndOfTheRunThatItCauses) {
    Add("PRO", Port);
    SetMode(LogNamingMode::UserFileName, "cast");
    ASSERT_EQ(Doc.Starter.LogNow(), "");
    Pull();
    Doc.Starter.Tend(); // before anybody has looked at the ports
    EXPECT_FALSE(Doc.RawLog.Status().loggingActive);
    EXPECT_THAT(Reported(),
                testing::ContainsRegex("PORT1 was lost.*No port is connected any more"));
}

TEST_F(APortKeeper, TriesAPortThatWasNotThereFromTheStart) {
    Add("PRO", Port);
    Doc.SetReconnect(Port, true);
    Script.Fail("Open", 2);
    EXPECT_NE(Doc.ConnectResource(Port), CommResult::Success);
    EXPECT_GE(TriesIn(3), 1u);
    Script.Repair();
    EXPECT_EQ(TriesIn(8), 1u);
    EXPECT_TRUE(Figures().connected);
}

} // namespace
} // namespace qor
