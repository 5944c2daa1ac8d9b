// SPDX-License-Identifier: GPL-3.0-or-later
//
// Instruments changed while they run, and the pressure tare that is taken from one.
#include "fakes/ScriptedPort.h"
#include "fakes/SessionFixture.h"
#include "session/LogHeader.h"
#include "session/PressureTare.h"

namespace qor {
namespace {

using testing::Contains;
using testing::HasSubstr;

class AnInstrument : public ALine, public ASession {
  protected:
    AnInstrument() : ASession(Script.Factory()) {}

    CInstrumentList& List = Doc.Instruments;

    void Change(InstrumentId id, bool InstrumentDefaults::*flag, bool on) {
        InstrumentDefaults settings = List.Settings(id);
        settings.*flag = on;
        EXPECT_EQ(List.ChangeSettings(id, settings), "");
    }
    InstrumentFigures Figures(const std::string& name) {
        for (const ResourceStatus& resource : Doc.Snapshot().resources)
            for (const InstrumentFigures& one : resource.instruments)
                if (one.name == name)
                    return one;
        return {};
    }
};

TEST_F(AnInstrument, ChecksAndLoggingFollowTheirSwitchesWithTheNextFrame) {
    CQorViewIns* pro = Add("PRO", Port);
    const auto frames = [&](std::vector<int> counters) {
        std::vector<std::string> bytes;
        for (const int counter : counters)
            bytes.push_back(CounterFrame("PRO", counter));
        Offer(*pro, bytes);
    };
    frames({1, 5});
    EXPECT_EQ(Figures("PRO").dropped, 1u);
    for (bool InstrumentDefaults::*flag :
         {&InstrumentDefaults::CounterCheck, &InstrumentDefaults::ErrorChecking}) {
        Change(pro->Id, flag, false);
        frames({9, 20, 1});
        EXPECT_EQ(Figures("PRO").dropped, 1u);
        Change(pro->Id, flag, true);
        frames({40, 41});
        EXPECT_EQ(Figures("PRO").dropped, 1u) << "it begins afresh";
    }
    frames({43});
    EXPECT_EQ(Figures("PRO").dropped, 2u);
    EXPECT_EQ(List.ResetCounts(pro->Id), "");
    EXPECT_EQ(Figures("PRO").dropped, 0u);
    EXPECT_EQ(Figures("PRO").frames, 13u);

    ASSERT_TRUE(Begin());
    frames({1});
    Change(pro->Id, &InstrumentDefaults::LogEnabled, false);
    frames({2, 3});
    Change(pro->Id, &InstrumentDefaults::LogEnabled, true);
    frames({4});
    EXPECT_EQ(FramesThisLog(*pro).written, 2u);

    InstrumentDefaults titled;
    titled.Title = "a\nb";
    EXPECT_THAT(List.ChangeSettings(pro->Id, titled), HasSubstr("control character"));
    EXPECT_THAT(List.ChangeSettings(InstrumentId{99}, {}), HasSubstr("no such instrument"));
}

TEST_F(AnInstrument, AcquisitionThatIsOffLeavesItsFramesAlone) {
    const InstrumentId pro = Add("PRO", Port)->Id;
    Add("REF", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    EXPECT_EQ(List.SetAcquisition(pro, false), "");
    Script.Bytes(CounterFrame("PRO", 1) + CounterFrame("REF", 1));
    Script.Played();
    Doc.Acquisition.TakeFrames();
    EXPECT_EQ(Figures("PRO").frames, 0u);
    EXPECT_EQ(Figures("REF").frames, 1u);
    EXPECT_EQ(List.SetAcquisition(pro, true), "");
    Script.Bytes(CounterFrame("PRO", 7) + CounterFrame("REF", 2));
    Script.Played();
    Doc.Acquisition.TakeFrames();
    EXPECT_EQ(Figures("PRO").frames, 1u);
    EXPECT_EQ(Figures("PRO").dropped, 0u);
}

TEST_F(AnInstrument, WhoseFramesAreQueuedIsRemovedBehindThem) {
    const InstrumentId pro = Add("PRO", Port)->Id;
    Add("REF", Port);
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    ASSERT_TRUE(Begin());
    Script.Bytes(CounterFrame("PRO", 1) + CounterFrame("REF", 1) + CounterFrame("PRO", 2));
    Script.Played();
    EXPECT_EQ(Doc.RemoveInstrument(pro), CommResult::Success);
    ASSERT_TRUE(Doc.RawLog.EndLogFile(true));
    EXPECT_EQ(Doc.RawLog.Status().runFrames, 3u);
}

TEST_F(AnInstrument, MovesWithItsSettingsCountsAndRoles) {
    InstrumentId pro = Add("PRO", Port)->Id;
    const InstrumentId before = pro;
    const ResourceId second = Doc.AddSerialResource({.portName = "PORT2", .globalSyncString = ""});
    Change(pro, &InstrumentDefaults::Immersed, true);
    Change(pro, &InstrumentDefaults::ChecksumCheck, false);
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, pro), "");
    ASSERT_EQ(Doc.ConnectResource(Port), CommResult::Success);
    Script.Bytes(CounterFrame("PRO", 1) + CounterFrame("PRO", 5));
    Script.Played(); // cut, and still in the port's queue
    EXPECT_EQ(List.MoveInstrument(pro, second), "");
    EXPECT_NE(pro, before);
    EXPECT_EQ(Find(before), nullptr);
    EXPECT_EQ(Doc.Role(InstrumentRole::Profiler), pro);
    EXPECT_TRUE(List.Settings(pro).Immersed && !List.Settings(pro).ChecksumCheck);
    EXPECT_EQ(Figures("PRO").frames, 2u) << "what was queued is not lost";
    EXPECT_EQ(Figures("PRO").dropped, 1u);
    EXPECT_EQ(Find(pro)->ResourceName(), "PORT2");
    Offer(*Find(pro), {CounterFrame("PRO", 90)});
    EXPECT_EQ(Figures("PRO").frames, 3u);
    EXPECT_EQ(Figures("PRO").dropped, 1u);

    EXPECT_EQ(List.MoveInstrument(pro, second), "") << "where it is";
    EXPECT_THAT(List.MoveInstrument(pro, ResourceId{77}), HasSubstr("no such resource"));
    InstrumentId gone{77};
    EXPECT_THAT(List.MoveInstrument(gone, second), HasSubstr("no such instrument"));
    // Where one of unmarked frames is, no other can be; it goes back to where it was.
    ASSERT_TRUE(
        Doc.AddInstrument(Temp.Put("plain.cal", "INSTRUMENT NONE '' 0 AS 0 NONE\n"
                                                "SPECIAL NONE 'SEABIRD_19SCT' 0 AS 0 NONE\n"),
                          Doc.AddSerialResource({.portName = "PORT3", .globalSyncString = ""}))
            .Added());
    const ResourceId third = Doc.Snapshot().resources[2].id;
    EXPECT_THAT(List.MoveInstrument(pro, third), HasSubstr("PRO could not be attached to PORT3."));
    EXPECT_EQ(Find(pro)->ResourceName(), "PORT2");
    EXPECT_EQ(Doc.Role(InstrumentRole::Profiler), pro);
    Offer(*Find(pro), {CounterFrame("PRO", 91)});
    EXPECT_EQ(Figures("PRO").frames, 4u);
}

TEST_F(AnInstrument, TheTareIsTheProfilersPressureOrSaysWhyNot) {
    const auto take = [&] { return TakePressureTare(Doc); };
    const auto tare = [&] {
        CRecursiveLock lock(Doc.DocLock);
        return Doc.PressureTare;
    };
    EXPECT_EQ(take(), "The pressure tare could not be taken. No profiler has been specified; give "
                      "an instrument that role.");
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, Add("PRO", Port)->Id), "");
    EXPECT_THAT(take(), HasSubstr("The profiler PRO has no pressure sensor."));

    const auto profiler = [&](const std::string& name, const std::string& units) {
        const AddedInstrument added = Doc.AddInstrument(
            Temp.Put(name + ".cal", Format("INSTRUMENT %s '' %zu AS 0 NONE\nPRES '' '%s' 1 BU 1 "
                                           "POLYU\n0.5 0.25\n",
                                           name.c_str(), name.size(), units.c_str())),
            Port);
        EXPECT_TRUE(added.Added()) << added.parseLog;
        EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, added.id), "");
        return Find(added.id);
    };
    CQorViewIns* deep = profiler("DEEP", "dbar");
    EXPECT_THAT(take(), HasSubstr("The profiler DEEP has sent no frame yet."));
    Offer(*deep, {std::string("DEEP") + '\x04'});
    Clock.Advance(9000);
    EXPECT_THAT(take(), HasSubstr("The latest frame of the profiler DEEP is 9 s old."));
    EXPECT_EQ(tare(), std::nullopt);
    Offer(*deep, {std::string("DEEP") + '\x04'});
    EXPECT_EQ(take(), "");
    EXPECT_EQ(tare(), 1.5);
    EXPECT_EQ(Doc.Session.Record().pressureTare, 1.5);

    // In the sensor's units here, in dbar in the file; taken again, it is that of the new profiler.
    CQorViewIns* other = profiler("OTHR", "bar");
    EXPECT_THAT(take(), HasSubstr("no frame yet"));
    EXPECT_EQ(tare(), 1.5) << "a failure leaves the one that was there";
    Offer(*other, {std::string("OTHR") + '\x02'});
    EXPECT_EQ(take(), "");
    EXPECT_EQ(tare(), 1.0);
    EXPECT_EQ(Doc.Session.Record().pressureTare, 10.0);
    for (const auto& [units, tareThere] : {std::pair{"bar", 1.0}, std::pair{"dbar", 10.0}}) {
        CRecursiveLock lock(Doc.DocLock);
        EXPECT_EQ(TareIn(Doc, PressureScale(units)), tareThere) << units;
    }
    // The same pressure whoever is the profiler, and whichever came first, the session's or he.
    const auto logged = [&] {
        CRecursiveLock lock(Doc.DocLock);
        return HeaderLines(Doc, {}, {});
    };
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, deep->Id), "");
    EXPECT_THAT(logged(), Contains(HasSubstr(" 10.000000 (PRESSURE-TARE)")));
    EXPECT_EQ(Doc.Session.Record().pressureTare, 10.0);
    {
        CRecursiveLock lock(Doc.DocLock);
        TakeSavedTare(Doc, 20.0);
    }
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, other->Id), "");
    EXPECT_THAT(logged(), Contains(HasSubstr(" 2.000000 (PRESSURE-TARE)")));
    ClearTare(Doc);
    EXPECT_EQ(tare(), std::nullopt);
    EXPECT_EQ(Doc.Session.Record().pressureTare, std::nullopt) << "none is not zero";
}

} // namespace
} // namespace qor
