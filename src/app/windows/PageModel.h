// SPDX-License-Identifier: GPL-3.0-or-later
//
// A page of cells as a Qt model, so that one grid widget and every screen reader see it alike. The
// page is copied in at a display tick; only rows that differ are announced. User-interface thread.
#pragma once

#include "views/GridPage.h"

#include <QAbstractTableModel>

namespace qor {

class CPageModel : public QAbstractTableModel {
    Q_OBJECT

  public:
    /// The first columns of every page. A page that is a table goes on with its own behind the
    /// value, the others with their unit.
    enum Column { SignColumn, LabelColumn, ValueColumn, UnitColumn };

    using QAbstractTableModel::QAbstractTableModel;

    /// True when rows or columns are others than before, so that widths begin anew.
    bool SetPage(const GridPage& page);
    const GridPage& Page() const { return Current; }
    bool IsTable() const { return !Current.columns.empty(); }
    /// The cell of a value column, or null.
    const GridCell* Cell(int row, int column) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    QString RowInWords(const GridRow& row) const;
    bool SameShape(const GridPage& page) const;

    GridPage Current;
};

} // namespace qor
