// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/CollectingSink.h"
#include "fakes/ScriptedUser.h"
#include "instrument/FrameMaker.h"
#include "session/Package.h"
#include "views/PackageRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace qor {
namespace {

/// Water in which everything is known: light falls off by 0.12 a metre, the rest stays.
double ValueAt(const CSensor& sensor, double depth) {
    const struct {
        const char *type, *id;
        double value;
    } values[] = {
        {"TIMER", "", depth / 0.5}, {"PRES", "", depth},     {"TEMP", "WATER", 12.5},
        {"COND", "", 38.0},         {"TILT", "X", 3.0},      {"TILT", "Y", -4.0},
        {"CDOM", "370", 1.4},       {"BETA", "470", 0.0021}, {"BETA", "660", 0.0013},
        {"NITRATE", "", 6.25},
    };
    for (const auto& one : values)
        if (sensor.Type == one.type && sensor.Id == one.id)
            return one.value;
    if (!IsOptic(sensor.Fit))
        return std::nan("");
    const double surface = sensor.Type == "LU" ? 0.4 : 100.0;
    return sensor.Type == "ES" ? surface : surface * std::exp(-0.12 * depth);
}

TEST(ExamplePackage, GivesTheProductsOfTheWaterThatItsFramesDescribe) {
    CScriptedUser user;
    CCollectingSink sink;
    const LoadedPackage loaded = LoadPackage(QORVIEW_SOURCE_DIR "/examples/cast.sip", user, sink);
    ASSERT_TRUE(loaded.ok);
    EXPECT_EQ(loaded.name, "Shelf Profiler");
    EXPECT_EQ(loaded.baudRate, "57600");
    EXPECT_THAT(loaded.messages, testing::IsEmpty());
    ASSERT_EQ(loaded.members.size(), 7u);

    std::vector<std::unique_ptr<CQorViewIns>> instruments;
    std::vector<CFrameMaker> makers;
    std::vector<const CQorViewIns*> package;
    double depth = 0.0;
    for (const PackageMember& member : loaded.members) {
        EXPECT_EQ(member.instrument->DiagnosticCount(), 0) << member.instrument->ParseLog();
        instruments.push_back(std::make_unique<CQorViewIns>(*member.instrument, "COM1", sink));
        package.push_back(instruments.back().get());
        makers.emplace_back(*member.instrument);
        makers.back().SetValues([&depth](const CSensor& sensor) { return ValueAt(sensor, depth); });
    }

    PackageSettings settings;
    settings.SaturationIrradiance = 150;
    VelocityState velocity;
    CPackageRows rows(package, settings);
    for (int frame = 1; frame <= 40; ++frame) {
        depth = 0.5 * frame;
        for (std::size_t i = 0; i < makers.size(); ++i) {
            CFrameData data;
            data.Bytes = makers[i].Next(frame);
            data.Info.frameCounter = static_cast<std::uint32_t>(frame);
            EXPECT_FALSE(instruments[i]->Process(data).checksumError) << i;
            rows.Compute(package, settings, 0.0, velocity);
        }
    }

    // Surface PAR of a flat spectrum of 100 over 400 to 700 nm, in the water what is left at 20 m.
    const double par = 100.0 * 0.5 * (700.0 * 700.0 - 400.0 * 400.0) / 11968.725;
    const double salinity = PracticalSalinity(38.0, 12.5, 20.0);
    const double beta = 0.0021 - SeawaterScattering(470, salinity);
    const struct {
        const char* label;
        double value, tolerance;
    } expected[] = {
        {"TILT", TiltDegrees(3, 4), 0.01},
        {"DEPTH", 20.0, 1e-4},
        {"VELOCITY", 0.5, 1e-3},
        {"T (W)", 12.5, 1e-4},
        {"SALINITY", salinity, 1e-4},
        {"CDOM(370)", 1.4, 1e-3},
        {"[NO3-]", 6.25, 1e-2},
        {"PAR(Z)", par * std::exp(-0.12 * 20), par * 1e-3},
        {"PAR(0+)", par, par * 1e-3},
        {"LIGHT SATURATION", 100 * std::tanh(par * std::exp(-0.12 * 20) / 150), 0.1},
        {"BETAp(470)", beta, 1e-6},
        {"bbp(470)", ParticulateBackscattering(beta), 1e-5},
        {"bb(470)", ParticulateBackscattering(beta) + WaterBackscattering(470), 1e-5},
        {"K Ed(490)", 0.12, 1e-4},
        {"K Lu(490)", 0.12, 1e-4},
    };
    for (const auto& one : expected) {
        const auto row =
            std::find_if(rows.Rows().begin(), rows.Rows().end(),
                         [&one](const DerivedRow& it) { return it.label == one.label; });
        ASSERT_NE(row, rows.Rows().end()) << one.label;
        ASSERT_TRUE(row->value) << one.label;
        EXPECT_NEAR(*row->value, one.value, one.tolerance) << one.label;
    }
    EXPECT_EQ(rows.Rows().size(), std::size(expected) + 3); // and the second scattering channel
}

} // namespace
} // namespace qor
