// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/PageGrid.h"

#include "app/ShownText.h"
#include "app/look/Icons.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace qor {

namespace {

constexpr int SignWidth = 32, CellMargin = 6;
constexpr int LeastLabel = 96, LeastValue = 150, LeastUnits = 64;
constexpr int LeastRow = 22, LeastOwnRow = 28;
constexpr int RowsMeasured = 60; ///< of a page of lines; earlier ones have been measured
/// Labels and units of a page with its own colours, which stands on black in every palette.
constexpr QRgb LabelOnBlack = Solid(0xE6EAEE);

QColor FromPage(Colour colour) {
    return QColor(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                  static_cast<int>(colour >> 16 & 0xFF));
}

bool IsStale(const GridRow& row) {
    return row.stale || row.sign == Sign::Stale;
}

class CPageDelegate : public QStyledItemDelegate {
  public:
    CPageDelegate(const CTheme& theme, const CPageModel& model, QObject* parent)
        : QStyledItemDelegate(parent), Theme(theme), Model(model) {}

    QFont FontOf(int column) const {
        const bool value = Model.Cell(0, column) != nullptr;
        if (Model.Page().ownColours)
            return Theme.Font(value                              ? FontRole::Value
                              : column == CPageModel::UnitColumn ? FontRole::Ticks
                                                                 : FontRole::Tool);
        return Theme.Font(value && NumberColumn(column) ? FontRole::Fixed : FontRole::Text);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const GridRow& row = Model.Page().rows[static_cast<std::size_t>(index.row())];
        const GridCell* cell = Model.Cell(index.row(), index.column());
        const bool own = Model.Page().ownColours;
        const bool selected = option.state & QStyle::State_Selected;
        const Tokens& colours = Theme.Colours();
        QColor text(colours.text), background(colours.base);
        if (own && cell) {
            const CellColours painted = PaintedColours(*cell, Theme.IsNight());
            text = painted.text;
            background = painted.background;
        } else if (own) {
            text = QColor(Theme.IsNight() ? colours.text : LabelOnBlack);
            background = Qt::black;
        } else if (selected) {
            text = QColor(colours.base);
            background = QColor(colours.accent);
        } else if (IsStale(row) && cell) {
            text = QColor(colours.stale);
        }
        painter->fillRect(option.rect, background);
        if (cell && IsStale(row))
            Hatch(*painter, option.rect, text);
        if (index.column() == CPageModel::SignColumn)
            PaintSign(*painter, option.rect.adjusted(6, 6, -6, -6), row.sign,
                      own && !Theme.IsNight() ? TokensOf(Look::Dark) : colours);
        else
            PaintTexts(*painter, option.rect.adjusted(CellMargin, 0, -CellMargin, 0), index, text);
        if (selected && own)
            PaintRowFrame(*painter, option.rect, index.column());
    }

  private:
    bool NumberColumn(int column) const {
        return Model.index(0, column).data(Qt::TextAlignmentRole).value<int>() & Qt::AlignRight;
    }

    /// Slanted lines: the value is not of now.
    static void Hatch(QPainter& painter, const QRect& place, const QColor& colour) {
        QColor line = colour;
        line.setAlphaF(0.45F);
        painter.save();
        painter.setClipRect(place);
        painter.setPen(QPen(line, 1.0));
        for (int x = place.left() - place.height(); x < place.right(); x += 7)
            painter.drawLine(x, place.bottom(), x + place.height(), place.top());
        painter.restore();
    }

    /// The cell's text; in the column of units the age of a stale value below it.
    void PaintTexts(QPainter& painter, QRect place, const QModelIndex& index,
                    const QColor& colour) const {
        painter.save();
        painter.setFont(FontOf(index.column()));
        painter.setPen(colour);
        const int alignment = index.data(Qt::TextAlignmentRole).value<int>() | Qt::TextSingleLine;
        const auto draw = [&painter, alignment](const QRect& line, const QString& text) {
            painter.drawText(line, alignment,
                             painter.fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
        };
        const std::string& age = Model.Page().rows[static_cast<std::size_t>(index.row())].age;
        if (!Model.IsTable() && index.column() == CPageModel::UnitColumn && !age.empty()) {
            const int half = place.height() / 2;
            QFont font = Theme.Font(FontRole::Ticks);
            painter.setFont(font);
            draw(QRect(place.left(), place.top(), place.width(), half + 2),
                 index.data().toString());
            font.setBold(true);
            painter.setFont(font);
            draw(QRect(place.left(), place.top() + half - 1, place.width(), half), Shown(age));
        } else {
            draw(place, index.data().toString());
        }
        painter.restore();
    }

    void PaintRowFrame(QPainter& painter, const QRect& cell, int column) const {
        const QColor accent(Theme.IsNight() ? Theme.Colours().accent : TokensOf(Look::Dark).accent);
        painter.fillRect(QRect(cell.left(), cell.top(), cell.width(), 2), accent);
        painter.fillRect(QRect(cell.left(), cell.bottom() - 1, cell.width(), 2), accent);
        if (column == 0)
            painter.fillRect(QRect(cell.left(), cell.top(), 2, cell.height()), accent);
        if (column == Model.columnCount() - 1)
            painter.fillRect(QRect(cell.right() - 1, cell.top(), 2, cell.height()), accent);
    }

    const CTheme& Theme;
    const CPageModel& Model;
};

} // namespace

CellColours PaintedColours(const GridCell& cell, bool night) {
    if (!night)
        return {FromPage(cell.textColour), FromPage(cell.background)};
    const QColor red(TokensOf(Look::Night).text), black(Qt::black);
    return cell.background == Black ? CellColours{red, black} : CellColours{black, red};
}

CPageGrid::CPageGrid(const CTheme& theme, QWidget* parent) : QTableView(parent), Theme(theme) {
    setModel(&Model);
    setItemDelegate(new CPageDelegate(Theme, Model, this));
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setHighlightSections(false);
    connect(this, &QTableView::doubleClicked, this,
            [this](const QModelIndex& index) { emit RowActivated(index.row()); });
    connect(&Theme, &CTheme::Changed, this, &CPageGrid::TakeTheme);
    TakeTheme();
}

int CPageGrid::RowHeight() const {
    return Theme.Px(Theme.LargeTargets() ? size::LargeTarget
                    : Page().ownColours  ? size::Target
                                         : size::TreeRow);
}

void CPageGrid::TakeTheme() {
    Widths.clear();
    FitRows();
    QPalette colours;
    const QColor ground = Page().ownColours ? QColor(Qt::black) : QColor(Theme.Colours().base);
    colours.setColor(QPalette::Base, ground);
    viewport()->setPalette(colours);
    FitColumns();
    viewport()->update();
}

void CPageGrid::ShowPage(const GridPage& page) {
    const bool atEnd = verticalScrollBar()->value() == verticalScrollBar()->maximum();
    const bool lines = page.newestLast && page.columns == Page().columns;
    const bool other = Model.SetPage(page);
    horizontalHeader()->setVisible(Model.IsTable());
    if (other && !lines)
        TakeTheme();
    else
        FitColumns();
    FitRows();
    if (page.newestLast && other && atEnd)
        scrollToBottom();
    TellVisibleRows();
    if (const QSize hint = sizeHint(); hint != ToldHint) {
        ToldHint = hint;
        emit HintChanged();
    }
}

/// A few rows too many for the room stand closer, rather than behind a scroll bar.
void CPageGrid::FitRows() {
    const int rows = std::max(Model.rowCount(), 1), room = viewport()->height();
    const int least = Theme.Px(Page().ownColours ? LeastOwnRow : LeastRow);
    const bool close = !Theme.LargeTargets() && rows * least <= room;
    const int height = close ? std::clamp(room / rows, least, RowHeight()) : RowHeight();
    if (verticalHeader()->defaultSectionSize() != height)
        verticalHeader()->setDefaultSectionSize(height);
}

/// The widest text of each column so far.
void CPageGrid::MeasureColumns() {
    const int columns = Model.columnCount();
    if (Widths.size() != static_cast<std::size_t>(columns))
        Widths.assign(static_cast<std::size_t>(columns), 0);
    const auto* delegate = static_cast<const CPageDelegate*>(itemDelegate());
    for (int column = 0; column < columns; ++column) {
        int& width = Widths[static_cast<std::size_t>(column)];
        if (column == CPageModel::SignColumn) {
            width = Theme.Px(SignWidth);
            continue;
        }
        const QFontMetrics metrics(delegate->FontOf(column));
        const auto widen = [&width, &metrics](const QString& text) {
            // Advances are rounded; what is drawn must never be cut for a fraction of a pixel.
            if (!text.isEmpty())
                width = std::max(width, metrics.horizontalAdvance(text) + 2 * CellMargin + 2);
        };
        if (Model.IsTable())
            widen(Model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString() +
                  QStringLiteral("  "));
        const int rows = Model.rowCount();
        for (int row = Page().newestLast ? std::max(rows - RowsMeasured, 0) : 0; row < rows; ++row)
            widen(Model.index(row, column).data().toString());
    }
}

/// Labels take what the others leave. Where it is too little long units are cut first, then labels,
/// before figures are; a value that is a whole sentence, of a fault, is cut before them. The tip
/// has it all.
void CPageGrid::FitColumns() {
    MeasureColumns();
    if (Widths.empty())
        return;
    std::vector<int> widths = Widths;
    int& label = widths[CPageModel::LabelColumn];
    int& value = widths[CPageModel::ValueColumn];
    int others = 0;
    for (std::size_t column = 0; column < widths.size(); ++column)
        if (column != CPageModel::LabelColumn && column != CPageModel::ValueColumn)
            others += widths[column];
    int room = viewport()->width() - others;
    if (Page().cutLast)
        value = std::max(room - label, Theme.Px(LeastValue));
    if (!Model.IsTable() && label + value > room) {
        int& units = widths[CPageModel::UnitColumn];
        const int given = std::min(label + value - room, units - Theme.Px(LeastUnits));
        units -= std::max(given, 0);
        room += std::max(given, 0);
    }
    if (!Model.IsTable() && label + value > room) {
        const int figures = std::min(room - Theme.Px(LeastLabel), Theme.Px(LeastValue));
        value = std::min(value, std::max(room - label, figures));
        label = room - value;
    } else {
        label = std::max(room - value, label);
    }
    for (std::size_t i = 0; i < widths.size(); ++i) {
        const int column = static_cast<int>(i);
        if (columnWidth(column) != widths[i])
            setColumnWidth(column, widths[i]);
    }
}

QSize CPageGrid::sizeHint() const {
    int width = 2 * frameWidth();
    for (const int column : Widths)
        width += column;
    const int header = Model.IsTable() ? horizontalHeader()->sizeHint().height() : 0;
    return {std::max(width, Theme.Px(200)),
            header + Model.rowCount() * RowHeight() + 2 * frameWidth()};
}

std::pair<int, int> CPageGrid::VisibleRows() const {
    if (Model.rowCount() == 0)
        return {0, 0};
    const int first = std::max(rowAt(0), 0);
    const int last = rowAt(viewport()->height() - 1);
    return {first, last < 0 ? Model.rowCount() : last + 1};
}

void CPageGrid::TellVisibleRows() {
    const std::pair<int, int> rows = VisibleRows();
    if (rows == Told)
        return;
    Told = rows;
    emit VisibleRowsChanged(rows.first, rows.second);
}

void CPageGrid::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    FitRows();
    FitColumns();
    TellVisibleRows();
}

void CPageGrid::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    TellVisibleRows();
}

void CPageGrid::contextMenuEvent(QContextMenuEvent* event) {
    const bool mouse = event->reason() == QContextMenuEvent::Mouse;
    const QModelIndex index = mouse ? indexAt(event->pos()) : currentIndex();
    emit MenuAsked(index.row(), mouse ? event->globalPos()
                                      : viewport()->mapToGlobal(visualRect(index).bottomLeft()));
}

void CPageGrid::keyPressEvent(QKeyEvent* event) {
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && currentIndex().isValid())
        emit RowActivated(currentIndex().row());
    else
        QTableView::keyPressEvent(event);
}

} // namespace qor
