// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of curves drawn by QCustomPlot. This header and what includes it are the only files that
// know the library: PlotCanvas (layout and curves), PlotMarks (what is drawn beside curves),
// PlotExport (pictures), and CPlotWidget's own sources. It draws what it is given and decides
// nothing: limits, hidden curves and the cursor are the widget's.
#pragma once

#include "app/look/Theme.h"
#include "views/PlotReadout.h"

#include <qcustomplot.h>

#include <optional>
#include <vector>

namespace qor {

/// How the operator looks at a page at this moment.
struct PlotView {
    HiddenCurves hidden;
    PlotRange key;
    std::vector<PlotRange> values; ///< by value axis
    bool keyFixed = false;         ///< set by hand
    std::vector<bool> fixed;
    std::optional<double> cursor, anchor;
    PlotReadout readout;
};

/// What lies under a point of the canvas.
struct PlotPlace {
    enum class Kind { Nothing, Inside, Key, Value, Label };
    Kind kind = Kind::Nothing;
    int axis = 0; ///< the value axis; inside: the first one of that lane
    std::uint64_t curve = 0;
};

class CPlotCanvas : public QCustomPlot {
    Q_OBJECT

  public:
    CPlotCanvas(const CTheme& theme, Look look, QWidget* parent = nullptr);

    void SetLook(Look look);
    /// Takes both over; nothing is drawn before the next replot.
    void Show(const PlotPage& page, const PlotView& view);
    /// Draws the cursor anew and nothing else.
    void ShowCursor(const PlotView& view);

    /// Lines of text above and below the plot, for pictures.
    void AddTitle(const QString& title, const QString& foot);

    PlotPlace PlaceAt(const QPoint& point) const;
    double KeyAt(const QPoint& point) const;
    double ValueAt(int axis, const QPoint& point) const;
    /// The pixel of a place along the key axis or a value axis.
    double KeyPixel(double key) const;
    double ValuePixel(int axis, double value) const;
    /// The strips of the plot, each with its own value axes, from above.
    int LaneCount() const { return static_cast<int>(Lanes.size()); }
    QRect LaneRect(int lane) const;
    int LaneOfAxis(int axis) const;

    const PlotPage& Page() const { return Current; }
    const PlotView& View() const { return Seen; }
    const CTheme& UsedTheme() const { return Theme; }
    Look UsedLook() const { return Shown; }
    const Tokens& Colours() const { return TokensOf(Shown); }
    QPen PenOf(std::size_t curve) const;
    /// What a name takes in a line of names, and where the lines of an upright plot are.
    int NameWidth(const QFontMetrics& metrics, const PlotCurve& curve) const;
    QRect NamesRect() const;

    /// Where the names of the curves stand, as drawn last.
    struct LabelBox {
        QRectF place;
        std::uint64_t curve;
    };
    std::vector<LabelBox> Labels;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    /// What a page's layout hangs on; another one builds everything anew.
    struct Shape {
        std::vector<PlotAxis> axes;
        PlotAxis key;
        bool keyUpright = false;
        std::vector<std::pair<int, bool>> curves; ///< axis, loops
        std::vector<CurveStyle> styles;
        bool operator==(const Shape&) const = default;
    };
    struct Plotted {
        QCPAbstractPlottable* line = nullptr; ///< a graph, or a curve when it loops
        QCPGraph* marks = nullptr;            ///< hollow points
        QCPGraph* lone = nullptr;             ///< points without a neighbour to be joined to
    };

    static Shape ShapeOf(const PlotPage& page);
    void Build();
    void BuildLane(int lane);
    void BuildCurves();
    void StyleAxis(QCPAxis& axis, const PlotAxis& shown) const;
    void SetTicker(QCPAxis& axis, const PlotAxis& shown) const;
    void FillCurve(std::size_t index);
    void ApplyRanges();
    void ApplyTicks(QCPAxis& axis, const PlotAxis& shown, bool fixed, bool upright) const;
    double AxisLength(bool upright) const;
    QString FittingTitle(const PlotAxis& axis, bool fixed, double length) const;
    int GutterWidth() const;
    int NamesAbove() const;
    void KeepLeftEdge();
    QCPAxis* KeyOf(int valueAxis) const;

    const CTheme& Theme;
    Look Shown;
    PlotPage Current;
    PlotView Seen;
    Shape Built;
    bool Styled = false;             ///< pens and fonts are of the look that is shown
    QCPMarginGroup* Sides = nullptr; ///< the left edges of all lanes
    std::vector<QCPAxisRect*> Lanes;
    std::vector<QCPAxis*> Keys;   ///< by lane
    std::vector<QCPAxis*> Values; ///< by value axis
    std::vector<Plotted> Curves;
    QCPLayoutElement* NamesRow = nullptr; ///< of an upright plot
    int LeftEdge = 0;                     ///< room for tick labels, which only grows
};

} // namespace qor
