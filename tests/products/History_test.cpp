// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/CastDetector.h"
#include "products/HistoryCurve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>

namespace qor {
namespace {

/// A depth that moves at given speeds, sampled regularly; what the detector says is written down.
class CWinch {
  public:
    explicit CWinch(double rate) : Step(1.0 / rate) { Detector.Take(Time, Depth); }
    CWinch& Move(double seconds, double speed) {
        for (double end = Time + seconds - Step / 2; Time < end;) {
            Time += Step;
            Depth += speed * Step;
            const CastEvent event = Detector.Take(Time, Depth);
            if (event != CastEvent::None)
                Said += event == CastEvent::Begun ? "begun " : "ended ";
        }
        return *this;
    }
    CCastDetector Detector;
    std::string Said;
    double Time = 100.0, Depth = 0.0;

  private:
    double Step;
};

TEST(CastDetector, BeginsWithSpeedAtOneDecibarAndEndsAtTheSurface) {
    for (const double rate : {0.5, 1.0, 10.0, 100.0}) {
        CWinch winch(rate);
        winch.Move(20, 0.5).Move(60, 0).Move(20, -0.5);
        EXPECT_EQ(winch.Said, "begun ended ") << rate;
        const Cast& cast = winch.Detector.Current().value();
        EXPECT_EQ(cast.number, 1u);
        EXPECT_NEAR(cast.begin, 102, 2.01 / rate) << rate;
        EXPECT_NEAR(cast.deepest, 10, 1e-9);
        EXPECT_NEAR(cast.deepestTime, 120, 2.01 / rate);
        EXPECT_NEAR(cast.end.value_or(0), 199, 2.01 / rate);
        EXPECT_FALSE(winch.Detector.UnderWay() || winch.Detector.Previous());
    }
}

TEST(CastDetector, LowersSlowlyBobsAndRestsWithoutACast) {
    CWinch slow(10);
    slow.Move(60, 0.09).Move(10, 2.0).Move(30, -0.8);
    EXPECT_EQ(slow.Said, "") << "it passed 1 dbar slowly";
    CWinch fast(10);
    EXPECT_EQ(fast.Move(60, 0.11).Said, "begun ");
    CWinch dropped(10); // from rest just above
    EXPECT_EQ(dropped.Move(10, 0.095).Move(60, 0).Move(5, 1.0).Said, "begun ");
    CWinch bobbing(10);
    bobbing.Move(1, 0.8);
    for (int wave = 0; wave < 20; ++wave)
        bobbing.Move(0.5, 0.6).Move(0.5, -0.6);
    EXPECT_EQ(bobbing.Said, "") << "waves come back before a second is over";
    CWinch awash(10);
    awash.Move(10, 0.5).Move(8.6, -0.5); // up to 0.7
    for (int wave = 0; wave < 20; ++wave)
        awash.Move(1, 0.6).Move(1, -0.6);
    EXPECT_EQ(awash.Said, "begun ") << "one cast, however often it passes";
}

TEST(CastDetector, TellsCastsApartAlsoByHand) {
    CWinch winch(10);
    winch.Move(10, 1).Move(10, -1).Move(5, 0).Move(4, 1);
    EXPECT_EQ(winch.Said, "begun ended begun ");
    EXPECT_EQ(winch.Detector.Current()->number, 2u);
    EXPECT_EQ(winch.Detector.Previous()->number, 1u);
    EXPECT_NEAR(winch.Detector.Previous()->deepest, 10, 1e-9);

    winch.Detector.Begin(winch.Time); // at depth: a new profile from here
    EXPECT_TRUE(winch.Detector.Current()->byHand);
    EXPECT_EQ(winch.Detector.Previous()->end, winch.Time);
    winch.Move(4, -1);
    EXPECT_EQ(winch.Said, "begun ended begun ended ");
    winch.Detector.Begin(winch.Time); // on deck
    EXPECT_EQ(winch.Move(5, 0.02).Said, "begun ended begun ended ") << "not ended by the surface";
    EXPECT_TRUE(winch.Detector.UnderWay());
    EXPECT_EQ(winch.Move(5, 1).Move(5.1, -1).Said, "begun ended begun ended ended ");
    winch.Detector.End(winch.Time + 1);
    EXPECT_LT(winch.Detector.Current()->end.value_or(1e9), winch.Time + 1) << "it was over";

    // A clock that goes back, and depths that are none.
    CCastDetector odd;
    EXPECT_EQ(odd.Take(10, 0.0), CastEvent::None);
    EXPECT_EQ(odd.Take(9, 5.0), CastEvent::None);
    EXPECT_EQ(odd.Take(11, NAN), CastEvent::None);
    EXPECT_EQ(odd.Take(12, 9.0), CastEvent::None) << "it has not been seen above";
}

/// A curve with all that was put into it.
struct Recorded {
    CHistoryCurve curve;
    std::vector<HistoryPoint> points;
    void Append(double time, double value) {
        curve.Append(time, value, 2 * value);
        points.push_back({time, value, 2 * value, OpenGap});
        OpenGap = false;
    }
    void MarkGap() {
        curve.MarkGap();
        OpenGap = true;
    }
    bool OpenGap = false;
};

/// Every two points that a line joins have no gap between them.
void ExpectNoLineOverAGap(const std::vector<HistoryPoint>& drawn,
                          const std::vector<HistoryPoint>& recorded) {
    std::vector<double> gaps; // the time of the point behind each
    for (const HistoryPoint& point : recorded)
        if (point.gap)
            gaps.push_back(point.time);
    for (std::size_t i = 1; i < drawn.size(); ++i) {
        ASSERT_LE(drawn[i - 1].time, drawn[i].time);
        const auto gap = std::upper_bound(gaps.begin(), gaps.end(), drawn[i - 1].time + 1e-4);
        const bool between = gap != gaps.end() && *gap <= drawn[i].time + 1e-4;
        ASSERT_EQ(drawn[i].gap, between) << drawn[i].time;
    }
}

TEST(HistoryCurve, KeepsTheLastHourAsItCameAndEverythingOlderByItsExtremes) {
    std::mt19937 random(7);
    std::normal_distribution<double> step(0, 1);
    Recorded recorded{CHistoryCurve({1000.0, 1u << 18, 4096}), {}};
    double value = 0.0;
    const double start = 1.7e9;
    for (int i = 0; i < 200'000; ++i) { // 20 Hz, two hours and three quarters
        if (random() % 997 == 0)
            recorded.MarkGap();
        value += step(random);
        recorded.Append(start + 0.05 * i, random() % 5003 == 0 ? value + 1000 : value);
    }
    const double end = recorded.points.back().time;

    std::vector<HistoryPoint> points;
    recorded.curve.Query(end - 900, end, 100'000, points);
    ASSERT_EQ(points.size(), 18'001u);
    for (std::size_t i = 0; i < points.size(); ++i) {
        const HistoryPoint& one = recorded.points[recorded.points.size() - points.size() + i];
        ASSERT_NEAR(points[i].time, one.time, 6e-4);
        ASSERT_EQ(points[i].value, one.value);
        ASSERT_EQ(points[i].depth, static_cast<float>(one.depth));
        ASSERT_EQ(points[i].gap, one.gap);
    }

    const auto byValue = [](const HistoryPoint& a, const HistoryPoint& b) {
        return a.value < b.value;
    };
    for (const double seconds : {900.0, 3000.0, 6000.0, 10000.0})
        for (const std::size_t most : {std::size_t{10}, std::size_t{999}, std::size_t{1u << 20}}) {
            recorded.curve.Query(end - seconds, end, most, points);
            ASSERT_FALSE(points.empty());
            ASSERT_LE(points.size(), most);
            ExpectNoLineOverAGap(points, recorded.points);
            const auto from = std::lower_bound(
                recorded.points.begin(), recorded.points.end(), end - seconds - 1e-4,
                [](const HistoryPoint& point, double time) { return point.time < time; });
            const auto [least, greatest] =
                std::minmax_element(from, recorded.points.end(), byValue);
            const auto [low, high] = std::minmax_element(points.begin(), points.end(), byValue);
            EXPECT_EQ(low->value, least->value) << seconds << ' ' << most;
            EXPECT_EQ(high->value, greatest->value) << seconds << ' ' << most;
            EXPECT_NEAR(high->time, greatest->time, 6e-4);
        }
    EXPECT_LT(recorded.curve.Points(), 45'000u);
    EXPECT_NEAR(recorded.curve.OldestTime().value_or(0), start, 1.0);
}

TEST(HistoryCurve, HoldsDaysInAFewMegabytes) {
    CHistoryCurve curve;
    for (int i = 0; i < 10 * 86400 * 2; ++i)
        curve.Append(0.1 * i, i % 1000, 0);
    EXPECT_LT(curve.Bytes(), 3'000'000u);
    EXPECT_LT(curve.OldestTime().value_or(1e9), 3600.0) << "nothing is forgotten yet";
    // However long and fast it runs, it stays within its levels.
    CHistoryCurve small({10.0, 2048, 512});
    for (int i = 0; i < 500'000; ++i)
        small.Append(0.001 * i, i, 0);
    EXPECT_LE(small.Points(), 2048u + 3 * 512u);
    EXPECT_GT(small.OldestTime().value_or(0), 0.0);
    EXPECT_EQ(small.Latest()->value, 499'999.0);
}

TEST(HistoryCurve, TakesWhatIsNoValueForAGapAndTimesOnlyForward) {
    CHistoryCurve curve({1e9, 1000, 1000});
    std::vector<HistoryPoint> points;
    curve.Query(-HUGE_VAL, HUGE_VAL, 10, points);
    EXPECT_TRUE(points.empty() && !curve.Latest() && !curve.OldestTime());
    curve.Append(1, 1);
    curve.Append(2, NAN);
    curve.Append(NAN, 5);
    curve.Append(3, 2, 7);
    curve.Append(2.5, 4);
    curve.Append(9e6, 5); // months later: beyond a chunk's reach
    curve.MarkGap();
    curve.Query(-HUGE_VAL, HUGE_VAL, 10, points);
    ASSERT_EQ(points.size(), 4u);
    EXPECT_TRUE(points[1].gap && !points[0].gap && !points[2].gap && !points[3].gap);
    EXPECT_TRUE(std::isnan(points[0].depth));
    EXPECT_EQ(points[1].depth, 7.0);
    EXPECT_EQ(points[2].time, 3.0);
    EXPECT_EQ(points[3].time, 9e6);
    curve.Query(3, 3, 10, points);
    EXPECT_EQ(points.size(), 2u);
    curve.Query(-HUGE_VAL, HUGE_VAL, 3, points);
    EXPECT_LE(points.size(), 2u);
    curve.Query(5, 4, 10, points);
    EXPECT_TRUE(points.empty());
    curve.Clear();
    curve.Append(1, 1);
    EXPECT_EQ(curve.Points(), 1u);
    EXPECT_FALSE(curve.Latest()->gap);
}

} // namespace
} // namespace qor
