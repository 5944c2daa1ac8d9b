// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/NumberText.h"
#include "views/PlotRange.h"
#include "views/PlotReadout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr double Gap = std::numeric_limits<double>::quiet_NaN();

PlotPage PageOf(std::vector<std::vector<PlotPoint>> curves) {
    PlotPage page;
    page.key.label = "Depth";
    page.key.units = "m";
    page.axes.resize(1);
    page.axes[0].label = "Value";
    page.axes[0].units = "V";
    for (std::size_t i = 0; i < curves.size(); ++i) {
        PlotCurve curve;
        curve.title = std::string("c") + static_cast<char>('1' + i);
        curve.id = i + 1;
        curve.points = std::move(curves[i]);
        page.curves.push_back(std::move(curve));
    }
    return page;
}

std::string Text(const PlotReadout& readout) {
    std::string text = readout.place;
    for (const ReadoutLine& line : readout.lines)
        text += "; " + line.text;
    return text;
}

} // namespace

TEST(Thinned, KeepsExtremesGapsAndTheEndsOfTheLine) {
    std::vector<PlotPoint> points;
    for (int i = 0; i < 100000; ++i)
        points.push_back({i * 0.1, std::sin(i * 0.01)});
    points[31234].y = 50.0;
    points[70001].y = -50.0;
    points[50000].y = Gap;
    points[20000].valid = false;
    const auto thin = Thinned(points, 1000.0, 9000.0, 400);
    EXPECT_LE(thin.size(), 10U * 401U);
    EXPECT_TRUE(std::is_sorted(thin.begin(), thin.end(),
                               [](const PlotPoint& a, const PlotPoint& b) { return a.x < b.x; }));
    const auto has = [&thin](auto what) { return std::any_of(thin.begin(), thin.end(), what); };
    EXPECT_TRUE(has([](const PlotPoint& p) { return p.y == 50.0; }));
    EXPECT_TRUE(has([](const PlotPoint& p) { return p.y == -50.0; }));
    EXPECT_TRUE(has([](const PlotPoint& p) { return std::isnan(p.y); }));
    EXPECT_TRUE(has([](const PlotPoint& p) { return !p.valid; }));
    EXPECT_LT(thin.front().x, 1000.0);
    EXPECT_GE(thin.back().x, 9000.0);
}

TEST(Thinned, IsBoundedWhateverTheDataAre) {
    std::vector<PlotPoint> points;
    for (int i = 0; i < 20000; ++i)
        points.push_back({static_cast<double>(i), i % 2 ? Gap : 1.0, i % 3 != 0});
    EXPECT_LE(Thinned(points, 0.0, 20000.0, 100).size(), 10U * 101U);
    EXPECT_EQ(Thinned(points, 0.0, 20000.0, 0).size(), points.size());
    EXPECT_EQ(Thinned({}, 0.0, 1.0, 100).size(), 0U);
    EXPECT_EQ(Thinned(std::span(points).first(10), 0.0, 10.0, 100).size(), 10U);
}

TEST(AutoRange, WidensAtOnceAndShrinksAfterTenSeconds) {
    CAutoRange range;
    const PlotAxis axis;
    const PlotRange first = range.Follow(PlotRange{0.0, 1.0}, axis, 0.0);
    EXPECT_LT(first.lower, 0.0);
    EXPECT_GT(first.upper, 1.0);
    EXPECT_LT(first.Size(), 1.5);
    const PlotRange wide = range.Follow(PlotRange{-5.0, 9.0}, axis, 1.0);
    EXPECT_LT(wide.lower, -5.0);
    EXPECT_GT(wide.upper, 9.0);
    EXPECT_EQ(range.Follow(PlotRange{0.0, 1.0}, axis, 5.0), wide);
    EXPECT_EQ(range.Follow(PlotRange{0.0, 1.0}, axis, 10.9), wide);
    EXPECT_EQ(range.Follow(PlotRange{0.0, 1.0}, axis, 11.0), first);
    EXPECT_EQ(range.Follow(std::nullopt, axis, 60.0), first) << "nothing to follow";
}

TEST(AutoRange, StandsOnZeroAndOnDecadesWhereItShould) {
    PlotAxis depth;
    depth.fromZero = true;
    EXPECT_EQ(CAutoRange().Follow(PlotRange{3.0, 44.0}, depth, 0.0).lower, 0.0);
    PlotAxis logarithmic;
    logarithmic.logarithmic = true;
    const PlotRange decades = CAutoRange().Follow(PlotRange{0.02, 30.0}, logarithmic, 0.0);
    EXPECT_DOUBLE_EQ(decades.lower, 0.01);
    EXPECT_DOUBLE_EQ(decades.upper, 100.0);
    const PlotRange flat = CAutoRange().Follow(PlotRange{5.0, 5.0}, {}, 0.0);
    EXPECT_LT(flat.lower, 5.0);
    EXPECT_GT(flat.upper, 5.0);
}

TEST(PlotRange, ZoomsAndPansAlongLogarithmicAxes) {
    PlotAxis axis;
    axis.logarithmic = true;
    const PlotRange near = ZoomedRange({1.0, 100.0}, 10.0, 0.5, axis);
    EXPECT_NEAR(near.lower, std::sqrt(10.0), 1e-9);
    EXPECT_NEAR(near.upper, std::pow(10.0, 1.5), 1e-9);
    const PlotRange moved = PannedRange({1.0, 100.0}, 10.0, 100.0, axis);
    EXPECT_NEAR(moved.lower, 10.0, 1e-9);
    EXPECT_NEAR(moved.upper, 1000.0, 1e-9);
    EXPECT_GT(UsableRange({-1.0, 0.0}, axis).lower, 0.0);
    EXPECT_GT(UsableRange({5.0, 5.0}, {}).Size(), 0.0);
    PlotRange across{0.0, 10.0}, upright{0.0, 10.0};
    EqualScales(across, upright, 200, 100);
    EXPECT_EQ(across, (PlotRange{-5.0, 15.0}));
    EXPECT_EQ(upright, (PlotRange{0.0, 10.0}));
}

TEST(PlotRange, StaysInsideOfWhatAnAxisCanShowHoweverFarOneZoomsOut) {
    constexpr double Now = 1763800800.0;
    PlotAxis time, logarithmic;
    time.kind = AxisKind::Time;
    logarithmic.logarithmic = true;
    PlotRange times{Now - 600.0, Now}, numbers{0.0, 30.0}, decades{1.0, 100.0};
    for (int i = 0; i < 4000; ++i) {
        times = ZoomedRange(times, Now - 60.0, 1.25, time);
        numbers = ZoomedRange(numbers, 10.0, 1.25, {});
        decades = ZoomedRange(decades, 10.0, 1.25, logarithmic);
    }
    EXPECT_LT(times.Size(), 10'000 * 366 * 86400.0);
    EXPECT_LT(times.lower, Now);
    EXPECT_GT(times.upper, Now);
    EXPECT_TRUE(IsRange(numbers.lower, numbers.upper));
    EXPECT_TRUE(IsRange(decades.lower, decades.upper) && decades.lower > 0.0);
    EXPECT_EQ(UsableRange({Now, Now}, time).Size(), 1.0);
}

TEST(PlotRange, HiddenCurvesAndPointsWithoutValueDoNotCount) {
    const PlotPage page = PageOf({{{0, 1}, {1, Gap}, {2, 99, false}, {3, 4}}, {{0, 50}}});
    EXPECT_EQ(ExtentOfAxis(page, 0, {2}), (PlotRange{1.0, 4.0}));
    EXPECT_EQ(ExtentOfAxis(page, 0, {}), (PlotRange{1.0, 50.0}));
    EXPECT_EQ(ExtentOfAxis(page, 0, {1, 2}), std::nullopt);
    EXPECT_EQ(ExtentOfKey(page, {}), (PlotRange{0.0, 3.0}));
}

TEST(AxisTitle, BearsUnitsAndZone) {
    PlotAxis axis;
    axis.label = "Depth";
    EXPECT_EQ(AxisTitle(axis), "Depth");
    axis.units = "m";
    EXPECT_EQ(AxisTitle(axis), "Depth [m]");
    axis.kind = AxisKind::Time;
    EXPECT_EQ(AxisTitle(axis), "Time UTC");
    axis.zoneMinutes = 120;
    EXPECT_EQ(AxisTitle(axis), "Time local (UTC+02:00)");
    axis.zoneMinutes = -210;
    EXPECT_EQ(AxisTitle(axis), "Time local (UTC-03:30)");
}

TEST(Readout, GivesTheNearestValueWithinReach) {
    PlotPage page = PageOf({{{0, 1}, {10, 2}, {20, Gap}}, {{0, 5}, {11, 6, false}}});
    EXPECT_EQ(Text(ReadoutAt(page, 9.0, 2.0, {})), "9.00 m; c1  2.00 V");
    EXPECT_EQ(Text(ReadoutAt(page, 0.5, 2.0, {})), "0.50 m; c1  1.00 V; c2  5.00 V");
    EXPECT_EQ(Text(ReadoutAt(page, 0.5, 2.0, {1})), "0.50 m; c2  5.00 V");
    EXPECT_EQ(Text(ReadoutAt(page, 10.0, 2.0, {}, 0.0)), "10.00 m  +10.00; c1  2.00 V  +1.00");
    page.key.kind = AxisKind::Time;
    page.key.zoneMinutes = 60;
    EXPECT_EQ(ReadoutAt(page, 1763800800.25, 1.0, {}).place, "09:40:00.3");
}

TEST(VisibleCsv, JoinsPlacesAndLeavesGapsEmpty) {
    const PlotPage page = PageOf({{{0, 1}, {1, Gap}, {2, 3.5}, {9, 9}}, {{1, 7}, {2, 8, false}}});
    EXPECT_EQ(VisibleCsv(page, {0.0, 5.0}, {}), "Depth [m],c1 [V],c2 [V]\n"
                                                "0,1,\n"
                                                "1,,7\n"
                                                "2,3.5,\n");
    EXPECT_EQ(VisibleCsv(page, {0.0, 5.0}, {1}), "Depth [m],c2 [V]\n1,7\n2,\n");
    PlotPage cast = PageOf({{{1, 10}, {2, 20}, {1, 11}}});
    cast.curves[0].title = "T, \"W\"";
    EXPECT_EQ(VisibleCsv(cast, {0.0, 5.0}, {}),
              "Depth [m],\"T, \"\"W\"\" [V]\"\n1,10\n1,11\n2,20\n");
    PlotPage time = PageOf({{{1763800800.0004, 1}}});
    time.key.kind = AxisKind::Time;
    EXPECT_EQ(VisibleCsv(time, {0.0, 2e9}, {}), "Time UTC,c1 [V]\n2025-11-22T08:40:00.000Z,1\n");
}

TEST(Limits, AreReadAsTheyAreWritten) {
    PlotAxis axis;
    EXPECT_EQ(ParseLimit(axis, " -2.5 ", 0.0), -2.5);
    for (const char* bad : {"", "x", "1x", "inf", "nan", "1,5"})
        EXPECT_EQ(ParseLimit(axis, bad, 0.0), std::nullopt) << bad;
    axis.logarithmic = true;
    EXPECT_EQ(ParseLimit(axis, "0", 0.0), std::nullopt);
    PlotAxis time;
    time.kind = AxisKind::Time;
    time.zoneMinutes = 120;
    constexpr double Noon = 1763812800.0; // 2025-11-22 12:00:00 UTC
    EXPECT_EQ(LimitText(time, Noon, {Noon, Noon + 3600.0}), "14:00:00");
    const PlotRange night{Noon + 9.5 * 3600.0, Noon + 10.5 * 3600.0};
    EXPECT_EQ(LimitText(time, night.lower, night), "2025-11-22 23:30:00");
    EXPECT_EQ(LimitText(time, night.upper, night), "2025-11-23 00:30:00");
    for (const double limit : {night.lower, night.upper})
        EXPECT_EQ(ParseLimit(time, LimitText(time, limit, night), Noon), limit);
    EXPECT_EQ(ParseLimit(time, "14:00:00", Noon - 3600.0), Noon);
    EXPECT_EQ(ParseLimit(time, "14:00", Noon), Noon);
    for (const char* bad :
         {"14", "25:00", "1:60", "1:2:3:4", "a:b", "1:", ":", "2025-02-29 1:00", "x 1:00"})
        EXPECT_EQ(ParseLimit(time, bad, Noon), std::nullopt) << bad;
}

TEST(DescribePlot, NamesTheLastValues) {
    const PlotPage page = PageOf({{{0, 1}, {1, 2}, {2, Gap}}, {{0, 1, false}}, {{0, 3}}});
    EXPECT_EQ(DescribePlot(page, {3}), "c1 2.00 V; c2 no value");
}

TEST(NumberText, GroupsCountsAndShowsSpans) {
    EXPECT_EQ(CountText(0), "0");
    EXPECT_EQ(CountText(999), "999");
    EXPECT_EQ(CountText(48210), "48\xE2\x80\x89"
                                "210");
    EXPECT_EQ(CountText(1234567), "1\xE2\x80\x89"
                                  "234\xE2\x80\x89"
                                  "567");
    EXPECT_EQ(ElapsedText(12.9), "00:12");
    EXPECT_EQ(ElapsedText(3730.0), "01:02:10");
}

} // namespace qor
