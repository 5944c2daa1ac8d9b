// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/Sentences.h"
#include "fakes/SessionFixture.h"
#include "views/GpsView.h"
#include "views/WeatherView.h"

#include <cmath>

namespace qor {
namespace {

class AStation : public ASession {
  protected:
    const CQorViewIns& AddSentence(const std::string& definition) {
        return *Find(
            Doc.AddInstrument(Temp.Put(std::to_string(++Files) + ".tdf", definition), Port).id);
    }
    /// The rows as "label text units" that have something.
    static std::string Rows(const CView& view) {
        std::string text;
        for (const GridRow& row : view.Pages().grid->rows)
            if (row.value.text != "--")
                text += row.label + " " + row.value.text + (row.units.empty() ? "" : " ") +
                        row.units + (row.stale ? " (old)|" : "|");
        return text;
    }
    static const PlotCurve& Curve(const CView& view, std::size_t index) {
        return view.Pages().plots[0]->curves.at(index);
    }
    int Files = 0;
};

TEST_F(AStation, ShowsWhatAllSentencesOfTheReceiverSay) {
    CGpsView view(Doc);
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().grid->head.sentence, "No instrument with a position.");
    const CQorViewIns& gga = AddSentence(GgaDefinition("$GPGGA"));
    const CQorViewIns& rmc = AddSentence(RmcDefinition("$GPRMC"));
    Doc.SetRole(InstrumentRole::Gps, rmc.Id);
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().grid->head.sentence, "Waiting for $GPRMC.");
    // The frame comes at 17:23:05.250 UTC.
    Offer(rmc, {"$GPRMC,172304.50,A,5430.0000,N,00759.9999,E,4.2,213.0,030505,,*00\r\n"});
    Offer(gga, {"$GPGGA,172304,5430.0000,N,00759.9999,E,2,08,0.9,12.5,M*00\r\n"});
    Clock.Advance(600);
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_EQ(Rows(view), "Latitude 54 30.000 N|Longitude 008 00.000 E|Time 17:23:04 UTC|"
                          "Date 2005-05-03|Fix DGPS|Satellites 8|HDOP 0.9|Altitude 12.5 m|"
                          "Speed 4.2 kn|Course 213 deg|Age 0.6 s|Clock +0.8 s|");
    EXPECT_EQ(view.Pages().grid->head.leading, "54 30.000 N 008 00.000 E");
    EXPECT_EQ(view.Select(Doc, "Decimal Degrees") + view.Select(Doc, "Sentences"), "");
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().grid->rows[1].value.text, "7.999998");
    EXPECT_EQ(view.Pages().grid->rows.back().value.text,
              "$GPGGA,172304,5430.0000,N,00759.9999,E,2,08,0.9,12.5,M*00");

    Clock.Advance(10'000);
    Offer(gga, {"$GPGGA,172314,5430.1000,N,00800.0000,E,0,00,,,M*00\r\n"});
    view.Refresh(Doc);
    EXPECT_NE(Rows(view).find("Speed 4.2 kn (old)|"), std::string::npos) << Rows(view);
    EXPECT_EQ(view.Pages().grid->head.sign, Sign::Warning) << "it has no fix";
}

TEST_F(AStation, DrawsTheTrackOfTheLogWithGapsWhereTheFixWasLost) {
    const CQorViewIns& gps = AddSentence(RmcDefinition("$GPRMC"));
    CGpsView view(Doc);
    view.Refresh(Doc);
    const auto send = [&](const char* latitude, char status = 'A') {
        Offer(gps, {Format("$GPRMC,120000,%c,%s,N,00800.0000,E,,,,,*00\r\n", status, latitude)});
    };
    const auto track = [&] {
        view.Refresh(Doc);
        std::string text;
        for (const PlotPoint& point : Curve(view, 0).points)
            text += std::isnan(point.y) ? "| " : FixedNumber(point.y, 0) + " ";
        return text;
    };
    send("5400.0000");
    send("5401.0000");
    send("5401.0000", 'V');
    send("5403.0000");
    EXPECT_EQ(track(), "0 1853 | 5560 ");
    EXPECT_EQ(Curve(view, 1).points.at(0).y, Curve(view, 0).points.back().y);
    EXPECT_TRUE(view.Pages().plots[0]->sameScale);
    EXPECT_EQ(view.Select(Doc, "Track in Degrees"), "");
    track();
    EXPECT_DOUBLE_EQ(Curve(view, 0).points[0].y, 54.0);
    EXPECT_EQ(view.Select(Doc, "Clear Track"), "");
    EXPECT_EQ(track(), "");
    send("5410.0000");
    ASSERT_TRUE(Begin());
    EXPECT_EQ(track(), "54 ") << "the log's track begins where it begins";
    Doc.RawLog.EndLogFile(true);
}

TEST_F(AStation, MakesTheTrueWindOfTheRelativeOneAndTheShipsWay) {
    CWeatherView view(Doc);
    const CQorViewIns& station = AddSentence(WeatherDefinition("$WIMWV"));
    const CQorViewIns& gps = AddSentence(RmcDefinition("$GPRMC"));
    view.Refresh(Doc);
    Offer(station, {"$WIMWV,0.0,R,10.0,N,50.0,81.0,101.32*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), "Relative wind 5.1 m/s|Relative wind from 0 deg|Air temperature 10.0 "
                          "deg C|Humidity 81.0 %|Pressure 1013.2 hPa|");
    // Into a headwind of 10 kn at 10 kn on 90: there is no wind at all; at 4 kn 6 kn from the east.
    Offer(gps, {"$GPRMC,120000,A,5400.0,N,00800.0,E,4.0,90.0,,,*00\r\n"});
    Clock.Advance(600'000);
    Offer(gps, {"$GPRMC,121000,A,5400.0,N,00800.0,E,4.0,90.0,,,*00\r\n"});
    Offer(station, {"$WIMWV,0.0,R,10.0,N,50.0,81.0,101.02*11\r\n"});
    EXPECT_EQ(view.Select(Doc, "Knots"), "");
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), "True wind 6.0 kn|True wind from 90 deg|Relative wind 10.0 kn|Relative "
                          "wind from 0 deg|Air temperature 10.0 deg C|Air temperature trend +0.0 "
                          "in 10 min deg C|Humidity 81.0 %|Humidity trend +0.0 in 10 min %|"
                          "Pressure 1010.2 hPa|Pressure trend -3.0 in 10 min hPa|");
    EXPECT_EQ(view.Pages().grid->head.leading, "6.0 kn 90 deg");
    const PlotCurve& rose = Curve(view, 0);
    ASSERT_EQ(rose.points.size(), 7u) << "one petal";
    EXPECT_NEAR(rose.points[3].x, 100.0, 1e-9) << "all of it from the east";
    EXPECT_NEAR(Curve(view, 1).points.at(1).x, 100.0, 1e-9);
    Clock.Advance(10'000);
    Offer(station, {"$WIMWV,0.0,R,10.0,N,50.0,81.0,101.02*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().grid->rows[0].value.text, "--")
        << "the ship's way is not known any more";
    EXPECT_EQ(view.Pages().plots[0]->title, "Wind of 10 min");
    EXPECT_TRUE(Curve(view, 1).points.empty()) << "the relative wind has no place between N and E";
    Clock.Advance(600'000);
    Offer(station, {"$WIMWV,0.0,R,10.0,N,50.0,81.0,101.02*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(view.Pages().plots[0]->title, "Relative wind of 10 min");
    EXPECT_NEAR(Curve(view, 1).points.at(1).y, 100.0, 1e-9);
}

TEST_F(AStation, OfSeveralSentencesMarksWhatIsOldAndMakesNoWindOfIt) {
    CWeatherView view(Doc);
    const CQorViewIns& wind = AddSentence(
        SentenceDefinition("$WIMWV", {"WINDANGLE NONE 'deg' AF POLYU", "WINDREF NONE '' AS NONE",
                                      "WINDSPEED NONE '' AF POLYU", "WINDUNITS NONE '' AS NONE"}));
    const CQorViewIns& air = AddSentence(SentenceDefinition(
        "$WIXDR", {"HUMIDITY NONE '%' AF POLYU", "BAROMETER NONE 'kPa' AF POLYU"}));
    const CQorViewIns& gps = AddSentence(RmcDefinition("$GPRMC"));
    EXPECT_EQ(view.Select(Doc, "Trends"), "");
    view.Refresh(Doc);
    Offer(wind, {"$WIMWV,0.0,R,10.0,M*11\r\n"});
    Offer(air, {"$WIXDR,81.0,101.32*11\r\n"});
    const std::string sail = "$GPRMC,120000,A,5400.0,N,00800.0,E,4.0,90.0,,,*00\r\n";
    const char* const oldWind = "Relative wind 10.0 m/s (old)|Relative wind from 0 deg (old)|";
    Clock.Advance(10'000);
    Offer(gps, {sail});
    Offer(air, {"$WIXDR,82.0,101.32*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), std::string(oldWind) + "Humidity 82.0 %|Pressure 1013.2 hPa|");
    EXPECT_EQ(view.Pages().grid->head.sign, Sign::Stale);
    EXPECT_EQ(view.Pages().grid->rows[2].age, "10 s");
    Clock.Advance(10'000);
    Offer(gps, {sail});
    Offer(wind, {"$WIMWV,0.0,R,10.0,M*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), "True wind 7.9 m/s|True wind from 90 deg|Relative wind 10.0 m/s|Relative "
                          "wind from 0 deg|Humidity 82.0 % (old)|Pressure 1013.2 hPa (old)|");
}

TEST_F(AStation, AnOldValueIsOfTheNewestSentenceAndNoTrendOutlivesItsValue) {
    CWeatherView view(Doc);
    const std::vector<std::string> fields = {"HUMIDITY NONE '%' AF POLYU",
                                             "BAROMETER NONE 'kPa' AF POLYU"};
    const CQorViewIns& first = AddSentence(SentenceDefinition("$WIXDR", fields));
    const CQorViewIns& second = AddSentence(SentenceDefinition("$WIMET", fields));
    view.Refresh(Doc);
    Offer(first, {"$WIXDR,80.0,*11\r\n"});
    Clock.Advance(1000);
    Offer(second, {"$WIMET,81.0,101.32*11\r\n"});
    Clock.Advance(600'000);
    Offer(second, {"$WIMET,82.0,101.02*11\r\n"});
    Clock.Advance(10'000);
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), "Humidity 82.0 % (old)|Humidity trend +2.0 in 10 min % (old)|"
                          "Pressure 1010.2 hPa (old)|Pressure trend -3.0 in 10 min hPa (old)|");
    EXPECT_EQ(view.Pages().grid->rows[6].age, "10 s");
    Offer(second, {"$WIMET,82.0,*11\r\n"});
    view.Refresh(Doc);
    EXPECT_EQ(Rows(view), "Humidity 82.0 %|Humidity trend +2.0 in 10 min %|");
}

} // namespace
} // namespace qor
