// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ViewedInstrument.h"
#include "products/PackageRows.h"
#include "products/SeaWater.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace qor {
namespace {

/// A profiler with an oxygen sensor, a radiometer and a reference, sinking where light falls off by
/// a tenth a metre.
class FurtherRowsTest : public testing::Test {
  protected:
    CViewedInstrument Ctd{
        {"PRES NONE bar", "TEMP NONE C", "COND NONE mS/cm", "O2 SAT %", "O2 NONE ml/l"}};
    CViewedInstrument Radiometer{
        {"ED 400 uW/cm^2/nm", "ED 490 uW/cm^2/nm", "ED 700 uW/cm^2/nm", "LU 490 uW/cm^2/nm/sr"}};
    CViewedInstrument Reference{{"ES 490 uW/cm^2/nm"}};
    std::vector<const CLiveInstrument*> All{&Ctd.Live(), &Radiometer.Live(), &Reference.Live()};
    PackageSettings Settings;
    VelocityState Velocity;
    CPackageRows Rows{All, Settings, DerivedChoice::All};

    void Sink(double depth, double clouds) {
        const double light = std::exp(-0.1 * depth) * clouds;
        const CPackageRows::Inputs inputs{All, Settings, 0.05};
        Reference.Send({100 * clouds});
        Ctd.Send({depth / 10 + 0.05, 12, 38, 99, 5.5});
        Rows.Advance(inputs, Velocity);
        Radiometer.Send({light, 80 * light, light, 0.5 * light});
        Rows.Advance(inputs, Velocity);
    }
    std::map<std::string, DerivedRow> Read(std::optional<GeoPosition> position = {}) {
        std::vector<DerivedRow> rows;
        Rows.Read({All, Settings, 0.05, 0, position}, rows);
        std::map<std::string, DerivedRow> byLabel;
        for (const DerivedRow& row : rows)
            byLabel[row.label] = row;
        return byLabel;
    }
};

TEST_F(FurtherRowsTest, StandBehindTheUsualOnesAndOnlyWhenAskedFor) {
    const std::size_t usual = CPackageRows(All, Settings).Rows().size();
    std::string labels;
    for (std::size_t row = usual; row < Rows.Rows().size(); ++row)
        labels += Rows.Rows()[row].label + "|";
    EXPECT_EQ(labels,
              "ABSOLUTE SALINITY|CONSERVATIVE TEMPERATURE|SIGMA-THETA|SOUND SPEED|DEPTH (M)|"
              "Kd(PAR)|1% DEPTH|Rrs(490)|PAR(Z)/PAR(0+)|K Ed(490)/ES|K Lu(490)/ES|"
              "OXYGEN SATURATION|");
    for (std::size_t row = 0; row < usual; ++row)
        EXPECT_EQ(Rows.Rows()[row].label, CPackageRows(All, Settings).Rows()[row].label);
    for (const auto& [label, row] : Read())
        EXPECT_FALSE(row.value) << label;
}

TEST_F(FurtherRowsTest, AreWhatTheirFormulasSay) {
    for (int i = 0; i <= 40; ++i)
        Sink(0.25 * i, 1.0);
    const double practical = PracticalSalinity(38, 12, 10.5), absolute = practical * 35.16504 / 35;
    const double conservative = ConservativeTemperature(absolute, 12, 10);
    const double density = SeaWaterDensity(absolute, conservative, 0) / 1000;
    const double solubility = OxygenSolubility(practical, PotentialTemperature(absolute, 12, 10));
    const std::map<std::string, double> expected = {
        {"ABSOLUTE SALINITY", absolute},
        {"CONSERVATIVE TEMPERATURE", conservative},
        {"SIGMA-THETA", 1000 * density - 1000},
        {"SOUND SPEED", SoundSpeed(absolute, conservative, 10)},
        {"DEPTH (M)", DepthInMetres(10, 45)},
        {"Kd(PAR)", 0.1},
        {"1% DEPTH", 46.0517018598809},
        {"Rrs(490)", 0.54 * 0.5 / 100},
        {"K Ed(490)/ES", 0.1},
        {"K Lu(490)/ES", 0.1},
        {"OXYGEN SATURATION", 100 * 5.5 * 44.6596 / density / solubility},
    };
    auto rows = Read();
    for (const auto& [label, value] : expected)
        EXPECT_NEAR(rows[label].value.value_or(-1), value, 1e-9) << label;
    EXPECT_NEAR(rows["PAR(Z)/PAR(0+)"].value.value_or(-1),
                *rows["PAR(Z)"].value / *rows["PAR(0+)"].value, 1e-12);
    EXPECT_EQ(DerivedText(rows["ABSOLUTE SALINITY"]).find('.') + 4,
              DerivedText(rows["ABSOLUTE SALINITY"]).size());

    rows = Read(GeoPosition{58, 20});
    EXPECT_NEAR(rows["DEPTH (M)"].value.value_or(-1), DepthInMetres(10, 58), 1e-12);
    EXPECT_NEAR(rows["ABSOLUTE SALINITY"].value.value_or(-1),
                AbsoluteSalinity(practical, GeoPosition{58, 20}), 1e-12);
}

TEST_F(FurtherRowsTest, CloudsDoNotTouchTheAttenuationThatIsNormalised) {
    for (int i = 0; i <= 40; ++i)
        Sink(0.25 * i, 1.0 / (1 + i % 7));
    auto rows = Read();
    EXPECT_NEAR(rows["K Ed(490)/ES"].value.value_or(-1), 0.1, 1e-9);
    EXPECT_GT(std::fabs(rows["K Ed(490)"].value.value_or(0) - 0.1), 1e-3);
}

TEST_F(FurtherRowsTest, FailAndAgeWithWhatTheyAreMadeOf) {
    Sink(5, 1);
    Ctd.Send({1, NAN, 38, 99, 5.5});
    Reference.Send({0});
    auto rows = Read();
    for (const char* label : {"CONSERVATIVE TEMPERATURE", "SIGMA-THETA", "OXYGEN SATURATION"})
        EXPECT_EQ(rows[label].status, ConversionStatus::NotFinite) << label;
    EXPECT_TRUE(rows["DEPTH (M)"].value);
    EXPECT_FALSE(rows["PAR(Z)/PAR(0+)"].value) << "in the dark";
    EXPECT_FALSE(rows["Kd(PAR)"].value) << "before the window is filled";

    Reference.Ins().Live.ArrivalMonotonic = -10'000;
    rows = Read();
    EXPECT_TRUE(rows["K Ed(490)/ES"].stale && rows["Rrs(490)"].stale);
    EXPECT_FALSE(rows["K Ed(490)"].stale || rows["Kd(PAR)"].stale);
}

TEST(FurtherRows, ExistOnlyWithWhatTheyNeed) {
    CViewedInstrument both({"ED 490 uW/cm^2/nm", "ES 490 uW/cm^2/nm", "LU 490 counts",
                            "PRES NONE dbar", "OXYGEN NONE furlongs", "TEMP NONE C",
                            "COND NONE mS/cm"});
    const std::vector<const CLiveInstrument*> all{&both.Live()};
    const CPackageRows rows(all, {}, DerivedChoice::All);
    for (const DerivedRow& row : rows.Rows()) {
        EXPECT_NE(row.label, "Rrs(490)") << "counts over irradiance are no reflectance";
        EXPECT_NE(row.label, "PAR(Z)/PAR(0+)") << "one PAR has no ratio";
    }
    ASSERT_EQ(rows.UnitFaults().size(), 1u);
    EXPECT_NE(rows.UnitFaults()[0].find("\"furlongs\" of OXYGEN"), std::string::npos);
    EXPECT_TRUE(CPackageRows(all, {}).UnitFaults().empty());
}

} // namespace
} // namespace qor
