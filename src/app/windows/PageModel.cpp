// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/PageModel.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"

#include <algorithm>

namespace qor {

bool CPageModel::SameShape(const GridPage& page) const {
    const auto same = [](const GridRow& a, const GridRow& b) {
        return a.id == b.id && a.label == b.label && a.units == b.units;
    };
    return page.columns == Current.columns && page.ownColours == Current.ownColours &&
           std::equal(page.rows.begin(), page.rows.end(), Current.rows.begin(), Current.rows.end(),
                      same);
}

bool CPageModel::SetPage(const GridPage& page) {
    if (!SameShape(page)) {
        beginResetModel();
        Current = page;
        endResetModel();
        return true;
    }
    const int lastColumn = columnCount() - 1;
    std::size_t firstChanged = page.rows.size(), endChanged = 0;
    for (std::size_t i = 0; i < page.rows.size(); ++i) {
        if (page.rows[i] == Current.rows[i])
            continue;
        Current.rows[i] = page.rows[i];
        firstChanged = std::min(firstChanged, i);
        endChanged = i + 1;
    }
    Current.title = page.title;
    Current.head = page.head;
    if (firstChanged < endChanged)
        emit dataChanged(index(static_cast<int>(firstChanged), 0),
                         index(static_cast<int>(endChanged) - 1, lastColumn));
    return false;
}

const GridCell* CPageModel::Cell(int row, int column) const {
    if (row < 0 || static_cast<std::size_t>(row) >= Current.rows.size())
        return nullptr;
    const GridRow& shown = Current.rows[static_cast<std::size_t>(row)];
    if (column == ValueColumn)
        return &shown.value;
    const auto further = static_cast<std::size_t>(column - ValueColumn - 1);
    return IsTable() && column > ValueColumn && further < shown.more.size() ? &shown.more[further]
                                                                            : nullptr;
}

int CPageModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(Current.rows.size());
}

int CPageModel::columnCount(const QModelIndex& parent) const {
    if (parent.isValid())
        return 0;
    return IsTable() ? static_cast<int>(Current.columns.size()) + 1 : UnitColumn + 1;
}

QString CPageModel::RowInWords(const GridRow& row) const {
    QString text = Shown(row.label) + QStringLiteral(", ") + Shown(row.value.text);
    if (!row.units.empty())
        text += QLatin1Char(' ') + Shown(row.units);
    for (std::size_t i = 0; i < row.more.size() && i + 2 < Current.columns.size(); ++i)
        if (!row.more[i].text.empty())
            text += QStringLiteral(", ") + Shown(Current.columns[i + 2].title) + QLatin1Char(' ') +
                    Shown(row.more[i].text);
    if (row.sign != Sign::None)
        text += QStringLiteral(", ") + SignName(row.sign);
    if (!row.age.empty())
        text += QLatin1Char(' ') + Shown(row.age);
    return text;
}

QVariant CPageModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= Current.rows.size())
        return {};
    const GridRow& row = Current.rows[static_cast<std::size_t>(index.row())];
    const int column = index.column();
    if (role == Qt::AccessibleTextRole)
        return column == SignColumn ? SignName(row.sign) : RowInWords(row);
    if (role == Qt::TextAlignmentRole) {
        const auto place = static_cast<std::size_t>(std::max(column - 1, 0));
        const bool number = IsTable()
                                ? place < Current.columns.size() && Current.columns[place].number
                                : column == ValueColumn;
        return static_cast<int>((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    }
    if (role == Qt::ToolTipRole && column != SignColumn) {
        const QString words = RowInWords(row);
        return row.opens ? words + QLatin1Char('\n') + tr("Enter or double-click opens its ranges.")
                         : words;
    }
    if (role != Qt::DisplayRole)
        return {};
    if (column == LabelColumn)
        return Shown(row.label);
    if (const GridCell* cell = Cell(index.row(), column))
        return Shown(cell->text);
    if (!IsTable() && column == UnitColumn)
        return Shown(row.units);
    return {};
}

QVariant CPageModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || !IsTable() || section < LabelColumn)
        return {};
    const auto column = static_cast<std::size_t>(section - LabelColumn);
    if (column >= Current.columns.size())
        return {};
    if (role == Qt::DisplayRole)
        return ShownInLanguage(Current.columns[column].title);
    if (role == Qt::TextAlignmentRole)
        return static_cast<int>((Current.columns[column].number ? Qt::AlignRight : Qt::AlignLeft) |
                                Qt::AlignVCenter);
    return {};
}

} // namespace qor
