// SPDX-License-Identifier: GPL-3.0-or-later
//
// The session as a tree: ports, their instruments, state, rate, age. Shows a page of rows that is
// filled elsewhere under the document's lock. User-interface thread.
#pragma once

#include "app/look/Theme.h"
#include "app/windows/Notice.h"
#include "views/SessionPages.h"

#include <QAbstractItemModel>
#include <QTreeView>

#include <set>
#include <vector>

namespace qor {

class CTreeModel : public QAbstractItemModel {
    Q_OBJECT

  public:
    enum Column { NameColumn, RateColumn, AgeColumn, ColumnCount };

    using QAbstractItemModel::QAbstractItemModel;

    /// True when rows came, went or moved.
    bool SetPage(const TreePage& page);
    const TreeRow* Row(const QModelIndex& index) const;
    QModelIndex IndexOf(std::uint64_t id) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  private:
    /// A row with its place; an index carries its number in the list.
    struct Node {
        const TreeRow* row;
        int parent; ///< -1: none
        int place;  ///< among its siblings
    };
    void List(const std::vector<TreeRow>& rows, int parent);

    TreePage Current;
    std::vector<Node> Nodes;
};

class CSessionTree : public QTreeView {
    Q_OBJECT

  public:
    explicit CSessionTree(const CTheme& theme, QWidget* parent = nullptr);

    void ShowPage(const TreePage& page);
    /// 0: nothing is chosen.
    std::uint64_t ChosenRow() const;
    QSize sizeHint() const override;

  signals:
    /// The button of the empty tree.
    void AddAsked();
    void MenuAsked(quint64 row, QPoint screenPlace);
    void RowActivated(quint64 row);
    void RowChosen(quint64 row);

  protected:
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void TakeTheme();
    void FitColumns();
    void ShowWhetherEmpty();
    void ExpandAgain();
    void Span(const QModelIndex& parent);

    const CTheme& Theme;
    CNotice* Nothing;
    CTreeModel Model;
    std::set<std::uint64_t> Folded; ///< rows that the operator closed
};

} // namespace qor
