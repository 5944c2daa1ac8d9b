// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's lists: what can be added and removed, what is refused and reported, and how roles
// and frames follow.
#include "fakes/SessionFixture.h"

namespace qor {
namespace {

using testing::HasSubstr;

class ADocument : public ASession {};

TEST_F(ADocument, RefusedAdditionsAreReportedAndChangeNothing) {
    Add("PRO", Port);
    Reported();
    CommResult result{};
    EXPECT_EQ(Doc.AddSerialResource({.portName = "PORT1", .globalSyncString = ""}, &result),
              ResourceId::None);
    EXPECT_EQ(result, CommResult::ResourceAlreadyDefined);
    EXPECT_THAT(Reported(), HasSubstr("Unable to add communications resource: PORT1.|"));
    EXPECT_EQ(Doc.AddFileResource(Folder + "none.raw", {}, &result), ResourceId::None);
    EXPECT_EQ(result, CommResult::FileError);
    EXPECT_EQ(Reported(), "Unable to add communications resource: " + Folder +
                              "none.raw.|\tThe file could not be found.|");

    AddedInstrument twice = Doc.AddInstrument(Folder + "PRO.cal", Port);
    EXPECT_FALSE(twice.Added());
    EXPECT_EQ(twice.comm, CommResult::InstrumentAlreadyDefined);
    EXPECT_THAT(Reported(), HasSubstr("\tThe instrument has already been defined.|"));
    AddedInstrument nowhere =
        Doc.AddInstrument(Temp.Put("NEW.cal", CounterDefinition("NEW")), ResourceId{77});
    EXPECT_FALSE(nowhere.Added());
    EXPECT_EQ(nowhere.comm, CommResult::ResourceReference);
    EXPECT_THAT(Reported(), HasSubstr("\tThe communications resource reference is invalid.|"));
    ASSERT_EQ(Doc.Snapshot().resources.size(), 1u);
    EXPECT_EQ(Doc.Snapshot().resources[0].instruments.size(), 1u);
}

TEST_F(ADocument, SpeaksToNobodyWhileItGoes) {
    bool heard = false;
    {
        CQorViewDoc doc(
            Clock, [] { return nullptr; }, User, Profile);
        doc.Acquisition.OnEvent = [&](const Event&) { heard = true; };
        doc.ReportMessage("late\r\n");
    }
    EXPECT_FALSE(heard) << "who listened may be gone";
}

TEST_F(ADocument, HandlesRolesAndFramesOutliveTheRemovalOfOthers) {
    const InstrumentId a = Add("A", Port)->Id;
    CQorViewIns* b = Add("B", Port);
    const ResourceId second = Doc.AddSerialResource({.portName = "PORT2", .globalSyncString = ""});
    CQorViewIns* c = Add("C", second);
    Doc.SetRole(InstrumentRole::Profiler, b->Id);
    Doc.SetRole(InstrumentRole::Reference, c->Id);
    Doc.SetRole(InstrumentRole::Tracker, a);
    EXPECT_EQ(Doc.RemoveInstrument(a), CommResult::Success);
    EXPECT_EQ(Doc.Role(InstrumentRole::Profiler), b->Id);
    EXPECT_EQ(Doc.Role(InstrumentRole::Tracker), InstrumentId::None);
    EXPECT_EQ(Find(a), nullptr);
    Offer(*b, {CounterFrame("B", 1)});
    EXPECT_EQ(b->FramesReceived, 1u);

    EXPECT_EQ(Doc.RemoveResource(Port), CommResult::Success);
    EXPECT_EQ(Doc.Role(InstrumentRole::Reference), c->Id);
    EXPECT_EQ(Doc.Role(InstrumentRole::Profiler), InstrumentId::None);
    EXPECT_EQ(Find("C"), c);
    EXPECT_EQ(Doc.FindInstrument("B"), InstrumentId::None);
    Offer(*c, {CounterFrame("C", 1), CounterFrame("C", 3)});
    const SessionSnapshot now = Doc.Snapshot();
    ASSERT_NE(now.Find(second), nullptr);
    EXPECT_EQ(now.Find(Port), nullptr);
    EXPECT_EQ(now.Find(second)->frames, 2u);
    EXPECT_EQ(now.Find(second)->dropped, 1u);
    EXPECT_EQ(Doc.RemoveResource(Port), CommResult::ResourceReference);
    EXPECT_EQ(Doc.RemoveInstrument(a), CommResult::InstrumentReference);

    // The name comes back, the handle does not.
    EXPECT_EQ(Doc.RemoveInstrument(c->Id), CommResult::Success);
    CQorViewIns* again = Add("C", second);
    EXPECT_EQ(Doc.Role(InstrumentRole::Reference), InstrumentId::None);
    EXPECT_NE(again->Id, a);
}

} // namespace
} // namespace qor
