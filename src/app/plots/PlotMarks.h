// SPDX-License-Identifier: GPL-3.0-or-later
//
// What stands on a plot beside its curves: shaded limits, marked places and the colours of light
// below; the curves' names at their ends; the cursor with its values above. Drawn by QCustomPlot
// with everything else, so that pictures have them too.
#pragma once

#include "app/plots/PlotCanvas.h"

namespace qor {

/// Shaded limits, markers, the strip of colours.
class CPlotGround : public QCPLayerable {
    Q_OBJECT

  public:
    explicit CPlotGround(CPlotCanvas& canvas);

  protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override;
    void draw(QCPPainter* painter) override;

  private:
    void DrawBand(QCPPainter& painter, const PlotBand& band) const;
    void DrawMarker(QCPPainter& painter, const PlotMarker& marker) const;
    void DrawLight(QCPPainter& painter) const;

    CPlotCanvas& Canvas;
};

/// Each curve's name where it ends, moved apart; those switched off are listed below.
class CPlotNames : public QCPLayerable {
    Q_OBJECT

  public:
    explicit CPlotNames(CPlotCanvas& canvas);

  protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override;
    void draw(QCPPainter* painter) override;

  private:
    struct Name {
        std::size_t curve;
        double y;
    };
    void DrawAbove(QCPPainter& painter);
    void DrawLane(QCPPainter& painter, int lane);
    std::vector<Name> NamesOf(int lane, const QRect& rect) const;
    void DrawName(QCPPainter& painter, const Name& name, const QRectF& place, bool hidden);

    CPlotCanvas& Canvas;
};

class CPlotCursor : public QCPLayerable {
    Q_OBJECT

  public:
    explicit CPlotCursor(CPlotCanvas& canvas);

  protected:
    void applyDefaultAntialiasingHint(QCPPainter* painter) const override;
    void draw(QCPPainter* painter) override;

  private:
    void DrawLine(QCPPainter& painter, double place, Qt::PenStyle style) const;
    void DrawReadout(QCPPainter& painter) const;

    CPlotCanvas& Canvas;
};

} // namespace qor
