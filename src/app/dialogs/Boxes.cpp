// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/dialogs/Boxes.h"

#include "app/dialogs/Form.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace qor {

void PutOver(QWidget& dialog) {
    constexpr int TitleHeight = 40; // about; the frame is not known before it is shown
    const QWidget* window = dialog.parentWidget() ? dialog.parentWidget()->window() : nullptr;
    if (!window)
        return;
    const QRect room = window->screen()->availableGeometry().adjusted(0, TitleHeight, 0, 0);
    const QPoint wanted = window->geometry().center() - dialog.rect().center();
    dialog.move(
        std::clamp(wanted.x(), room.left(), std::max(room.right() - dialog.width(), room.left())),
        std::clamp(wanted.y(), room.top(), std::max(room.bottom() - dialog.height(), room.top())));
}

CBoxes::CBoxes(const CTheme& theme, QWidget* window)
    : QObject(window), Theme(theme), Window(window) {}

void CBoxes::Tell(const QString& text, std::function<void()> then) {
    Waiting.push_back({text, false, [then = std::move(then)](bool) {
                           if (then)
                               then();
                       }});
    ShowNext();
}

void CBoxes::Ask(const QString& text, std::function<void(bool)> then) {
    Waiting.push_back({text, true, std::move(then)});
    ShowNext();
}

void CBoxes::DropQuestions() {
    std::erase_if(Waiting, [](const Box& box) { return box.question; });
    if (Open && OpenAsks)
        Open->reject();
}

void CBoxes::ShowNext() {
    if (Open || Waiting.empty())
        return;
    const Box box = std::move(Waiting.front());
    Waiting.pop_front();
    emit Appears(box.text);

    auto* dialog = new QDialog(Window);
    Open = dialog;
    OpenAsks = box.question;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setModal(false);
    dialog->setWindowTitle(QCoreApplication::applicationName());
    auto* row = new QHBoxLayout;
    row->addWidget(new CSignLabel(Theme, Sign::Warning, 40), 0, Qt::AlignTop);
    auto* text = new QLabel(box.text);
    text->setTextFormat(Qt::PlainText);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setMinimumWidth(Theme.Px(280));
    row->addWidget(text, 1);
    auto* buttons = new QDialogButtonBox(
        box.question ? QDialogButtonBox::Yes | QDialogButtonBox::No
                     : QDialogButtonBox::StandardButtons(QDialogButtonBox::Ok));
    auto* whole = new QVBoxLayout(dialog);
    whole->addLayout(row);
    whole->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    QPushButton* standard =
        buttons->button(box.question ? QDialogButtonBox::No : QDialogButtonBox::Ok);
    standard->setDefault(true);
    standard->setFocus();
    connect(dialog, &QDialog::finished, this, [this, then = box.then](int result) {
        Open = nullptr;
        if (then)
            then(result == QDialog::Accepted);
        ShowNext();
    });
    dialog->adjustSize();
    PutOver(*dialog);
    dialog->show();
    dialog->raise();
}

} // namespace qor
