// SPDX-License-Identifier: GPL-3.0-or-later
//
// The frame of every window that shows something: a dock with our title bar, the content, and,
// where there is nothing to show, a sentence with the next step. A window of the session is a page
// of code on top of it: it fills a page from its view and hands it to the grid or plot inside.
#pragma once

#include "app/windows/Notice.h"
#include "app/windows/WindowTitleBar.h"
#include "views/Menu.h"
#include "views/PageHead.h"

#include <QDockWidget>

#include <vector>

class QSplitter;

namespace qor {

class CPageGrid;
class CPlotWidget;

class CDisplayWindow : public QDockWidget {
    Q_OBJECT

  public:
    /// `name` tells the window from all others when a layout comes back.
    CDisplayWindow(const CTheme& theme, const QString& name, CWindowTitleBar::Has has,
                   QWidget* parent = nullptr);

    /// Several parts stand beside each other in a wide window, above each other in a tall one, and
    /// the operator moves what is between them.
    void SetContent(QWidget* content);
    /// Content that is a plot: pause and reset of the title bar act on every one of them, and what
    /// pauses one pauses all. `around`: what the plot stands in, with a caption or the like.
    void SetPlot(CPlotWidget* plot, QWidget* around = nullptr);
    void SetGrid(CPageGrid* grid);
    /// Above everything else, as high as it needs.
    void SetBar(QWidget* bar);
    /// Gives the parts their room, as long as the operator did not: a grid what it needs, plots
    /// what is left. After parts came or went.
    void ArrangeParts();

    bool IsPaused() const;
    void SetPaused(bool paused);

    /// Title bar, tab, notice.
    void ShowHead(const QString& title, const PageHead& head);
    Sign ShownSign() const { return Head.sign; }
    const PageHead& CurrentHead() const { return Head; }
    /// The pause's age in the title bar, to be called now and then while it lasts.
    void RefreshPaused();

    /// Out of the frame, alone or as a tab among others.
    bool Floats() const;
    /// True while something of it can be seen; a window that cannot costs nothing.
    bool IsSeen() const { return Seen && isVisible(); }

    /// What the window offers besides what every window does; asked each time a menu opens.
    std::function<Menu()> OwnMenu;

    void OpenMenuAt(const QPoint& screenPlace);

  signals:
    void RemedyPressed();
    /// It can be seen again, or no longer.
    void SeenChanged(bool seen);
    void SignChanged();
    void ExportAsked();
    /// Something of what OwnMenu gave was chosen.
    void MenuChosen();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    Menu WholeMenu(CPlotWidget* plot);
    void OpenMenuOf(CPlotWidget* plot, const QPoint& screenPlace);
    void TellOfChoices(Menu& menu);

    const CTheme& Theme;
    CWindowTitleBar::Has Has;
    CWindowTitleBar* Bar;
    QWidget* Body;
    CNotice* Notice;
    QSplitter* Parts;
    std::vector<CPlotWidget*> Plots;
    bool PartsMoved = false; ///< by the operator
    PageHead Head;
    bool Seen = false;
};

} // namespace qor
