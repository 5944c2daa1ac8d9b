// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/WindowTitleBar.h"

#include "app/Form.h"
#include "app/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

namespace qor {

CWindowTitleBar::CWindowTitleBar(const CTheme& theme, Has has, QWidget* parent)
    : QWidget(parent), Theme(theme), Wanted(has), SignShown(new CSignLabel(theme, Sign::None, 20)),
      Title(new QLabel), Leading(new QLabel) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(size::Between, 0, 0, 0);
    row->setSpacing(size::Grid);
    row->addWidget(SignShown);
    row->addWidget(Title, 1);
    row->addWidget(Leading);
    Title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    Title->setTextFormat(Qt::PlainText);
    Leading->setTextFormat(Qt::PlainText);
    SignShown->hide();

    Pause = AddButton("pause", tr("Pause this window; nothing is lost meanwhile (Space)."));
    Pause->setCheckable(true);
    connect(Pause, &QToolButton::clicked, this, &CWindowTitleBar::PausePressed);
    Fit = AddButton("fit", tr("Reset zoom and limits (Home)."));
    connect(Fit, &QToolButton::clicked, this, &CWindowTitleBar::FitPressed);
    Menu = AddButton("menu", tr("What this window can show and do (Shift+F10)."));
    connect(Menu, &QToolButton::clicked, this,
            [this] { emit MenuPressed(Menu->mapToGlobal(QPoint(0, Menu->height()))); });
    Float = AddButton("float", tr("Take the window out of the frame, or put it back."));
    connect(Float, &QToolButton::clicked, this, &CWindowTitleBar::FloatPressed);
    Close = AddButton("close", tr("Close this window (Ctrl+W)."));
    connect(Close, &QToolButton::clicked, this, &CWindowTitleBar::ClosePressed);
    connect(&Theme, &CTheme::Changed, this, &CWindowTitleBar::TakeTheme);
    TakeTheme();
}

QToolButton* CWindowTitleBar::AddButton(const char* icon, const QString& tip) {
    auto* button = new QToolButton;
    button->setIcon(ThemeIcon(Theme, QString::fromLatin1(icon)));
    button->setAutoRaise(true);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

void CWindowTitleBar::TakeTheme() {
    const int side = Theme.Px(size::TitleBar);
    for (QToolButton* button : {Pause, Fit, Menu, Float, Close}) {
        button->setFixedSize(Theme.LargeTargets() ? Theme.Target() : side,
                             Theme.LargeTargets() ? Theme.Target() : side);
        button->setIconSize(QSize(Theme.Px(18), Theme.Px(18)));
    }
    updateGeometry();
    FitTitle();
    update();
}

void CWindowTitleBar::SetTitle(const QString& title) {
    if (title == FullTitle)
        return;
    FullTitle = title;
    FitTitle();
}

void CWindowTitleBar::SetSign(Sign sign) {
    SignShown->SetSign(sign);
    SignShown->setVisible(sign != Sign::None);
}

void CWindowTitleBar::SetLeading(const QString& leading, const QString& paused) {
    const Tokens& colours = Theme.Colours();
    const bool isPaused = !paused.isEmpty();
    const QString text = isPaused ? tr("PAUSED %1").arg(paused) : leading;
    if (Leading->text() != text)
        Leading->setText(text);
    QPalette palette;
    palette.setColor(QPalette::WindowText, QColor(isPaused ? colours.amberText : colours.text));
    palette.setColor(QPalette::Window, QColor(isPaused ? colours.amber : colours.window));
    Leading->setPalette(palette);
    Leading->setAutoFillBackground(isPaused);
    Leading->setFrameShape(isPaused && Theme.IsNight() ? QFrame::Box : QFrame::NoFrame);
    Leading->setMargin(isPaused ? 3 : 0);
    QFont font = Theme.Font(FontRole::Text);
    font.setBold(true);
    Leading->setFont(font);
}

void CWindowTitleBar::SetPauseDown(bool down) {
    Pause->setChecked(down);
}

QSize CWindowTitleBar::sizeHint() const {
    return {Theme.Px(size::NarrowTitleBar),
            Theme.LargeTargets() ? Theme.Target() : Theme.Px(size::TitleBar)};
}

QSize CWindowTitleBar::minimumSizeHint() const {
    return {Theme.Px(120), sizeHint().height()};
}

void CWindowTitleBar::FitTitle() {
    Title->setText(
        Title->fontMetrics().elidedText(FullTitle, Qt::ElideRight, std::max(Title->width(), 1)));
    setToolTip(Title->text() == FullTitle ? QString() : FullTitle);
    setAccessibleName(FullTitle);
}

void CWindowTitleBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Narrow = Wanted.menu && width() < Theme.Px(size::NarrowTitleBar);
    Pause->setVisible(Wanted.pause && !Narrow);
    Fit->setVisible(Wanted.fit && !Narrow);
    Menu->setVisible(Wanted.menu);
    Float->setVisible(!Narrow);
    Close->setVisible(!Narrow);
    layout()->activate();
    FitTitle();
}

void CWindowTitleBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Theme.Colours().window));
    painter.fillRect(QRect(0, height() - 1, width(), 1),
                     Mixed(Theme.Colours().window, Theme.Colours().border, 0.6));
}

} // namespace qor
