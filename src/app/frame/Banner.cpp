// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/Banner.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"
#include "app/look/Style.h"

#include <QAccessible>
#include <QPainter>

#include <algorithm>

namespace qor {

namespace {

constexpr int HatchWidth = 14;
constexpr int LeastLetters = 24; ///< below it, letters are not read from two metres
constexpr int ThickEdge = 3;

/// Draws a text on one line, smaller where it would not fit.
void DrawFitting(QPainter& painter, const QRect& place, QFont font, const QString& text,
                 int leastPixels) {
    while (font.pixelSize() > leastPixels &&
           QFontMetrics(font).horizontalAdvance(text) > place.width())
        font.setPixelSize(font.pixelSize() - 1);
    painter.setFont(font);
    painter.drawText(place, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     QFontMetrics(font).elidedText(text, Qt::ElideRight, place.width()));
}

} // namespace

CBanner::CBanner(const CTheme& theme, QWidget* parent) : QAbstractButton(parent), Theme(theme) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setCursor(Qt::PointingHandCursor);
    setToolTip(tr("State of logging. Click for the log's status."));
    setAccessibleName(FirstLine());
    connect(&Theme, &CTheme::Changed, this, [this] {
        updateGeometry();
        update();
    });
}

void CBanner::ShowPage(const LogPage& page) {
    if (page == Page)
        return;
    const bool told = page.state != Page.state || page.run != Page.run ||
                      page.nagging != Page.nagging || page.leftSign != Page.leftSign;
    Page = page;
    setAccessibleName(FirstLine() + QStringLiteral(". ") + SecondLine());
    if (told) {
        // A screen reader hears a change of state at once, not every second of it.
        QAccessibleEvent event(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
    update();
}

void CBanner::SetWatch(bool watch) {
    Watch = watch;
    updateGeometry();
    update();
}

QSize CBanner::sizeHint() const {
    return {Theme.Px(600), Theme.Px(Watch ? 150 : size::ToolButtonHeight)};
}

QSize CBanner::minimumSizeHint() const {
    return {Theme.Px(260), sizeHint().height()};
}

CBanner::Dress CBanner::DressOf(LogState state) const {
    const Tokens& colours = Theme.Colours();
    const QColor text(colours.text), window(colours.window);
    switch (state) {
    case LogState::Idle:
        if (Page.nagging)
            return {QColor(colours.amber), QColor(colours.amberText),
                    QColor(Theme.IsNight() ? colours.border : colours.amber), ThickEdge};
        return {window, text, QColor(colours.border), 1};
    case LogState::Open:
        return {QColor(colours.petrol), QColor(colours.petrolText),
                QColor(Theme.IsNight() ? colours.text : colours.petrol), ThickEdge};
    case LogState::Between:
        return {window, text, QColor(Theme.IsNight() ? colours.border : colours.petrol), ThickEdge};
    case LogState::Failed:
        return {QColor(colours.red), QColor(colours.redText), QColor(colours.red), 1};
    }
    return {window, text, text, 1};
}

QString CBanner::StateWord() const {
    switch (Page.state) {
    case LogState::Idle:
        return tr("NOT LOGGING");
    case LogState::Open:
        return tr("LOGGING");
    case LogState::Between:
        return tr("WAITING");
    case LogState::Failed:
        return tr("LOG FAILED");
    }
    return {};
}

QString CBanner::Prefix() const {
    switch (Page.run) {
    case RunKind::Live:
        return {};
    case RunKind::Practice:
        return tr("PRACTICE");
    case RunKind::Replay:
        return tr("REPLAY %1", "with its speed").arg(Shown(Page.speed));
    }
    return {};
}

QString CBanner::FirstLine() const {
    QString line = Prefix();
    if (!line.isEmpty())
        line += QStringLiteral("  ");
    line += StateWord();
    const std::string& time = Page.state == LogState::Open      ? Page.elapsed
                              : Page.state == LogState::Between ? Page.next
                                                                : std::string();
    return time.empty() ? line : line + QStringLiteral("  ") + Shown(time);
}

QString CBanner::SecondLine() const {
    const QString file = Shown(Page.file);
    switch (Page.state) {
    case LogState::Idle:
        if (Page.nagging)
            return tr("Frames come and are not kept. Next log %1").arg(file);
        return file.isEmpty() ? QString() : tr("Next log %1").arg(file);
    case LogState::Between:
        return tr("Next log %1").arg(file);
    case LogState::Open:
        return tr("%1   %2 frames").arg(file, Shown(Page.frames));
    case LogState::Failed:
        return Shown(Page.cause);
    }
    return {};
}

void CBanner::PaintStateSign(QPainter& painter, const QRect& place, const QColor& colour) const {
    switch (Page.state) {
    case LogState::Idle:
        PaintIcon(painter, place, QStringLiteral("waiting"), colour.rgb());
        return;
    case LogState::Open:
        PaintIcon(painter, place, QStringLiteral("ok"), colour.rgb());
        return;
    case LogState::Between:
        PaintIcon(painter, place, QStringLiteral("clock"), colour.rgb());
        return;
    case LogState::Failed:
        PaintSign(painter, place, Sign::Error, Theme.Colours());
        return;
    }
}

/// On the right of the first line; amber and red where the disk runs out. The width it takes.
int CBanner::PaintDiskLeft(QPainter& painter, const QRect& place, const Dress& dress) const {
    if (Page.left.empty())
        return 0;
    QFont font = Theme.Font(FontRole::Tool);
    font.setPixelSize(Theme.Px(Watch ? 40 : 26));
    font.setBold(true);
    const QString text = Shown(Page.left);
    const QFontMetrics metrics(font);
    const int side = metrics.ascent();
    const bool marked = Page.leftSign != Sign::None;
    const int width =
        metrics.horizontalAdvance(text) + Theme.Px(16) + (marked ? side + Theme.Px(6) : 0);
    QRect field(place.right() - width, place.top(), width, place.height());
    const Tokens& colours = Theme.Colours();
    QColor colour = dress.text;
    if (marked) {
        const bool alarm = Page.leftSign == Sign::Alarm || Page.leftSign == Sign::Error;
        const QRgb fill = alarm ? colours.red : colours.amber;
        colour = QColor(alarm ? colours.redText : colours.amberText);
        DrawBox(painter, field.adjusted(0, 2, 0, -2), QColor(fill),
                QColor(Theme.IsNight() ? colours.border : fill), 2);
        PaintSign(painter,
                  QRect(field.left() + Theme.Px(8), field.center().y() - side / 2, side, side),
                  Page.leftSign, colours);
    }
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(field.adjusted(0, 0, -Theme.Px(8), 0),
                     Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine, text);
    return width + Theme.Px(12);
}

void CBanner::PaintHatch(QPainter& painter, const QRect& place, const Dress& dress) const {
    painter.save();
    painter.setClipRect(place);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(dress.text, Theme.Px(5)));
    for (int y = place.top() - place.width(); y < place.bottom() + place.width(); y += Theme.Px(14))
        painter.drawLine(place.left(), y + place.width(), place.right(), y);
    painter.restore();
}

void CBanner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Dress dress = DressOf(Page.state);
    DrawBox(painter, rect(), dress.fill, hasFocus() ? QColor(Theme.Colours().accent) : dress.edge,
            hasFocus() ? std::max(2, dress.edgeWidth) : dress.edgeWidth);
    QRect inside = rect().adjusted(Theme.Px(12), Theme.Px(6), -Theme.Px(10), -Theme.Px(6));
    if (Page.run != RunKind::Live) {
        const QRect hatch(dress.edgeWidth, dress.edgeWidth, Theme.Px(HatchWidth),
                          height() - 2 * dress.edgeWidth);
        PaintHatch(painter, hatch, dress);
        inside.setLeft(hatch.right() + Theme.Px(10));
    }
    const QFont letters = Theme.Font(Watch ? FontRole::Watch : FontRole::Banner);
    const int upper = inside.height() * 3 / 5;
    QRect first(inside.left(), inside.top(), inside.width(), upper);
    const int side = QFontMetrics(letters).capHeight();
    PaintStateSign(
        painter, QRect(first.left(), first.center().y() - side * 5 / 8, side * 5 / 4, side * 5 / 4),
        dress.text);
    first.setLeft(first.left() + side * 5 / 4 + Theme.Px(12));
    first.setRight(first.right() - PaintDiskLeft(painter, first, dress));
    painter.setPen(dress.text);
    DrawFitting(painter, first, letters, FirstLine(), Theme.Px(LeastLetters));

    QFont small = Theme.Font(FontRole::Tool);
    small.setPixelSize(Theme.Px(Watch ? 28 : 18));
    painter.setPen(dress.text);
    DrawFitting(painter,
                QRect(first.left(), inside.top() + upper, inside.right() - first.left(),
                      inside.height() - upper),
                small, SecondLine(), Theme.Px(13));
}

} // namespace qor
