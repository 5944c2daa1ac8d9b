// SPDX-License-Identifier: GPL-3.0-or-later
//
// The page of the sample package while its cast is played: what the operator saw every ten metres.
#include "fakes/ManualClock.h"
#include "fakes/ScriptedUser.h"
#include "fakes/ViewedInstrument.h"
#include "session/AcquisitionLoop.h"
#include "session/PackageList.h"
#include "views/PkgAncView.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace qor {
namespace {

TEST(TheCastPage, ShowsWhatTheOperatorSawEveryTenMetres) {
    const std::string source = QORVIEW_SOURCE_DIR;
    CManualClock clock;
    CScriptedUser user;
    CMemoryProfileStore profile;
    CQorViewDoc doc(clock, MakeSystemSerialPort, user, profile);
    CPackageList packages(doc);
    CAcquisitionLoop loop(doc);
    int file = doc.AddFileResource(source + "/examples/cast.raw");
    CPackage* package = packages.AddPackage(source + "/examples/cast.sip", file);
    ASSERT_NE(package, nullptr);
    package->Settings.SaturationIrradiance = 200.0;
    doc.SetImmersed("QOREDW118", true);
    doc.SetImmersed("QORLUW119", true);

    CPkgAncViewDlg view(user, packages.Velocity, false);
    view.Settings.TempWarnings.WarnEnabled = 1; // the surface layer is a warning
    view.Settings.TempWarnings.WarnMin = 15.0;
    view.Initialise(package->Name, packages.InstrumentsOf(*package), package->Settings);
    std::string seen;
    double next = 5.0;
    doc.OnFrame = [&](int, CQorViewIns& instrument, const FrameCheckResult&) {
        view.Update(packages.InstrumentsOf(*package), package->Settings, 0.0);
        const CSensor* pressure = instrument.Definition().NextSensor("PRES");
        double depth = 0.0;
        if (pressure && instrument.Value(*pressure, depth) == ConversionStatus::Good &&
            depth >= next) {
            seen += PageText(view.Page());
            next += 10.0;
        }
    };
    EXPECT_EQ(loop.PlayFile(file), 4400u);

    std::ifstream golden(source + "/tests/golden/cast/pages.txt", std::ios::binary);
    std::stringstream expected;
    expected << golden.rdbuf();
    EXPECT_EQ(seen, expected.str());
}

} // namespace
} // namespace qor
