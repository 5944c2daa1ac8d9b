// SPDX-License-Identifier: GPL-3.0-or-later
//
// The one plot of the desktop: shows any page of curves, and lets the operator zoom, pan, read out,
// fix limits, pause, switch curves and take pictures and data away while frames keep coming. What
// is drawn with lies behind the canvas; nothing of it shows here. User-interface thread.
#pragma once

#include "app/look/Theme.h"
#include "views/Menu.h"
#include "views/PlotReadout.h"

#include <QElapsedTimer>
#include <QImage>
#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class QToolButton;

namespace qor {

class CPlotCanvas;
class CPlotHands;
struct PlotPlace;
struct PlotView;

/// The key axis among the axes of a plot; value axes go by their number.
inline constexpr int KeyAxisNumber = -1;

class CPlotWidget : public QWidget {
    Q_OBJECT

  public:
    enum class CursorMode { Off, On, Difference };

    explicit CPlotWidget(const CTheme& theme, QWidget* parent = nullptr);
    ~CPlotWidget() override;

    /// At each display tick. While paused or out of sight the page is only kept.
    void ShowPage(const PlotPage& page);
    /// The page as it is drawn.
    const PlotPage& Page() const { return Current; }

    void SetPaused(bool paused);
    /// While paused and zoomed in time: the page with more points of that part. What came after
    /// the pause, values or curves, is left out.
    void ShowDetail(const PlotPage& page);
    /// The range along the key that was set by hand.
    std::optional<PlotRange> ZoomedKeys() const;
    bool IsPaused() const { return Paused; }
    /// How long, as text; empty when it is not paused.
    std::string PausedText() const;

    /// Zoom by a factor (below 1: nearer), about the middle or about a place of the widget.
    void Zoom(double factor);
    void ZoomAt(const QPoint& point, double factor, bool onlyAxisUnder);
    void ZoomBox(const QRect& box);
    /// Moves by pixels, along both axes or only along the one under `from`.
    void PanBy(const QPoint& pixels, const PlotPlace& from);
    /// Back to the limits that the page asks for.
    void ResetView();
    /// Value axes follow their data, whatever the page asks for.
    void SetAutomatic();
    void ToggleLog(int axis = 0);
    bool IsZoomed() const;

    AxisChoice Choice(int axis) const;
    /// Those of the axes shown, by number.
    std::map<int, AxisChoice> Choices() const;
    void SetChoice(int axis, const AxisChoice& choice);
    /// A form for an axis's limits.
    void AskRange(int axis);

    const HiddenCurves& Hidden() const { return Off; }
    void SetHidden(HiddenCurves hidden);
    void ToggleCurve(std::uint64_t curve);

    CursorMode Cursor() const { return Mode; }
    void SetCursor(CursorMode mode);
    void MoveCursor(const QPoint& point);
    const PlotReadout& Readout() const;

    /// A picture in the light palette with title, units, station and time, or the visible data. The
    /// file's ending says what: png, svg, pdf or csv. False: it could not be written, and `fault`
    /// says why.
    bool SaveFile(const QString& path, QString& fault) const;
    QImage Picture() const;
    void CopyPicture() const;
    void CopyData() const;
    /// The visible data as CSV.
    std::string VisibleData() const;

    /// What a plot's menu offers: curves, cursor, limits, pause, pictures, data.
    Menu PlotMenu();

    const CPlotCanvas& Canvas() const { return *Drawn; }

  signals:
    void PausedChanged(bool paused);
    /// Limits, scales, hidden curves or the cursor were changed by hand: worth keeping.
    void ViewChanged();
    void MenuAsked(QPoint screenPlace);
    /// The operator wants a picture or the data in a file.
    void ExportAsked();
    /// What there is room for, in pixels.
    void CanvasResized(QSize size);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    /// An axis has another number when one before it comes or goes: its limits go by whether it is
    /// the key axis, and by its units.
    using AxisName = std::pair<bool, std::string>;

    void Draw();
    void TakeTheme();
    PlotRange RangeOf(int axis, double now);
    PlotRange ShownRange(int axis) const;
    void Fix(int axis, PlotRange range);
    void ZoomAxis(int axis, double at, double factor);
    PlotAxis AxisOf(int axis) const;
    AxisName NameOf(int axis) const;
    /// Of the axis shown that has this name.
    std::optional<int> NumberOf(const AxisName& name) const;
    void ChangeChoice(const AxisName& name, const std::function<void(AxisChoice&)>& change);
    double Seconds() const;
    void UpdateReadout();
    void PlaceResetButton();
    Menu CurvesMenu();

    const CTheme& Theme;
    std::unique_ptr<PlotView> View;
    CPlotCanvas* Drawn;
    CPlotHands* Hands;
    QToolButton* Reset;
    PlotPage Current, Coming, AtPause;
    QSize EqualFor; ///< the room for which both scales are equal
    bool Paused = false, Dirty = false;
    std::map<AxisName, AxisChoice> Chosen;
    std::map<AxisName, CAutoRange> Automatic;
    HiddenCurves Off;
    CursorMode Mode = CursorMode::Off;
    QElapsedTimer Clock, PausedSince, Described;
};

} // namespace qor
