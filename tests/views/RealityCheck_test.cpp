// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ScriptedUser.h"
#include "fakes/ViewedInstrument.h"
#include "views/RealityCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qor {
namespace {

using testing::ElementsAre;

class RealityCheckTest : public testing::Test {
  protected:
    CViewedInstrument Dut{{"LU 400 r", "LU 500 r", "ED 410 i"}};
    CViewedInstrument Reference{{"ES 401 i", "ES 520 i"}};
    CScriptedUser User;
    CCollectingSink Sink;
    std::unique_ptr<COSRCViewDlg> Window;

    COSRCViewDlg* Open(const CQorViewIns* dut, const CQorViewIns* reference) {
        return OpenRealityCheck(Window, dut, reference, User, Sink);
    }
    COSRCViewDlg& Opened() { return *Open(&Dut.Ins(), &Reference.Ins()); }
};

TEST_F(RealityCheckTest, OpensOnceAndSaysWhyItCannot) {
    CViewedInstrument blind({"PRES NONE dbar"});
    EXPECT_EQ(Open(nullptr, nullptr), nullptr);
    EXPECT_EQ(Open(&Dut.Ins(), nullptr), nullptr);
    EXPECT_EQ(Open(&Dut.Ins(), &blind.Ins()), nullptr);
    EXPECT_EQ(Window, nullptr);
    EXPECT_EQ(Sink.Messages().size(), 1u);
    std::vector<std::string> reasons;
    for (const std::string& message : User.TakeMessages())
        reasons.push_back(message.substr(message.find("\r\n") + 2));
    EXPECT_THAT(reasons, ElementsAre("No DUT instrument has been specified.",
                                     "No REFERENCE instrument has been specified.",
                                     "See the session log for details."));
    COSRCViewDlg* first = Open(&Dut.Ins(), &Reference.Ins());
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(Open(&Dut.Ins(), &Reference.Ins()), first);
    EXPECT_TRUE(User.TakeMessages().empty());
}

TEST_F(RealityCheckTest, TheFirstSwitchThatIsOnDecidesForSelectorAndLimit) {
    COSRCViewDlg& view = Opened();
    const struct {
        int ref, dut, dr;
        std::vector<std::string> entries;
        const char* limit;
    } cases[] = {
        {1, 1, 1, {"ES [i]"}, "1"},
        {0, 1, 1, {"LU [r]", "ED [i]"}, "2.5"},
        {0, 0, 1, {"LU [r]", "ED [i]"}, "10"},
        {0, 0, 0, {}, ""},
    };
    view.Settings.MaxValues[1] = 2.5;
    for (const auto& one : cases) {
        view.Settings.REFEnabled = one.ref;
        view.Settings.DUTEnabled = one.dut;
        view.Settings.DREnabled = one.dr;
        EXPECT_EQ(view.SelectorEntries(), one.entries);
        EXPECT_EQ(view.LimitText(), one.limit);
    }
    EXPECT_FALSE(view.SetLimit("5"));
    view.Enable(OsrcDisplay::Comparison, true);
    EXPECT_TRUE(view.SetLimit(" 5 "));
    EXPECT_FALSE(view.SetLimit("five"));
    EXPECT_EQ(view.Settings.MaxValues[2], 5.0);
    view.Select(1);
    EXPECT_EQ(view.Selection(), 1);
    view.Select(2);
    EXPECT_EQ(view.Settings.DUTSelection, 1);
    view.Settings.DUTSelection = 99; // of another instrument
    EXPECT_EQ(view.Selection(), 0);
}

TEST_F(RealityCheckTest, DrawsWhatIsOnOncePerFrameAndMarksUnmatchedChannels) {
    COSRCViewDlg& view = Opened();
    view.Settings.DREnabled = 1;
    view.Settings.MaxValues[1] = 0; // an empty range becomes a hundred wide
    EXPECT_EQ(view.Update(&Dut.Ins(), &Reference.Ins()), 0);
    Dut.Send({3, 4, 5});
    Reference.Send({2, 2});
    EXPECT_EQ(view.Update(&Dut.Ins(), &Reference.Ins()), 1);
    EXPECT_EQ(view.Update(&Dut.Ins(), &Reference.Ins()), 0);
    EXPECT_EQ(view.Update(nullptr, &Reference.Ins()), 0);

    const PlotPage& reference = view.Page(OsrcDisplay::Reference);
    EXPECT_EQ(reference.title, "REF: ES [i]");
    EXPECT_EQ(reference.yMaximum, 1.0);
    ASSERT_EQ(reference.curves.size(), 1u);
    EXPECT_EQ(reference.curves[0].points.size(), 2u);
    EXPECT_TRUE(view.Page(OsrcDisplay::DeviceUnderTest).curves.empty());

    const PlotPage& comparison = view.Page(OsrcDisplay::Comparison);
    EXPECT_EQ(comparison.title, "DUT/REF Normalized [%]");
    EXPECT_EQ(comparison.yMinimum, -10.0);
    ASSERT_EQ(comparison.curves[0].points.size(), 2u);
    EXPECT_EQ(comparison.curves[0].points[0].y, 50.0);
    EXPECT_TRUE(comparison.curves[0].points[0].valid);
    EXPECT_FALSE(comparison.curves[0].points[1].valid);

    view.Enable(OsrcDisplay::DeviceUnderTest, true);
    EXPECT_EQ(view.Update(&Dut.Ins(), &Reference.Ins()), 1);
    EXPECT_EQ(view.Page(OsrcDisplay::DeviceUnderTest).title, "DUT: LU [r]");
    EXPECT_EQ(view.Page(OsrcDisplay::DeviceUnderTest).yMaximum, 100.0);
}

} // namespace
} // namespace qor
