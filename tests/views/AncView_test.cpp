// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ScriptedUser.h"
#include "fakes/ViewedInstrument.h"
#include "views/AncView.h"
#include "views/PkgAncView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

namespace qor {
namespace {

using testing::ElementsAre;

class AncViewTest : public testing::Test {
  protected:
    CViewedInstrument Instrument{
        {"TIMER NONE sec", "TILT X deg", "TILT Y deg", "STRAIN NONE V", "VOLTAGE 2 ",
         "ES 500 uW/cm^2/nm"},
        "SILENT NONE '' 1 BU 0 NONE\nFRAME COUNTER '' 1 BU 0 COUNT\nCHECK SUM '' 1 BU 0 COUNT\n"};
    CAncViewDlg View{true};
    int Beeps = 0;

    void Send(double timer, double x, double y) {
        // The three one-byte fields travel in one more number.
        Instrument.Send({timer, x, y, 2, 3, 100, 0});
    }
};

TEST_F(AncViewTest, ShowsTheSensorsThatAreNeitherOpticalNorRoles) {
    Instrument.Ins().Title = "Profiler 7";
    View.Initialise(Instrument.Ins());
    EXPECT_EQ(PageText(View.DerivedPage()), "Ancillary View - Profiler 7\n"
                                            "  TILT [deg] = \n  PAR(0+) [uMol/m^2/s] = \n");
    EXPECT_EQ(View.Update(&Instrument.Ins()), 0);
    EXPECT_EQ(View.Update(nullptr), 0);
    Send(1.5, 3, NAN);
    EXPECT_EQ(View.Update(&Instrument.Ins()), 1);
    EXPECT_EQ(View.Update(&Instrument.Ins()), 0);
    EXPECT_EQ(PageText(View.Page()), "Ancillary View - Profiler 7\n"
                                     "  TIMER [(sec)] = 1.50\n  TILT(X) [(deg)] = 3.0000\n"
                                     "  TILT(Y) [(deg)] = Value not finite\n  STRAIN [(V)] = 2.00\n"
                                     "  VOLTAGE(2) [] = 3.0000\n");
    View.SetViewType(2);
    View.SetVisibleRows({1, 2});
    Send(1, 2, 3);
    EXPECT_EQ(View.Update(&Instrument.Ins()), 1);
    EXPECT_EQ(View.Page().rows[0].value.text, "1.50") << "out of sight";
    EXPECT_NE(View.Page().rows[1].value.text, "3.0000");
}

TEST_F(AncViewTest, ATiltAlarmBlinksAtEveryUpdateAndParKeepsItsColours) {
    View.Settings.TiltWarnings.AlarmEnabled = 1;
    View.Initialise(Instrument.Ins());
    View.SetPage(CAncViewSettings::DerivedPage);
    const GridCell& tilt = View.Page().rows[0].value;
    std::vector<Colour> backgrounds;
    for (int i = 0; i < 3; ++i) {
        Send(0, 50, 0);
        View.Update(&Instrument.Ins());
        Beeps += View.Page().beep;
        backgrounds.push_back(tilt.background);
    }
    EXPECT_THAT(backgrounds, ElementsAre(Red, Black, Red));
    EXPECT_EQ(tilt.text, "50.00");
    EXPECT_EQ(Beeps, 2);
    EXPECT_EQ(View.Page().rows[1].value.textColour, Yellow);
    EXPECT_NE(View.Page().rows[1].value.text, "");
    View.SetAlarmSound(false);
    for (double x : {45, 50}) {
        Send(0, x, 0);
        View.Update(&Instrument.Ins());
        EXPECT_EQ(tilt.textColour, x == 45 ? Yellow : Cyan);
        EXPECT_EQ(tilt.background, x == 45 ? Black : Red);
    }
    EXPECT_EQ(Beeps, 2);

    Send(0, 1, NAN);
    View.Update(&Instrument.Ins());
    EXPECT_EQ(tilt.text, ConversionStatusText(ConversionStatus::NotFinite));
    EXPECT_EQ(View.RangesOfRow(0), &View.Settings.TiltWarnings);
    EXPECT_EQ(View.RangesOfRow(1), nullptr);
    View.SetVisibleRows({1, 2});
    Send(0, 50, 0);
    View.Update(&Instrument.Ins());
    EXPECT_EQ(tilt.textColour, Cyan) << "out of sight too";
    EXPECT_TRUE(View.Watches());
    View.SetPage(CAncViewSettings::SensorPage);
    EXPECT_EQ(View.RangesOfRow(0), nullptr) << "a sensor is not the tilt";
}

TEST(AncView, ShowsNoTiltWithoutBothAxesAndNoParOfAnUnusableInstrument) {
    CViewedInstrument half({"TILT X deg", "ED 500 uW/cm^2/nm", "ES 500 W/m^2/nm"});
    CInstrumentRows rows(half.Live());
    ASSERT_EQ(rows.Rows().size(), 1u);
    EXPECT_EQ(rows.Rows()[0].label, "PAR(Z)");
    half.Ins().Live.Unusable = true;
    EXPECT_TRUE(CInstrumentRows(half.Live()).Rows().empty());
}

TEST(ViewSettings, AreKeptByKeyAndAbsentKeysChangeNothing) {
    CMemoryProfileStore store;
    CAncViewSettings settings, loaded;
    EXPECT_TRUE(settings.Load(store, "View1") && !settings.Load(store, ""));
    EXPECT_EQ(settings.XPosition, -1);
    settings.XPosition = 12;
    settings.ViewType = 2;
    settings.PageIndex = 0;
    EXPECT_TRUE(settings.Save(store, "View1"));
    loaded.YPosition = 3; // stays, because a stored -1 reads like an absent key
    EXPECT_TRUE(loaded.Load(store, "View1"));
    EXPECT_EQ(std::tie(loaded.XPosition, loaded.YPosition, loaded.ViewType, loaded.PageIndex),
              std::make_tuple(12, 3, 2, 0));
    // A package's display keeps five ranges in the same section.
    CPkgAncViewSettings package, again;
    package.SalWarnings.WarnEnabled = 1;
    EXPECT_TRUE(package.Save(store, "View1") && !package.Save(store, ""));
    EXPECT_EQ(store.ReadText("View1\\Ancillary", "SalWarnings"),
              "000036.00 000040.00 000040.00 000100.00 1 0");
    EXPECT_TRUE(again.Load(store, "View1"));
    EXPECT_EQ(again.SalWarnings, package.SalWarnings);
}

} // namespace
} // namespace qor
