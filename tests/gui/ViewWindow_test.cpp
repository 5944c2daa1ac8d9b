// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/plots/PlotWidget.h"
#include "app/windows/PageGrid.h"
#include "app/windows/WindowStore.h"
#include "gui/Desk.h"
#include "gui/PlayedSession.h"
#include "views/PkgAncView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace qor {

namespace {

class AViewWindow : public testing::Test {
  protected:
    AViewWindow() : Area(std::make_unique<CDisplayArea>(TestTheme())) {
        Area->resize(1074, 549);
        Area->show();
        Settle();
    }
    WindowMaker Maker() { return {TestTheme(), Session.Doc}; }
    CViewWindow& Open(std::string_view kind, const std::string& instrument = {}) {
        CViewWindow* window = OpenWindow(*Area, Maker(), *FindWindowKind(kind), instrument);
        Settle();
        return *window;
    }
    CViewWindow* Find(const char* name) {
        return Area->findChild<CViewWindow*>(QString::fromLatin1(name));
    }
    /// What is shown: the sentence of a notice, the first cells of a grid, whether curves have
    /// points.
    static std::string Content(CViewWindow& window) {
        window.Refresh();
        std::string text = window.CurrentHead().sentence;
        for (const CPageGrid* grid : window.findChildren<CPageGrid*>())
            for (const GridRow& row : grid->Page().rows)
                text += "|" + row.value.text;
        for (const CPlotWidget* plot : window.ShownPlots())
            for (const PlotCurve& curve : plot->Page().curves)
                text += curve.points.empty() ? "" : "~";
        return text;
    }
    /// Beside the rows of its grids.
    static std::string Ages(CViewWindow& window) {
        window.Refresh();
        std::string text;
        for (const CPageGrid* grid : window.findChildren<CPageGrid*>())
            for (const GridRow& row : grid->Page().rows)
                text += row.age;
        return text;
    }
    /// The area begins anew, as in the next session of work.
    void Reopen(const JsonValue& kept) {
        Area = std::make_unique<CDisplayArea>(TestTheme());
        Area->resize(1074, 549);
        Area->show();
        OpenWindows(*Area, Maker(), kept);
        Settle();
        for (CDisplayWindow* window : Area->Windows())
            static_cast<CViewWindow*>(window)->Refresh();
    }

    CPlayedSession Session; ///< outlives the windows
    std::unique_ptr<CDisplayArea> Area;
};

struct Life {
    const char* kind;
    const char* instrument;
    const char* empty; ///< the sentence before there is an instrument
    bool ofOne;        ///< goes when its instrument goes
};

class EveryKindOfWindow : public AViewWindow, public testing::WithParamInterface<Life> {};

} // namespace

TEST_P(EveryKindOfWindow, IsEmptyThenLiveThenStaleThenGone) {
    const auto& [kind, instrument, empty, ofOne] = GetParam();
    CViewWindow& window = Open(kind);
    EXPECT_EQ(window.CurrentHead().sentence, empty);
    Session.AddCast();
    Session.AddShip();
    window.ShowInstrument(instrument);
    Content(window);
    Session.Play(30.0);
    const std::string live = Content(window);
    EXPECT_EQ(window.CurrentHead().state, PageState::Live);
    EXPECT_THAT(live, testing::ContainsRegex("[0-9~]|ok"));
    Session.Play(2.0);
    EXPECT_NE(Content(window).size(), 0u);
    Session.Silence(60.0);
    Content(window);
    if (!ofOne)
        return;
    EXPECT_EQ(window.CurrentHead().sign, Sign::Stale);
    const std::string ages = Ages(window);
    Session.Silence(60.0);
    EXPECT_TRUE(ages.empty() || ages != Ages(window)) << "what is old grows older: " << ages;
    const bool ofPackage = std::string_view(kind) == "package";
    if (*instrument == '\0' && !ofPackage)
        return;
    if (ofPackage) {
        EXPECT_NE(ages, "");
        for (const ResourceStatus& resource : Session.Doc.Snapshot().resources)
            EXPECT_EQ(Session.Doc.RemoveResource(resource.id), CommResult::Success);
    } else {
        EXPECT_EQ(Session.Doc.RemoveInstrument(Session.Doc.FindInstrument(instrument)),
                  CommResult::Success);
    }
    Content(window);
    EXPECT_EQ(window.CurrentHead().state, PageState::Gone);
    auto* button = window.findChild<QPushButton*>();
    ASSERT_TRUE(button);
    const QPointer<CViewWindow> there = &window;
    button->click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(there) << "its button closes it";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, EveryKindOfWindow,
    testing::Values(Life{"ancillary", "QORFAL071", "There is no instrument.", false},
                    Life{"sensors", "$WIMWV", "There is no instrument.", true},
                    Life{"package", "", "There is no package.", true},
                    Life{"reality-check", "", "No DUT instrument has been specified.", true},
                    Life{"profile", "", "There is no instrument.", true},
                    Life{"time-series", "$GPRMC", "There is no instrument.", true},
                    Life{"spectral", "", "No instrument with an optical series.", true},
                    Life{"gps", "$GPRMC", "No instrument with a position.", true},
                    Life{"weather", "$WIMWV", "No instrument with wind or weather.", true},
                    Life{"status", "", "There is no port and no instrument.", true},
                    Life{"monitor", "$GPRMC", "There is no instrument.", true}),
    [](const auto& life) {
        std::string name = life.param.kind;
        std::erase(name, '-');
        return name;
    });

TEST_F(AViewWindow, TakesTurnsAndRestsWhileNobodySeesIt) {
    Session.AddCast();
    CViewWindow &plot = Open("time-series"), &grid = Open("sensors");
    Session.Play(20.0);
    const auto ticksThatDraw = [&](CViewWindow& window) {
        int drawn = 0;
        for (unsigned tick = 1; tick <= CViewWindow::TicksASecond; ++tick) {
            const std::string before = window.CurrentHead().leading;
            Session.Play(0.5);
            window.Tick(tick);
            drawn += window.CurrentHead().leading != before ? 1 : 0;
        }
        return drawn;
    };
    EXPECT_EQ(ticksThatDraw(plot), 10);
    EXPECT_EQ(ticksThatDraw(grid), 4);
    Area->tabifyDockWidget(&plot, &grid);
    grid.raise();
    Settle();
    EXPECT_EQ(ticksThatDraw(plot), 0);
    Session.Play(1.0);
    const std::string before = plot.CurrentHead().leading;
    plot.raise();
    Settle();
    EXPECT_NE(plot.CurrentHead().leading, before) << "shown again it is of now";
}

TEST_F(AViewWindow, TellsAnAlarmAndItsEndWhileNobodySeesIt) {
    Session.AddCast();
    CViewWindow &package = Open("package"), &front = Open("sensors");
    Session.Play(20.0);
    auto& view = dynamic_cast<CPkgAncViewDlg&>(package.View());
    view.Settings.DepthWarnings = {0, 0, -10, 1000, 0, 1};
    Area->tabifyDockWidget(&package, &front);
    front.raise();
    Settle();
    const auto play = [&] {
        Session.Play(1.0);
        for (unsigned tick = 1; tick <= CViewWindow::TicksASecond; ++tick)
            package.Tick(tick);
        return package.Alarmed();
    };
    QSignalSpy told(&package, &CViewWindow::AlarmBegan),
        sounds(&package, &CViewWindow::AlarmSounds);
    EXPECT_NE(play(), "");
    EXPECT_EQ(told.size(), 1);
    EXPECT_GE(sounds.size(), 1);
    view.Settings.TempWarnings = {0, 0, -10, 1000, 0, 1};
    play();
    ASSERT_EQ(told.size(), 2) << "another one while the first goes on";
    EXPECT_NE(told[0][1], told[1][1]);
    view.Settings.DepthWarnings.AlarmMin = view.Settings.TempWarnings.AlarmMin = 900;
    EXPECT_EQ(play(), "");
    package.raise();
    Settle();
    EXPECT_EQ(package.findChild<CPageGrid*>()->Page().rows[1].sign, Sign::None) << "drawn again";
}

TEST_F(AViewWindow, PausesAndResetsAllItsPlotsAtOnce) {
    Session.AddCast();
    CViewWindow& window = Open("reality-check");
    for (QCheckBox* box : window.findChildren<QCheckBox*>())
        box->setChecked(true);
    Session.Play(10.0);
    window.Refresh();
    const std::vector<CPlotWidget*> plots = window.ShownPlots();
    ASSERT_EQ(plots.size(), 3u);
    plots[0]->Zoom(0.5);
    plots[2]->Zoom(0.5);
    QTest::keyClick(plots[1], Qt::Key_Space);
    EXPECT_TRUE(plots[0]->IsPaused() && plots[2]->IsPaused());
    const std::string shown = plots[0]->Page().head.leading;
    window.SetPaused(false);
    EXPECT_FALSE(plots[1]->IsPaused());
    for (CPlotWidget* plot : plots)
        QTest::keyClick(plot, Qt::Key_Home);
    EXPECT_FALSE(plots[0]->IsZoomed() || plots[2]->IsZoomed());
}

TEST_F(AViewWindow, AZoomIntoALongSeriesShowsAllItsPointsPausedToo) {
    Session.AddCast();
    CViewWindow& window = Open("time-series");
    ASSERT_EQ(window.View().Select(Session.Doc, "1 h"), "");
    Session.Play(1500.0);
    window.Refresh();
    CPlotWidget& plot = *window.ShownPlots()[0];
    const auto keys = [&plot] {
        return PlotRange{plot.Page().key.minimum, plot.Page().key.maximum};
    };
    const PlotRange whole = keys();
    const auto pointsOf = [&plot](PlotRange part) {
        std::ptrdiff_t count = 0;
        for (const PlotPoint& point : plot.Page().curves[0].points)
            count += part.lower <= point.x && point.x < part.upper && !std::isnan(point.y) ? 1 : 0;
        return count;
    };
    const double last = plot.Page().curves[0].points.back().x;
    const PlotRange part{last - 700.0, last - 680.0}; // 4 values a second and more
    EXPECT_LT(pointsOf(part), 50);
    const auto zoom = [&] {
        plot.SetChoice(KeyAxisNumber, {AxisMode::Fixed, {}, part.lower, part.upper});
        emit plot.ViewChanged();
    };
    zoom();
    window.Refresh();
    EXPECT_GE(pointsOf(part), 80);
    QTest::keyClick(&plot, Qt::Key_Home);
    window.Refresh();
    EXPECT_EQ(keys(), whole);

    window.SetPaused(true);
    Session.Play(20.0);
    zoom();
    EXPECT_GE(pointsOf(part), 80) << "while paused";
    EXPECT_EQ(pointsOf({last + 0.001, last + 100.0}), 0) << "what came after the pause";
    QTest::keyClick(&plot, Qt::Key_Home);
    EXPECT_EQ(keys(), whole) << "as it was when it was paused";
    EXPECT_LT(pointsOf(part), 50);
    const std::size_t axes = plot.Page().axes.size();
    for (const char* item : {"COND", "TEMP(WATER)", "VOLT(SUPPLY)", "PRES"})
        ASSERT_EQ(window.View().Select(Session.Doc, item), "");
    Session.Play(20.0);
    zoom();
    Settle();
    EXPECT_EQ(plot.Page().axes.size(), axes);
    for (const PlotCurve& curve : plot.Page().curves)
        EXPECT_LT(static_cast<std::size_t>(curve.axis), axes) << "its units are not there";
}

TEST_F(AViewWindow, OfTheRealityCheckHasSwitchesSelectorAndLimitOfTheOneThatLeads) {
    Session.AddCast();
    CViewWindow& window = Open("reality-check");
    Session.Play(10.0);
    window.Refresh();
    auto* limit = window.findChild<QLineEdit*>();
    auto* series = window.findChild<QComboBox*>();
    const QList<QCheckBox*> switches = window.findChildren<QCheckBox*>();
    ASSERT_EQ(switches.size(), 3);
    EXPECT_EQ(series->currentText(), QStringLiteral("ES [uW/cm^2/nm]"));
    const auto type = [&](const char* text) {
        limit->setFocus();
        limit->selectAll();
        QTest::keyClicks(limit, QString::fromLatin1(text));
        QTest::keyClick(limit, Qt::Key_Return);
        return limit->text();
    };
    EXPECT_EQ(type("150"), QStringLiteral("150"));
    EXPECT_EQ(type("much"), QStringLiteral("150")) << "what is no number is put back";
    EXPECT_EQ(window.ShownPlots()[0]->Page().yMaximum, 150.0);
    switches[0]->setChecked(false);
    EXPECT_FALSE(series->isEnabled() || limit->isEnabled()) << "with none on";
    EXPECT_EQ(limit->text(), QString());
    switches[2]->setChecked(true);
    EXPECT_EQ(limit->text(), QStringLiteral("10"));
    EXPECT_EQ(window.ShownPlots()[0]->Page().title, "DUT/REF Normalized [%]");
}

TEST_F(AViewWindow, ComesBackAsItWasAndWhereItWas) {
    Session.AddCast();
    Session.AddShip();
    CViewWindow &spectrum = Open("spectral"), &gps = Open("gps", "$GPRMC"), &tab = Open("log");
    Session.Play(20.0);
    for (CViewWindow* window : {&spectrum, &gps, &tab})
        window->Refresh();
    EXPECT_EQ(spectrum.View().Select(Session.Doc, "Raw Counts"), "");
    EXPECT_EQ(gps.View().Select(Session.Doc, "Decimal Degrees"), "");
    gps.ShownPlots()[0]->ToggleCurve(2);
    spectrum.Refresh();
    spectrum.ShownPlots()[0]->SetChoice(0, {AxisMode::Fixed, 100.0, 5000.0, std::nullopt});
    tab.setFloating(true);
    tab.move(300, 120);
    tab.resize(420, 260);
    Settle();
    const JsonValue kept = DescribeWindows(*Area);
    const std::string text = WriteJson(kept);
    EXPECT_THAT(text, testing::HasSubstr("\"XPosition\": 300"));
    EXPECT_THAT(text, testing::HasSubstr("\"XPosition\": -1")) << "docked";

    Reopen(ReadJson(text).value);
    ASSERT_EQ(Area->Windows().size(), 3u);
    CViewWindow *was = Find("spectral-1"), *ship = Find("gps-1"), *floats = Find("log-1");
    ASSERT_TRUE(was && ship && floats);
    EXPECT_EQ(was->ShownPlots()[0]->Choice(0).maximum, 5000.0);
    EXPECT_EQ(was->ShownPlots()[0]->Page().axes[0].units, "counts");
    EXPECT_EQ(ship->Instrument(), "$GPRMC");
    EXPECT_EQ(ship->ShownPlots()[0]->Hidden(), HiddenCurves{2});
    EXPECT_EQ(ship->findChild<CPageGrid*>()->Page().rows[0].units, "deg");
    EXPECT_TRUE(floats->isFloating());
    EXPECT_EQ(floats->pos(), QPoint(300, 120));

    // Other screens have no layout; a float of a lost screen comes back onto one.
    KeptWindows elsewhere = ReadWindows(kept);
    elsewhere.layouts[0].screens = "800x600+0+0";
    SetPlace(elsewhere.windows[2], {9000, 9000});
    Reopen(WriteWindows(elsewhere));
    ASSERT_TRUE(Find("log-1") && Find("log-1")->isFloating());
    EXPECT_TRUE(QGuiApplication::primaryScreen()->geometry().intersects(Find("log-1")->geometry()));
    const KeptWindows again = ReadWindows(DescribeWindows(*Area, WriteWindows(elsewhere)));
    EXPECT_EQ(again.layouts.size(), 2u) << "that of the other screens is kept";
}

TEST_F(AViewWindow, TabsThatAreTakenOutTogetherAreStillItsWindows) {
    CViewWindow &one = Open("log"), &other = Open("status");
    Open("gps");
    Area->tabifyDockWidget(&one, &other);
    other.raise();
    Settle();
    QWidget* bar = other.titleBarWidget();
    const QPoint hold = bar->rect().center();
    QTest::mousePress(bar, Qt::LeftButton, {}, hold);
    for (const int way : {1, 2, 3})
        QTest::mouseMove(bar, hold + way * QPoint(200, 300));
    QTest::mouseRelease(bar, Qt::LeftButton, {}, hold + QPoint(600, 900));
    Settle();
    ASSERT_TRUE(one.window() == other.window() && one.window() != Area.get());
    EXPECT_EQ(Area->Windows().size(), 3u);
    const JsonValue kept = DescribeWindows(*Area);
    EXPECT_EQ(ReadWindows(kept).layouts.at(0).tiles.size(), 1u);
    Area->TileAll();
    EXPECT_FALSE(one.Floats() || other.Floats());
    Reopen(kept);
    ASSERT_EQ(Area->Windows().size(), 3u);
    EXPECT_TRUE(Find("log-1")->Floats() && Find("status-1")->Floats());
    EXPECT_FALSE(Find("gps-1")->Floats());
}

TEST_F(AViewWindow, OfHostileDescriptionsOpensWhatIsAWindowAndNothingElse) {
    Session.AddCast();
    Session.Play(5.0);
    const struct {
        const char* text;
        std::size_t opened;
    } cases[] = {
        {"{}", 0},
        {"[1, null, [], \"spectral\", {}, {\"kind\": 7}, {\"kind\": \"none\"}]", 0},
        {"[{\"kind\": \"spectral\"}, {\"kind\": \"spectral\"}]", 2},
        {"[{\"kind\": \"log\", \"name\": \"a\"}, {\"kind\": \"gps\", \"name\": \"a\"}]", 2},
        {"[{\"kind\": \"gps\", \"instrument\": 5, \"settings\": [1], \"plots\": {\"a\": 1}}]", 1},
        {"[{\"kind\": \"spectral\", \"width\": 1e300, \"settings\": {\"View\\\\Spectral\": "
         "{\"MeanOf\": 99999999999, \"Reading\": -4, \"XPosition\": 1e9, \"Dark\": null}}}]",
         1},
        {"[{\"kind\": \"gps\", \"plots\": [{\"hidden\": [1, \"Now\"], \"axes\": {\"key\": "
         "{\"limits\": \"fixed\", \"minimum\": 3, \"maximum\": 3}}}, 4]}]",
         1},
        {"[{\"kind\": \"log\", \"name\": \"a\"}, {\"screens\": \"x\", \"places\": {\"a\": [0, 0, "
         "1e9, -4, true], \"b\": 3, \"c\": [1, 1, 1, 1, 1]}}, {\"screens\": \"y\", \"places\": 1}]",
         1},
    };
    for (const auto& [text, opened] : cases) {
        SCOPED_TRACE(text);
        const JsonReading read = ReadJson(text);
        ASSERT_EQ(read.fault, "");
        Reopen(read.value);
        EXPECT_EQ(Area->Windows().size(), opened);
    }
}

TEST_F(AViewWindow, ALayoutComesBackAndARuinedOneLosesNoWindow) {
    Session.AddCast();
    Session.AddShip();
    OpenDefaultWindows(*Area, Maker());
    Settle();
    Find("gps-1")->raise();
    Settle();
    std::map<QString, QRect> before;
    for (const CDisplayWindow* window : Area->Windows())
        if (static_cast<const CViewWindow*>(window)->IsSeen())
            before[window->objectName()] = window->geometry();
    const JsonValue kept = DescribeWindows(*Area);
    Reopen(kept);
    EXPECT_TRUE(Find("gps-1")->IsSeen() && !Find("profile-1")->IsSeen());
    for (const auto& [name, place] : before) {
        const QRect now = Area->findChild<CViewWindow*>(name)->geometry();
        EXPECT_LT((now.topLeft() - place.topLeft()).manhattanLength() +
                      (now.bottomRight() - place.bottomRight()).manhattanLength(),
                  16)
            << name.toStdString();
    }
    std::mt19937 random(3);
    const std::size_t count = before.size() + 4;
    for (int round = 0; round < 30; ++round) {
        KeptWindows ruined = ReadWindows(kept);
        ASSERT_EQ(ruined.windows.size(), count);
        for (auto& [name, tile] : ruined.layouts[0].tiles) {
            const auto any = [&](int most) { return static_cast<int>(random() % 1000u) % most; };
            const int x = any(999), y = any(999);
            if (any(3) > 0)
                tile = {{x, y, 1 + any(1000 - x), 1 + any(1000 - y)}, any(2) == 0};
        }
        Reopen(WriteWindows(ruined));
        ASSERT_EQ(Area->Windows().size(), count) << "round " << round;
    }
}

TEST_F(AViewWindow, TheDefaultLayoutHasWhatTheSessionHas) {
    const auto names = [this] {
        std::vector<std::string> list;
        for (const CDisplayWindow* window : Area->Windows())
            list.push_back(window->objectName().toStdString());
        return list;
    };
    OpenDefaultWindows(*Area, Maker());
    EXPECT_THAT(names(), testing::IsEmpty());
    Session.AddShip();
    OpenDefaultWindows(*Area, Maker());
    EXPECT_THAT(names(), testing::UnorderedElementsAre("gps-1", "weather-1", "sensors-1",
                                                       "time-series-1", "status-1"));
    CloseWindows(*Area);
    EXPECT_TRUE(Area->findChildren<CViewWindow*>().isEmpty()) << "at once";
    EXPECT_THAT(names(), testing::IsEmpty());
    Session.AddCast();
    OpenDefaultWindows(*Area, Maker());
    Settle();
    EXPECT_THAT(names(), testing::IsSupersetOf({"profile-1", "spectral-1", "package-1",
                                                "time-series-1", "gps-1", "weather-1"}));
    EXPECT_NEAR(Find("profile-1")->width(), 0.36 * 1074, 8);
    EXPECT_NEAR(Find("spectral-1")->geometry().bottom(), 0.55 * 549, 12);
    EXPECT_NEAR(Find("package-1")->width(), 330, 8);
    EXPECT_TRUE(Find("profile-1")->IsSeen() && !Find("gps-1")->IsSeen()) << "as a tab behind";
}

TEST_F(AViewWindow, TellsWhatIsAskedOfItAndWhatItsViewSays) {
    Session.AddCast();
    CViewWindow& window = Open("package");
    Session.Play(10.0);
    window.Refresh();
    QSignalSpy asked(&window, &CViewWindow::RangesAsked);
    auto* grid = window.findChild<CPageGrid*>();
    emit grid->RowActivated(0);
    emit grid->RowActivated(5);
    ASSERT_EQ(asked.count(), 1) << "CDOM has no ranges";
    WarningRanges* ranges = window.View().RangesOfRow(0);
    *ranges = {0.0, 1.0, 0.0, 90.0, 0, 1};
    QSignalSpy sounds(&window, &CViewWindow::AlarmSounds);
    for (int i = 0; i < 4; ++i) {
        Session.Play(0.5);
        window.Refresh();
    }
    EXPECT_EQ(sounds.count(), 2) << "every second refresh";
    CViewWindow& roles = Open("gps");
    QSignalSpy remedies(&roles, &CViewWindow::RemedyAsked);
    roles.findChild<QPushButton*>()->click();
    ASSERT_EQ(remedies.count(), 1);
    EXPECT_EQ(remedies[0][0].toString(), QStringLiteral("Add instrument"));
}

} // namespace qor
