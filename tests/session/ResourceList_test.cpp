// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports with other settings, files played at a pace and from any place, and logging without an
// operator.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class AResource : public ALine, public ASession {
  protected:
    AResource() : ASession(Script.Factory()) {}

    CResourceList& List = Doc.Sources;

    ResourceStatus Status(ResourceId id) { return *Doc.Snapshot().Find(id); }
};

TEST_F(AResource, GetsAnotherSpeedAndIsConnectedAnew) {
    Add("PRO", Port);
    SerialResourceSettings settings = Status(Port).serial;
    settings.baudRate = 4800;
    settings.portName = "another";
    EXPECT_EQ(List.ModifyResource(Port, settings), "");
    EXPECT_EQ(Status(Port).serial.baudRate, 4800u);
    EXPECT_EQ(Status(Port).name, "PORT1");
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    Script.Bytes(CounterFrame("PRO", 1));
    Script.Played();
    settings.baudRate = 57600;
    EXPECT_EQ(List.ModifyResource(Port, settings), "");
    EXPECT_TRUE(Status(Port).figures.connected);
    EXPECT_EQ(Status(Port).frames, 1u) << "what was queued is not lost";
    Script.Fail("Open", 2);
    EXPECT_THAT(List.ModifyResource(Port, settings),
                HasSubstr("PORT1 could not be connected again."));
    EXPECT_EQ(Status(Port).serial.baudRate, 57600u);

    settings.baudRate = 0;
    EXPECT_THAT(List.ModifyResource(Port, settings), HasSubstr("The speed 0 is not in 1 to"));
    settings = {};
    settings.dataBits = 9;
    EXPECT_THAT(List.ModifyResource(Port, settings), HasSubstr("data bits 5 to 8"));
    EXPECT_THAT(List.ModifyResource(ResourceId{77}, {}), HasSubstr("no such resource"));
}

TEST_F(AResource, IsConnectedAgainAfterAnAbort) {
    Add("PRO", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    Script.ThenFail("CollectRead", 5);
    while (Status(Port).figures.connected || Status(Port).figures.abortCode == 0)
        Doc.Acquisition.TakeCommands(1000);
    EXPECT_NE(Doc.ConnectResource(Port), CommResult::Success);
    Script.Repair();
    EXPECT_EQ(List.ResetAndConnect(Port), "");
    EXPECT_TRUE(Status(Port).figures.connected);
}

/// A log of ten frames, half a second apart.
class AReplay : public AResource {
  protected:
    ResourceId File = ResourceId::None;
    std::uint64_t Header = 0, Record = 0;

    void SetUp() override {
        CQorViewIns* pro = Add("PRO", Port);
        ASSERT_TRUE(Begin("played.raw"));
        for (int i = 0; i < 10; ++i) {
            Offer(*pro, {CounterFrame("PRO", i)});
            Clock.Advance(500);
        }
        ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
        const std::string data = Data(Folder + "played.raw");
        Record = data.size() / 10;
        Header = Content(Folder + "played.raw").size() - data.size();
        ASSERT_EQ(Doc.RemoveInstrument(pro->Id), CommResult::Success);
        File = Doc.AddFileResource(Folder + "played.raw");
        ASSERT_TRUE(Doc.AddInstrument(Folder + "PRO.cal", File).Added());
    }
    /// Frames that come within so many milliseconds, looked for every 50.
    std::uint64_t FramesIn(int milliseconds) {
        const std::uint64_t before = Status(File).frames;
        Doc.Acquisition.TakeFrames();
        for (int past = 0; past < milliseconds; past += 50) {
            Clock.Advance(50);
            Doc.Acquisition.TakeFrames();
        }
        return Status(File).frames - before;
    }
};

TEST_F(AReplay, RunsAtThePaceOfItsTimeTags) {
    EXPECT_EQ(FramesIn(5000), 0u) << "nobody has started it";
    EXPECT_EQ(List.SetSpeed(File, 1), "");
    EXPECT_EQ(List.Play(File), "");
    EXPECT_EQ(FramesIn(1000), 3u);
    EXPECT_EQ(Status(File).filePosition, Header + 2 * Record + Record - 7);
    EXPECT_EQ(Status(File).fileSize, Header + 10 * Record);
    EXPECT_EQ(List.Pause(File), "");
    EXPECT_EQ(FramesIn(2000), 0u);
    EXPECT_EQ(List.SetSpeed(File, 4), "");
    EXPECT_EQ(List.Play(File), "");
    EXPECT_EQ(FramesIn(250), 3u) << "the pause is not made up for";
    EXPECT_TRUE(Status(File).playing);
    EXPECT_EQ(List.SetSpeed(File, 0), "");
    EXPECT_EQ(FramesIn(50), 4u);
    EXPECT_FALSE(Status(File).playing);
    EXPECT_EQ(Status(File).dropped, 0u);
    EXPECT_EQ(List.Play(File), "") << "from its end it begins anew";
    EXPECT_EQ(FramesIn(50), 10u);
    EXPECT_EQ(Status(File).dropped, 0u);
    for (const double times : {-1.0, 0.001, 1001.0, std::nan("")})
        EXPECT_THAT(List.SetSpeed(File, times), HasSubstr("0.01 to 1000"));
}

TEST_F(AReplay, GoesToAnyPlaceOfTheFile) {
    const struct {
        std::uint64_t offset, frames;
    } cases[] = {
        {0, 10},
        {Header + 3 * Record, 7},
        {Header + 3 * Record + 1, 6}, // in the midst of a frame: the next one
        {Header + 10 * Record, 0},
        {40, 10}, // within the header block
    };
    for (const bool readBefore : {false, true})
        for (const auto& [offset, frames] : cases) {
            EXPECT_EQ(List.Seek(File, offset), "");
            EXPECT_EQ(Status(File).filePosition, offset);
            EXPECT_EQ(List.SetSpeed(File, readBefore ? 100 : 0), "");
            if (frames > 0) {
                EXPECT_EQ(List.Play(File), "");
                EXPECT_EQ(FramesIn(200), frames) << offset;
            }
            EXPECT_EQ(Status(File).dropped, 0u);
        }
    EXPECT_TRUE(Status(File).fileTime.known) << "tags are known for what they are";
    EXPECT_THAT(List.Seek(File, Header + 10 * Record + 1), HasSubstr("has no byte"));
    for (const auto& fault : {List.Play(Port), List.Pause(Port), List.Rewind(Port),
                              List.Seek(Port, 0), List.SetSpeed(Port, 1)})
        EXPECT_THAT(fault, HasSubstr("PORT1 is a port; only a file is played."));
}

class AStarter : public AResource {
  protected:
    AStarter() {
        Set(&CQorViewDoc::ExitIfDone, true);
        Set(&CQorViewDoc::NoDialogs, false);
        SetMode(LogNamingMode::UserFileName, "now.raw");
    }
    bool Logs() { return Doc.RawLog.Status().logOpen; }
};

TEST_F(AStarter, BeginsWithoutAskingAndEndsWithTheLastPort) {
    EXPECT_THAT(Doc.Starter.LogNow(), HasSubstr("there is no instrument to log"));
    EXPECT_EQ(User.CloseRequests.exchange(0), 1) << "there can be no log";
    Add("PRO", Port);
    EXPECT_EQ(Doc.Starter.LogNow(), "");
    EXPECT_TRUE(Logs());
    EXPECT_THAT(User.TakeDialogs(), testing::IsEmpty());
    EXPECT_EQ(Doc.Starter.LogNow(), "") << "it is done";
    Doc.Starter.Tend();
    EXPECT_TRUE(Logs());
    EXPECT_EQ(User.CloseRequests, 0);
    EXPECT_EQ(Doc.DisconnectResource(Port), CommResult::Success);
    Doc.Starter.Tend();
    EXPECT_FALSE(Logs());
    EXPECT_TRUE(Doc.RawLog.Status().runFailed);
    EXPECT_EQ(User.CloseRequests, 1);
    Doc.Starter.Tend();
    EXPECT_EQ(User.CloseRequests, 1);
    // A name that is taken is not asked about either.
    EXPECT_THAT(Doc.Starter.LogNow(), HasSubstr("Logging has not begun"));
    EXPECT_THAT(User.TakeQuestions(), testing::IsEmpty());
    EXPECT_EQ(User.CloseRequests, 2);
}

TEST_F(AStarter, WaitsForAPortThatIsTriedAgain) {
    Add("PRO", Port);
    Script.Fail("Open", 2);
    EXPECT_THAT(Doc.Starter.LogNow(), HasSubstr("no port could be opened"));
    EXPECT_EQ(User.CloseRequests, 1) << "there can be no log";
    Doc.SetReconnect(Port, true);
    EXPECT_EQ(Doc.Starter.LogNow(), "");
    EXPECT_TRUE(Doc.Starter.Waits());
    const auto seconds = [&](int count) {
        for (int i = 0; i < count; ++i) {
            Clock.Advance(1000);
            Doc.Ports.Tend();
            Doc.Starter.Tend();
        }
    };
    seconds(5);
    EXPECT_FALSE(Logs());
    Script.Repair();
    seconds(60);
    EXPECT_TRUE(Logs());
    EXPECT_FALSE(Doc.Starter.Waits());
    EXPECT_EQ(User.CloseRequests, 1);
}

TEST_F(AStarter, ChangesAreToldOnceUntilTheyAreTaken) {
    int told = 0;
    Doc.OnChange = [&] { ++told; };
    Doc.TakeChange();
    const InstrumentId pro = Add("PRO", Port)->Id;
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Tracker, pro), "");
    Doc.SetImmersed("PRO", true);
    EXPECT_EQ(told, 1);
    const std::function<void()> changes[] = {
        [&] { EXPECT_EQ(Doc.SetRole(InstrumentRole::Tracker, InstrumentId::None), ""); },
        [&] { EXPECT_EQ(Doc.RawLog.SetLogOptions({}), ""); },
        [&] { EXPECT_EQ(Doc.RawLog.SetStation({}), ""); },
        [&] { EXPECT_EQ(Doc.Instruments.ResetCounts(pro), ""); },
        [&] { Doc.SetCalibrationMode(true); },
        [&] { Doc.SetCalibrationMode(false); },
        [&] {
            EXPECT_EQ(Doc.ConnectResource(Port), CommResult::Success);
            Reported();
        },
        [&] { EXPECT_TRUE(Begin()); },
        [&] { EXPECT_TRUE(Doc.RawLog.EndLogFile(true)); },
        [&] { EXPECT_EQ(Doc.RemoveResource(Port), CommResult::Success); },
    };
    for (const auto& change : changes) {
        Reported();
        Doc.TakeChange();
        const int before = told;
        change();
        EXPECT_EQ(told, before + 1) << &change - changes;
    }
    Doc.OnChange = nullptr;
}

} // namespace
} // namespace qor
