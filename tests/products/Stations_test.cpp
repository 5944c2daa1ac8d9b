// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Text.h"
#include "fakes/DefinedInstrument.h"
#include "fakes/Sentences.h"
#include "products/GpsSentence.h"
#include "products/Track.h"
#include "products/Trend.h"
#include "products/WeatherReading.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qor {
namespace {

/// An instrument with one frame.
class CSentence {
  public:
    CSentence(const std::string& definition, const std::string& frame)
        : Definition(Define(definition)), Live(*Definition) {
        CFrameData data;
        data.Bytes.assign(frame.begin(), frame.end());
        data.Info.terminator = "\r\n";
        Live.Take(data);
    }
    GpsSentence Gps() const { return ReadGps(Live); }
    WeatherReading Weather() const { return ReadWeather(Live); }

    const std::unique_ptr<CInstrument> Definition;
    CLiveInstrument Live;
};

std::string Shown(const std::optional<double>& number) {
    return number ? GeneralNumber(*number, 7) : "-";
}

std::string Shown(const GpsSentence& said) {
    return (said.position ? Shown(said.position->latitude) + " " + Shown(said.position->longitude)
                          : "nowhere") +
           " " + Shown(said.secondsOfDay) + " " +
           (said.midnight ? std::to_string(*said.midnight) : "-") + " " + FixText(said) + " " +
           Shown(said.satellites) + " " + Shown(said.speed) + " " + Shown(said.course) + " " +
           Shown(said.heading);
}

TEST(GpsSentence, IsReadWhoeverTalksAndWhicheverItIs) {
    const std::string vtg = SentenceDefinition(
        "$GLVTG", {"COURSE TRUE 'deg' AF POLYU", "T NONE '' AS NONE", "COURSE MAG 'deg' AF POLYU",
                   "M NONE '' AS NONE", "SPEED KN 'kn' AF POLYU", "N NONE '' AS NONE",
                   "SPEED KMH 'km/h' AF POLYU", "K NONE '' AS NONE"});
    const std::string gll = SentenceDefinition(
        "$GPGLL", {"LATITUDE NONE '' AS NONE", "NS NONE '' AS NONE", "LONGITUDE NONE '' AS NONE",
                   "EW NONE '' AS NONE", "UTC NONE '' AS NONE", "STATUS NONE '' AS NONE"});
    const std::string zda =
        SentenceDefinition("$GNZDA", {"UTCTIME NONE '' AF HHMMSS", "DAY NONE '' AI COUNT",
                                      "MONTH NONE '' AI COUNT", "YEAR NONE '' AI COUNT"});
    const std::string degrees = "INSTRUMENT POS '' 3 AS 0 NONE\nLATITUDE NONE 'deg' 8 BD 1 POLYU\n"
                                "0 1\nLONGITUDE NONE 'deg' 8 BD 1 POLYU\n0 1\n";
    const struct {
        std::string definition, frame, shown;
        const char* why;
    } cases[] = {
        {RmcDefinition("$GPRMC"),
         "$GPRMC,092204.50,A,4436.1234,N,06334.5678,W,5.2,123.4,130705,018.2,W*6A\r\n",
         "44.60206 -63.57613 33724.5 1121212800 fix - 2.675111 123.4 -", "all that RMC has"},
        {RmcDefinition("$GNRMC"), "$GNRMC,092204.00,V,4436.1234,N,06334.5678,W,,,130705,,*6A\r\n",
         "nowhere 33724 1121212800 no fix - - - -", "an old place of a void fix is none"},
        {RmcDefinition("$GPRMC"), "$GPRMC,,V,,,,,,,,,*53\r\n", "nowhere - - no fix - - - -",
         "nothing at all"},
        {GgaDefinition("$GNGGA"), "$GNGGA,235959,4807.038,S,01131.000,E,2,08,0.9,545.4,M*42\r\n",
         "-48.1173 11.51667 86399 - DGPS 8 - - -", "south, and a quality"},
        {GgaDefinition("$GPGGA"), "$GPGGA,235959,4807.038,N,01131.000,E,0,00,,,M*42\r\n",
         "nowhere 86399 - no fix 0 - - -", "quality none"},
        {gll, "$GPGLL,4807.038,N,01131.000,E,092204,A*1D\r\n",
         "48.1173 11.51667 33724 - fix - - - -", "texts without a fit"},
        {gll, "$GPGLL,4861.0,N,01131.000,E,256199,A*1D\r\n", "nowhere - - fix - - - -",
         "minutes and hours that do not exist"},
        {vtg, "$GLVTG,054.7,T,034.4,M,010.0,N,018.5,K*48\r\n", "nowhere - -  - 5.144444 54.7 -",
         "true before magnetic, knots once"},
        {zda, "$GNZDA,201530.00,04,07,2002*60\r\n", "nowhere 72930 1025740800  - - - -", "a date"},
        {zda, "$GNZDA,201530.00,04,77,2002*60\r\n", "nowhere 72930 -  - - - -", "no date"},
        {degrees,
         std::string("POS\x40\x48\x0F\x1A\x9F\xBE\x76\xC9\xC0\x27\x08\x93\x74\xBC\x6A\x7F", 19),
         "48.118 -11.51675 - -  - - - -", "degrees of a fit"},
    };
    for (const auto& one : cases) {
        const CSentence sentence(one.definition, one.frame);
        EXPECT_EQ(Shown(sentence.Gps()), one.shown) << one.why;
        EXPECT_TRUE(IsGpsSentence(*sentence.Definition)) << one.why;
    }
    EXPECT_FALSE(IsGpsSentence(*Define(WeatherDefinition("$WIMWV"))));
}

TEST(WeatherReading, ConvertsUnitsAndTellsTrueFromRelative) {
    const struct {
        const char* frame;
        const char* shown;
    } cases[] = {
        {"$W,90.0,R,10.0,N,50.0,81.0,101.32*11\r\n", "R 5.144444 90|T - -|10 81 1013.2"},
        {"$W,-10.0,T,36.0,K,32.0,81.0,101.32*11\r\n", "R - -|T 10 350|0 81 1013.2"},
        {"$W,360.0,R,7.5,M,,,*11\r\n", "R 7.5 0|T - -|- - -"},
        {"$W,400.0,R,-7.5,M,,,*11\r\n", "R - -|T - -|- - -"},
    };
    for (const auto& one : cases) {
        const CSentence sentence(WeatherDefinition("$W"), one.frame);
        const WeatherReading said = sentence.Weather();
        const auto wind = [](const std::optional<Wind>& w) {
            return Shown(w ? std::optional(w->speed) : std::nullopt) + " " +
                   Shown(w ? w->from : std::nullopt);
        };
        EXPECT_EQ("R " + wind(said.relative) + "|T " + wind(said.trueWind) + "|" +
                      Shown(said.airTemperature) + " " + Shown(said.humidity) + " " +
                      Shown(said.pressure),
                  one.shown);
        EXPECT_TRUE(IsWeatherStation(*sentence.Definition));
    }
    EXPECT_FALSE(IsWeatherStation(*Define(RmcDefinition("$GPRMC"))));
}

TEST(Trend, IsThatOfThreeHoursAtMost) {
    CTrend trend;
    EXPECT_FALSE(trend.SinceThreeHours());
    for (int second = 0; second <= 4 * 3600; ++second)
        trend.Add(1e9 + second, 1000.0 + second / 3600.0);
    EXPECT_NEAR(trend.SinceThreeHours()->difference, 3.0, 0.02);
    EXPECT_NEAR(trend.SinceThreeHours()->seconds, 3 * 3600.0, 60.0);
    trend.Add(5.0, 900.0); // the clock was set back
    EXPECT_FALSE(trend.SinceThreeHours());
    trend.Add(65.0, 901.0);
    EXPECT_EQ(trend.SinceThreeHours()->difference, 1.0);
}

TEST(WindRose, CountsTheLastTenMinutesBySector) {
    CWindRose rose;
    rose.Add(0.0, {5.0, 180.0}); // too old in the end
    rose.Add(101.0, {5.0, 350.0});
    rose.Add(300.0, {5.0, 11.0});
    rose.Add(400.0, {0.0, {}});
    rose.Add(700.0, {5.0, 92.0});
    const auto shares = rose.Shares();
    EXPECT_EQ(rose.Count(), 4u);
    EXPECT_EQ(shares[0], 0.5) << "about north";
    EXPECT_EQ(shares[4], 0.25);
    EXPECT_EQ(shares[8], 0.0);
    rose.Add(1.0, {5.0, 200.0});
    EXPECT_EQ(rose.Count(), 1u) << "another time begins";
}

TEST(Track, KeepsTheShapeOfAVoyageInBoundedMemory) {
    CTrack track(100);
    const auto place = [](int i) {
        return GeoPosition{50.0 + 0.001 * i, 8.0 + (i > 3000 ? 0.5 : 0.0)};
    };
    for (int i = 0; i < 5000; ++i) {
        if (i == 3001)
            track.MarkGap();
        track.Add(place(i));
    }
    const auto all = track.All();
    EXPECT_LE(all.size(), 101u);
    EXPECT_GE(all.size(), 20u);
    EXPECT_EQ(all.front().position.latitude, 50.0);
    EXPECT_EQ(all.back().position.latitude, place(4999).latitude) << "the end is here";
    int gaps = 0;
    for (std::size_t i = 1; i < all.size(); ++i) {
        gaps += all[i].gap;
        EXPECT_EQ(all[i].gap, all[i].position.longitude != all[i - 1].position.longitude);
    }
    EXPECT_EQ(gaps, 1);
    const LocalPlace local = PlaceFrom({60.0, 179.99}, {60.01, -179.99});
    EXPECT_NEAR(local.north, DistanceBetween({60.0, 180.0}, {60.01, 180.0}), 0.01);
    EXPECT_NEAR(local.east, DistanceBetween({60.005, 179.99}, {60.005, -179.99}), 0.1);
}

} // namespace
} // namespace qor
