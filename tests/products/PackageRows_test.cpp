// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ViewedInstrument.h"
#include "products/PackageRows.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qor {
namespace {

/// A profiler, a radiometer and a reference in one package.
class PackageRowsTest : public testing::Test {
  protected:
    CViewedInstrument Profiler{{"TILT x deg", "TILT Y deg", "PRES NONE dbar", "TIMER NONE sec",
                                "TEMP AIR C", "TEMPERATURE w C", "COND NONE mS/cm", "CDOM 1 ppb",
                                "NO3 NONE uM", "BETA NONE x", "BETA 470 x", "VSF 532 x",
                                "BETA 660 x"}};
    CViewedInstrument Radiometer{
        {"ED 400 uW/cm^2/nm", "ED 489 uW/cm^2/nm", "ED 700 uW/cm^2/nm", "LU 520 r"}};
    CViewedInstrument Surface{{"ES 400 uW/cm^2/nm", "ES 700 uW/cm^2/nm"}};
    std::vector<const CLiveInstrument*> All{&Profiler.Live(), &Radiometer.Live(), &Surface.Live()};
    PackageSettings Settings;
    VelocityState Velocity;
    CPackageRows Rows{All, Settings};

    DerivedRow Row(const std::string& label) {
        std::vector<DerivedRow> rows;
        Rows.Read({All, Settings, 0.5}, rows);
        for (const DerivedRow& row : rows)
            if (row.label == label)
                return row;
        ADD_FAILURE() << "no row " << label;
        return {};
    }
    void Cast(double pressure, double timer) {
        Profiler.Send({3, 4, pressure, timer, 25, 15, 42.914, 1.5, 7, 0, 0.002, 0.003, 0.004});
        Rows.Advance({All, Settings, 0.5}, Velocity);
        Radiometer.Send({1, std::exp(-0.1 * pressure), 2, 3});
        Rows.Advance({All, Settings, 0.5}, Velocity);
    }
};

TEST_F(PackageRowsTest, HaveNoValueBeforeTheInstrumentsFirstFrame) {
    // What the rows are shows the page of the sample cast.
    EXPECT_EQ(Rows.Rows().size(), 18u) << "two channels that scatter at a wavelength are shown";
    Settings.UseDefSalinity = true;
    std::vector<DerivedRow> rows;
    Rows.Advance({All, Settings, 0}, Velocity);
    Rows.Read({All, Settings, 0}, rows);
    for (const DerivedRow& row : rows) {
        EXPECT_FALSE(row.value) << row.label;
        EXPECT_EQ(DerivedText(row), "--");
    }
}

TEST_F(PackageRowsTest, ASensorThatFailsOrIsMissingTakesOnlyItsOwnProductsAlong) {
    Profiler.Send({3, NAN, 10, 0, 25, 15, NAN, 1.5, 7, 0, 0.002, 0.003, 0.004});
    for (const char* label : {"TILT", "SALINITY", "BETAp(470)", "bb(532)"})
        EXPECT_EQ(Row(label).status, ConversionStatus::NotFinite) << label;
    for (const char* label : {"DEPTH", "T (W)", "CDOM(1)", "[NO3-]"})
        EXPECT_TRUE(Row(label).value) << label;
    EXPECT_EQ(Row("DEPTH").value, 9.5) << "less the tare";
    Cast(10, 100);
    EXPECT_TRUE(Row("PAR(Z)").value);
    for (const char* label : {"LIGHT SATURATION", "PAR(0+)"})
        EXPECT_FALSE(Row(label).value) << label << ": no limit, no frame";
    for (int depth = 11; depth <= 16; ++depth) {
        Cast(depth, depth);
        EXPECT_EQ(Row("K Ed(490)").value.has_value(), depth >= 15) << depth;
    }
    EXPECT_FALSE(Row("K Lu(490)").value) << "no channel within 10 nm";
}

TEST_F(PackageRowsTest, AnInstrumentThatIsGoneLeavesItsRowsWithoutValues) {
    Cast(10, 100);
    All[0] = nullptr;
    EXPECT_FALSE(Row("DEPTH").value);
    EXPECT_TRUE(Row("PAR(Z)").value);
    All.clear();
    EXPECT_FALSE(Row("PAR(Z)").value);
    EXPECT_TRUE(CPackageRows(All, Settings).Rows().empty());
}

TEST(PackageRows, ScatteringWithoutSalinitySensorsTakesTheDefaultOrNothing) {
    CViewedInstrument meter({"BETA 500 x"});
    const std::vector<const CLiveInstrument*> all{&meter.Live()};
    PackageSettings settings;
    meter.Send({0.01});
    EXPECT_TRUE(CPackageRows(all, settings).LacksSalinity(settings));
    std::vector<DerivedRow> rows;
    CPackageRows(all, settings).Read({all, settings, 0}, rows);
    EXPECT_FALSE(rows[0].value);
    settings.UseDefSalinity = true;
    settings.DefaultSalinity = 30;
    EXPECT_FALSE(CPackageRows(all, settings).LacksSalinity(settings));
    CPackageRows(all, settings).Read({all, settings, 0}, rows);
    EXPECT_EQ(rows[0].value, 0.01 - SeawaterScattering(500, 30));
}

} // namespace
} // namespace qor
