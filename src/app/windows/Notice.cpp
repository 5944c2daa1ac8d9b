// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/Notice.h"

#include "app/ShownText.h"

#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace qor {

CNotice::CNotice(const CTheme& theme, QWidget* parent)
    : QWidget(parent), Theme(theme), Sentence(new QLabel), Remedy(new QPushButton) {
    Sentence->setWordWrap(true);
    Sentence->setAlignment(Qt::AlignCenter);
    Sentence->setTextFormat(Qt::PlainText);
    Remedy->setAutoDefault(true); // Enter presses it
    connect(Remedy, &QPushButton::clicked, this, &CNotice::RemedyPressed);
    auto* whole = new QVBoxLayout(this);
    whole->addStretch(1);
    whole->addWidget(Sentence);
    whole->addWidget(Remedy, 0, Qt::AlignHCenter);
    whole->addStretch(1);
    parent->installEventFilter(this);
    hide();
}

bool CNotice::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void CNotice::ShowHead(const PageHead& head) {
    setVisible(head.state != PageState::Live);
    // A plot that waits keeps its axes in sight.
    Covers = head.state == PageState::Empty;
    setAttribute(Qt::WA_TransparentForMouseEvents, head.remedy.empty());
    Sentence->setText(ShownInLanguage(head.sentence));
    Remedy->setText(ShownInLanguage(head.remedy));
    Remedy->setVisible(!head.remedy.empty());
    setGeometry(parentWidget()->rect());
    raise();
    update();
}

void CNotice::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QRect ground = rect();
    if (!Covers) {
        // Only behind the words: the axes beside them stay in sight.
        const QRect words = Sentence->fontMetrics().boundingRect(
            Sentence->geometry(), Qt::AlignCenter | Qt::TextWordWrap, Sentence->text());
        ground = words.united(Remedy->isVisible() ? Remedy->geometry() : words)
                     .adjusted(-size::Between, -size::Grid, size::Between, size::Grid);
    }
    painter.fillRect(ground, QColor(Theme.Colours().base));
}

} // namespace qor
