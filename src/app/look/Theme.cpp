// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/look/Theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

QPalette PaletteOf(const Tokens& colours) {
    QPalette palette;
    const auto set = [&palette](QPalette::ColorRole role, QRgb colour) {
        palette.setColor(role, QColor(colour));
    };
    set(QPalette::Window, colours.window);
    set(QPalette::Base, colours.base);
    set(QPalette::AlternateBase, colours.base);
    set(QPalette::Button, colours.raised);
    set(QPalette::ToolTipBase, colours.raised);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::ToolTipText, QPalette::BrightText})
        set(role, colours.text);
    set(QPalette::PlaceholderText, colours.text2);
    set(QPalette::Highlight, colours.accent);
    set(QPalette::HighlightedText, colours.base);
    set(QPalette::Link, colours.accent);
    set(QPalette::LinkVisited, colours.accent);
    // What the base style shades its edges with.
    set(QPalette::Light, colours.raised);
    set(QPalette::Midlight, colours.raised);
    set(QPalette::Mid, colours.border);
    set(QPalette::Dark, colours.border);
    set(QPalette::Shadow, colours.window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(colours.border));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(colours.border));
    return palette;
}

QRgb MixedRgb(QRgb from, QRgb to, double part) {
    const auto channel = [part](int a, int b) {
        return static_cast<int>(std::lround(a + (b - a) * part));
    };
    return qRgb(channel(qRed(from), qRed(to)), channel(qGreen(from), qGreen(to)),
                channel(qBlue(from), qBlue(to)));
}

QRgb WavelengthRgb(Look look, double nm) {
    const auto colour = [look](const WavelengthColour& entry) {
        return look == Look::Dark ? entry.dark : entry.light;
    };
    if (nm > WavelengthTable.back().nm)
        return TokensOf(look).stale;
    if (!(nm > WavelengthTable.front().nm))
        return colour(WavelengthTable.front());
    const auto upper = std::find_if(WavelengthTable.begin(), WavelengthTable.end(),
                                    [nm](const WavelengthColour& entry) { return entry.nm >= nm; });
    const auto lower = upper - 1;
    return MixedRgb(colour(*lower), colour(*upper), (nm - lower->nm) / (upper->nm - lower->nm));
}

} // namespace

QColor Mixed(QRgb from, QRgb to, double part) {
    return QColor(MixedRgb(from, to, part));
}

QPen SeriesPen(Look look, int number, double width) {
    const auto index = static_cast<std::size_t>(std::max(number, 0));
    if (look == Look::Night) {
        constexpr std::array<Qt::PenStyle, 4> Dashings{Qt::SolidLine, Qt::DashLine, Qt::DotLine,
                                                       Qt::DashDotLine};
        const Qt::PenStyle dashing = Dashings[index / NightSeries.size() % Dashings.size()];
        // Dashes cost dearly when they are broad.
        return {QColor(NightSeries[index % NightSeries.size()]),
                dashing == Qt::SolidLine ? width : 1.0, dashing};
    }
    const auto& series = look == Look::Dark ? DarkSeries : LightSeries;
    const bool again = index / series.size() % 2 == 1;
    return {QColor(series[index % series.size()]), again ? 1.0 : width,
            again ? Qt::DashLine : Qt::SolidLine};
}

QPen WavelengthPen(Look look, double nm, int number, double width) {
    if (look == Look::Night)
        return SeriesPen(look, number, width);
    return {QColor(WavelengthRgb(look, nm)), width};
}

CTheme::CTheme(QObject* parent)
    : QObject(parent), Family(QApplication::font().family()),
      FixedFamily(QStringLiteral("Courier New")) {
    if (!QFontDatabase::families().contains(FixedFamily))
        FixedFamily = QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
}

void CTheme::SetLook(Look look) {
    if (look == Shown)
        return;
    if (look == Look::Night)
        BeforeNight = Shown;
    Shown = look;
    Apply();
}

void CTheme::ToggleNight() {
    SetLook(IsNight() ? BeforeNight : Look::Night);
}

void CTheme::SetTextPercent(int percent) {
    percent = std::clamp(percent, size::MinimumTextPercent, size::MaximumTextPercent);
    if (percent == Percent)
        return;
    Percent = percent;
    Apply();
}

void CTheme::SetLargeTargets(bool large) {
    if (large == Large)
        return;
    Large = large;
    Apply();
}

int CTheme::Px(int atFullSize) const {
    return (atFullSize * Percent + 50) / 100;
}

int CTheme::Target() const {
    return Px(Large ? size::LargeTarget : size::Target);
}

QFont CTheme::Font(FontRole role) const {
    QFont font(Family);
    font.setPixelSize(Px(size::Text));
    switch (role) {
    case FontRole::Text:
        break;
    case FontRole::Ticks:
        font.setPixelSize(Px(size::Ticks));
        break;
    case FontRole::Tool:
        font.setPixelSize(Px(size::ToolText));
        break;
    case FontRole::Value:
    case FontRole::Fixed:
        font.setFamily(FixedFamily);
        font.setPixelSize(Px(role == FontRole::Value ? size::Value : size::Text));
        font.setBold(role == FontRole::Value);
        break;
    case FontRole::Banner:
    case FontRole::Watch:
        font.setPixelSize(Px(role == FontRole::Banner ? size::Banner : size::Watch));
        font.setBold(true);
        break;
    }
    return font;
}

void CTheme::Apply() {
    const QPalette palette = PaletteOf(Colours());
    QApplication::setPalette(palette);
    QToolTip::setPalette(palette);
    const QFont font = Font(FontRole::Text);
    QApplication::setFont(font);
    QToolTip::setFont(font);
    emit Changed();
}

} // namespace qor
