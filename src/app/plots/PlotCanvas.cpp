// SPDX-License-Identifier: GPL-3.0-or-later
//
// The layout of lanes and axes, and the curves.
#include "app/plots/PlotCanvas.h"

#include "app/ShownText.h"
#include "app/plots/PlotMarks.h"

#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>

namespace qor {

namespace {

constexpr double Gap = std::numeric_limits<double>::quiet_NaN();
constexpr double ThinWidth = 1.0, BroadWidth = 1.5, PickedWidth = 2.5;
constexpr int NamesFrom = 2; ///< a plot of fewer curves is named by its title

bool Joined(const PlotPoint& point) {
    return point.valid && !std::isnan(point.y);
}

/// Steps that clocks have, with labels that tell each step from the next.
class CTimeTicker : public QCPAxisTickerDateTime {
  protected:
    double getTickStep(const QCPRange& range) override {
        constexpr double Minute = 60.0, Hour = 3600.0, Day = 86400.0;
        constexpr double Steps[] = {
            0.1,     0.5,      1.0,        2.0,        5.0,         10.0,        15.0,
            30.0,    Minute,   2 * Minute, 5 * Minute, 10 * Minute, 15 * Minute, 30 * Minute,
            Hour,    2 * Hour, 3 * Hour,   6 * Hour,   12 * Hour,   Day,         2 * Day,
            7 * Day, 14 * Day, 30 * Day,   90 * Day,   365.0 * Day, 3650 * Day,  36500.0 * Day};
        const double wanted = 0.75 * range.size() / mTickCount;
        const auto step = std::lower_bound(std::begin(Steps), std::prev(std::end(Steps)), wanted);
        mDateTimeFormat = *step < 1.0      ? QStringLiteral("HH:mm:ss.z")
                          : *step < Minute ? QStringLiteral("HH:mm:ss")
                          : *step < Day    ? QStringLiteral("HH:mm")
                                           : QStringLiteral("yyyy-MM-dd");
        mDateStrategy = dsNone;
        return std::max(*step, wanted); // beyond the longest step there are as few as ever
    }
};

/// Marks for points, hollow or filled, in a curve's own colour.
QCPScatterStyle Mark(const QColor& colour, bool filled, double size) {
    return {QCPScatterStyle::ssCircle, QPen(colour, 1.2),
            filled ? QBrush(colour) : QBrush(Qt::NoBrush), size};
}

} // namespace

CPlotCanvas::CPlotCanvas(const CTheme& theme, Look look, QWidget* parent)
    : QCustomPlot(parent), Theme(theme), Shown(look) {
    setLocale(QLocale::c());
    setPlottingHint(QCP::phFastPolylines, true);
    plotLayout()->clear();
    plotLayout()->setRowSpacing(Theme.Px(6));
    setAutoAddPlottableToLegend(false);
    addLayer(QStringLiteral("names"), layer(QStringLiteral("axes")), limAbove);
    addLayer(QStringLiteral("cursor"), layer(QStringLiteral("names")), limAbove);
    layer(QStringLiteral("cursor"))->setMode(QCPLayer::lmBuffered);
    // Owned by the plot's layers.
    new CPlotGround(*this);
    new CPlotNames(*this);
    new CPlotCursor(*this);
    connect(this, &QCustomPlot::afterReplot, this, &CPlotCanvas::KeepLeftEdge);
}

void CPlotCanvas::SetLook(Look look) {
    Shown = look;
    Styled = false;
}

CPlotCanvas::Shape CPlotCanvas::ShapeOf(const PlotPage& page) {
    Shape shape;
    // Limits are set anew each time and are no matter of layout.
    const auto plain = [](PlotAxis axis) {
        axis.minimum = axis.maximum = 0.0;
        axis.automatic = false;
        return axis;
    };
    for (std::size_t i = 0; i < ValueAxisCount(page); ++i)
        shape.axes.push_back(plain(ValueAxis(page, i)));
    shape.key = plain(KeyAxis(page));
    shape.keyUpright = page.keyUpright;
    for (const PlotCurve& curve : page.curves) {
        shape.curves.emplace_back(curve.axis, curve.loops);
        shape.styles.push_back(curve.style);
    }
    return shape;
}

void CPlotCanvas::Show(const PlotPage& page, const PlotView& view) {
    Current = page;
    Seen = view;
    Shape shape = ShapeOf(page);
    if (!(shape == Built) || !Styled || Lanes.empty()) {
        Built = std::move(shape);
        Build();
    }
    for (std::size_t i = 0; i < Curves.size(); ++i)
        FillCurve(i);
    ApplyRanges();
}

void CPlotCanvas::Build() {
    Styled = true;
    clearPlottables();
    Curves.clear();
    Labels.clear();
    LeftEdge = 0;
    for (QCPAxisRect* lane : Lanes)
        plotLayout()->remove(lane);
    if (NamesRow)
        plotLayout()->remove(NamesRow);
    NamesRow = nullptr;
    plotLayout()->simplify();
    Lanes.clear();
    Keys.clear();
    Values.assign(Built.axes.size(), nullptr);
    setBackground(QBrush(QColor(Colours().base)));

    delete Sides;
    Sides = new QCPMarginGroup(this);
    if (Built.keyUpright) {
        NamesRow = new QCPLayoutElement(this);
        plotLayout()->addElement(0, 0, NamesRow);
    }
    std::set<int> lanes;
    for (const PlotAxis& axis : Built.axes)
        lanes.insert(axis.lane);
    for (const int lane : lanes)
        BuildLane(lane);
    for (std::size_t i = 0; i + 1 < Keys.size(); ++i)
        Keys[i]->setTickLabels(false);
    BuildCurves();
}

void CPlotCanvas::BuildLane(int lane) {
    auto* rect = new QCPAxisRect(this, false);
    plotLayout()->addElement(plotLayout()->rowCount(), 0, rect);
    rect->setAutoMargins(QCP::msLeft | QCP::msTop | QCP::msBottom);
    rect->setMinimumMargins(QMargins(0, 0, 0, 0));
    rect->setMarginGroup(QCP::msLeft, Sides);
    rect->setMargins(QMargins(0, 0, Theme.Px(12), 0));
    rect->setMinimumSize(Theme.Px(40), Theme.Px(24));
    QCPAxis* key = rect->addAxis(Built.keyUpright ? QCPAxis::atLeft : QCPAxis::atBottom);
    StyleAxis(*key, Built.key);
    key->grid()->setVisible(true);
    int place = 0;
    for (std::size_t i = 0; i < Built.axes.size(); ++i) {
        if (Built.axes[i].lane != lane)
            continue;
        const QCPAxis::AxisType type = !Built.keyUpright ? QCPAxis::atLeft
                                       : place % 2 == 0  ? QCPAxis::atBottom
                                                         : QCPAxis::atTop;
        ++place;
        QCPAxis* axis = rect->addAxis(type);
        StyleAxis(*axis, Built.axes[i]);
        axis->grid()->setVisible(place == 1);
        Values[i] = axis;
    }
    Lanes.push_back(rect);
    Keys.push_back(key);
}

void CPlotCanvas::StyleAxis(QCPAxis& axis, const PlotAxis& shown) const {
    const QPen line(QColor(Colours().border), 1.0);
    axis.setBasePen(line);
    axis.setTickPen(line);
    axis.setSubTickPen(line);
    axis.setSubTicks(shown.logarithmic);
    axis.setTickLabelFont(Theme.Font(FontRole::Ticks));
    axis.setLabelFont(Theme.Font(FontRole::Ticks));
    axis.setTickLabelColor(QColor(Colours().text));
    axis.setLabelColor(QColor(Colours().text));
    axis.setTickLabelPadding(Theme.Px(4));
    axis.setLabelPadding(Theme.Px(2));
    axis.grid()->setPen(QPen(QColor(Colours().grid), 1.0));
    axis.grid()->setZeroLinePen(Qt::NoPen);
    axis.setLayer(QStringLiteral("axes"));
    axis.grid()->setLayer(QStringLiteral("grid"));
    axis.setRangeReversed(shown.reversed);
    axis.setScaleType(shown.logarithmic ? QCPAxis::stLogarithmic : QCPAxis::stLinear);
    SetTicker(axis, shown);
}

void CPlotCanvas::SetTicker(QCPAxis& axis, const PlotAxis& shown) const {
    axis.setNumberFormat(QStringLiteral("gb"));
    axis.setNumberPrecision(6);
    if (shown.kind == AxisKind::Time) {
        const QSharedPointer<CTimeTicker> ticker(new CTimeTicker);
        ticker->setDateTimeSpec(Qt::TimeZone);
        ticker->setTimeZone(QTimeZone(shown.zoneMinutes * 60));
        axis.setTicker(ticker);
    } else if (shown.logarithmic) {
        axis.setTicker(QSharedPointer<QCPAxisTickerLog>(new QCPAxisTickerLog));
    } else {
        axis.setTicker(QSharedPointer<QCPAxisTicker>(new QCPAxisTicker));
    }
}

QCPAxis* CPlotCanvas::KeyOf(int valueAxis) const {
    return Keys[static_cast<std::size_t>(LaneOfAxis(valueAxis))];
}

int CPlotCanvas::LaneOfAxis(int axis) const {
    const QCPAxis* value = Values[static_cast<std::size_t>(axis)];
    const auto lane = std::find(Lanes.begin(), Lanes.end(), value->axisRect());
    return static_cast<int>(lane - Lanes.begin());
}

QRect CPlotCanvas::LaneRect(int lane) const {
    return lane < LaneCount() ? Lanes[static_cast<std::size_t>(lane)]->rect() : QRect();
}

QPen CPlotCanvas::PenOf(std::size_t index) const {
    const PlotCurve& curve = Current.curves[index];
    const double width = curve.picked ? PickedWidth : curve.broad ? BroadWidth : ThinWidth;
    if (curve.frozen)
        return {QColor(Colours().stale), ThinWidth};
    switch (curve.role) {
    case CurveRole::Series:
        return SeriesPen(Shown, static_cast<int>(curve.place), width);
    case CurveRole::Wavelength:
        return WavelengthPen(Shown, curve.place, static_cast<int>(index), width);
    case CurveRole::Reference:
        // At night its colour is that of the first series.
        return {QColor(Colours().text), Shown == Look::Night ? PickedWidth : width};
    case CurveRole::PreviousCast:
        return {QColor(Colours().stale), ThinWidth, Qt::DashLine};
    }
    return {};
}

void CPlotCanvas::BuildCurves() {
    for (const PlotCurve& curve : Current.curves) {
        const int last = static_cast<int>(Values.size()) - 1;
        const int axis = std::clamp(curve.axis, 0, last);
        QCPAxis *key = KeyOf(axis), *value = Values[static_cast<std::size_t>(axis)];
        Plotted plotted;
        if (curve.loops) {
            plotted.line = new QCPCurve(key, value);
        } else {
            plotted.line = new QCPGraph(key, value);
        }
        const auto marks = [key, value] {
            auto* graph = new QCPGraph(key, value);
            graph->setLineStyle(QCPGraph::lsNone);
            return graph;
        };
        plotted.marks = marks();
        plotted.lone = marks();
        Curves.push_back(plotted);
    }
}

void CPlotCanvas::FillCurve(std::size_t index) {
    const PlotCurve& curve = Current.curves[index];
    const Plotted& plotted = Curves[index];
    const bool shown = !Seen.hidden.contains(curve.id);
    plotted.line->setVisible(shown);
    plotted.marks->setVisible(shown);
    plotted.lone->setVisible(shown);
    if (!shown)
        return;
    const bool points = curve.style == CurveStyle::Points;
    const QPen pen = PenOf(index);
    plotted.line->setPen(pen);
    plotted.marks->setScatterStyle(Mark(pen.color(), false, Theme.Px(7)));
    plotted.lone->setScatterStyle(Mark(pen.color(), true, Theme.Px(points ? 5 : 3)));

    QVector<QCPGraphData> hollow, lone, line;
    QVector<QCPCurveData> loop;
    const std::size_t count = curve.points.size();
    (curve.loops ? loop.reserve(static_cast<qsizetype>(count))
                 : line.reserve(static_cast<qsizetype>(count)));
    for (std::size_t i = 0; i < count; ++i) {
        const PlotPoint& point = curve.points[i];
        const double y = Joined(point) ? point.y : Gap;
        if (curve.loops)
            loop.append(QCPCurveData(static_cast<double>(i), point.x, y));
        else
            line.append(QCPGraphData(point.x, y));
        const bool before = i > 0 && Joined(curve.points[i - 1]);
        const bool behind = i + 1 < count && Joined(curve.points[i + 1]);
        if (!point.valid && !std::isnan(point.y))
            hollow.append(QCPGraphData(point.x, point.y));
        else if (Joined(point) && (points || (!before && !behind)))
            lone.append(QCPGraphData(point.x, point.y));
    }
    if (auto* asCurve = qobject_cast<QCPCurve*>(plotted.line)) {
        asCurve->data()->set(loop, true);
        asCurve->setLineStyle(points ? QCPCurve::lsNone : QCPCurve::lsLine);
    } else if (auto* asGraph = qobject_cast<QCPGraph*>(plotted.line)) {
        asGraph->data()->set(line, true);
        asGraph->setLineStyle(points ? QCPGraph::lsNone : QCPGraph::lsLine);
    }
    plotted.marks->data()->set(hollow, !curve.loops);
    plotted.lone->data()->set(lone, !curve.loops);
}

/// As wide as the longest name, at most a third of the plot.
int CPlotCanvas::GutterWidth() const {
    if (Current.curves.size() < NamesFrom || Built.keyUpright)
        return Theme.Px(12);
    const QFontMetrics metrics(Theme.Font(FontRole::Ticks));
    int widest = 0;
    for (const PlotCurve& curve : Current.curves)
        widest = std::max(widest, metrics.horizontalAdvance(qor::Shown(curve.title)));
    return std::min(widest + Theme.Px(30), width() / 3);
}

/// Upright plots are narrow: their names stand in lines above them.
int CPlotCanvas::NamesAbove() const {
    if (!Built.keyUpright || Current.curves.size() < NamesFrom)
        return 0;
    const QFontMetrics metrics(Theme.Font(FontRole::Ticks));
    int lines = 1, used = 0;
    for (const PlotCurve& curve : Current.curves) {
        const int name = NameWidth(metrics, curve);
        const bool wraps = used > 0 && used + name > width();
        lines += wraps ? 1 : 0;
        used = wraps ? name : used + name;
    }
    return lines * metrics.height() + Theme.Px(4);
}

int CPlotCanvas::NameWidth(const QFontMetrics& metrics, const PlotCurve& curve) const {
    return metrics.horizontalAdvance(qor::Shown(curve.title)) + Theme.Px(34);
}

QRect CPlotCanvas::NamesRect() const {
    return NamesRow ? NamesRow->outerRect() : QRect();
}

/// The title that an axis of that length has room for: whole, its unit alone, or none.
QString CPlotCanvas::FittingTitle(const PlotAxis& axis, bool fixed, double length) const {
    const QFontMetrics metrics(Theme.Font(FontRole::Ticks));
    QString title = ShownInLanguage(AxisTitle(axis));
    if (fixed)
        title = tr("%1, fixed", "axis title").arg(title);
    if (metrics.horizontalAdvance(title) <= length)
        return title;
    title = axis.units.empty() ? QString() : QStringLiteral("[%1]").arg(qor::Shown(axis.units));
    return metrics.horizontalAdvance(title) <= length ? title : QString();
}

/// About how long axes will be: they are laid out only when everything is drawn.
double CPlotCanvas::AxisLength(bool upright) const {
    const int beside = LeftEdge > 0 ? LeftEdge : Theme.Px(56);
    if (!upright)
        return viewport().width() - beside - GutterWidth();
    const int ends = Theme.Px(Built.keyUpright ? 92 : 48) + NamesAbove();
    return static_cast<double>(viewport().height() - ends) /
               static_cast<double>(std::max<std::size_t>(Lanes.size(), 1)) -
           Theme.Px(6);
}

void CPlotCanvas::ApplyTicks(QCPAxis& axis, const PlotAxis& shown, bool fixed, bool upright) const {
    const double length = AxisLength(upright);
    if (!shown.logarithmic)
        axis.ticker()->setTickCount(
            std::clamp(static_cast<int>(length / Theme.Px(upright ? 40 : 90)), 1, 10));
    axis.setLabel(FittingTitle(shown, fixed, length));
}

void CPlotCanvas::ApplyRanges() {
    const int gutter = GutterWidth();
    for (QCPAxisRect* lane : Lanes) {
        QMargins margins = lane->margins();
        margins.setRight(gutter);
        lane->setMargins(margins);
        lane->setMinimumMargins(QMargins(LeftEdge, 0, 0, 0));
    }
    if (NamesRow) {
        const int height = NamesAbove();
        NamesRow->setMinimumSize(0, height);
        NamesRow->setMaximumSize(QWIDGETSIZE_MAX, height);
    }
    for (QCPAxis* key : Keys) {
        key->setRange(Seen.key.lower, Seen.key.upper);
        ApplyTicks(*key, Built.key, Seen.keyFixed, Built.keyUpright);
        if (key != Keys.back())
            key->setLabel({});
    }
    for (std::size_t i = 0; i < Values.size() && i < Seen.values.size(); ++i) {
        Values[i]->setRange(Seen.values[i].lower, Seen.values[i].upper);
        ApplyTicks(*Values[i], Built.axes[i], Seen.fixed[i], !Built.keyUpright);
    }
}

/// Room that was once needed for tick labels stays, so that the plot does not jump with its digits.
void CPlotCanvas::KeepLeftEdge() {
    for (const QCPAxisRect* lane : Lanes)
        LeftEdge = std::max(LeftEdge, lane->margins().left());
}

void CPlotCanvas::resizeEvent(QResizeEvent* event) {
    QCustomPlot::resizeEvent(event);
    if (Lanes.empty())
        return;
    // Ticks and titles are chosen for the room that there is now.
    ApplyRanges();
    replot(rpQueuedReplot);
}

void CPlotCanvas::ShowCursor(const PlotView& view) {
    Seen.cursor = view.cursor;
    Seen.anchor = view.anchor;
    Seen.readout = view.readout;
    layer(QStringLiteral("cursor"))->replot();
}

void CPlotCanvas::AddTitle(const QString& title, const QString& foot) {
    const auto line = [this](const QString& text, FontRole role) {
        QFont font = Theme.Font(role);
        auto* element = new QCPTextElement(this, text, font);
        element->setTextColor(QColor(Colours().text));
        element->setTextFlags(Qt::AlignLeft | Qt::TextSingleLine);
        element->setMargins(QMargins(Theme.Px(6), Theme.Px(4), Theme.Px(6), Theme.Px(4)));
        return element;
    };
    plotLayout()->insertRow(0);
    plotLayout()->addElement(0, 0, line(title, FontRole::Tool));
    if (!foot.isEmpty())
        plotLayout()->addElement(plotLayout()->rowCount(), 0, line(foot, FontRole::Ticks));
}

PlotPlace CPlotCanvas::PlaceAt(const QPoint& point) const {
    for (const LabelBox& label : Labels)
        if (label.place.contains(point))
            return {PlotPlace::Kind::Label, 0, label.curve};
    for (std::size_t i = 0; i < Values.size(); ++i)
        if (Values[i]->getPartAt(point) != QCPAxis::spNone)
            return {PlotPlace::Kind::Value, static_cast<int>(i), 0};
    for (const QCPAxis* key : Keys)
        if (key->getPartAt(point) != QCPAxis::spNone)
            return {PlotPlace::Kind::Key, 0, 0};
    for (std::size_t i = 0; i < Values.size(); ++i)
        if (Values[i]->axisRect()->rect().contains(point))
            return {PlotPlace::Kind::Inside, static_cast<int>(i), 0};
    return {};
}

double CPlotCanvas::KeyAt(const QPoint& point) const {
    return Keys.empty() ? 0.0
                        : Keys.front()->pixelToCoord(Built.keyUpright ? point.y() : point.x());
}

double CPlotCanvas::ValueAt(int axis, const QPoint& point) const {
    return Values[static_cast<std::size_t>(axis)]->pixelToCoord(Built.keyUpright ? point.x()
                                                                                 : point.y());
}

double CPlotCanvas::KeyPixel(double key) const {
    return Keys.empty() ? 0.0 : Keys.front()->coordToPixel(key);
}

double CPlotCanvas::ValuePixel(int axis, double value) const {
    return Values[static_cast<std::size_t>(axis)]->coordToPixel(value);
}

} // namespace qor
