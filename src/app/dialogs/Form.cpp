// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/Form.h"

#include "app/ShownText.h"
#include "app/dialogs/Boxes.h"
#include "app/look/Icons.h"
#include "app/look/Style.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int FieldWidth = 280, SignSize = 16;
constexpr double PartOfScreen = 0.75; ///< that the fields take at most

/// What takes the focus by the tabulator, from above to below, then from left to right.
std::vector<QWidget*> TabStops(const QWidget& area) {
    struct Stop {
        QWidget* widget;
        QPoint middle;
    };
    std::vector<Stop> stops;
    for (QWidget* widget : area.findChildren<QWidget*>())
        if ((widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy() &&
            widget->window() == area.window() && widget->isVisibleTo(&area))
            stops.push_back({widget, widget->mapTo(&area, widget->rect().center())});
    std::ranges::stable_sort(stops, {}, [](const Stop& stop) { return stop.middle.y(); });
    constexpr int SameRow = 6;
    for (auto row = stops.begin(); row != stops.end();) {
        const auto next = std::find_if(row, stops.end(), [row](const Stop& stop) {
            return stop.middle.y() > row->middle.y() + SameRow;
        });
        std::stable_sort(row, next,
                         [](const Stop& a, const Stop& b) { return a.middle.x() < b.middle.x(); });
        row = next;
    }
    std::vector<QWidget*> widgets;
    for (const Stop& stop : stops)
        widgets.push_back(stop.widget);
    return widgets;
}

/// As large as its content, but no higher than the screen lets a form be.
class CFormArea : public QScrollArea {
  public:
    explicit CFormArea(QWidget* content) {
        setWidget(content);
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setFocusPolicy(Qt::NoFocus);
    }
    QSize sizeHint() const override {
        QSize size = widget()->sizeHint();
        if (size.width() > 0 && widget()->layout()->hasHeightForWidth())
            size.setHeight(widget()->layout()->totalHeightForWidth(size.width()));
        const int most = Highest();
        if (size.height() <= most)
            return size;
        return {size.width() + verticalScrollBar()->sizeHint().width(), most};
    }
    QSize minimumSizeHint() const override {
        const QSize whole = widget()->minimumSizeHint();
        return {whole.width() + verticalScrollBar()->sizeHint().width(),
                std::min(sizeHint().height(), Highest())};
    }

  protected:
    /// The content has come to need more or less: the form takes more of its own accord.
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == widget() && event->type() == QEvent::LayoutRequest) {
            updateGeometry();
            if (isVisible())
                QMetaObject::invokeMethod(
                    this, [this] { Follow(); }, Qt::QueuedConnection);
        }
        return QScrollArea::eventFilter(watched, event);
    }

  private:
    void Follow() {
        window()->resize(window()->size().expandedTo(window()->sizeHint()));
        static_cast<CForm*>(window())->OrderTabs();
    }
    int Highest() const {
        return static_cast<int>(screen()->availableSize().height() * PartOfScreen);
    }
};

} // namespace

CSignLabel::CSignLabel(const CTheme& theme, Sign sign, int size, QWidget* parent)
    : QWidget(parent), Theme(theme), Shown(sign), Size(size) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme, &CTheme::Changed, this, [this] { updateGeometry(); });
    setAccessibleName(SignName(sign));
}

void CSignLabel::SetSign(Sign sign) {
    if (sign == Shown)
        return;
    Shown = sign;
    setAccessibleName(SignName(sign));
    update();
}

QSize CSignLabel::sizeHint() const {
    return {Theme.Px(Size), Theme.Px(Size)};
}

void CSignLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    PaintSign(painter, rect(), Shown, Theme.Colours());
}

CForm::CForm(const CTheme& theme, const QString& title, QWidget* parent)
    : QDialog(parent), Theme(theme), Fields(new QGridLayout) {
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    Fields->setColumnMinimumWidth(1, Theme.Px(FieldWidth));
    Fields->setColumnStretch(1, 1);
    Fields->setHorizontalSpacing(Theme.Px(size::Margin));
    Fields->setVerticalSpacing(Theme.Px(size::Grid));

    Buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    Ok = Buttons->button(QDialogButtonBox::Ok);
    Ok->setDefault(true);
    Buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    connect(Buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(Buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Content = new QWidget;
    auto* column = new QVBoxLayout(Content);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(Fields);
    column->addStretch(1);
    LastLine = MakeFaultLine(LastText);
    auto* whole = new QVBoxLayout(this);
    Area = new CFormArea(Content);
    whole->addWidget(Area, 1);
    whole->addWidget(LastLine);
    whole->addWidget(Buttons);
}

QLabel* CForm::AddLabel(const QString& text, QWidget* buddy) {
    auto* label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

QWidget* CForm::MakeFaultLine(QLabel*& text) {
    auto* line = new QWidget;
    auto* lineLayout = new QHBoxLayout(line);
    lineLayout->setContentsMargins(0, 0, 0, 0);
    lineLayout->setSpacing(Theme.Px(size::Grid));
    lineLayout->addWidget(new CSignLabel(Theme, Sign::Error, SignSize), 0, Qt::AlignTop);
    text = new QLabel;
    text->setWordWrap(true);
    text->setMinimumHeight(text->fontMetrics().height());
    lineLayout->addWidget(text, 1);
    // The line keeps its place, so that nothing moves under the hand that types.
    QSizePolicy keeps = line->sizePolicy();
    keeps.setRetainSizeWhenHidden(true);
    line->setSizePolicy(keeps);
    line->setVisible(false);
    return line;
}

void CForm::AddField(const QString& label, QWidget* field, FaultOf fault) {
    const int row = Fields->rowCount();
    QLabel* name = AddLabel(label, field);
    name->setMinimumHeight(std::min(field->sizeHint().height(), Theme.Target()));
    Fields->addWidget(name, row, 0, Qt::AlignRight | Qt::AlignTop);
    Fields->addWidget(field, row, 1, 1, 2);
    field->setAccessibleName(QString(label).remove(QLatin1Char('&')));
    if (!fault)
        return;
    QLabel* text = nullptr;
    QWidget* line = MakeFaultLine(text);
    Fields->addWidget(line, row + 1, 1, 1, 2);
    Rows.push_back({field, line, text, std::move(fault)});
}

QLineEdit* CForm::AddText(const QString& label, const QString& value, FaultOf fault) {
    auto* edit = new QLineEdit(value);
    AddField(label, edit, std::move(fault));
    connect(edit, &QLineEdit::textChanged, this, &CForm::Check);
    return edit;
}

QComboBox* CForm::AddChoice(const QString& label, const QStringList& entries, int chosen,
                            FaultOf fault) {
    auto* combo = new QComboBox;
    combo->addItems(entries);
    combo->setCurrentIndex(chosen);
    AddField(label, combo, std::move(fault));
    connect(combo, &QComboBox::currentIndexChanged, this, &CForm::Check);
    return combo;
}

QCheckBox* CForm::AddSwitch(const QString& text, bool on) {
    auto* box = new QCheckBox(text);
    box->setChecked(on);
    Fields->addWidget(box, Fields->rowCount(), 1, 1, 2);
    connect(box, &QCheckBox::toggled, this, &CForm::Check);
    return box;
}

void CForm::AddHeading(const QString& text) {
    auto* label = new QLabel(text);
    QFont font = Theme.Font(FontRole::Tool);
    font.setBold(true);
    label->setFont(font);
    const int row = Fields->rowCount();
    if (row > 1)
        Fields->setRowMinimumHeight(row, Theme.Px(size::Between));
    Fields->addWidget(label, row + 1, 0, 1, 3);
}

QLabel* CForm::AddNote(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    AddWide(label);
    return label;
}

void CForm::AddWide(QWidget* widget) {
    Fields->addWidget(widget, Fields->rowCount(), 0, 1, 3);
}

void CForm::AddBeside(QWidget* field, QWidget* beside) {
    int row = 0, column = 0, rows = 0, columns = 0;
    Fields->getItemPosition(Fields->indexOf(field), &row, &column, &rows, &columns);
    Fields->removeWidget(field);
    Fields->addWidget(field, row, column);
    Fields->addWidget(beside, row, column + 1, Qt::AlignVCenter);
}

void CForm::SetOkText(const QString& text) {
    Ok->setText(text);
}

QPushButton* CForm::AddButton(const QString& text) {
    return Buttons->addButton(text, QDialogButtonBox::ActionRole);
}

QPushButton* CForm::CancelButton() const {
    return Buttons->button(QDialogButtonBox::Cancel);
}

void CForm::ShowFault(const QString& sentence) {
    LastText->setText(sentence);
    LastLine->setVisible(!sentence.isEmpty());
}

void CForm::accept() {
    Check();
    if (Ok->isEnabled() && (!Action || Action()))
        QDialog::accept();
}

void CForm::Check() {
    ShowFault({});
    bool valid = true;
    for (const Row& row : Rows) {
        const std::string fault = row.fault();
        const bool faulty = !fault.empty();
        valid = valid && !faulty;
        row.faultText->setText(ShownInLanguage(fault));
        row.faultLine->setVisible(faulty);
        row.field->setAccessibleDescription(row.faultText->text());
        if (row.field->property(FaultProperty).toBool() != faulty) {
            row.field->setProperty(FaultProperty, faulty);
            row.field->update();
        }
    }
    Ok->setEnabled(valid);
    emit Checked(valid);
}

bool CForm::IsValid() const {
    return std::all_of(Rows.begin(), Rows.end(),
                       [](const Row& row) { return row.fault().empty(); });
}

void CForm::done(int result) {
    if (!std::exchange(Finished, true))
        QDialog::done(result);
}

void CForm::OrderTabs() {
    Content->layout()->activate(); // where everything is
    std::vector<QWidget*> order = TabStops(*Area);
    for (QAbstractButton* button : Buttons->buttons())
        if (button != Buttons->button(QDialogButtonBox::Cancel))
            order.push_back(button);
    order.push_back(Buttons->button(QDialogButtonBox::Cancel));
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void CForm::Open() {
    Check();
    Area->updateGeometry();
    adjustSize();
    PutOver(*this);
    show();
    Content->layout()->invalidate(); // what was asked of it while hidden may not have been done
    OrderTabs();
    const std::vector<QWidget*> stops = TabStops(*Area);
    if (!stops.empty())
        stops.front()->setFocus();
    raise();
    activateWindow();
}

} // namespace qor
