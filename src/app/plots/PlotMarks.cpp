// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/plots/PlotMarks.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr int StripHeight = 6;

/// The last value of a curve inside the visible part of the key axis, or null.
const PlotPoint* LastPoint(const PlotCurve& curve, PlotRange key) {
    for (auto point = curve.points.rbegin(); point != curve.points.rend(); ++point)
        if (point->valid && std::isfinite(point->y) && point->x >= key.lower &&
            point->x <= key.upper)
            return &*point;
    return nullptr;
}

} // namespace

CPlotGround::CPlotGround(CPlotCanvas& canvas)
    : QCPLayerable(&canvas, QStringLiteral("grid")), Canvas(canvas) {}

void CPlotGround::applyDefaultAntialiasingHint(QCPPainter* painter) const {
    painter->setAntialiasing(false);
}

void CPlotGround::draw(QCPPainter* painter) {
    if (Canvas.LaneCount() == 0)
        return;
    for (const PlotBand& band : Canvas.Page().bands)
        DrawBand(*painter, band);
    for (const PlotMarker& marker : Canvas.Page().markers)
        DrawMarker(*painter, marker);
    if (KeyAxis(Canvas.Page()).kind == AxisKind::Wavelength)
        DrawLight(*painter);
}

void CPlotGround::DrawBand(QCPPainter& painter, const PlotBand& band) const {
    if (band.axis < 0 || static_cast<std::size_t>(band.axis) >= ValueAxisCount(Canvas.Page()))
        return;
    const QRectF lane = Canvas.LaneRect(Canvas.LaneOfAxis(band.axis));
    const double a = Canvas.ValuePixel(band.axis, band.lower);
    const double b = Canvas.ValuePixel(band.axis, band.upper);
    const bool upright = Canvas.Page().keyUpright;
    const QRectF whole = upright
                             ? QRectF(std::min(a, b), lane.top(), std::fabs(a - b), lane.height())
                             : QRectF(lane.left(), std::min(a, b), lane.width(), std::fabs(a - b));
    const QRectF shade = whole.intersected(lane);
    if (shade.isEmpty())
        return;
    const Tokens& colours = Canvas.Colours();
    const bool alarm = band.sign == Sign::Alarm;
    const QRgb colour = Canvas.UsedLook() == Look::Night || alarm ? colours.red : colours.amber;
    painter.fillRect(shade, Mixed(colours.base, colour, alarm ? 0.24 : 0.16));
    const int side = Canvas.UsedTheme().Px(14);
    if (shade.height() > side + 4 && shade.width() > side + 4)
        PaintSign(painter,
                  QRect(static_cast<int>(shade.right()) - side - 4,
                        static_cast<int>(shade.top()) + 3, side, side),
                  band.sign, colours);
}

void CPlotGround::DrawMarker(QCPPainter& painter, const PlotMarker& marker) const {
    const double at = Canvas.KeyPixel(marker.x);
    const bool upright = Canvas.Page().keyUpright;
    painter.setPen(QPen(QColor(Canvas.Colours().text2), 1.0, Qt::DashDotLine));
    painter.setFont(Canvas.UsedTheme().Font(FontRole::Ticks));
    for (int i = 0; i < Canvas.LaneCount(); ++i) {
        const QRect lane = Canvas.LaneRect(i);
        if (upright ? at < lane.top() || at > lane.bottom() : at < lane.left() || at > lane.right())
            continue;
        if (upright)
            painter.drawLine(QLineF(lane.left(), at, lane.right(), at));
        else
            painter.drawLine(QLineF(at, lane.top(), at, lane.bottom()));
        if (i > 0)
            continue;
        const QString text = Shown(marker.text);
        QRectF words = painter.fontMetrics().boundingRect(text);
        words.adjust(-2.0, 0.0, 2.0, 0.0);
        if (upright)
            words.moveBottomLeft(QPointF(lane.left() + 2.0, at - 1.0));
        else
            words.moveTopLeft(QPointF(at + 1.0, lane.top()));
        painter.fillRect(words, QColor(Canvas.Colours().base));
        painter.drawText(words, Qt::AlignCenter | Qt::TextSingleLine, text);
    }
}

/// Along the lower edge, what light the wavelengths are. Red alone cannot show it.
void CPlotGround::DrawLight(QCPPainter& painter) const {
    if (Canvas.UsedLook() == Look::Night || Canvas.Page().keyUpright)
        return;
    const QRect lane = Canvas.LaneRect(Canvas.LaneCount() - 1);
    const int height = Canvas.UsedTheme().Px(StripHeight);
    constexpr int Step = 3;
    for (int x = lane.left(); x < lane.right(); x += Step) {
        const double nm = Canvas.KeyAt({x, lane.top()});
        if (nm < WavelengthTable.front().nm || nm > WavelengthTable.back().nm)
            continue;
        painter.fillRect(QRect(x, lane.bottom() - height, std::min(Step, lane.right() - x), height),
                         WavelengthPen(Canvas.UsedLook(), nm, 0, 1.0).color());
    }
}

CPlotNames::CPlotNames(CPlotCanvas& canvas)
    : QCPLayerable(&canvas, QStringLiteral("names")), Canvas(canvas) {}

void CPlotNames::applyDefaultAntialiasingHint(QCPPainter* painter) const {
    painter->setAntialiasing(true);
}

void CPlotNames::draw(QCPPainter* painter) {
    Canvas.Labels.clear();
    if (Canvas.Page().curves.size() < 2)
        return;
    painter->setFont(Canvas.UsedTheme().Font(FontRole::Ticks));
    if (Canvas.Page().keyUpright)
        return DrawAbove(*painter);
    for (int lane = 0; lane < Canvas.LaneCount(); ++lane)
        DrawLane(*painter, lane);
}

void CPlotNames::DrawAbove(QCPPainter& painter) {
    const QFontMetrics metrics = painter.fontMetrics();
    const QRect place = Canvas.NamesRect();
    int x = place.left(), y = place.top();
    for (std::size_t i = 0; i < Canvas.Page().curves.size(); ++i) {
        const PlotCurve& curve = Canvas.Page().curves[i];
        const int width = Canvas.NameWidth(metrics, curve);
        if (x > place.left() && x + width > place.right() + 1) {
            x = place.left();
            y += metrics.height();
        }
        DrawName(painter, {i, 0.0}, QRectF(x + 4, y, width - 8, metrics.height()),
                 Canvas.View().hidden.contains(curve.id));
        x += width;
    }
}

std::vector<CPlotNames::Name> CPlotNames::NamesOf(int lane, const QRect& rect) const {
    std::vector<Name> names;
    const PlotPage& page = Canvas.Page();
    for (std::size_t i = 0; i < page.curves.size(); ++i) {
        const PlotCurve& curve = page.curves[i];
        if (Canvas.LaneOfAxis(curve.axis) != lane)
            continue;
        double y = rect.bottom() + 1.0; // switched off, or nothing to see: to the end of the list
        if (!Canvas.View().hidden.contains(curve.id)) {
            const PlotPoint* last = LastPoint(curve, Canvas.View().key);
            if (last)
                y = std::clamp(Canvas.ValuePixel(curve.axis, last->y),
                               static_cast<double>(rect.top()), static_cast<double>(rect.bottom()));
        }
        names.push_back({i, y});
    }
    std::stable_sort(names.begin(), names.end(),
                     [](const Name& a, const Name& b) { return a.y < b.y; });
    return names;
}

void CPlotNames::DrawLane(QCPPainter& painter, int lane) {
    const QRect rect = Canvas.LaneRect(lane);
    std::vector<Name> names = NamesOf(lane, rect);
    const double height = painter.fontMetrics().height();
    // Downwards each one below the one before, then upwards from the lower edge.
    double next = rect.top();
    for (Name& name : names) {
        name.y = std::max(name.y - height / 2, next);
        next = name.y + height;
    }
    double limit = rect.bottom() + height * 0.3;
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        name->y = std::min(name->y, limit - height);
        limit = name->y;
    }
    const double left = rect.right() + Canvas.UsedTheme().Px(5);
    for (const Name& name : names) {
        if (name.y < rect.top() - height / 2)
            continue; // more names than room; the menu has them all
        DrawName(painter, name, QRectF(left, name.y, Canvas.width() - left - 2, height),
                 Canvas.View().hidden.contains(Canvas.Page().curves[name.curve].id));
    }
}

void CPlotNames::DrawName(QCPPainter& painter, const Name& name, const QRectF& place, bool hidden) {
    const PlotCurve& curve = Canvas.Page().curves[name.curve];
    const int dash = Canvas.UsedTheme().Px(14);
    const double middle = place.center().y();
    QPen pen = Canvas.PenOf(name.curve);
    if (pen.style() == Qt::SolidLine)
        pen.setWidthF(std::max(pen.widthF(), 3.0));
    if (hidden)
        pen = QPen(QColor(Canvas.Colours().border), 1.0, Qt::DotLine);
    painter.setPen(pen);
    painter.drawLine(QLineF(place.left(), middle, place.left() + dash, middle));
    painter.setPen(QColor(hidden ? Canvas.Colours().text2 : Canvas.Colours().text));
    QFont font = Canvas.UsedTheme().Font(FontRole::Ticks);
    font.setStrikeOut(hidden);
    painter.setFont(font);
    const QRectF room = place.adjusted(dash + 4, 0, 0, 0);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(Shown(curve.title), Qt::ElideRight,
                                                      static_cast<int>(room.width())));
    Canvas.Labels.push_back({place, curve.id});
}

CPlotCursor::CPlotCursor(CPlotCanvas& canvas)
    : QCPLayerable(&canvas, QStringLiteral("cursor")), Canvas(canvas) {}

void CPlotCursor::applyDefaultAntialiasingHint(QCPPainter* painter) const {
    painter->setAntialiasing(false);
}

void CPlotCursor::draw(QCPPainter* painter) {
    const PlotView& view = Canvas.View();
    if (view.anchor)
        DrawLine(*painter, *view.anchor, Qt::DashLine);
    if (!view.cursor)
        return;
    DrawLine(*painter, *view.cursor, Qt::SolidLine);
    if (!view.readout.lines.empty() || !view.readout.place.empty())
        DrawReadout(*painter);
}

void CPlotCursor::DrawLine(QCPPainter& painter, double place, Qt::PenStyle style) const {
    const double at = Canvas.KeyPixel(place);
    painter.setPen(QPen(QColor(Canvas.Colours().accent), 1.0, style));
    for (int i = 0; i < Canvas.LaneCount(); ++i) {
        const QRect lane = Canvas.LaneRect(i);
        if (Canvas.Page().keyUpright) {
            if (at >= lane.top() && at <= lane.bottom())
                painter.drawLine(QLineF(lane.left(), at, lane.right(), at));
        } else if (at >= lane.left() && at <= lane.right()) {
            painter.drawLine(QLineF(at, lane.top(), at, lane.bottom()));
        }
    }
}

/// On the side of the cursor where there is room, the lines that fit.
void CPlotCursor::DrawReadout(QCPPainter& painter) const {
    const PlotView& view = Canvas.View();
    const CTheme& theme = Canvas.UsedTheme();
    painter.setFont(theme.Font(FontRole::Ticks));
    const QFontMetrics metrics = painter.fontMetrics();
    const QRect area = Canvas.LaneRect(0).united(Canvas.LaneRect(Canvas.LaneCount() - 1));
    const int margin = theme.Px(6), swatch = theme.Px(14), line = metrics.height();
    const auto room =
        static_cast<std::size_t>(std::max((area.height() - 3 * margin) / line - 1, 0));
    const std::size_t lines = std::min(view.readout.lines.size(), room);
    int width = metrics.horizontalAdvance(Shown(view.readout.place));
    for (std::size_t i = 0; i < lines; ++i)
        width =
            std::max(width, metrics.horizontalAdvance(Shown(view.readout.lines[i].text)) + swatch);
    QRect box(0, 0, width + 2 * margin, static_cast<int>(lines + 1) * line + margin);
    const auto at = static_cast<int>(Canvas.KeyPixel(*view.cursor));
    if (Canvas.Page().keyUpright) {
        const int below = at + margin, above = at - margin - box.height();
        box.moveTo(area.right() - box.width() - margin, above < area.top() ? below : above);
    } else {
        const int right = at + margin, left = at - margin - box.width();
        box.moveTo(right + box.width() > area.right() ? left : right, area.top() + margin);
    }
    const Tokens& colours = Canvas.Colours();
    painter.fillRect(box, QColor(colours.border));
    painter.fillRect(box.adjusted(1, 1, -1, -1), QColor(colours.window));
    painter.setPen(QColor(colours.text));
    int y = box.top() + margin / 2 + metrics.ascent();
    painter.drawText(QPoint(box.left() + margin, y), Shown(view.readout.place));
    for (std::size_t i = 0; i < lines; ++i) {
        y += line;
        const ReadoutLine& shown = view.readout.lines[i];
        if (shown.curve < Canvas.Page().curves.size()) {
            painter.setPen(Canvas.PenOf(shown.curve));
            const int middle = y - metrics.ascent() / 3;
            painter.drawLine(
                QLineF(box.left() + margin, middle, box.left() + margin + swatch - 4, middle));
        }
        painter.setPen(QColor(colours.text));
        painter.drawText(QPoint(box.left() + margin + swatch, y), Shown(shown.text));
    }
}

} // namespace qor
