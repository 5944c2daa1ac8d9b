// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/Form.h"
#include "app/plots/PlotCanvas.h"
#include "app/plots/PlotWidget.h"
#include "gui/Desk.h"
#include "gui/Hands.h"
#include "gui/SamplePages.h"

#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <limits>

namespace qor {

namespace {

/// One curve of constant value from 0 to 100, with whatever the test puts into it.
PlotPage FlatPage() {
    PlotPage page;
    page.title = "flat";
    page.key.label = "x";
    page.key.automatic = false;
    page.key.maximum = 100.0;
    page.axes.resize(1);
    page.axes[0].label = "y";
    page.axes[0].automatic = false;
    page.axes[0].minimum = 0.0;
    page.axes[0].maximum = 10.0;
    PlotCurve curve;
    curve.title = "curve";
    curve.id = 7;
    for (int x = 0; x <= 100; ++x)
        curve.points.push_back({static_cast<double>(x), 5.0});
    page.curves = {curve};
    return page;
}

class PlotWidgetTest : public testing::Test {
  protected:
    PlotWidgetTest() : Plot(TestTheme()) {
        Plot.resize(640, 420);
        Plot.show();
        Settle();
    }
    void Show(const PlotPage& page) {
        Plot.ShowPage(page);
        Settle();
    }
    /// Whether the curve's colour stands in the plot's column over a place of the key axis.
    bool DrawnAt(double key) {
        const QImage picture = const_cast<CPlotCanvas&>(Plot.Canvas()).grab().toImage();
        const QRect lane = Plot.Canvas().LaneRect(0);
        const auto x = static_cast<int>(Plot.Canvas().KeyPixel(key));
        // The first series is blue; a thin line is spread over two pixels and paler.
        for (int y = lane.top() + 2; y < lane.bottom() - 2; ++y)
            if (picture.pixelColor(x, y).blue() - picture.pixelColor(x, y).red() > 50)
                return true;
        return false;
    }
    QPoint At(double key, double value) {
        return {static_cast<int>(Plot.Canvas().KeyPixel(key)),
                static_cast<int>(Plot.Canvas().ValuePixel(0, value))};
    }

    CPlotWidget Plot;
};

} // namespace

TEST_F(PlotWidgetTest, NoLineCrossesAGapOrAPointWithoutValue) {
    PlotPage page = FlatPage();
    Show(page);
    EXPECT_TRUE(DrawnAt(50.0));
    for (std::size_t x = 40; x <= 60; ++x)
        page.curves[0].points[x].y = std::numeric_limits<double>::quiet_NaN();
    page.curves[0].points[80].valid = false;
    page.curves[0].points[80].y = 9.0;
    Show(page);
    EXPECT_FALSE(DrawnAt(50.0));
    EXPECT_TRUE(DrawnAt(30.0));
    EXPECT_FALSE(DrawnAt(79.25)) << "towards the point without value";
    EXPECT_TRUE(DrawnAt(80.0)) << "its own mark";
}

TEST_F(PlotWidgetTest, APausedPlotKeepsItsPageAndCatchesUp) {
    PlotPage page = FlatPage();
    Show(page);
    Plot.SetPaused(true);
    page.title = "later";
    Show(page);
    EXPECT_EQ(Plot.Page().title, "flat");
    EXPECT_EQ(Plot.PausedText(), "00:00");
    Plot.SetPaused(false);
    EXPECT_EQ(Plot.Page().title, "later");
    EXPECT_EQ(Plot.PausedText(), "");
}

TEST_F(PlotWidgetTest, KeysDoWhatTheListSays) {
    Show(FlatPage());
    QTest::keyClick(&Plot, Qt::Key_Plus);
    EXPECT_TRUE(Plot.IsZoomed());
    const double zoomed = Plot.Choice(KeyAxisNumber).maximum - Plot.Choice(KeyAxisNumber).minimum;
    EXPECT_LT(zoomed, 100.0);
    QTest::keyClick(&Plot, Qt::Key_Right);
    EXPECT_NEAR(Plot.Choice(KeyAxisNumber).maximum - Plot.Choice(KeyAxisNumber).minimum, zoomed,
                1e-6);
    QTest::keyClick(&Plot, Qt::Key_Home);
    EXPECT_FALSE(Plot.IsZoomed());
    QTest::keyClick(&Plot, Qt::Key_A);
    EXPECT_EQ(Plot.Choice(0).mode, AxisMode::Automatic);
    QTest::keyClick(&Plot, Qt::Key_L);
    EXPECT_TRUE(Plot.Page().axes[0].logarithmic);
    QTest::keyClick(&Plot, Qt::Key_Space);
    EXPECT_TRUE(Plot.IsPaused());
    QTest::keyClick(&Plot, Qt::Key_C);
    EXPECT_EQ(Plot.Cursor(), CPlotWidget::CursorMode::On);
    QSignalSpy asked(&Plot, &CPlotWidget::ExportAsked);
    QTest::keyClick(&Plot, Qt::Key_E, Qt::ControlModifier);
    EXPECT_EQ(asked.count(), 1);
}

TEST_F(PlotWidgetTest, TheWheelZoomsAtThePointer) {
    Show(FlatPage());
    auto* canvas = Plot.findChild<CPlotCanvas*>();
    const QPoint point = At(25.0, 5.0);
    QWheelEvent wheel(point, canvas->mapToGlobal(point), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(canvas, &wheel);
    Settle();
    EXPECT_TRUE(Plot.IsZoomed());
    EXPECT_NEAR(canvas->KeyAt(point), 25.0, 0.5);
}

TEST_F(PlotWidgetTest, DraggingMovesTheWindowAndBoxesZoom) {
    Show(FlatPage());
    auto* canvas = Plot.findChild<CPlotCanvas*>();
    const QPoint from = At(50.0, 5.0);
    QTest::mousePress(canvas, Qt::LeftButton, {}, from);
    QTest::mouseMove(canvas, from + QPoint(60, 0));
    QTest::mouseRelease(canvas, Qt::LeftButton, {}, from + QPoint(60, 0));
    Settle();
    EXPECT_NEAR(canvas->KeyAt(from + QPoint(60, 0)), 50.0, 0.5);
    EXPECT_EQ(Plot.Choice(0).mode, AxisMode::AsPage) << "not moved along this axis";

    Plot.ResetView();
    Settle();
    const QPoint corner = At(20.0, 8.0), other = At(40.0, 2.0);
    QTest::mousePress(canvas, Qt::LeftButton, Qt::ShiftModifier, corner);
    QTest::mouseMove(canvas, other);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::ShiftModifier, other);
    EXPECT_NEAR(Plot.Choice(KeyAxisNumber).minimum, 20.0, 0.5);
    EXPECT_NEAR(Plot.Choice(KeyAxisNumber).maximum, 40.0, 0.5);
    EXPECT_NEAR(Plot.Choice(0).maximum, 8.0, 0.2);
}

TEST_F(PlotWidgetTest, LimitsStayWithTheirUnitsWhenOtherUnitsGo) {
    PlotPage page = FlatPage();
    page.axes.push_back(page.axes[0]);
    page.axes[0].units = "V";
    page.axes[1].units = "m";
    Show(page);
    Plot.SetChoice(0, {AxisMode::Fixed, 4.0, 6.0, {}});
    Plot.SetChoice(1, {AxisMode::AsPage, 0.0, 1.0, true});
    page.axes.erase(page.axes.begin());
    Show(page);
    EXPECT_FALSE(Plot.IsZoomed());
    EXPECT_TRUE(Plot.Page().axes[0].logarithmic);
    page.axes.insert(page.axes.begin(), FlatPage().axes[0]);
    page.axes[0].units = "V";
    Show(page);
    EXPECT_EQ(Plot.Choice(0).maximum, 6.0) << "it came back";
    // So do limits given in a form that was open while they went.
    PlotPage onlyMetres = page;
    onlyMetres.axes.erase(onlyMetres.axes.begin());
    for (const int asked : {0, 1}) {
        Show(page);
        Plot.AskRange(asked);
        const QPointer<CForm> form = Plot.findChild<CForm*>();
        Show(onlyMetres);
        PressReturn(form);
        Settle();
        EXPECT_FALSE(form) << "closed";
        EXPECT_EQ(Plot.IsZoomed(), asked == 1);
    }
}

TEST_F(PlotWidgetTest, ANameSwitchesItsCurve) {
    Show(SampleSpectrum());
    auto* canvas = Plot.findChild<CPlotCanvas*>();
    ASSERT_EQ(canvas->Labels.size(), 3U);
    const std::uint64_t curve = canvas->Labels[1].curve;
    QTest::mouseClick(canvas, Qt::LeftButton, {}, canvas->Labels[1].place.center().toPoint());
    Settle();
    EXPECT_EQ(Plot.Hidden(), HiddenCurves{curve});
    EXPECT_EQ(Plot.VisibleData().substr(0, Plot.VisibleData().find('\n')).find("ES"),
              std::string::npos);
    ASSERT_EQ(canvas->Labels.size(), 3U) << "it stays in the list";
    const auto again = std::find_if(canvas->Labels.begin(), canvas->Labels.end(),
                                    [curve](const auto& label) { return label.curve == curve; });
    QTest::mouseClick(canvas, Qt::LeftButton, {}, again->place.center().toPoint());
    EXPECT_TRUE(Plot.Hidden().empty());
}

TEST_F(PlotWidgetTest, NamesAtTheEndsDoNotCoverEachOther) {
    Show(SampleWavelengths());
    const auto& labels = Plot.findChild<CPlotCanvas*>()->Labels;
    ASSERT_EQ(labels.size(), 9U);
    for (const auto& a : labels)
        for (const auto& b : labels)
            EXPECT_TRUE(a.curve == b.curve || a.place.intersected(b.place).height() < 1.0)
                << a.curve << " and " << b.curve;
}

TEST_F(PlotWidgetTest, PicturesAreLightAndWholeWhateverThePalette) {
    const CWithLook night(Look::Night);
    Show(SampleProfile());
    const QImage picture = Plot.Picture();
    EXPECT_EQ(picture.pixelColor(2, 2), QColor(Qt::white));
    QTemporaryDir folder;
    const struct {
        const char* name;
        const char* begins;
    } files[] = {
        {"a.png", "\x89PNG"}, {"a.svg", "<?xml"}, {"a.pdf", "%PDF"}, {"a.csv", "Depth [m],"}};
    for (const auto& [name, begins] : files) {
        QString fault;
        const QString path = folder.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(Plot.SaveFile(path, fault)) << fault.toStdString();
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        EXPECT_TRUE(bytes.startsWith(begins)) << name;
        if (bytes.startsWith("<?xml")) {
            for (const char* part :
                 {"Depth profile", "[m]", "[deg C]", "Station S4", "08:49:12 UTC"})
                EXPECT_TRUE(bytes.contains(part)) << part;
        }
    }
    QString fault;
    EXPECT_FALSE(Plot.SaveFile(folder.filePath(QStringLiteral("a.gif")), fault));
    EXPECT_FALSE(fault.isEmpty());
    EXPECT_FALSE(Plot.SaveFile(folder.filePath(QStringLiteral("none/a.png")), fault));
    EXPECT_TRUE(fault.contains(QStringLiteral("none/a.png")));
}

TEST_F(PlotWidgetTest, OutOfSightItOnlyKeepsThePage) {
    Plot.hide();
    Show(SampleSeries());
    EXPECT_EQ(Plot.Canvas().LaneCount(), 0) << "nothing was laid out";
    Plot.show();
    Settle();
    EXPECT_EQ(Plot.Canvas().LaneCount(), 2);
    EXPECT_TRUE(Plot.accessibleDescription().startsWith(QStringLiteral("TILT ")));
}

} // namespace qor
