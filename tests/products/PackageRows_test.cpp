// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ViewedInstrument.h"
#include "products/PackageRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>

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

TEST_F(PackageRowsTest, AreStaleOnceTheirInstrumentsHaveMissedThreeFrames) {
    Cast(10, 100);
    const auto stale = [this](std::int64_t now) {
        std::string labels;
        std::vector<DerivedRow> rows;
        Rows.Read({All, Settings, 0, now}, rows);
        for (const DerivedRow& row : rows)
            if (row.stale)
                labels += row.label + ' ';
        return labels;
    };
    Profiler.Ins().Live.FrameRate = 20;
    Profiler.Ins().Live.ArrivalMonotonic = 100'000;
    Radiometer.Ins().Live.ArrivalMonotonic = 100'000;
    Radiometer.Ins().Live.FrameRate = 0.5;
    EXPECT_EQ(stale(102'999), "");
    EXPECT_EQ(stale(105'999),
              "TILT DEPTH VELOCITY T (W) SALINITY CDOM(1) [NO3-] BETAp(470) bbp(470) bb(470) "
              "BETAp(532) bbp(532) bb(532) K Ed(490) K Lu(490) ");
    Profiler.Ins().Live.ArrivalMonotonic = 106'000;
    EXPECT_EQ(stale(106'000), "PAR(Z) LIGHT SATURATION K Ed(490) K Lu(490) ")
        << "the reference has sent nothing that could be old";
    for (const double silly : {0.0, -1.0, std::nan(""), HUGE_VAL, 1e-300}) {
        Profiler.Ins().Live.FrameRate = silly;
        EXPECT_EQ(Profiler.Live().Stale(109'000), silly != 1e-300) << silly;
        EXPECT_FALSE(Profiler.Live().Stale(108'999)) << silly;
    }
    EXPECT_TRUE(Profiler.Live().Stale(106'000 + 86'400'000)) << "a day is enough for anyone";

    std::vector<DerivedRow> rows;
    CInstrumentRows(Radiometer.Live()).Read(Radiometer.Live(), rows, 106'000);
    EXPECT_TRUE(rows.at(0).stale);
    CInstrumentRows(Radiometer.Live()).Read(Radiometer.Live(), rows, 105'999);
    EXPECT_FALSE(rows.at(0).stale);
}

TEST(PackageRows, WaterIsMeasuredBySensorsThatSayThatTheyAreInItOrSayNothing) {
    const struct {
        std::vector<std::string> sensors; ///< read 1, 2, ...; of two instruments from "--" on
        std::optional<double> temperature, depth;
    } cases[] = {
        {{"TEMP NONE C", "TEMP INT C", "TEMP sea C"}, 3.0, {}},
        {{"TEMP AIR C", "TEMP none C", "PRES INT psi", "PRES NONE dbar"}, 2.0, 4.0},
        {{"TEMP INT C", "TEMP CASE C", "TEMP LAMP C", "PRES HOUSING dbar", "PRES Air bar"}, {}, {}},
        {{"TEMP 2 C", "TEMP AUX C", "PRES 118 dbar", "PRES NONE dbar"}, {}, 4.0},
        {{"PRES CPU bar", "PRES 118 dbar", "PRES 119 dbar"}, {}, 2.0},
        {{"TEMPERATURE NONE C", "PRES NONE dbar", "--", "TEMP W C", "PRESSURE Water dbar"},
         3.0,
         4.0},
        {{"TEMP SPEC C", "TEMP BODY C", "--", "TEMP PCB C", "TEMP HOUSING C", "TEMP CPU C"},
         {},
         {}},
    };
    for (const auto& one : cases) {
        const auto second = std::find(one.sensors.begin(), one.sensors.end(), "--");
        std::vector<std::string> parts[2]{{one.sensors.begin(), second}, {}};
        if (second != one.sensors.end())
            parts[1].assign(second + 1, one.sensors.end());
        CViewedInstrument first(parts[0]), other(parts[1]);
        double value = 0.0;
        for (auto* instrument : {&first, &other}) {
            std::vector<double> values(parts[instrument == &other].size());
            for (double& number : values)
                number = ++value;
            instrument->Send(values);
        }
        const std::vector<const CLiveInstrument*> all{&first.Live(), &other.Live()};
        std::vector<DerivedRow> rows;
        CPackageRows(all, {}).Read({all, {}, 0}, rows);
        std::optional<double> temperature, depth;
        for (const DerivedRow& row : rows)
            if (row.kind == ANCDATATYPE::WaterTemperature || row.kind == ANCDATATYPE::Depth)
                (row.kind == ANCDATATYPE::Depth ? depth : temperature) = row.value;
        EXPECT_EQ(temperature, one.temperature) << one.sensors[0];
        EXPECT_EQ(depth, one.depth) << one.sensors[0];
    }
}

TEST(PackageRows, LightInTheWaterComesFromAnInstrumentWithoutASurfaceSeries) {
    const std::string ed = "ED 500 uW/cm^2/nm", es = "ES 500 uW/cm^2/nm";
    CViewedInstrument both({ed, es}), water({ed}), surface({es});
    both.Send({1, 2});
    water.Send({3});
    surface.Send({4});
    const auto inWater = [](std::vector<const CLiveInstrument*> all) {
        return FindPackageSensors(all).inWater;
    };
    EXPECT_EQ(inWater({&both.Live(), &surface.Live(), &water.Live()}), 2);
    EXPECT_EQ(inWater({&surface.Live(), &both.Live()}), 1) << "better than none";
    water.Ins().Live.Unusable = true;
    EXPECT_EQ(inWater({&both.Live(), &water.Live()}), 0);
    EXPECT_EQ(inWater({&surface.Live()}), -1);
}

/// What a descent by 6 dbar leaves behind, by label.
std::map<std::string, std::optional<double>> Descend(const std::string& pressure,
                                                     const std::string& temperature,
                                                     const std::string& conductivity,
                                                     const std::vector<double>& perUnit,
                                                     std::vector<std::string>& faults) {
    CViewedInstrument ctd({"PRES NONE " + pressure, "TEMP NONE " + temperature,
                           "COND NONE " + conductivity, "TIMER NONE s", "BETA 500 x",
                           "ED 490 uW/cm^2/nm"});
    const std::vector<const CLiveInstrument*> all{&ctd.Live()};
    PackageSettings settings;
    settings.SaturationIrradiance = 200;
    VelocityState velocity;
    CPackageRows package(all, settings);
    const double tare = 0.5 * perUnit[0];
    for (int depth = 0; depth <= 6; ++depth) {
        ctd.Send({(depth + 0.5) * perUnit[0], perUnit[1], perUnit[2], 2.0 * depth, 0.01,
                  std::exp(-0.1 * depth)});
        package.Advance({all, settings, tare}, velocity);
    }
    std::vector<DerivedRow> rows;
    package.Read({all, settings, tare}, rows);
    std::map<std::string, std::optional<double>> values;
    for (const DerivedRow& row : rows)
        values[row.label] = row.value;
    faults = package.UnitFaults();
    return values;
}

TEST(PackageRows, TheSameWaterGivesTheSameProductsInWhateverUnitsItIsMeasured) {
    std::vector<std::string> faults;
    auto expected = Descend("dbar", "C", "mS/cm", {1, 15, 42}, faults);
    EXPECT_EQ(expected["VELOCITY"], 0.5);
    const struct {
        const char *pressure, *temperature, *conductivity;
        std::vector<double> perUnit;
    } cases[] = {{"kPa", "K", "S/m", {10, 288.15, 4.2}},
                 {"psi", "F", "uS/cm", {1 / 0.6894757293168361, 59, 42000}},
                 {"bar",
                  "\xB0"
                  "C",
                  "mmho/cm",
                  {0.1, 15, 42}}};
    for (const auto& one : cases) {
        auto values = Descend(one.pressure, one.temperature, one.conductivity, one.perUnit, faults);
        EXPECT_NEAR(values["DEPTH"].value_or(0), 6 * one.perUnit[0], 1e-9) << "in its own units";
        values["DEPTH"] = expected["DEPTH"];
        for (const auto& [label, value] : expected)
            EXPECT_NEAR(values[label].value_or(-1), value.value_or(-2), 1e-9) << label;
        EXPECT_TRUE(faults.empty());
    }
}

TEST(PackageRows, UnitsThatAreNotKnownGiveNoDerivedValueAndOneSentence) {
    std::vector<std::string> faults;
    auto values = Descend("fathoms", "C", "mS/cm", {1, 15, 42}, faults);
    for (const char* label : {"VELOCITY", "SALINITY", "BETAp(500)", "K Ed(490)"})
        EXPECT_FALSE(values[label]) << label;
    EXPECT_EQ(values["DEPTH"], 6.0) << "needs no units";
    EXPECT_EQ(values["T (W)"], 15.0);
    ASSERT_EQ(faults.size(), 1u);
    EXPECT_TRUE(faults[0].starts_with("HDR: the units \"fathoms\" of PRES ")) << faults[0];

    values = Descend("dbar", "x", "y", {1, 15, 42}, faults);
    for (const char* label : {"T (W)", "SALINITY", "BETAp(500)"})
        EXPECT_FALSE(values[label]) << label;
    EXPECT_EQ(values["VELOCITY"], 0.5);
    EXPECT_EQ(faults.size(), 2u);
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
