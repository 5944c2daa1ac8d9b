// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/WindowTitleBar.h"

#include "app/dialogs/Form.h"
#include "app/look/Icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace qor {

namespace {

constexpr int LeastTitle = 160; ///< a longer title gives way to the value

} // namespace

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
    const QString leading = std::exchange(FullLeading, QString());
    if (!PausedShown)
        SetLeading(leading);
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
    FitTitle();
}

void CWindowTitleBar::SetLeading(const QString& leading, const QString& paused) {
    const Tokens& colours = Theme.Colours();
    const bool isPaused = !paused.isEmpty();
    const QString text = isPaused ? tr("PAUSED %1").arg(paused) : leading;
    if (text == FullLeading && isPaused == PausedShown)
        return;
    FullLeading = text;
    PausedShown = isPaused;
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
    FitTitle();
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

/// The value is shown whole or not at all: part of a number is another number.
void CWindowTitleBar::FitTitle() {
    int room = width() - layout()->contentsMargins().left();
    for (const QWidget* part : {static_cast<QWidget*>(SignShown), static_cast<QWidget*>(Pause),
                                static_cast<QWidget*>(Fit), static_cast<QWidget*>(Menu),
                                static_cast<QWidget*>(Float), static_cast<QWidget*>(Close)})
        if (!part->isHidden())
            room -= std::max(part->minimumWidth(), part->sizeHint().width()) + layout()->spacing();
    const int value = Leading->fontMetrics().horizontalAdvance(FullLeading) + Theme.Px(16);
    const int title =
        std::min(Title->fontMetrics().horizontalAdvance(FullTitle), Theme.Px(LeastTitle));
    const bool fits = !FullLeading.isEmpty() && (PausedShown || value + title <= room);
    if (!fits && !FullLeading.isEmpty() && !Narrow && !Compact && Wanted.menu &&
        value + title <= width() - 2 * Theme.Px(size::TitleBar)) {
        // The value is worth more than buttons that the menu has too.
        Compact = true;
        ShowButtons();
        return FitTitle();
    }
    Leading->setVisible(fits);
    if (Leading->text() != FullLeading)
        Leading->setText(FullLeading);
    Title->setText(Title->fontMetrics().elidedText(FullTitle, Qt::ElideRight,
                                                   std::max(room - (fits ? value : 0), 1)));
    const bool whole = Title->text() == FullTitle && (fits || FullLeading.isEmpty());
    setToolTip(whole ? QString() : FullTitle + QLatin1Char('\n') + FullLeading);
    setAccessibleName(FullTitle);
    setAccessibleDescription(FullLeading);
}

void CWindowTitleBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    Narrow = Wanted.menu && width() < Theme.Px(size::NarrowTitleBar);
    Compact = false;
    ShowButtons();
    FitTitle();
}

void CWindowTitleBar::ShowButtons() {
    const bool all = !IsNarrow();
    Pause->setVisible(Wanted.pause && all);
    Fit->setVisible(Wanted.fit && all);
    Menu->setVisible(Wanted.menu);
    Float->setVisible(all);
    Close->setVisible(all);
}

void CWindowTitleBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Theme.Colours().window));
    painter.fillRect(QRect(0, height() - 1, width(), 1),
                     Mixed(Theme.Colours().window, Theme.Colours().border, 0.6));
}

} // namespace qor
