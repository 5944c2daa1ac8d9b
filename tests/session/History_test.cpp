// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SendingSession.h"

#include <cmath>

namespace qor {
namespace {

class AHistory : public ASendingSession {
  protected:
    /// The values of a curve with "/" for gaps but the first point's, and "@depth" where known.
    std::string Curve(WatchId watch) {
        CRecursiveLock lock(Doc.DocLock);
        const WatchedCurve* curve = Doc.History.Curve(watch);
        if (!curve)
            return "none";
        std::vector<HistoryPoint> points;
        curve->points.Query(-HUGE_VAL, HUGE_VAL, 1000, points);
        std::string text;
        for (std::size_t i = 0; i < points.size(); ++i) {
            text += i == 0 ? "" : points[i].gap ? " / " : " ";
            text += ShortestNumber(points[i].value);
            if (!std::isnan(points[i].depth))
                text += "@" + FixedNumber(points[i].depth, 1);
        }
        return text;
    }
    /// The times of a curve since its first point.
    std::vector<double> Times(WatchId watch) {
        CRecursiveLock lock(Doc.DocLock);
        std::vector<HistoryPoint> points;
        Doc.History.Curve(watch)->points.Query(-HUGE_VAL, HUGE_VAL, 1000, points);
        std::vector<double> times;
        for (const HistoryPoint& point : points)
            times.push_back(std::round((point.time - points.front().time) * 1000) / 1000);
        return times;
    }
    const CCastDetector* Casts(const std::string& name) {
        CRecursiveLock lock(Doc.DocLock);
        return Doc.History.CastsOf(name);
    }
};

TEST_F(AHistory, KeepsWhatIsWatchedWhileSomebodyWatches) {
    Attach("CTD", Profiler);
    Send("CTD", {100, 1});
    const HistoryItem item{"CTD", "TEMP(W)"};
    const WatchId watch = Doc.History.Watch(item);
    EXPECT_EQ(Doc.History.Watch(item), watch);
    const WatchId unknown = Doc.History.Watch({"CTD", "NOPE"}),
                  later = Doc.History.Watch({"NEW", "CHL"});
    Send("CTD", {100, 2});
    Doc.History.Unwatch(watch);
    Send("CTD", {150, 3});
    EXPECT_EQ(Curve(watch), "2@10.0 3@15.0");
    EXPECT_EQ(Curve(unknown), "");
    Attach("NEW", Meter);
    Send("NEW", {7});
    EXPECT_EQ(Curve(later), "7") << "what is watched may come later";
    Doc.History.Unwatch(watch);
    EXPECT_EQ(Curve(watch), "none");
    Doc.History.Unwatch(watch);
    Doc.History.Unwatch(WatchId::None);
    for (std::size_t i = 0; i < 2 * CHistory::MostCurves; ++i)
        Doc.History.Watch({"CTD", std::to_string(i)});
    EXPECT_EQ(Doc.History.Watch({"CTD", "one more"}), WatchId::None);
}

TEST_F(AHistory, BreaksACurveWhereSomethingIsMissing) {
    Attach("CTD", Profiler);
    const WatchId watch = Doc.History.Watch({"CTD", "TEMP(W)"});
    Send("CTD", {0, 1});
    Send("CTD", {0}); // too short for the temperature
    Send("CTD", {0, 2});
    Clock.Advance(2500);
    Send("CTD", {0, 3});
    Clock.Advance(2900);
    Send("CTD", {0, 4}); // old for a moment
    EXPECT_EQ(Doc.RemoveInstrument(Doc.FindInstrument("CTD")), CommResult::Success);
    Attach("CTD", Profiler);
    Send("CTD", {0, 5});
    {
        CRecursiveLock lock(Doc.DocLock);
        Doc.Find(Port)->BeginConnection(); // the port was lost, however shortly
    }
    Send("CTD", {0, 6});
    Send("CTD", {0, 7});
    EXPECT_EQ(Curve(watch), "1@0.0 / 2@0.0 3@0.0 / 4@0.0 / 5@0.0 / 6@0.0 7@0.0");
}

TEST_F(AHistory, TimeNeverGoesBack) {
    Attach("CTD", Profiler);
    Attach("FLU", Meter);
    const WatchId watch = Doc.History.Watch({"CTD", "TEMP(W)"});
    const WatchId other = Doc.History.Watch({"FLU", "CHL"});
    const auto both = [this](int value) {
        Send("CTD", {0, value}, 0);
        Send("FLU", {value}, 1);
    };
    both(1), both(2), both(3);
    Clock.StepWall(-60'000); // a replay is rewound by a minute
    both(4), both(5);
    EXPECT_EQ(Curve(watch), "1@0.0 2@0.0 3@0.0 / 4@0.0 5@0.0");
    EXPECT_EQ(Times(watch), (std::vector<double>{0, 1, 2, 2, 3}));
    EXPECT_EQ(Times(other), Times(watch)) << "what came together stays together";
    EXPECT_EQ(Curve(other), "1 2 3 / 4 5");
    Clock.StepWall(100'000); // and taken on where it has not been
    both(6);
    EXPECT_EQ(Times(watch).back(), 45) << "in the frames' own time again";
    Clock.StepWall(-500);
    both(7);
    EXPECT_EQ(Times(watch).back(), 45.5);
    Clock.StepWall(-1400);
    both(8);
    EXPECT_EQ(Times(watch).back(), 45.5) << "a clock put right is no rewinding";
    const std::string before = Curve(watch);
    Clock.StepWall(100ll * 365 * 86400 * 1000);
    Send("CTD", {0, 9});
    EXPECT_EQ(Curve(watch), before) << "one stamp from another century";
    Clock.StepWall(-100ll * 365 * 86400 * 1000);
    Send("CTD", {0, 10});
    EXPECT_EQ(Curve(watch), before + " / 10@0.0");
    Clock.StepWall(86400 * 1000);
    both(11), both(12);
    EXPECT_GT(Times(watch).back(), 86400) << "but two agree";
    // Frames of unknown time take the clock's.
    Stamped = false;
    both(13);
    EXPECT_EQ(Times(watch).back() - *(Times(watch).rbegin() + 1), 1);
}

TEST_F(AHistory, DepthIsThatOfThePackageElseOfTheProfilerElseOnesOwn) {
    const ResourceId second = Doc.AddSerialResource({.portName = "PORT2", .globalSyncString = ""});
    AddPackage();
    Attach("ALONE", Meter, second);
    Attach("OWN", Profiler, second);
    const WatchId inPackage = Doc.History.Watch({"FLU", "CHL"});
    const WatchId alone = Doc.History.Watch({"ALONE", "CHL"});
    const WatchId own = Doc.History.Watch({"OWN", "TEMP(W)"});
    Send("CTD", {200, 1});
    Send("FLU", {1}), Send("ALONE", {1}), Send("OWN", {33, 1});
    Doc.SetRole(InstrumentRole::Profiler, Doc.FindInstrument("FLU"));
    Set(&SessionState::PressureTare, std::optional(10.0));
    Send("CTD", {300, 1});
    Send("FLU", {2}), Send("ALONE", {2}), Send("OWN", {33, 2});
    Doc.SetRole(InstrumentRole::Profiler, Doc.FindInstrument("OWN"));
    Send("OWN", {63, 3}), Send("ALONE", {3}), Send("FLU", {3});
    for (const int value : {4, 5}) {
        Clock.Advance(1500);
        Send("FLU", {value}), Send("ALONE", {value});
    }
    EXPECT_EQ(Curve(inPackage), "1@20.0 2@29.0 3@29.0 4@29.0 5") << "an old depth is none";
    EXPECT_EQ(Curve(alone), "1 2@29.0 3@5.3 4@5.3 5");
    EXPECT_EQ(Curve(own), "1@3.3 2@29.0 3@5.3");
    CRecursiveLock lock(Doc.DocLock);
    EXPECT_EQ(Doc.History.DepthOf("FLU"), std::nullopt);
}

TEST_F(AHistory, APackagesRowIsOneCurveAndHearsOfItsCarriersAlone) {
    AddPackage();
    const WatchId depth = Doc.History.Watch({"FLU", "DEPTH", true});
    EXPECT_EQ(Doc.History.Watch({"CTD", "DEPTH", true}), depth);
    const WatchId warm = Doc.History.Watch({"CTD", "T (W)", true});
    Send("CTD", {200, 11}), Send("FLU", {1}), Send("FLU", {1}), Send("CTD", {210, 12});
    EXPECT_EQ(Curve(depth), "200@20.0 210@21.0");
    EXPECT_EQ(Curve(warm), "11@20.0 12@21.0");
    EXPECT_EQ(Curve(Doc.History.Watch({"CTD", "SALINITY", true})), "") << "it has no such row";
}

TEST_F(AHistory, TellsCastsApart) {
    EXPECT_EQ(Casts("CTD"), nullptr);
    Attach("CTD", Profiler);
    Attach("FLU", Meter);
    EXPECT_FALSE(Doc.History.BeginCast("CTD")) << "nobody watches";
    const WatchId watch = Doc.History.Watch({"FLU", "CHL"});
    EXPECT_EQ(Casts("FLU"), nullptr) << "it has no depth";
    Doc.SetRole(InstrumentRole::Profiler, Doc.FindInstrument("CTD"));
    EXPECT_FALSE(Doc.History.BeginCast("FLU")) << "no depth has come";
    const auto lower = [this](int from, int to) { // tenths of a dbar, 1 dbar/s
        for (int at = from; at != to; at += from < to ? 1 : -1)
            Send("CTD", {at, 0});
    };
    lower(0, 80), lower(80, 0), lower(0, 50);
    ASSERT_NE(Casts("FLU"), nullptr);
    EXPECT_EQ(Casts("FLU")->Current()->number, 2u);
    EXPECT_EQ(Casts("FLU")->Previous()->deepest, 8.0);
    EXPECT_TRUE(Doc.History.BeginCast("FLU"));
    EXPECT_EQ(Casts("CTD")->Current()->number, 3u);
    EXPECT_TRUE(Doc.History.EndCast("FLU"));
    EXPECT_FALSE(Doc.History.EndCast("FLU"));
    EXPECT_EQ(Doc.History.DepthOf("FLU"), 4.9);
    Doc.History.Unwatch(watch);
    EXPECT_EQ(Casts("FLU"), nullptr);
}

TEST_F(AHistory, KeepsTheLatestSpectraOfASeries) {
    constexpr const char* Optic =
        "ED 400 'x' 2 BU 1 OPTIC2\n0 1 1\nED 500 'x' 2 BU 1 OPTIC2\n0 1 1\n";
    Attach("RAD", Optic);
    const OpticalSeries series = SeriesOf(Find("RAD")->Definition()).front();
    const WatchId watch = Doc.History.WatchSpectra("RAD", series);
    EXPECT_EQ(Doc.History.WatchSpectra("RAD", series), watch);
    const auto mean = [&]() -> std::vector<double> {
        CRecursiveLock lock(Doc.DocLock);
        const CSpectrumRing* ring = Doc.History.Spectra(watch);
        if (!ring)
            return {-1};
        std::vector<double> values;
        for (const SpectrumPoint& point : ring->Mean(10))
            values.push_back(point.value);
        return values;
    };
    Send("RAD", {1, 10}), Send("RAD", {3, 30});
    EXPECT_EQ(mean(), (std::vector<double>{2, 20}));
    EXPECT_EQ(Doc.RemoveInstrument(Doc.FindInstrument("RAD")), CommResult::Success);
    EXPECT_EQ(mean(), std::vector<double>{-1});
    Attach("RAD", Optic);
    Send("RAD", {5, 50});
    EXPECT_EQ(mean(), (std::vector<double>{5, 50})) << "those of another attachment are not its";
    Doc.History.Unwatch(watch), Doc.History.Unwatch(watch);
    EXPECT_EQ(mean(), std::vector<double>{-1});
}

} // namespace
} // namespace qor
