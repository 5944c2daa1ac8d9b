// SPDX-License-Identifier: GPL-3.0-or-later
//
// A window over a view: its pages in the one grid and in as many plots as it has, with what the
// view needs beside them. What is shown, chosen and formatted is the view's. User-interface thread.
#pragma once

#include "app/windows/DisplayWindow.h"
#include "views/KeptWindows.h"
#include "views/Windows.h"

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

class QLabel;

namespace qor {

class CRealityCheckBar;

class CViewWindow : public CDisplayWindow {
    Q_OBJECT

  public:
    /// `name` tells the window from all others, in layouts and in the profile store. The document
    /// outlives the window. A window that is closed deletes itself (Closing, then destroyed).
    CViewWindow(const CTheme& theme, const QString& name, const WindowKind& kind, CQorViewDoc& doc);
    ~CViewWindow() override;

    CView& View() { return *Shown; }
    const WindowKind& Kind() const { return Row; }

    /// Whose page it is, byte for byte; empty: the first that has what it shows.
    void ShowInstrument(const std::string& name);
    const std::string& Instrument() const { return Name; }

    /// The instrument or package that has a value in its alarm range, as the tree names it.
    std::string Alarmed() const;

    /// Refreshes when it is due: plots ten times a second, grids four times, so that watched rows,
    /// which turn their blink with each refresh, flash twice. `tick` counts TicksASecond, shifted
    /// from window to window so that they take turns. A window that cannot be seen draws nothing;
    /// what it holds to a range it goes on watching.
    static constexpr int TicksASecond = 40;
    void Tick(unsigned tick);
    /// Now, whatever is due.
    void Refresh();

    /// Those that the view has at the moment.
    std::vector<CPlotWidget*> ShownPlots() const;

    /// The window as a session keeps it, its place among the settings.
    KeptWindow Kept() const;
    /// Instrument, settings and plots as they were kept; a plot waits for its curves. Its place and
    /// its name are the area's business.
    void Restore(const KeptWindow& kept);

  signals:
    void AlarmSounds();
    /// A watched row, by its id, came into its alarm range.
    void AlarmBegan(QString text, quint64 row);
    /// The operator wants to edit the ranges of a row.
    void RangesAsked(int row);
    /// The button beside the sentence of a window that has nothing to show, by its source text
    /// ("Add instrument", "Roles"). "Close" the window does itself.
    void RemedyAsked(QString remedy);
    /// What the view has to say after it was opened, once.
    void Told(QString text);
    /// Something the operator asked of the window could not be done.
    void Failed(QString why);
    /// Limits, curves, place or settings may be others than before: worth keeping.
    void Altered();
    void Closing();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    /// Made when the view shows the page for the first time; a plot keeps its page.
    struct ShownPlot {
        const PlotPage* page;
        CPlotWidget* plot;
        QLabel* caption; ///< null: the window's title is the page's
        QWidget* whole;  ///< the plot with its caption
    };

    CViewWindow(const CTheme& theme, const QString& name, const WindowKind& kind, CQorViewDoc& doc,
                std::unique_ptr<CView> view);
    void AddGrid();
    ShownPlot& PlotOf(const PlotPage* page);
    ShownPlot MakePlot(const PlotPage* page);
    void ShowPages();
    void RefreshUnseen();
    void TellPages(const ViewPages& pages);
    void ShowDetail(const PlotPage& page, CPlotWidget& plot);
    void TellAlarm(const GridPage* grid);
    void RestorePlots();
    void Export(CPlotWidget& plot);

    const CTheme& Theme;
    const WindowKind& Row;
    CQorViewDoc& Doc;
    std::unique_ptr<CView> Shown;
    std::string Name;
    CPageGrid* Grid = nullptr;
    CRealityCheckBar* CheckBar = nullptr;
    std::vector<ShownPlot> Plots;
    std::vector<KeptPlot> Waiting;   ///< by page; until its curves are there
    std::set<std::uint64_t> InAlarm; ///< ids of rows
    bool Behind = false;             ///< the view was refreshed and not drawn
    bool Opened = false;             ///< was refreshed once, so what it had to say was said
};

} // namespace qor
