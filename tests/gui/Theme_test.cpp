// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/look/Icons.h"
#include "app/look/Theme.h"
#include "gui/Desk.h"
#include "gui/gallery/Scenes.h"

#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <cmath>

namespace qor {

namespace {

double Channel(int value) {
    const double part = value / 255.0;
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

double Luminance(QRgb colour) {
    return 0.2126 * Channel(qRed(colour)) + 0.7152 * Channel(qGreen(colour)) +
           0.0722 * Channel(qBlue(colour));
}

double Contrast(QRgb a, QRgb b) {
    const double light = std::max(Luminance(a), Luminance(b));
    const double dark = std::min(Luminance(a), Luminance(b));
    return (light + 0.05) / (dark + 0.05);
}

/// The first pixel that holds green or blue, as text; empty when the picture is pure red.
std::string Impure(const QImage& picture) {
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb pixel = picture.pixel(x, y);
            if (qGreen(pixel) != 0 || qBlue(pixel) != 0)
                return QStringLiteral("%1 at %2, %3")
                    .arg(QColor(pixel).name())
                    .arg(x)
                    .arg(y)
                    .toStdString();
        }
    return {};
}

} // namespace

TEST(Theme, TextAndSignsStandOutInEveryPalette) {
    constexpr double Text = 4.5, Shape = 3.0;
    for (std::size_t look = 0; look < LookCount; ++look) {
        SCOPED_TRACE(look);
        const Tokens& c = TokenTable[look];
        for (const QRgb ground : {c.window, c.base}) {
            EXPECT_GE(Contrast(c.text, ground), Text);
            EXPECT_GE(Contrast(c.text2, ground), Text);
            EXPECT_GE(Contrast(c.stale, ground), Text);
            EXPECT_GE(Contrast(c.accent, ground), Text);
            EXPECT_GE(Contrast(c.border, ground), Shape);
        }
        EXPECT_GE(Contrast(c.text, c.raised), Text);
        EXPECT_GE(Contrast(c.base, c.accent), Text) << "chosen rows";
        EXPECT_GE(Contrast(c.petrolText, c.petrol), Text);
        EXPECT_GE(Contrast(c.amberText, c.amber), Text);
        EXPECT_GE(Contrast(c.redText, c.red), Text);
    }
}

TEST(Theme, CurvesStandOutFromTheGroundOfPlots) {
    const auto expect = [](Look look, int count) {
        for (int i = 0; i < count; ++i)
            EXPECT_GE(Contrast(SeriesPen(look, i, 1.0).color().rgb(), TokensOf(look).base), 3.0)
                << static_cast<int>(look) << " " << i;
    };
    expect(Look::Light, 6);
    expect(Look::Dark, 6);
    expect(Look::Night, 8);
    for (const Look look : {Look::Light, Look::Dark})
        for (double nm = 400.0; nm <= 760.0; nm += 5.0)
            EXPECT_GE(Contrast(WavelengthPen(look, nm, 0, 1.0).color().rgb(), TokensOf(look).base),
                      3.0)
                << nm;
}

TEST(Theme, SeriesAreToldApartByColourOrDash) {
    const auto different = [](Look look, int count) {
        for (int i = 0; i < count; ++i)
            for (int j = 0; j < i; ++j) {
                const QPen a = SeriesPen(look, i, 1.0), b = SeriesPen(look, j, 1.0);
                EXPECT_TRUE(a.color() != b.color() || a.style() != b.style()) << i << " " << j;
            }
    };
    different(Look::Light, 12);
    different(Look::Dark, 12);
    different(Look::Night, 8);
}

TEST(Theme, NightIsRedAloneInEveryPixel) {
    const CWithLook night(Look::Night);
    for (const Scene& scene : Scenes) {
        SCOPED_TRACE(scene.name);
        QWidget* widget = scene.make(TestTheme(), QSize(1200, 700));
        widget->show();
        Settle();
        if (scene.then)
            widget = scene.then(widget);
        Settle();
        EXPECT_EQ(Impure(widget->grab().toImage()), "");
        ClearStage();
    }
}

TEST(Theme, TheCaretIsOursAtNight) {
    const CWithLook night(Look::Night);
    QWidget window;
    QVBoxLayout column(&window);
    QLineEdit line(QStringLiteral("abc"));
    QPlainTextEdit text;
    column.addWidget(&line);
    column.addWidget(&text);
    window.show();
    QApplication::setActiveWindow(&window);
    for (QWidget* field : {static_cast<QWidget*>(&line), static_cast<QWidget*>(&text)}) {
        field->setFocus();
        Settle();
        ASSERT_TRUE(field->hasFocus());
        EXPECT_EQ(Impure(window.grab().toImage()), "");
    }
    line.setFocus();
    line.setCursorPosition(0);
    Settle();
    const QImage with = line.grab().toImage();
    line.clearFocus();
    Settle();
    EXPECT_NE(with, line.grab().toImage()) << "no caret and no focus to be seen";
}

TEST(Theme, TextSizeAndTargetsAreKeptInBounds) {
    CTheme& theme = TestTheme();
    theme.SetTextPercent(1000);
    EXPECT_EQ(theme.TextPercent(), 200);
    EXPECT_EQ(theme.Px(14), 28);
    theme.SetTextPercent(0);
    EXPECT_EQ(theme.TextPercent(), 90);
    theme.SetTextPercent(100);
    theme.SetLargeTargets(true);
    EXPECT_EQ(theme.Target(), 48);
    theme.SetLargeTargets(false);
    EXPECT_EQ(theme.Target(), 36);
}

TEST(Theme, NightGoesBackToWhatWasBefore) {
    CTheme& theme = TestTheme();
    theme.SetLook(Look::Dark);
    theme.ToggleNight();
    EXPECT_TRUE(theme.IsNight());
    theme.ToggleNight();
    EXPECT_EQ(theme.CurrentLook(), Look::Dark);
    theme.SetLook(Look::Light);
}

TEST(Icons, EachIsDrawnInTheColourAskedFor) {
    for (const char* name : IconNames) {
        const QImage picture =
            IconPixmap(QString::fromLatin1(name), 0xFFFF0000U, 0xFFFF0000U, 48, 1.0).toImage();
        int drawn = 0, other = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QColor pixel = picture.pixelColor(x, y);
                drawn += pixel.alpha() > 128 ? 1 : 0;
                other += pixel.alpha() > 128 && (pixel.green() > 0 || pixel.blue() > 0) ? 1 : 0;
            }
        EXPECT_GT(drawn, 40) << name;
        EXPECT_EQ(other, 0) << name;
    }
}

} // namespace qor
