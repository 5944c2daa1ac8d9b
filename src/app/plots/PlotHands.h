// SPDX-License-Identifier: GPL-3.0-or-later
//
// What hands do to a plot: mouse, wheel, touch and keys, turned into the widget's operations.
#pragma once

#include "app/plots/PlotCanvas.h"

#include <QObject>
#include <QPointF>
#include <QTimer>

class QKeyEvent;
class QMouseEvent;
class QRubberBand;
class QTouchEvent;
class QWheelEvent;

namespace qor {

class CPlotWidget;

/// A key of the plot, for the list of keys.
struct PlotKey {
    const char* keys;
    const char* text;
};
/// Source texts in the translation context "PlotKeys".
extern const std::vector<PlotKey> PlotKeys;

class CPlotHands : public QObject {
    Q_OBJECT

  public:
    CPlotHands(CPlotWidget& widget, CPlotCanvas& canvas);

    bool eventFilter(QObject* watched, QEvent* event) override;
    /// False: not a key of the plot.
    bool Key(const QKeyEvent& event);

  private:
    void Press(const QPoint& point, bool box);
    void Move(const QPoint& point);
    void Release(const QPoint& point);
    bool Touch(const QTouchEvent& event);
    void Pinch(const QTouchEvent& event);
    void DoubleClick(const QPoint& point);
    void OpenMenuAt(const QPoint& point);

    CPlotWidget& Widget;
    CPlotCanvas& Canvas;
    QTimer LongPress;
    QRubberBand* Box = nullptr;
    PlotPlace From;
    QPoint Start, Last;
    bool Held = false, Dragged = false, Pinching = false;
    double PinchDistance = 0.0;
    QPointF PinchMiddle;
};

} // namespace qor
