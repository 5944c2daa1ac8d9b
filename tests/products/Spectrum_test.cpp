// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/ViewedInstrument.h"
#include "products/SpectrumRing.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qor {
namespace {

/// Reference values are their wavelengths, so the accepted channel can be read off; -1 = unmatched.
std::vector<double> Matches(const std::vector<double>& dut, const std::vector<double>& reference) {
    std::vector<SpectrumPoint> dutPoints, referencePoints;
    for (const double wavelength : dut)
        dutPoints.push_back({wavelength, 1.0});
    for (const double wavelength : reference)
        referencePoints.push_back({wavelength, wavelength});
    std::vector<double> matches;
    for (const ComparisonPoint& point : CompareSpectra(dutPoints, referencePoints))
        matches.push_back(point.reference.value_or(-1));
    return matches;
}

TEST(Spectrum, MatchesByOneScanWithinTheWindow) {
    const struct {
        std::vector<double> dut, reference, matches;
        const char* why;
    } cases[] = {
        {{500}, {498.5, 501.5}, {-1}, "the window's ends are outside"},
        {{500}, {498.6}, {498.6}, "inside, before"},
        {{500}, {501.4}, {501.4}, "inside, behind"},
        {{500, 510}, {}, {-1, -1}, "nothing to match"},
        {{500}, {499.9, 501.2}, {501.2}, "a later one is measured against the one before"},
        {{500}, {499.8, 500.1}, {500.1}, "and accepted when it is nearer to the channel"},
        {{500}, {498.7, 499.2, 500.0}, {498.7}, "the scan stops at the worse one"},
        {{500}, {500.4, 500.45}, {500.4}, "nothing is looked at behind the channel"},
        {{500, 501}, {500.6}, {500.6, 500.6}, "a point behind its channel stays for the next"},
        {{500, 500.5}, {499.9}, {499.9, -1}, "a point before it does not"},
        {{500, 500.5}, {498.7, 499.2, 500.0}, {498.7, 500.0}, "the next begins at the stop"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(Matches(one.dut, one.reference), one.matches) << one.why;
}

TEST(Spectrum, ThePercentIsTheDeviationAndNothingGuardsAReferenceOfZero) {
    const auto points = CompareSpectra({{{410, 3.0}, {420, 3.0}}}, {{{411, 4.0}, {420, 0.0}}});
    EXPECT_EQ(points[0].percent, -25.0);
    EXPECT_EQ(points[1].percent, std::numeric_limits<double>::infinity());
}

TEST(Spectrum, IsWorthItsNearestChannelOrWhatLiesBetweenTwo) {
    const std::vector<SpectrumPoint> spectrum{{400, 1}, {403, 4}, {410, 11}, {430, 31}};
    const struct {
        double wavelength;
        std::optional<double> value;
        const char* why;
    } cases[] = {
        {398.6, 1.0, "outside, but near"},
        {398.5, {}, "outside"},
        {401.4, 1.0, "near the left one"},
        {401.6, 4.0, "near the right one"},
        {401.5, 2.5, "in the middle of two that are not near"},
        {405, 6.0, "between two"},
        {411.4, 11.0, "near the edge of a hole"},
        {420, {}, "in a hole"},
        {431.5, {}, "behind the last"},
    };
    for (const auto& one : cases)
        EXPECT_EQ(ValueAt(spectrum, one.wavelength), one.value) << one.why;
    EXPECT_FALSE(ValueAt({}, 400));
}

TEST(Spectrum, RatioAndDarkLeaveOutWhatTheOtherHasNothingFor) {
    const std::vector<SpectrumPoint> lit{{400, 6}, {410, 8}, {450, 9}, {500, 5}};
    const std::vector<SpectrumPoint> other{{401, 2}, {410, 4}, {500.5, 0}};
    const auto text = [](const std::vector<SpectrumPoint>& points) {
        std::string all;
        for (const SpectrumPoint& point : points)
            all += std::to_string(static_cast<int>(point.wavelength)) + "=" +
                   std::to_string(static_cast<int>(point.value)) + " ";
        return all;
    };
    EXPECT_EQ(text(RatioOf(lit, other)), "400=3 410=2 ");
    EXPECT_EQ(text(LessDark(lit, other)), "400=4 410=4 500=5 ");
    EXPECT_TRUE(RatioOf(lit, {}).empty() && LessDark(lit, {}).empty());
}

TEST(SpectrumRing, HoldsTheLastFramesForMeanAndBand) {
    CViewedInstrument radiometer({"LU 510 r", "LU 443 r"});
    const auto series = SeriesOf(radiometer.Live().Definition());
    CSpectrumRing ring(series.at(0), 3);
    EXPECT_TRUE(ring.Mean(3).empty() && ring.Band(3).empty());
    for (const auto& values : {std::pair{99.0, 99.0}, {1.0, 10.0}, {NAN, 30.0}, {5.0, 20.0}}) {
        radiometer.Send({values.first, values.second});
        ring.Add(radiometer.Live());
    }
    EXPECT_EQ(ring.Count(), 3u) << "the first has left";
    const auto mean = ring.Mean(3);
    ASSERT_EQ(mean.size(), 2u);
    EXPECT_EQ(mean[0].wavelength, 443.0);
    EXPECT_EQ(mean[0].value, 20.0);
    EXPECT_EQ(mean[1].value, 3.0) << "over the frames that have one";
    EXPECT_EQ(ring.Mean(2)[0].value, 25.0) << "the latest two";
    EXPECT_EQ(ring.Mean(99)[0].value, 20.0);
    const auto band = ring.Band(3);
    EXPECT_EQ(band[0].least, 10.0);
    EXPECT_EQ(band[0].most, 30.0);
    EXPECT_EQ(band[1].least, 1.0);
    EXPECT_EQ(band[1].most, 5.0);
    radiometer.Send({NAN, 1});
    ring.Clear();
    ring.Add(radiometer.Live());
    EXPECT_EQ(ring.Mean(3).size(), 1u) << "a channel without a value is left out";
}

TEST(Spectrum, ASeriesHoldsTheOpticalChannelsOfOneTypeAndUnits) {
    CViewedInstrument radiometer(
        {"TILT X deg", "LU 510 r", "LU 443.5 r", "LU DARK r", "ED 490 i", "LU 443 other"});
    const auto series = SeriesOf(radiometer.Live().Definition());
    ASSERT_EQ(series.size(), 3u);
    EXPECT_EQ(series[0].type + series[0].units, "LUr");
    EXPECT_EQ(series[1].type + series[1].units, "EDi");
    EXPECT_TRUE(SpectrumOf(radiometer.Live(), series[0]).empty());
    radiometer.Send({1, 2, 3, 4, 5, 6});
    const auto spectrum = SpectrumOf(radiometer.Live(), series[0]);
    ASSERT_EQ(spectrum.size(), 2u);
    EXPECT_EQ(spectrum[0].wavelength, 443.5);
    EXPECT_EQ(spectrum[0].value, 3.0);
    radiometer.Send({1, 2, NAN, 4, 5, 6});
    EXPECT_EQ(SpectrumOf(radiometer.Live(), series[0]).size(), 1u);

    EXPECT_EQ(ChooseSeries(series, ""), 0);
    EXPECT_EQ(ChooseSeries(series, "ed"), 1);
    EXPECT_EQ(ChooseSeries(series, "EU"), -1);
    EXPECT_EQ(ChooseSeries({series[1]}, "LU"), 0);
    EXPECT_EQ(ChooseSeries({}, ""), -1);
}

} // namespace
} // namespace qor
