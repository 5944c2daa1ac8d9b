// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "fakes/ViewedInstrument.h"
#include "session/AcquisitionLoop.h"
#include "session/FrameWatch.h"
#include "views/PkgAncView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>

namespace qor {
namespace {

/// A package of a profiler and a radiometer, as the document keeps it.
class PkgAncViewTest : public testing::Test {
  protected:
    CViewedInstrument Profiler{{"TILT x deg", "TILT Y deg", "PRES NONE dbar", "TEMP W C",
                                "COND NONE mS/cm", "BETA 470 x"}};
    CViewedInstrument Radiometer{{"ED 400 uW/cm^2/nm", "ED 700 uW/cm^2/nm"}};
    CPackage Package;
    VelocityState Velocity;

    PkgAncViewTest() {
        Package.Id = PackageId{1};
        Package.Name = "Cast";
        Package.Live = {&Profiler.Live(), &Radiometer.Live()};
        Package.Attached = {Profiler.Ins().Id, Radiometer.Ins().Id};
        Package.Products = CPackageRows(Package.Live, Package.Settings);
    }
    CPackageRows::Inputs Inputs() { return {Package.Live, Package.Settings, 0.0}; }
    int Update(CPkgAncViewDlg& view) { return view.Update(Package, Inputs()); }
    void Cast(double pressure) {
        Profiler.Send({3, 4, pressure, 15, 42.914, 0.002});
        Package.Products.Advance(Inputs(), Velocity);
    }
};

TEST_F(PkgAncViewTest, WatchesFiveRowsAndDrawsAFrameOnce) {
    CPkgAncViewDlg view(true);
    view.Settings.DepthWarnings.AlarmEnabled = 1;
    view.Initialise(Package);
    EXPECT_EQ(Update(view), 0);
    Cast(300);
    EXPECT_EQ(Update(view), 1);
    EXPECT_EQ(Update(view), 0);
    EXPECT_EQ(view.Page().rows[1].value, (GridCell{"300.00", 0xFFFF00, 0x0000FF}));
    EXPECT_TRUE(view.Page().beep);
    Cast(300);
    Update(view);
    EXPECT_EQ(view.Page().rows[1].value, (GridCell{"300.00", 0xFFFF00, 0x000000}));
    EXPECT_FALSE(view.Page().beep) << "every second update";
    Cast(NAN);
    Update(view);
    EXPECT_EQ(view.Page().rows[1].value.textColour, Yellow) << "an alarm without a value is none";

    // The radiometer alone has news: that is an update too.
    Radiometer.Send({NAN, 1});
    EXPECT_EQ(Update(view), 1);
    EXPECT_EQ(view.Page().rows[5].value.text, ConversionStatusText(ConversionStatus::NotFinite));

    auto& settings = view.Settings;
    const WarningRanges* ranges[] = {&settings.TiltWarnings, &settings.DepthWarnings,
                                     &settings.VelWarnings,  &settings.TempWarnings,
                                     &settings.SalWarnings,  nullptr};
    for (std::size_t row = 0; row < std::size(ranges); ++row)
        EXPECT_EQ(view.RangesOfRow(row), ranges[row]) << row;
    EXPECT_EQ(view.RangesOfRow(99), nullptr);
}

TEST_F(PkgAncViewTest, TwoReadersAtDifferentRatesShowTheSame) {
    CPkgAncViewDlg quick(false), slow(false);
    quick.Initialise(Package);
    slow.Initialise(Package);
    for (int i = 0; i < 40; ++i) {
        Cast(0.1 * i);
        Update(quick);
        if (i % 7 == 0)
            Update(slow);
    }
    Update(slow);
    EXPECT_EQ(PageText(quick.Page()), PageText(slow.Page()));
    EXPECT_NE(quick.Page().rows[2].value.text, "0.00") << "the profiler sinks";
}

TEST_F(PkgAncViewTest, SaysThatScatteringLacksASalinity) {
    CViewedInstrument meter({"BETA 500 x"});
    Package.Live = {&meter.Live()};
    Package.Products = CPackageRows(Package.Live, Package.Settings);
    CPkgAncViewDlg view(false);
    view.Initialise(Package);
    EXPECT_NE(view.MissingSalinity(), "");
    Package.Settings.UseDefSalinity = true;
    view.Initialise(Package);
    EXPECT_EQ(view.MissingSalinity(), "");
}

// What the operator saw every ten metres.
TEST(TheCastPage, ShowsWhatTheOperatorSawEveryTenMetres) {
    const std::string source = QORVIEW_SOURCE_DIR;
    CManualClock clock;
    CScriptedUser user;
    CMemoryProfileStore profile;
    CQorViewDoc doc(clock, MakeSystemSerialPort, user, profile);
    CAcquisitionLoop loop(doc);
    const ResourceId file = doc.AddFileResource(source + "/examples/cast.raw");
    const PackageId package = doc.Packages.AddPackage(source + "/examples/cast.sip", file);
    ASSERT_NE(package, PackageId::None);
    doc.SetImmersed("QOREDW118", true);
    doc.SetImmersed("QORLUW119", true);

    CPkgAncViewDlg view(false);
    view.Settings.TempWarnings.WarnEnabled = 1; // the surface layer is a warning
    view.Settings.TempWarnings.WarnMin = 15.0;
    view.Show(package);
    std::string seen;
    double next = 5.0;
    const auto onFrame = [&](CQorViewIns& instrument, const FrameCheckResult&) {
        view.Refresh(doc);
        const CSensor* pressure = instrument.Definition().NextSensor("PRES");
        double depth = 0.0;
        if (pressure && instrument.Live.Value(*pressure, depth) == ConversionStatus::Good &&
            depth >= next) {
            seen += PageText(view.Page());
            next += 10.0;
        }
    };
    {
        CRecursiveLock lock(doc.DocLock);
        doc.Find(package)->Settings.SaturationIrradiance = 200.0;
    }
    const CFrameWatch watch(doc, onFrame);
    EXPECT_EQ(loop.PlayFile(file), 4400u);

    std::ifstream golden(source + "/tests/golden/cast/pages.txt", std::ios::binary);
    std::stringstream expected;
    expected << golden.rdbuf();
    EXPECT_EQ(seen, expected.str());
}

} // namespace
} // namespace qor
