// SPDX-License-Identifier: GPL-3.0-or-later
//
// The one grid of the desktop: shows any page of cells. Pages with their own colours stand on a
// black grid with large figures; others take the theme's. Widths only grow, so nothing jumps when
// digits change. It computes nothing: texts, signs and colours are the page's.
#pragma once

#include "app/look/Theme.h"
#include "app/windows/PageModel.h"

#include <QTableView>

namespace qor {

/// A cell's own colours as they are painted: as they are, or at night in red and black alone.
struct CellColours {
    QColor text, background;
};
CellColours PaintedColours(const GridCell& cell, bool night);

class CPageGrid : public QTableView {
    Q_OBJECT

  public:
    CPageGrid(const CTheme& theme, QWidget* parent = nullptr);

    void ShowPage(const GridPage& page);
    const GridPage& Page() const { return Model.Page(); }

    /// The rows that can be seen: first, and one past the last.
    std::pair<int, int> VisibleRows() const;
    /// What the rows need without scrolling.
    QSize sizeHint() const override;

  signals:
    void RowActivated(int row);
    void MenuAsked(int row, QPoint screenPlace);
    void VisibleRowsChanged(int first, int end);
    /// It needs more or less room than before.
    void HintChanged();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

  private:
    void TakeTheme();
    void MeasureColumns();
    void FitColumns();
    void TellVisibleRows();
    int RowHeight() const;
    void FitRows();

    const CTheme& Theme;
    CPageModel Model;
    std::vector<int> Widths; ///< the widest that each column ever was
    std::pair<int, int> Told{0, 0};
    QSize ToldHint;
};

} // namespace qor
