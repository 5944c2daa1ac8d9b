// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/plots/PlotHands.h"

#include "app/plots/PlotWidget.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRubberBand>
#include <QTouchEvent>
#include <QWheelEvent>

#include <cmath>

namespace qor {

namespace {

constexpr int LongPressMilliseconds = 600;
constexpr double WheelStep = 0.85; ///< a notch of the wheel
constexpr double KeyZoom = 0.8;
constexpr int KeyPanPixels = 40;
constexpr int LeastBox = 8;

double Length(const QPointF& vector) {
    return std::hypot(vector.x(), vector.y());
}

} // namespace

const std::vector<PlotKey> PlotKeys{
    {"Space", QT_TRANSLATE_NOOP("PlotKeys", "Pause the plot, and go on with what came meanwhile")},
    {"Home", QT_TRANSLATE_NOOP("PlotKeys", "Reset zoom and limits")},
    {"+ -", QT_TRANSLATE_NOOP("PlotKeys", "Zoom in and out")},
    {"Arrows", QT_TRANSLATE_NOOP("PlotKeys", "Move the visible part")},
    {"A", QT_TRANSLATE_NOOP("PlotKeys", "Automatic limits")},
    {"L", QT_TRANSLATE_NOOP("PlotKeys", "Logarithmic axis on and off")},
    {"C", QT_TRANSLATE_NOOP("PlotKeys", "Cursor, then difference from here, then off")},
    {"Ctrl+C", QT_TRANSLATE_NOOP("PlotKeys", "Copy the picture")},
    {"Ctrl+Shift+C", QT_TRANSLATE_NOOP("PlotKeys", "Copy the visible data")},
    {"Ctrl+E", QT_TRANSLATE_NOOP("PlotKeys", "Save the picture or the visible data")},
    {"Shift+F10", QT_TRANSLATE_NOOP("PlotKeys", "Menu of the plot")},
};

CPlotHands::CPlotHands(CPlotWidget& widget, CPlotCanvas& canvas)
    : QObject(&widget), Widget(widget), Canvas(canvas) {
    LongPress.setSingleShot(true);
    LongPress.setInterval(LongPressMilliseconds);
    connect(&LongPress, &QTimer::timeout, this, [this] {
        Held = false;
        OpenMenuAt(Last);
    });
    Canvas.setMouseTracking(true);
    Canvas.setAttribute(Qt::WA_AcceptTouchEvents);
    Canvas.installEventFilter(this);
}

void CPlotHands::OpenMenuAt(const QPoint& point) {
    emit Widget.MenuAsked(Canvas.mapToGlobal(point));
}

bool CPlotHands::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        Widget.setFocus(Qt::MouseFocusReason);
        if (mouse->button() == Qt::LeftButton)
            Press(mouse->position().toPoint(), mouse->modifiers() & Qt::ShiftModifier);
        return true;
    }
    case QEvent::MouseMove:
        Move(static_cast<QMouseEvent*>(event)->position().toPoint());
        return true;
    case QEvent::MouseButtonRelease:
        if (static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
            Release(static_cast<QMouseEvent*>(event)->position().toPoint());
        return true;
    case QEvent::MouseButtonDblClick:
        DoubleClick(static_cast<QMouseEvent*>(event)->position().toPoint());
        return true;
    case QEvent::Wheel: {
        const auto* wheel = static_cast<QWheelEvent*>(event);
        const double notches = wheel->angleDelta().y() / 120.0;
        if (notches != 0.0)
            Widget.ZoomAt(wheel->position().toPoint(), std::pow(WheelStep, notches), true);
        return true;
    }
    case QEvent::ContextMenu:
        OpenMenuAt(static_cast<QContextMenuEvent*>(event)->pos());
        return true;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return Touch(*static_cast<QTouchEvent*>(event));
    default: // no enum of ours: a key of Qt
        return QObject::eventFilter(watched, event);
    }
}

void CPlotHands::Press(const QPoint& point, bool box) {
    From = Canvas.PlaceAt(point);
    Start = Last = point;
    Held = true;
    Dragged = false;
    if (box && From.kind == PlotPlace::Kind::Inside) {
        if (!Box)
            Box = new QRubberBand(QRubberBand::Rectangle, &Canvas);
        Box->setGeometry(QRect(Start, QSize()));
        Box->show();
    }
}

void CPlotHands::Move(const QPoint& point) {
    Widget.MoveCursor(point);
    if (!Held)
        return;
    if (!Dragged && (point - Start).manhattanLength() < QApplication::startDragDistance() / 2)
        return;
    Dragged = true;
    LongPress.stop();
    if (Box && Box->isVisible())
        Box->setGeometry(QRect(Start, point).normalized());
    else
        Widget.PanBy(point - Last, From);
    Last = point;
}

void CPlotHands::Release(const QPoint& point) {
    LongPress.stop();
    if (!Held)
        return;
    Held = false;
    if (Box && Box->isVisible()) {
        Box->hide();
        const QRect box = QRect(Start, point).normalized();
        if (box.width() >= LeastBox && box.height() >= LeastBox)
            Widget.ZoomBox(box);
    } else if (!Dragged && From.kind == PlotPlace::Kind::Label) {
        Widget.ToggleCurve(From.curve);
    }
}

void CPlotHands::DoubleClick(const QPoint& point) {
    const PlotPlace place = Canvas.PlaceAt(point);
    switch (place.kind) {
    case PlotPlace::Kind::Key:
        Widget.AskRange(KeyAxisNumber);
        break;
    case PlotPlace::Kind::Value:
        Widget.AskRange(place.axis);
        break;
    case PlotPlace::Kind::Label:
        Widget.ToggleCurve(place.curve);
        break;
    case PlotPlace::Kind::Inside:
    case PlotPlace::Kind::Nothing:
        Widget.ResetView();
        break;
    }
}

/// One finger drags, reads out with a tap and opens the menu when it rests; two pinch.
bool CPlotHands::Touch(const QTouchEvent& event) {
    const auto& points = event.points();
    if (event.type() == QEvent::TouchCancel || points.isEmpty()) {
        Held = Pinching = false;
        LongPress.stop();
        return true;
    }
    if (points.size() >= 2) {
        Pinch(event);
        return true;
    }
    const QPoint point = points.front().position().toPoint();
    if (event.type() == QEvent::TouchBegin) {
        Widget.setFocus(Qt::MouseFocusReason);
        Press(point, false);
        LongPress.start();
    } else if (event.type() == QEvent::TouchUpdate && !Pinching) {
        Move(point);
    } else if (event.type() == QEvent::TouchEnd) {
        const bool tap = Held && !Dragged && !Pinching && From.kind == PlotPlace::Kind::Inside;
        Release(point);
        if (tap && Widget.Cursor() == CPlotWidget::CursorMode::Off)
            Widget.SetCursor(CPlotWidget::CursorMode::On);
        if (tap)
            Widget.MoveCursor(point);
        Pinching = false;
    }
    return true;
}

void CPlotHands::Pinch(const QTouchEvent& event) {
    LongPress.stop();
    Held = false;
    const QPointF a = event.points()[0].position(), b = event.points()[1].position();
    const QPointF middle = (a + b) / 2.0;
    const double distance = std::max(Length(a - b), 1.0);
    if (Pinching) {
        const PlotPlace inside{PlotPlace::Kind::Inside, Canvas.PlaceAt(middle.toPoint()).axis, 0};
        Widget.PanBy((middle - PinchMiddle).toPoint(), inside);
        Widget.ZoomAt(middle.toPoint(), PinchDistance / distance, false);
    }
    Pinching = event.type() != QEvent::TouchEnd;
    PinchDistance = distance;
    PinchMiddle = middle;
}

bool CPlotHands::Key(const QKeyEvent& event) {
    using Mode = CPlotWidget::CursorMode;
    const bool control = event.modifiers() & Qt::ControlModifier;
    const bool shift = event.modifiers() & Qt::ShiftModifier;
    const PlotPlace inside{PlotPlace::Kind::Inside, 0, 0};
    if (control) {
        if (event.key() == Qt::Key_C && shift)
            Widget.CopyData();
        else if (event.key() == Qt::Key_C)
            Widget.CopyPicture();
        else if (event.key() == Qt::Key_E)
            emit Widget.ExportAsked();
        else
            return false;
        return true;
    }
    switch (event.key()) {
    case Qt::Key_Space:
        Widget.SetPaused(!Widget.IsPaused());
        return true;
    case Qt::Key_Home:
        Widget.ResetView();
        return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
        Widget.Zoom(KeyZoom);
        return true;
    case Qt::Key_Minus:
        Widget.Zoom(1.0 / KeyZoom);
        return true;
    case Qt::Key_Left:
        Widget.PanBy({KeyPanPixels, 0}, inside);
        return true;
    case Qt::Key_Right:
        Widget.PanBy({-KeyPanPixels, 0}, inside);
        return true;
    case Qt::Key_Up:
        Widget.PanBy({0, KeyPanPixels}, inside);
        return true;
    case Qt::Key_Down:
        Widget.PanBy({0, -KeyPanPixels}, inside);
        return true;
    case Qt::Key_A:
        Widget.SetAutomatic();
        return true;
    case Qt::Key_L:
        Widget.ToggleLog();
        return true;
    case Qt::Key_C:
        Widget.SetCursor(Widget.Cursor() == Mode::Off  ? Mode::On
                         : Widget.Cursor() == Mode::On ? Mode::Difference
                                                       : Mode::Off);
        return true;
    case Qt::Key_Menu:
    case Qt::Key_F10:
        if (event.key() == Qt::Key_F10 && !shift)
            return false;
        OpenMenuAt(Canvas.LaneRect(0).topLeft());
        return true;
    default: // no enum of ours: a key of Qt
        return false;
    }
}

} // namespace qor
