// SPDX-License-Identifier: GPL-3.0-or-later
//
// The document's lists: what can be added and removed, what is refused and reported, and how roles
// and frames follow.
#include "SessionFixture.h"

namespace qor {
namespace {

using testing::HasSubstr;

class ADocument : public ASession {};

TEST_F(ADocument, RefusedAdditionsAreReportedAndChangeNothing) {
    Add("PRO", Port);
    Reported();
    CommResult result{};
    EXPECT_EQ(Doc.AddSerialResource({.portName = "PORT1", .globalSyncString = ""}, &result), -1);
    EXPECT_EQ(result, CommResult::ResourceAlreadyDefined);
    EXPECT_THAT(Reported(), HasSubstr("Unable to add communications resource: PORT1.|"));
    EXPECT_EQ(Doc.AddFileResource(Folder + "none.raw", {}, &result), -1);
    EXPECT_EQ(result, CommResult::FileError);
    EXPECT_EQ(Reported(), "Unable to add communications resource: " + Folder +
                              "none.raw.|\tThe file could not be found.|");

    AddedInstrument twice = Doc.AddInstrument(Folder + "PRO.cal", Port);
    EXPECT_EQ(twice.instrument, nullptr);
    EXPECT_EQ(twice.comm, CommResult::InstrumentAlreadyDefined);
    EXPECT_THAT(Reported(), HasSubstr("\tThe instrument has already been defined.|"));
    AddedInstrument nowhere = Doc.AddInstrument(Temp.Put("NEW.cal", CounterDefinition("NEW")), 5);
    EXPECT_EQ(nowhere.instrument, nullptr);
    EXPECT_EQ(nowhere.comm, CommResult::ResourceReference);
    EXPECT_THAT(Reported(), HasSubstr("\tThe communications resource reference is invalid.|"));
    EXPECT_EQ(Doc.FiguresOf(-1).size(), 1u);
    EXPECT_EQ(Doc.ResourceCount(), 1u);
}

TEST_F(ADocument, RolesAndFramesFollowWhenOthersAreRemoved) {
    Add("A", Port);
    CQorViewIns* b = Add("B", Port);
    int second = Doc.AddSerialResource({.portName = "PORT2", .globalSyncString = ""});
    CQorViewIns* c = Add("C", second);
    Doc.SetRole(InstrumentRole::Profiler, Port, 1);
    Doc.SetRole(InstrumentRole::Reference, second, 0);
    Doc.SetRole(InstrumentRole::Tracker, Port, 0);
    EXPECT_EQ(Doc.RemoveInstrument(Port, 0), CommResult::Success);
    EXPECT_EQ(Doc.Role(InstrumentRole::Profiler).instrument, 0);
    EXPECT_FALSE(Doc.Role(InstrumentRole::Tracker).Assigned());
    Offer(*b, {CounterFrame("B", 1)});
    EXPECT_EQ(b->FramesReceived, 1u);

    EXPECT_EQ(Doc.RemoveResource(Port), CommResult::Success);
    EXPECT_EQ(Doc.Role(InstrumentRole::Reference).resource, 0);
    EXPECT_FALSE(Doc.Role(InstrumentRole::Profiler).Assigned());
    RoleHolder place;
    EXPECT_EQ(Doc.FindInstrument("C", &place), c);
    EXPECT_EQ(place.resource, 0);
    EXPECT_EQ(Doc.FindInstrument("B"), nullptr);
    Offer(*c, {CounterFrame("C", 1), CounterFrame("C", 3)});
    EXPECT_EQ(Doc.StatusOf(0).frames, 2u);
    EXPECT_EQ(Doc.StatusOf(0).dropped, 1u);
    EXPECT_EQ(Doc.RemoveResource(1), CommResult::ResourceReference);
    EXPECT_EQ(Doc.RemoveInstrument(0, 1), CommResult::InstrumentReference);
}

} // namespace
} // namespace qor
