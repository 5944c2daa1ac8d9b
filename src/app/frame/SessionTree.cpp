// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/SessionTree.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>

namespace qor {

namespace {

constexpr int TreeWidth = 286, RateWidth = 56, AgeWidth = 44;

bool SameShape(const std::vector<TreeRow>& a, const std::vector<TreeRow>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const TreeRow& x, const TreeRow& y) {
                          return x.id == y.id && SameShape(x.rows, y.rows);
                      });
}

class CTreeDelegate : public QStyledItemDelegate {
  public:
    CTreeDelegate(const CTheme& theme, const CTreeModel& model, QObject* parent)
        : QStyledItemDelegate(parent), Theme(theme), Model(model) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        QSize given = QStyledItemDelegate::sizeHint(option, index);
        given.setHeight(Theme.Px(Theme.LargeTargets() ? size::LargeTarget : size::TreeRow));
        return given;
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const TreeRow* row = Model.Row(index);
        if (!row)
            return;
        const Tokens& colours = Theme.Colours();
        const bool selected = option.state & QStyle::State_Selected;
        painter->fillRect(option.rect, QColor(selected ? colours.accent : colours.window));
        QRect place = option.rect.adjusted(2, 0, -4, 0);
        const bool note = row->kind == TreeKind::Note;
        painter->save();
        const bool name = index.column() == CTreeModel::NameColumn;
        painter->setFont(Theme.Font(note || !name ? FontRole::Ticks : FontRole::Text));
        painter->setPen(QColor(selected                                         ? colours.base
                               : note                                           ? colours.text2
                               : row->sign == Sign::Stale && index.column() > 0 ? colours.stale
                                                                                : colours.text));
        if (name)
            PaintName(*painter, place, *row, selected);
        else
            painter->drawText(place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                              index.data().toString());
        painter->restore();
    }

  private:
    void PaintName(QPainter& painter, QRect place, const TreeRow& row, bool selected) const {
        const int side = Theme.Px(16);
        if (row.kind != TreeKind::Note) {
            // On the accent, a shape in the colour of its text; the word is in the tip and the row.
            const QRect sign(place.left(), place.top(), side, place.height());
            Tokens colours = Theme.Colours();
            if (selected)
                colours.text = colours.text2 = colours.stale = colours.base;
            PaintSign(painter, sign, row.sign, colours);
            place.setLeft(place.left() + side + Theme.Px(4));
        }
        if (!row.role.empty()) {
            QFont font = painter.font();
            font.setBold(true);
            const QString role = Shown(row.role);
            const int width = QFontMetrics(font).horizontalAdvance(role) + Theme.Px(6);
            const QRect field(place.right() - width, place.center().y() - Theme.Px(10), width,
                              Theme.Px(20));
            painter.save();
            painter.setFont(font);
            painter.drawRoundedRect(field, 3, 3);
            painter.drawText(field, Qt::AlignCenter, role);
            painter.restore();
            place.setRight(field.left() - Theme.Px(4));
        }
        painter.drawText(
            place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
            painter.fontMetrics().elidedText(Shown(row.name), Qt::ElideRight, place.width()));
    }

    const CTheme& Theme;
    const CTreeModel& Model;
};

} // namespace

void CTreeModel::List(const std::vector<TreeRow>& rows, int parent) {
    int place = 0;
    for (const TreeRow& row : rows) {
        const int number = static_cast<int>(Nodes.size());
        Nodes.push_back({&row, parent, place++});
        List(row.rows, number);
    }
}

bool CTreeModel::SetPage(const TreePage& page) {
    if (page == Current)
        return false;
    const bool other = !SameShape(page.rows, Current.rows);
    if (other)
        beginResetModel();
    Current = page;
    Nodes.clear();
    List(Current.rows, -1);
    if (other) {
        endResetModel();
        return true;
    }
    // Rates and ages change everywhere at once; what is out of sight is not painted anyway.
    for (const Node& node : Nodes) {
        const QModelIndex first = IndexOf(node.row->id);
        emit dataChanged(first, first.siblingAtColumn(ColumnCount - 1));
    }
    return false;
}

const TreeRow* CTreeModel::Row(const QModelIndex& index) const {
    const auto number = static_cast<std::size_t>(index.internalId());
    return index.isValid() && number < Nodes.size() ? Nodes[number].row : nullptr;
}

QModelIndex CTreeModel::IndexOf(std::uint64_t id) const {
    for (std::size_t i = 0; i < Nodes.size(); ++i)
        if (Nodes[i].row->id == id)
            return createIndex(Nodes[i].place, 0, i);
    return {};
}

QModelIndex CTreeModel::index(int row, int column, const QModelIndex& parent) const {
    const int above = parent.isValid() ? static_cast<int>(parent.internalId()) : -1;
    for (std::size_t i = 0; i < Nodes.size(); ++i)
        if (Nodes[i].parent == above && Nodes[i].place == row)
            return createIndex(row, column, i);
    return {};
}

QModelIndex CTreeModel::parent(const QModelIndex& index) const {
    const auto number = static_cast<std::size_t>(index.internalId());
    if (!index.isValid() || number >= Nodes.size() || Nodes[number].parent < 0)
        return {};
    const auto above = static_cast<std::size_t>(Nodes[number].parent);
    return createIndex(Nodes[above].place, 0, above);
}

int CTreeModel::rowCount(const QModelIndex& parent) const {
    if (parent.column() > 0)
        return 0;
    const TreeRow* row = Row(parent);
    return static_cast<int>(parent.isValid() ? (row ? row->rows.size() : 0) : Current.rows.size());
}

int CTreeModel::columnCount(const QModelIndex&) const {
    return ColumnCount;
}

QVariant CTreeModel::data(const QModelIndex& index, int role) const {
    const TreeRow* row = Row(index);
    if (!row)
        return {};
    if (role == Qt::ToolTipRole && !row->detail.empty())
        return Shown(row->detail);
    if (role == Qt::AccessibleTextRole) {
        QString text = Shown(row->name);
        if (row->sign != Sign::None)
            text += QStringLiteral(", ") + SignName(row->sign);
        for (const std::string& part : {row->role, row->rate, row->age})
            if (!part.empty())
                text += QStringLiteral(", ") + Shown(part);
        return text;
    }
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case NameColumn:
        return Shown(row->name);
    case RateColumn:
        return Shown(row->rate);
    case AgeColumn:
        return Shown(row->age);
    default: // no enum of ours: a role of Qt
        return {};
    }
}

QVariant CTreeModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole && section != NameColumn)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == NameColumn   ? tr("Instrument")
           : section == RateColumn ? tr("Hz", "frames a second, column")
                                   : tr("Age");
}

CSessionTree::CSessionTree(const CTheme& theme, QWidget* parent)
    : QTreeView(parent), Theme(theme), Nothing(new CNotice(theme, viewport())) {
    setModel(&Model);
    setItemDelegate(new CTreeDelegate(Theme, Model, this));
    setAccessibleName(tr("Session tree"));
    setFrameShape(QFrame::NoFrame);
    setUniformRowHeights(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setExpandsOnDoubleClick(false);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::Fixed);
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        if (const TreeRow* row = Model.Row(index))
            Folded.insert(row->id);
    });
    connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        if (const TreeRow* row = Model.Row(index))
            Folded.erase(row->id);
    });
    connect(this, &QTreeView::activated, this, [this](const QModelIndex& index) {
        if (const TreeRow* row = Model.Row(index))
            emit RowActivated(row->id);
    });
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { emit RowChosen(ChosenRow()); });
    connect(Nothing, &CNotice::RemedyPressed, this, &CSessionTree::AddAsked);
    connect(&Theme, &CTheme::Changed, this, &CSessionTree::TakeTheme);
    TakeTheme();
    ShowWhetherEmpty();
}

void CSessionTree::TakeTheme() {
    QPalette colours;
    colours.setColor(QPalette::Base, QColor(Theme.Colours().window));
    setPalette(colours);
    setIndentation(Theme.Px(8));
    FitColumns();
    doItemsLayout();
}

void CSessionTree::FitColumns() {
    const int rate = Theme.Px(RateWidth), age = Theme.Px(AgeWidth);
    setColumnWidth(CTreeModel::RateColumn, rate);
    setColumnWidth(CTreeModel::AgeColumn, age);
    setColumnWidth(CTreeModel::NameColumn,
                   std::max(viewport()->width() - rate - age, Theme.Px(100)));
}

QSize CSessionTree::sizeHint() const {
    return {Theme.Px(TreeWidth), Theme.Px(400)};
}

void CSessionTree::ShowPage(const TreePage& page) {
    const std::uint64_t chosen = ChosenRow();
    if (!Model.SetPage(page))
        return;
    ShowWhetherEmpty();
    ExpandAgain();
    const QModelIndex again = Model.IndexOf(chosen);
    if (chosen != 0 && again.isValid())
        setCurrentIndex(again);
}

void CSessionTree::ShowWhetherEmpty() {
    PageHead head;
    if (Model.rowCount() == 0) {
        head.state = PageState::Empty;
        head.sentence = tr("This session has no port yet.").toStdString();
        head.remedy = tr("Add port").toStdString();
    }
    Nothing->ShowHead(head);
}

/// What has neither rate nor age takes the whole width.
void CSessionTree::Span(const QModelIndex& parent) {
    for (int place = 0; place < Model.rowCount(parent); ++place) {
        const QModelIndex index = Model.index(place, 0, parent);
        const TreeRow* row = Model.Row(index);
        setFirstColumnSpanned(place, parent, row && row->kind != TreeKind::Instrument);
        Span(index);
    }
}

/// Everything is open but what the operator closed.
void CSessionTree::ExpandAgain() {
    Span({});
    const std::set<std::uint64_t> folded = Folded;
    expandAll();
    for (const std::uint64_t id : folded)
        if (const QModelIndex index = Model.IndexOf(id); index.isValid())
            collapse(index);
}

std::uint64_t CSessionTree::ChosenRow() const {
    const TreeRow* row = Model.Row(currentIndex());
    return row ? row->id : 0;
}

void CSessionTree::contextMenuEvent(QContextMenuEvent* event) {
    const bool mouse = event->reason() == QContextMenuEvent::Mouse;
    const QModelIndex index = mouse ? indexAt(event->pos()) : currentIndex();
    const TreeRow* row = Model.Row(index);
    emit MenuAsked(row ? row->id : 0,
                   mouse ? event->globalPos()
                         : viewport()->mapToGlobal(visualRect(index).bottomLeft()));
}

void CSessionTree::resizeEvent(QResizeEvent* event) {
    QTreeView::resizeEvent(event);
    FitColumns();
}

} // namespace qor
