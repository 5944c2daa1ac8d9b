// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/frame/ToolRow.h"

#include "app/look/Style.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace qor {

namespace {

constexpr int HoldMilliseconds = 1000, HoldTick = 40;
constexpr int LeastText = 11;

/// The buttons with their short names, in the translation context "ToolRow".
struct ToolName {
    Do action;
    const char* text;
};
constexpr ToolName ToolNames[] = {
    {Do::ConnectAll, QT_TRANSLATE_NOOP("ToolRow", "Connect")},
    {Do::StartAll, QT_TRANSLATE_NOOP("ToolRow", "Start")},
    {Do::StartLog, QT_TRANSLATE_NOOP("ToolRow", "Log")},
    {Do::Tare, QT_TRANSLATE_NOOP("ToolRow", "Tare")},
    {Do::Station, QT_TRANSLATE_NOOP("ToolRow", "Station")},
};
constexpr ToolName StopName{Do::StopLog, QT_TRANSLATE_NOOP("ToolRow", "Stop log")};

QString NameOf(const ToolName& name) {
    return QCoreApplication::translate("ToolRow", name.text);
}

} // namespace

CToolRowButton::CToolRowButton(const CTheme& theme, QAction* action, const QString& name,
                               QWidget* parent)
    : QToolButton(parent), Theme(theme) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    Tick.setInterval(HoldTick);
    connect(&Tick, &QTimer::timeout, this, &CToolRowButton::HoldOn);
    connect(&Theme, &CTheme::Changed, this, &CToolRowButton::updateGeometry);
    SetAction(action, name);
}

void CToolRowButton::SetAction(QAction* action, const QString& name) {
    if (action == Action)
        return;
    if (Action)
        disconnect(Action, nullptr, this, nullptr);
    Action = action;
    setText(name);
    const auto take = [this] {
        setIcon(Action->icon());
        setEnabled(Action->isEnabled());
        setToolTip(Action->toolTip());
        setAccessibleName(text());
        updateGeometry();
        update();
    };
    connect(Action, &QAction::changed, this, take);
    take();
}

void CToolRowButton::SetHold(int milliseconds) {
    if (milliseconds == HoldFor)
        return; // the banner's refreshes come while a hand is on the button
    HoldFor = milliseconds;
    EndHold();
}

void CToolRowButton::SetNarrow(bool narrow) {
    Narrow = narrow;
    updateGeometry();
}

void CToolRowButton::SetTextPixels(int pixels) {
    TextPixels = pixels;
    update();
}

int CToolRowButton::FittingTextPixels() const {
    QFont font = Theme.Font(FontRole::Tool);
    while (font.pixelSize() > LeastText &&
           QFontMetrics(font).horizontalAdvance(text()) > sizeHint().width() - Theme.Px(6))
        font.setPixelSize(font.pixelSize() - 1);
    return font.pixelSize();
}

QSize CToolRowButton::sizeHint() const {
    const int text =
        QFontMetrics(Theme.Font(FontRole::Tool)).horizontalAdvance(QToolButton::text());
    return {Narrow ? Theme.Px(size::NarrowToolButtonWidth)
                   : std::max(Theme.Px(size::ToolButtonWidth), text + Theme.Px(16)),
            Theme.Px(size::ToolButtonHeight)};
}

void CToolRowButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Tokens& colours = Theme.Colours();
    const double pressed = isDown() ? 0.22 : underMouse() ? 0.10 : 0.0;
    DrawBox(painter, rect(),
            isEnabled() ? Mixed(colours.raised, colours.text, pressed) : QColor(colours.window),
            hasFocus() ? QColor(colours.accent) : Mixed(colours.window, colours.border, 0.8),
            hasFocus() ? 2 : 1);
    if (Action && Action->isChecked() && isEnabled())
        painter.fillRect(QRect(2, height() - 6, width() - 4, 4), QColor(colours.accent));
    if (HeldFor > 0) {
        const int done = (height() - 4) * std::min(HeldFor, HoldFor) / HoldFor;
        painter.fillRect(QRect(2, height() - 2 - done, width() - 4, done),
                         Mixed(colours.raised, colours.accent, 0.5));
    }
    const int side = Theme.Px(size::ToolIcon), above = Theme.Px(12);
    icon().paint(&painter, QRect((width() - side) / 2, above, side, side), Qt::AlignCenter,
                 isEnabled() ? QIcon::Normal : QIcon::Disabled);
    QFont font = Theme.Font(FontRole::Tool);
    if (TextPixels > 0)
        font.setPixelSize(TextPixels);
    painter.setFont(font);
    painter.setPen(QColor(isEnabled() ? colours.text : colours.border));
    painter.drawText(QRect(0, above + side, width(), height() - above - side), Qt::AlignCenter,
                     text());
}

void CToolRowButton::BeginHold() {
    HeldFor = 1;
    setDown(true);
    Tick.start();
}

void CToolRowButton::EndHold() {
    Tick.stop();
    setDown(false);
    HeldFor = 0;
    update();
}

void CToolRowButton::HoldOn() {
    HeldFor += HoldTick;
    update();
    if (HeldFor < HoldFor)
        return;
    EndHold();
    Action->trigger();
}

void CToolRowButton::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton)
        return;
    if (HoldFor > 0)
        BeginHold();
    else
        setDown(true);
}

void CToolRowButton::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !isDown())
        return;
    const bool tooShort = HoldFor > 0;
    EndHold();
    if (tooShort)
        QToolTip::showText(mapToGlobal(QPoint(0, height())), tr("Hold for one second."), this);
    else if (rect().contains(event->position().toPoint()))
        Action->trigger();
}

void CToolRowButton::keyPressEvent(QKeyEvent* event) {
    const bool press = event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
                       event->key() == Qt::Key_Enter;
    if (!press)
        return QToolButton::keyPressEvent(event);
    if (event->isAutoRepeat())
        return;
    if (HoldFor > 0)
        BeginHold();
    else
        Action->trigger();
}

void CToolRowButton::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat())
        EndHold();
}

CToolRow::CToolRow(const CTheme& theme, const CActions& actions, QWidget* parent)
    : QWidget(parent), Actions(actions) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(size::Grid);
    for (const ToolName& name : ToolNames) {
        auto* button = new CToolRowButton(theme, Actions[name.action], NameOf(name));
        row->addWidget(button);
        Buttons.push_back(button);
        if (name.action == Do::StartLog)
            LogButton = button;
    }
    connect(&theme, &CTheme::Changed, this, &CToolRow::AlignTexts);
    AlignTexts();
}

void CToolRow::SetLogging(bool logging) {
    const ToolName* start =
        std::find_if(std::begin(ToolNames), std::end(ToolNames),
                     [](const ToolName& name) { return name.action == Do::StartLog; });
    const ToolName& name = logging ? StopName : *start;
    LogButton->SetAction(Actions[name.action], NameOf(name));
    LogButton->SetHold(logging ? HoldMilliseconds : 0);
    AlignTexts();
}

void CToolRow::SetNarrow(bool narrow) {
    for (CToolRowButton* button : Buttons)
        button->SetNarrow(narrow);
    AlignTexts();
}

/// All names in one size, that of the one with the least room.
void CToolRow::AlignTexts() {
    int pixels = Buttons.front()->FittingTextPixels();
    for (const CToolRowButton* button : Buttons)
        pixels = std::min(pixels, button->FittingTextPixels());
    for (CToolRowButton* button : Buttons)
        button->SetTextPixels(pixels);
}

} // namespace qor
