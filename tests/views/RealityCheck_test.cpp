// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SessionFixture.h"
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
    CCollectingSink Sink;
    COSRCViewDlg View;

    COSRCViewDlg& Opened() {
        EXPECT_TRUE(View.Initialise(Dut.Ins(), Reference.Ins(), Sink));
        return View;
    }
};

class ARealityCheckOfASession : public ASession {
  protected:
    InstrumentId AddOptics(const std::string& name, const std::string& sensors) {
        const std::string header =
            Format("INSTRUMENT %s '' %zu AS 0 NONE\n", name.c_str(), name.size());
        return Doc.AddInstrument(Temp.Put(name + ".cal", header + sensors), Port).id;
    }
};

TEST_F(ARealityCheckOfASession, OpensOrSaysWhyItCannotAndFollowsTheRoles) {
    const std::string optic = "ED 500 'i' 2 BU 1 OPTIC2\n0 1 1\n";
    const InstrumentId dut = AddOptics("DUT", optic), reference = AddOptics("REF", optic);
    const InstrumentId blind = Add("BLIND", Port)->Id;
    const std::tuple<InstrumentId, InstrumentId, const char*> refusals[] = {
        {InstrumentId::None, InstrumentId::None, "No DUT instrument has been specified."},
        {dut, InstrumentId::None, "No REFERENCE instrument has been specified."},
        {dut, blind, "See the session log for details."}};
    for (const auto& [one, other, reason] : refusals) {
        Doc.SetRole(InstrumentRole::DeviceUnderTest, one);
        Doc.SetRole(InstrumentRole::Reference, other);
        EXPECT_EQ(WhyNoRealityCheck(Doc),
                  "Unable to initialize Optical Systems Reality Check.\r\n" + std::string(reason));
    }
    Doc.SetRole(InstrumentRole::Reference, reference);
    EXPECT_EQ(WhyNoRealityCheck(Doc), "");
    COSRCViewDlg view;
    EXPECT_EQ(view.Selection(), -1) << "nothing was found yet";

    // Another instrument takes the role: the window follows it.
    Offer(*Find("DUT"), {std::string("DUT\x01\x02", 5)});
    EXPECT_TRUE(view.Refresh(Doc));
    const auto sentence = [&view] { return view.Pages().plots[0]->head.sentence; };
    EXPECT_EQ(sentence(), "Waiting for REF.");
    EXPECT_FALSE(view.Refresh(Doc));
    Doc.SetRole(InstrumentRole::DeviceUnderTest, reference);
    Offer(*Find("REF"), {std::string("REF\x01\x02", 5)});
    EXPECT_EQ(view.Select(Doc, "dut"), "");
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_EQ(view.Pages().plots.size(), 2u);
    EXPECT_EQ(view.Pages().plots[1]->curves.size(), 1u);
    const InstrumentId silent = AddOptics("NEW", optic);
    for (const InstrumentRole role : {InstrumentRole::DeviceUnderTest, InstrumentRole::Reference})
        Doc.SetRole(role, silent);
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_TRUE(view.Pages().plots[1]->curves.empty()) << "not the spectrum of another";
    Doc.SetRole(InstrumentRole::DeviceUnderTest, InstrumentId::None);
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_EQ(sentence(), "No DUT instrument has been specified.");
    EXPECT_TRUE(view.Pages().plots[1]->curves.empty()) << "nothing old looks live";
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
