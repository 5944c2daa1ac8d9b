// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/SendingSession.h"
#include "views/DepthProfile.h"
#include "views/PkgAncView.h"
#include "views/TimeSeries.h"

namespace qor {
namespace {

/// A page's curves as "title: x,y x,y / x,y", one a line; "/" where the line is broken.
std::string Drawn(const CView& view, double from = 0.0) {
    std::string text;
    for (const PlotCurve& curve : view.Pages().plots[0]->curves) {
        text += curve.title + ":";
        for (const PlotPoint& point : curve.points)
            text += std::isnan(point.y)
                        ? " /"
                        : " " + FixedNumber(point.x - from, 1) + "," + ShortestNumber(point.y);
        text += "\n";
    }
    return text;
}

class AHistoryView : public ASendingSession {
  protected:
    /// The winch at 1 dbar/s between tenths of a dbar, a frame each 5 of them; the temperature is
    /// 1000 less the depth.
    void Winch(int from, int to) {
        for (int at = from; at != to; at += from < to ? 5 : -5)
            Send("CTD", {at, 1000 - at}, 0.5);
    }
    static const PlotPage& Page(const CView& view) { return *view.Pages().plots[0]; }
    static void Choose(CView& view, CQorViewDoc& doc, const std::string& text) {
        EXPECT_EQ(ChooseEntry(view.ContextMenu(doc), text), "");
    }
};

TEST_F(AHistoryView, AProfileShowsTheCastItsWayUpAndTheOneBefore) {
    Attach("CTD", Profiler);
    CDepthProfileView view(Doc);
    view.Refresh(Doc);
    EXPECT_EQ(Page(view).head.state, PageState::Waiting);
    Winch(0, 40), Winch(40, 0), Winch(0, 40), Winch(40, 20);
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_FALSE(view.Refresh(Doc)) << "no news";
    EXPECT_EQ(Drawn(view), "TEMP(W): 0.5,995 1.0,990 1.5,985 2.0,980 2.5,975 3.0,970 "
                           "3.5,965 4.0,960\n"
                           "TEMP(W), previous cast: 0.5,995 1.0,990 1.5,985 2.0,980 "
                           "2.5,975 3.0,970 3.5,965 4.0,960\n");
    EXPECT_EQ(Page(view).curves[1].role, CurveRole::PreviousCast);
    EXPECT_EQ(Page(view).head.leading, "TEMP 975.0000, 2.5 m");
    ASSERT_EQ(Page(view).markers.size(), 1u);
    EXPECT_EQ(Page(view).markers[0].x, 2.5);
    EXPECT_TRUE(Page(view).key.reversed && Page(view).key.fromZero && Page(view).keyUpright);

    EXPECT_EQ(view.Select(Doc, "up-cast"), "");
    EXPECT_EQ(view.Select(Doc, "UP-CAST"), "") << "it stays so";
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_NE(Drawn(view).find("TEMP(W) up: 4.0,960 3.5,965 3.0,970 2.5,975\n"), std::string::npos);
    view.Settings.PreviousCast = 0;
    Choose(view, Doc, "Cast begins now");
    Winch(20, 30);
    view.Refresh(Doc);
    EXPECT_EQ(Drawn(view).substr(0, Drawn(view).find('\n')), "TEMP(W): 2.5,975")
        << "it has not been deeper yet";

    Clock.Advance(38'000);
    EXPECT_TRUE(view.Refresh(Doc)) << "what was live is old";
    EXPECT_EQ(Page(view).head.sign, Sign::Stale);
    EXPECT_EQ(Page(view).head.leading, "TEMP 975.0000, 38 s old");
    EXPECT_EQ(Page(view).markers[0].sign, Sign::Stale);
    const std::string before = Drawn(view);
    EXPECT_EQ(Doc.RemoveInstrument(Doc.FindInstrument("CTD")), CommResult::Success);
    view.Refresh(Doc);
    EXPECT_EQ(Page(view).head.state, PageState::Gone);
    EXPECT_EQ(Drawn(view), before) << "it stays to be read";
    Attach("CTD", Profiler);
    Winch(30, 45);
    view.Refresh(Doc);
    EXPECT_EQ(Drawn(view).substr(0, Drawn(view).find('\n')),
              "TEMP(W): 2.5,975 2.0,980 2.5,975 / 3.0,970 3.5,965 4.0,960");
}

TEST_F(AHistoryView, WindowsShowByThemselvesWhatSuitsThem) {
    const auto titles = [this](CView& view, const std::string& name) {
        view.Show(name);
        view.Refresh(Doc);
        std::string text;
        for (const PlotCurve& curve : Page(view).curves)
            text += curve.title + "|";
        return text + Page(view).head.sentence;
    };
    CDepthProfileView profile(Doc);
    CTimeSeriesView series(Doc);
    EXPECT_EQ(titles(profile, ""), "There is no instrument.");
    AddPackage();
    EXPECT_NE(
        InstrumentId::None,
        Attach(
            "TWO",
            "FRAME COUNTER '' 2 BU 0 COUNT\nA 1 'x' 2 BU 0 COUNT\nPRES NONE 'dbar' 2 BU 0 COUNT\n"
            "B 1 'x' 2 BU 0 COUNT\nC 1 'y' 2 BU 0 COUNT\nD 1 'y' 2 BU 0 COUNT\n"));
    Attach("DRY", "A 1 'x' 2 BU 0 COUNT\n");
    EXPECT_EQ(titles(profile, "CTD"), "T (W)|FLU: CHL|Waiting for CTD.");
    EXPECT_EQ(titles(profile, "Cast"), titles(profile, "CTD")) << "by the package's name";
    EXPECT_EQ(titles(profile, "FLU"), "T (W)|CHL|Waiting for FLU.");
    EXPECT_EQ(titles(profile, "TWO"), "A(1)|B(1)|C(1)|Waiting for TWO.");
    EXPECT_EQ(titles(profile, "DRY"), "DRY has no depth: neither its package nor the profiler has "
                                      "a pressure in units that are known.");
    EXPECT_EQ(Page(profile).head.remedy, "Roles");
    EXPECT_EQ(titles(series, "CTD"), "DEPTH|VELOCITY|T (W)|Waiting for CTD.");
    EXPECT_EQ(titles(series, "TWO"), "A(1)|PRES|B(1)|Waiting for TWO.");
    EXPECT_EQ(Page(series).axes.size(), 2u) << "one a unit";
    EXPECT_EQ(Page(series).axes[1].lane, 1);
    EXPECT_EQ(Page(series).axes[0].label, "A(1), B(1)");
}

TEST_F(AHistoryView, ASeriesShowsWhatIsChosenOverItsSpan) {
    Attach("CTD", Profiler);
    Attach("FLU", Meter);
    CTimeSeriesView view(Doc);
    view.Show("CTD");
    EXPECT_NE(view.Select(Doc, "SALT"), "");
    EXPECT_EQ(view.Select(Doc, "temp(w)"), "");
    EXPECT_EQ(view.Select(Doc, "FLU: CHL"), "");
    EXPECT_EQ(view.Select(Doc, "1 min"), "");
    view.Refresh(Doc);
    const double start = static_cast<double>(Clock.Now().seconds) + 0.25;
    Send("CTD", {0, 1}, 30), Send("CTD", {0, 2}, 1), Send("FLU", {7}, 1), Send("CTD", {0, 3}, 50);
    Send("CTD", {0, 4}, 0.1);
    view.Refresh(Doc);
    EXPECT_EQ(Drawn(view, start), "TEMP(W): 30.0,2 32.0,3 / 82.0,4\nFLU: CHL: 31.0,7\n");
    EXPECT_EQ(Page(view).key.maximum - start, 82.0);
    EXPECT_EQ(Page(view).key.maximum - Page(view).key.minimum, 60.0);
    EXPECT_EQ(Page(view).head.leading, "TEMP 4.0000 C");
    EXPECT_EQ(Page(view).stamp, "2005-05-03 17:24:27 UTC");
    Choose(view, Doc, "All"), Choose(view, Doc, "Time local");
    view.Refresh(Doc);
    EXPECT_EQ(Page(view).key.minimum, start);
    EXPECT_EQ(Page(view).key.zoneMinutes, -180);
    Send("CTD", {0}); // too short: no value
    view.Refresh(Doc);
    EXPECT_EQ(Page(view).head.leading, "TEMP --");
    Clock.Advance(20'000);
    EXPECT_TRUE(view.Refresh(Doc));
    EXPECT_NEAR(Page(view).key.maximum - start, 102.1, 0.01) << "time goes on, the curve has ended";
    EXPECT_FALSE(view.Refresh(Doc));

    // As many points as the plot can show, the extremes among them.
    view.SetPlotSize(1, 1);
    for (int i = 0; i < 5000; ++i)
        Send("CTD", {0, i == 2500 ? 9000 : i % 7}, 0.1);
    view.Refresh(Doc);
    EXPECT_LE(Page(view).curves[0].points.size(), 110u);
    EXPECT_NE(Drawn(view).find(",9000"), std::string::npos);
}

TEST_F(AHistoryView, KeepsItsSettingsAndRefusesStrangeOnes) {
    Attach("CTD", Profiler);
    CTimeSeriesView view(Doc);
    for (const char* item : {"PRES", "TEMP(W)", "1 h", "Time local"})
        EXPECT_EQ(view.Select(Doc, item), "");
    view.Refresh(Doc);
    view.SetAxis(1, {AxisMode::Fixed, -1.5, 30.25, true});
    view.SaveSettings(Profile, "View1");
    CTimeSeriesView other(Doc);
    other.LoadSettings(Profile, "View1");
    other.Refresh(Doc);
    EXPECT_EQ(other.Settings.Items, view.Settings.Items);
    EXPECT_EQ(other.Settings.Span, 2);
    EXPECT_EQ(Page(other).axes[1].minimum, -1.5);
    EXPECT_TRUE(Page(other).axes[1].logarithmic && !Page(other).axes[1].automatic);
    Choose(other, Doc, "TEMP(W) [C], automatic");
    const Menu menu = other.ContextMenu(Doc);
    for (const MenuEntry& entry : menu.front().entries.front().entries)
        if (entry.text == "PRES")
            entry.choose(); // it was there: now it goes
    other.Refresh(Doc);
    EXPECT_EQ(other.Settings.Items, std::vector<std::string>{"CTD: TEMP(W)"});
    EXPECT_TRUE(Page(other).axes[0].automatic);
    EXPECT_NE(ChooseEntry(other.ContextMenu(Doc), "TEMP(W)"), "") << "the last one stays";

    Profile.WriteInteger("View1\\Series", "Span", 99);
    Profile.WriteInteger("View1\\Series", "Items", 2'000'000'000);
    Profile.WriteInteger("View1\\Series", "Axes", 4);
    Profile.WriteText("View1\\Series", "Axis0", "2 0 5 5 C");
    Profile.WriteText("View1\\Series", "Axis1", "2 0 1e999 5 C");
    Profile.WriteText("View1\\Series", "Axis2", "2 0");
    Profile.WriteText("View1\\Series", "Axis3", "");
    other.LoadSettings(Profile, "View1");
    EXPECT_EQ(other.Settings.Span, 3);
    EXPECT_TRUE(other.Settings.Axes.empty());
    EXPECT_LE(other.Settings.Items.size(), 2u);
    EXPECT_FALSE(view.Settings.Save(Profile, ""));
}

TEST_F(AHistoryView, ShadesTheRangesThatAreSetAndSharesItsCurves) {
    AddPackage();
    CTimeSeriesView view(Doc);
    CDepthProfileView beside(Doc);
    view.Show("CTD"), beside.Show("FLU");
    view.Refresh(Doc), beside.Refresh(Doc);
    CPkgAncViewDlg keeper(false);
    keeper.Show("CTD");
    keeper.Refresh(Doc);
    const auto ranges = [&keeper](const std::string& instrument, ANCDATATYPE kind) {
        return keeper.RangesOf(instrument, kind);
    };
    view.TakeRanges(ranges);
    EXPECT_NE(ChooseEntry(view.ContextMenu(Doc), "Alarm limits"), "") << "none are set";
    keeper.Settings.TempWarnings = {20, 25, 25, 50, 1, 0};
    keeper.Settings.DepthWarnings = {100, 200, 200, 750, 1, 1};
    view.TakeRanges(ranges);
    Choose(view, Doc, "Alarm limits");
    view.Refresh(Doc);
    std::string bands;
    for (const PlotBand& band : Page(view).bands)
        bands += Page(view).axes[static_cast<std::size_t>(band.axis)].label + " " +
                 ShortestNumber(band.lower) + "-" + ShortestNumber(band.upper) + " " +
                 std::string(SignWord(band.sign)) + "|";
    EXPECT_EQ(bands, "DEPTH 100-200 warning|DEPTH 200-750 alarm|T (W) 20-25 warning|");
    // Two windows, one curve: it outlives the first.
    Send("CTD", {0, 5});
    view.Show("FLU");
    view.Refresh(Doc);
    Send("CTD", {10, 6});
    beside.Refresh(Doc);
    EXPECT_EQ(Drawn(beside).substr(0, Drawn(beside).find('\n')), "T (W): 0.0,5 1.0,6");
}

} // namespace
} // namespace qor
