// SPDX-License-Identifier: GPL-3.0-or-later
//
// Limits, zoom, cursor and pause: how the operator looks at a page.
#include "app/plots/PlotWidget.h"

#include "app/ShownText.h"
#include "app/plots/PlotCanvas.h"
#include "app/plots/PlotHands.h"
#include "views/NumberText.h"

#include <QKeyEvent>
#include <QPainter>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qor {

namespace {

constexpr int FocusEdge = 2;
constexpr double ReachPart = 0.04; ///< how far from the cursor a value may lie

} // namespace

CPlotWidget::CPlotWidget(const CTheme& theme, QWidget* parent)
    : QWidget(parent), Theme(theme), View(std::make_unique<PlotView>()),
      Drawn(new CPlotCanvas(theme, theme.CurrentLook(), this)),
      Hands(new CPlotHands(*this, *Drawn)), Reset(new QToolButton(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 80);
    Drawn->setFocusPolicy(Qt::NoFocus);
    Reset->setText(tr("Reset"));
    Reset->setToolTip(tr("Limits were set by hand. Reset gives the plot back its own (Home)."));
    Reset->setFocusPolicy(Qt::NoFocus);
    Reset->hide();
    connect(Reset, &QToolButton::clicked, this, &CPlotWidget::ResetView);
    connect(&Theme, &CTheme::Changed, this, &CPlotWidget::TakeTheme);
    // Scales are equal for the room that was there; once it is laid out it may be another.
    connect(Drawn, &QCustomPlot::afterReplot, this, [this] {
        if (Current.sameScale && Drawn->LaneRect(0).size() != EqualFor)
            QMetaObject::invokeMethod(this, &CPlotWidget::Draw, Qt::QueuedConnection);
    });
    Clock.start();
}

CPlotWidget::~CPlotWidget() = default;

double CPlotWidget::Seconds() const {
    return static_cast<double>(Clock.elapsed()) / 1000.0;
}

void CPlotWidget::TakeTheme() {
    Drawn->SetLook(Theme.CurrentLook());
    Dirty = true;
    if (isVisible())
        Draw();
    update();
}

void CPlotWidget::ShowPage(const PlotPage& page) {
    if (Paused) {
        Coming = page;
        return;
    }
    Current = page;
    Dirty = true;
    if (isVisible())
        Draw();
}

void CPlotWidget::SetPaused(bool paused) {
    if (paused == Paused)
        return;
    Paused = paused;
    if (paused) {
        Coming = AtPause = Current;
        PausedSince.start();
    } else {
        Current = std::move(Coming);
        AtPause = {};
        Dirty = true;
        if (isVisible())
            Draw();
    }
    emit PausedChanged(paused);
}

void CPlotWidget::ShowDetail(const PlotPage& page) {
    if (!Paused || !ZoomedKeys() || Current.key.kind != AxisKind::Time)
        return;
    // Of the page only points: it may have other curves and axes by now.
    for (PlotCurve& curve : Current.curves) {
        const auto more = std::ranges::find_if(page.curves, [&curve](const PlotCurve& one) {
            return one.id == curve.id && one.units == curve.units;
        });
        if (more == page.curves.end())
            continue;
        curve.points = more->points;
        std::erase_if(curve.points, [last = AtPause.key.maximum](const PlotPoint& point) {
            return point.x > last;
        });
    }
    Draw();
}

std::optional<PlotRange> CPlotWidget::ZoomedKeys() const {
    const AxisChoice choice = Choice(KeyAxisNumber);
    return choice.mode == AxisMode::Fixed ? std::optional(PlotRange{choice.minimum, choice.maximum})
                                          : std::nullopt;
}

std::string CPlotWidget::PausedText() const {
    return Paused ? ElapsedText(static_cast<double>(PausedSince.elapsed()) / 1000.0)
                  : std::string();
}

PlotAxis CPlotWidget::AxisOf(int axis) const {
    return axis == KeyAxisNumber ? KeyAxis(Current)
                                 : ValueAxis(Current, static_cast<std::size_t>(axis));
}

CPlotWidget::AxisName CPlotWidget::NameOf(int axis) const {
    return {axis == KeyAxisNumber, AxisOf(axis).units};
}

PlotRange CPlotWidget::RangeOf(int axis, double now) {
    const AxisChoice choice = Choice(axis);
    const PlotAxis shown = AxisOf(axis);
    PlotRange range{shown.minimum, shown.maximum};
    if (choice.mode == AxisMode::Fixed)
        range = {choice.minimum, choice.maximum};
    else if (shown.automatic || choice.mode == AxisMode::Automatic)
        range = Automatic[NameOf(axis)].Follow(
            axis == KeyAxisNumber ? ExtentOfKey(Current, Off)
                                  : ExtentOfAxis(Current, static_cast<std::size_t>(axis), Off),
            shown, now);
    return UsableRange(range, shown);
}

PlotRange CPlotWidget::ShownRange(int axis) const {
    return axis == KeyAxisNumber ? View->key : View->values[static_cast<std::size_t>(axis)];
}

void CPlotWidget::Draw() {
    const double now = Seconds();
    const std::size_t axes = ValueAxisCount(Current);
    for (const auto& [axis, choice] : Choices()) {
        if (!choice.logarithmic)
            continue;
        if (axis == KeyAxisNumber)
            Current.key.logarithmic = *choice.logarithmic;
        else if (static_cast<std::size_t>(axis) < Current.axes.size())
            Current.axes[static_cast<std::size_t>(axis)].logarithmic = *choice.logarithmic;
    }
    View->hidden = Off;
    View->key = RangeOf(KeyAxisNumber, now);
    View->keyFixed = Choice(KeyAxisNumber).mode == AxisMode::Fixed;
    View->values.resize(axes);
    View->fixed.resize(axes);
    for (std::size_t i = 0; i < axes; ++i) {
        View->values[i] = RangeOf(static_cast<int>(i), now);
        View->fixed[i] = Choice(static_cast<int>(i)).mode == AxisMode::Fixed;
    }
    if (Current.sameScale && axes == 1) {
        const QRect lane = Drawn->LaneRect(0);
        EqualScales(View->key, View->values[0], lane.width(), lane.height());
        EqualFor = lane.size();
    }
    if (Mode != CursorMode::Off && View->cursor)
        UpdateReadout();
    Drawn->Show(Current, *View);
    Drawn->replot(QCustomPlot::rpQueuedReplot);
    Dirty = false;
    PlaceResetButton();
    // A screen reader asks for it at any time; once a second is fresh enough.
    if (!Described.isValid() || Described.elapsed() >= 1000) {
        setAccessibleName(Shown(Current.title));
        setAccessibleDescription(Shown(DescribePlot(Current, Off)));
        Described.start();
    }
}

AxisChoice CPlotWidget::Choice(int axis) const {
    const auto choice = Chosen.find(NameOf(axis));
    return choice == Chosen.end() ? AxisChoice() : choice->second;
}

std::map<int, AxisChoice> CPlotWidget::Choices() const {
    std::map<int, AxisChoice> choices;
    for (int axis = KeyAxisNumber; axis < static_cast<int>(ValueAxisCount(Current)); ++axis)
        if (const auto choice = Chosen.find(NameOf(axis)); choice != Chosen.end())
            choices[axis] = choice->second;
    return choices;
}

void CPlotWidget::SetChoice(int axis, const AxisChoice& choice) {
    if (Choice(axis).logarithmic != choice.logarithmic)
        Automatic[NameOf(axis)].Forget();
    Chosen[NameOf(axis)] = choice;
    Draw();
}

void CPlotWidget::Fix(int axis, PlotRange range) {
    AxisChoice choice = Choice(axis);
    choice.mode = AxisMode::Fixed;
    choice.minimum = range.lower;
    choice.maximum = range.upper;
    Chosen[NameOf(axis)] = choice;
}

void CPlotWidget::ZoomAxis(int axis, double at, double factor) {
    Fix(axis, ZoomedRange(ShownRange(axis), at, factor, AxisOf(axis)));
}

void CPlotWidget::ZoomAt(const QPoint& point, double factor, bool onlyAxisUnder) {
    if (View->values.empty())
        return;
    const PlotPlace place = Drawn->PlaceAt(point);
    const bool inside = !onlyAxisUnder || place.kind == PlotPlace::Kind::Inside;
    if (inside || place.kind == PlotPlace::Kind::Key)
        ZoomAxis(KeyAxisNumber, Drawn->KeyAt(point), factor);
    if (inside || place.kind == PlotPlace::Kind::Value)
        for (int axis = 0; axis < static_cast<int>(View->values.size()); ++axis)
            if (place.kind == PlotPlace::Kind::Value
                    ? axis == place.axis
                    : Drawn->LaneOfAxis(axis) == Drawn->LaneOfAxis(place.axis))
                ZoomAxis(axis, Drawn->ValueAt(axis, point), factor);
    Draw();
    emit ViewChanged();
}

void CPlotWidget::Zoom(double factor) {
    ZoomAt(Drawn->LaneRect(0).center(), factor, false);
}

void CPlotWidget::ZoomBox(const QRect& box) {
    const PlotPlace place = Drawn->PlaceAt(box.center());
    if (place.kind != PlotPlace::Kind::Inside)
        return;
    const auto between = [](double a, double b) {
        return PlotRange{std::min(a, b), std::max(a, b)};
    };
    Fix(KeyAxisNumber, between(Drawn->KeyAt(box.topLeft()), Drawn->KeyAt(box.bottomRight())));
    for (int axis = 0; axis < static_cast<int>(View->values.size()); ++axis)
        if (Drawn->LaneOfAxis(axis) == Drawn->LaneOfAxis(place.axis))
            Fix(axis, between(Drawn->ValueAt(axis, box.topLeft()),
                              Drawn->ValueAt(axis, box.bottomRight())));
    Draw();
    emit ViewChanged();
}

void CPlotWidget::PanBy(const QPoint& pixels, const PlotPlace& from) {
    if (View->values.empty())
        return;
    const QPoint start = Drawn->LaneRect(0).center(), end = start - pixels;
    const auto shift = [this](int axis, double a, double b) {
        Fix(axis, PannedRange(ShownRange(axis), a, b, AxisOf(axis)));
    };
    const bool inside = from.kind == PlotPlace::Kind::Inside;
    const bool upright = Current.keyUpright;
    // Along an axis on which the hand did not move, nothing is set by hand.
    const int alongKey = upright ? pixels.y() : pixels.x();
    const int alongValue = upright ? pixels.x() : pixels.y();
    if ((inside || from.kind == PlotPlace::Kind::Key) && alongKey != 0)
        shift(KeyAxisNumber, Drawn->KeyAt(start), Drawn->KeyAt(end));
    if ((inside || from.kind == PlotPlace::Kind::Value) && alongValue != 0)
        for (int axis = 0; axis < static_cast<int>(View->values.size()); ++axis)
            if (inside ? Drawn->LaneOfAxis(axis) == Drawn->LaneOfAxis(from.axis)
                       : axis == from.axis)
                shift(axis, Drawn->ValueAt(axis, start), Drawn->ValueAt(axis, end));
    Draw();
    emit ViewChanged();
}

void CPlotWidget::ResetView() {
    for (auto& [axis, choice] : Chosen)
        choice.mode = AxisMode::AsPage;
    for (auto& [axis, range] : Automatic)
        range.Forget();
    if (Paused)
        Current = AtPause;
    Draw();
    emit ViewChanged();
}

void CPlotWidget::SetAutomatic() {
    for (int axis = 0; axis < static_cast<int>(View->values.size()); ++axis) {
        Chosen[NameOf(axis)].mode = AxisMode::Automatic;
        Automatic[NameOf(axis)].Forget();
    }
    Draw();
    emit ViewChanged();
}

void CPlotWidget::ToggleLog(int axis) {
    AxisChoice choice = Choice(axis);
    choice.logarithmic = !AxisOf(axis).logarithmic;
    choice.mode = choice.mode == AxisMode::Fixed ? AxisMode::AsPage : choice.mode;
    SetChoice(axis, choice);
    emit ViewChanged();
}

bool CPlotWidget::IsZoomed() const {
    return std::ranges::any_of(
        Choices(), [](const auto& entry) { return entry.second.mode == AxisMode::Fixed; });
}

void CPlotWidget::SetHidden(HiddenCurves hidden) {
    Off = std::move(hidden);
    Draw();
}

void CPlotWidget::ToggleCurve(std::uint64_t curve) {
    if (!Off.insert(curve).second)
        Off.erase(curve);
    Draw();
    emit ViewChanged();
}

void CPlotWidget::SetCursor(CursorMode mode) {
    Mode = mode;
    View->anchor.reset();
    if (mode == CursorMode::Off) {
        View->cursor.reset();
        View->readout = {};
    } else if (!View->cursor) {
        View->cursor = View->key.lower + View->key.Size() / 2.0;
    }
    if (mode == CursorMode::Difference)
        View->anchor = View->cursor;
    if (View->cursor)
        UpdateReadout();
    Drawn->ShowCursor(*View);
    emit ViewChanged();
}

void CPlotWidget::MoveCursor(const QPoint& point) {
    if (Mode == CursorMode::Off || Drawn->LaneCount() == 0)
        return;
    View->cursor = std::clamp(Drawn->KeyAt(point), View->key.lower, View->key.upper);
    UpdateReadout();
    Drawn->ShowCursor(*View);
}

void CPlotWidget::UpdateReadout() {
    View->readout =
        ReadoutAt(Current, *View->cursor, View->key.Size() * ReachPart, Off, View->anchor);
}

const PlotReadout& CPlotWidget::Readout() const {
    return View->readout;
}

void CPlotWidget::PlaceResetButton() {
    Reset->setVisible(IsZoomed());
    if (!Reset->isVisible())
        return;
    Reset->adjustSize();
    const QRect lane = Drawn->LaneRect(0);
    const QPoint corner = lane.isEmpty() ? QPoint(size::Between, size::Between) : lane.topLeft();
    Reset->move(Drawn->pos() + corner + QPoint(size::Grid, size::Grid));
    Reset->raise();
}

void CPlotWidget::keyPressEvent(QKeyEvent* event) {
    if (!Hands->Key(*event))
        QWidget::keyPressEvent(event);
}

void CPlotWidget::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void CPlotWidget::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

void CPlotWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Drawn->setGeometry(rect().adjusted(FocusEdge, FocusEdge, -FocusEdge, -FocusEdge));
    emit CanvasResized(Drawn->size());
    PlaceResetButton();
}

void CPlotWidget::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (Dirty)
        Draw();
}

void CPlotWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(hasFocus() ? Theme.Colours().accent : Theme.Colours().base));
}

} // namespace qor
