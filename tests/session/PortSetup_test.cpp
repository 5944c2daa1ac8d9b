// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SessionFixture.h"
#include "session/PortSetup.h"
#include "session/PressureTare.h"

namespace qor {
namespace {

using testing::HasSubstr;

class PortSetupTest : public ASession {
  protected:
    AddedPort AddNamed(const char* name, std::vector<std::string> files) {
        PortWish wish;
        wish.settings.portName = name;
        wish.reconnect = true;
        wish.files = std::move(files);
        return AddPort(Doc, wish);
    }
};

TEST_F(PortSetupTest, WhatCannotBeUsedIsRefusedAndTheRestStands) {
    const std::string good = Temp.Put("ctd.cal", CounterDefinition("CTD"));
    const AddedPort added = AddNamed("PORT2", {good, Temp.Path + "none.cal"});
    ASSERT_NE(added.id, ResourceId::None);
    ASSERT_EQ(added.refusals.size(), 1U);
    EXPECT_THAT(SentenceOf(added.refusals[0]), HasSubstr("none.cal could not be loaded"));
    const SessionSnapshot now = Doc.Snapshot();
    EXPECT_EQ(now.Find(added.id)->instruments.size(), 1U);
    EXPECT_GT(now.Find(added.id)->serial.maxFrameBytes, 0U) << "frames wait for a session held up";
}

TEST_F(PortSetupTest, APortThatTheSessionHasIsRefused) {
    const AddedPort added = AddNamed("PORT1", {Temp.Path + "none.cal"});
    EXPECT_EQ(added.id, ResourceId::None);
    ASSERT_EQ(added.refusals.size(), 1U) << "nothing is tried on it";
    EXPECT_THAT(SentenceOf(added.refusals[0]), HasSubstr("PORT1 cannot be used. "));
}

TEST_F(PortSetupTest, ATareByHandNeedsAProfilerAndAPressureOfAir) {
    EXPECT_THAT(SetPressureTare(Doc, 0.4), HasSubstr("No profiler"));
    EXPECT_EQ(Doc.SetRole(InstrumentRole::Profiler, Add("CTD", Port)->Id), "");
    EXPECT_THAT(SetPressureTare(Doc, 12'001), HasSubstr("cannot be one in air"));
    EXPECT_EQ(SetPressureTare(Doc, 0.4), "");
    EXPECT_THAT(Reported(), HasSubstr("Pressure tare: 0.4."));
}

} // namespace
} // namespace qor
