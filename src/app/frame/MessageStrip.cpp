// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/MessageStrip.h"

#include "app/ShownText.h"
#include "app/dialogs/Form.h"
#include "app/look/Icons.h"
#include "views/NumberText.h"

#include <QAccessible>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

namespace qor {

CMessageStrip::CMessageStrip(const CTheme& theme, QWidget* parent)
    : QWidget(parent), Theme(theme), SignShown(new CSignLabel(theme, Sign::None, 22)),
      Text(new QLabel), ButtonPlace(new QHBoxLayout), HistoryButton(new QToolButton),
      CloseButton(new QToolButton) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    Text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    Text->setTextFormat(Qt::PlainText);
    HistoryButton->setToolTip(tr("Everything that was said, the newest first."));
    HistoryButton->setFocusPolicy(Qt::TabFocus);
    CloseButton->setIcon(ThemeIcon(Theme, QStringLiteral("close")));
    CloseButton->setAutoRaise(true);
    CloseButton->setFocusPolicy(Qt::TabFocus);
    CloseButton->setToolTip(tr("Seen: take this message away. It stays in the history."));
    CloseButton->setAccessibleName(tr("Seen"));
    connect(HistoryButton, &QToolButton::clicked, this, &CMessageStrip::OpenHistory);
    connect(CloseButton, &QToolButton::clicked, this, [this] {
        Said.SeeCurrent();
        Refresh();
    });

    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(size::Between, 2, size::Grid, 2);
    row->addWidget(SignShown);
    row->addWidget(Text, 1);
    row->addLayout(ButtonPlace);
    row->addWidget(HistoryButton);
    row->addWidget(CloseButton);
    connect(&Theme, &CTheme::Changed, this, &CMessageStrip::updateGeometry);
    Refresh();
}

void CMessageStrip::Post(StripMessage message) {
    Said.Post(std::move(message));
    Refresh();
}

void CMessageStrip::Close(const std::string& topic) {
    Said.Close(topic);
    Refresh();
}

QSize CMessageStrip::sizeHint() const {
    return {Theme.Px(600), std::max(Theme.Px(size::Strip), Theme.Target() + 4)};
}

void CMessageStrip::MakeButtons(const StripMessage& message) {
    while (QLayoutItem* item = ButtonPlace->takeAt(0)) {
        // A button may be what has just been pressed.
        if (item->widget()) {
            item->widget()->hide();
            item->widget()->deleteLater();
        }
        delete item;
    }
    for (const MessageButton& button : message.buttons) {
        auto* made = new QPushButton(Shown(button.text));
        made->setFocusPolicy(Qt::TabFocus);
        made->setAutoDefault(false);
        connect(made, &QPushButton::clicked, this,
                [this, topic = message.topic, press = button.press] {
                    Said.Close(topic); // first, for what it does may be said under the same topic
                    if (press)
                        press();
                    Refresh();
                });
        ButtonPlace->addWidget(made);
    }
}

void CMessageStrip::Refresh() {
    const StripMessage* message = Said.Current();
    setVisible(message != nullptr);
    if (!message)
        return;
    SignShown->SetSign(message->sign);
    FullText = Shown(message->time.empty() ? message->text : message->time + "  " + message->text);
    setAccessibleName(SignName(message->sign) + QLatin1Char(' ') + FullText);
    MakeButtons(*message);
    HistoryButton->setText(
        tr("History %1", "number of unseen messages").arg(Shown(CountText(Said.UnseenCount()))));
    FitText();
    update();
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void CMessageStrip::FitText() {
    Text->setText(Text->fontMetrics().elidedText(FullText, Qt::ElideRight, Text->width()));
    Text->setToolTip(Text->text() == FullText ? QString() : FullText);
}

void CMessageStrip::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layout()->activate();
    FitText();
}

void CMessageStrip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Tokens& colours = Theme.Colours();
    painter.fillRect(rect(), QColor(colours.base));
    painter.fillRect(QRect(0, height() - 1, width(), 1), QColor(colours.border));
    const StripMessage* message = Said.Current();
    if (message && (message->sign == Sign::Alarm || message->sign == Sign::Error))
        painter.fillRect(QRect(0, 0, size::Grid, height()), QColor(colours.red));
}

void CMessageStrip::OpenHistory() {
    auto* window = new QDialog(this);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(tr("What was said"));
    auto* list = new QListWidget;
    list->setWordWrap(true);
    list->setAccessibleName(window->windowTitle());
    for (auto entry = Said.Entries().rbegin(); entry != Said.Entries().rend(); ++entry) {
        const StripMessage& message = entry->message;
        auto* item = new QListWidgetItem(SignIcon(Theme, message.sign),
                                         Shown(message.time + "  " + message.text), list);
        item->setData(Qt::AccessibleTextRole,
                      SignName(message.sign) + QLatin1Char(' ') + item->text());
    }
    auto* whole = new QVBoxLayout(window);
    if (Said.Entries().empty())
        whole->addWidget(new QLabel(tr("Nothing was said in this session.")));
    whole->addWidget(list);
    window->resize(Theme.Px(720), Theme.Px(420));
    window->show();
    Said.SeeAll();
    Refresh();
}

} // namespace qor
