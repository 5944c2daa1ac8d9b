// SPDX-License-Identifier: GPL-3.0-or-later
//
// Frames, buttons' panels, indicators, arrows.
#include "app/look/Icons.h"
#include "app/look/Style.h"

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace qor {

namespace {

constexpr double HoverPart = 0.10, PressPart = 0.22;
constexpr int FocusWidth = 2;

QColor None() {
    return QColor(Qt::transparent);
}

Qt::ArrowType ArrowOf(QStyle::PrimitiveElement element) {
    switch (element) {
    case QStyle::PE_IndicatorArrowUp:
    case QStyle::PE_IndicatorSpinUp:
        return Qt::UpArrow;
    case QStyle::PE_IndicatorArrowLeft:
        return Qt::LeftArrow;
    case QStyle::PE_IndicatorArrowRight:
    case QStyle::PE_IndicatorColumnViewArrow:
        return Qt::RightArrow;
    default: // no enum of ours: one of Qt's
        return Qt::DownArrow;
    }
}

} // namespace

void CStyle::DrawButton(const QStyleOption& option, QPainter& painter, bool flat,
                        bool standard) const {
    const bool enabled = option.state & State_Enabled;
    const bool down = option.state & (State_Sunken | State_On);
    const bool hover = enabled && (option.state & State_MouseOver);
    if (flat && !down && !hover && !(option.state & State_HasFocus))
        return;
    QColor fill(flat && !down && !hover ? C().window : C().raised);
    if (down || hover)
        fill = Mixed(C().raised, C().text, down ? PressPart : HoverPart);
    if (!enabled)
        fill = None();
    const bool strong = (option.state & State_HasFocus) || (standard && enabled);
    const QColor border = strong     ? QColor(C().accent)
                          : !enabled ? Mixed(C().window, C().border, 0.5)
                                     : QColor(C().border);
    DrawBox(painter, option.rect, fill, flat && !strong ? None() : border, strong ? FocusWidth : 1);
}

void CStyle::DrawCheckBox(const QStyleOption& option, QPainter& painter) const {
    const bool enabled = option.state & State_Enabled;
    const QColor line(enabled ? C().text : C().border);
    const bool hover = enabled && (option.state & State_MouseOver);
    DrawBox(painter, option.rect, QColor(C().base), QColor(hover ? C().accent : C().border),
            hover ? FocusWidth : 1);
    if (option.state & State_On)
        DrawCheckMark(painter, option.rect, line);
    else if (option.state & State_NoChange)
        painter.fillRect(
            option.rect.adjusted(5, option.rect.height() / 2 - 1, -5, 1 - option.rect.height() / 2),
            line);
}

void CStyle::DrawRadioButton(const QStyleOption& option, QPainter& painter) const {
    const bool enabled = option.state & State_Enabled;
    const bool hover = enabled && (option.state & State_MouseOver);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(hover ? C().accent : C().border), hover ? FocusWidth : 1));
    painter.setBrush(QColor(C().base));
    const QRectF place = QRectF(option.rect).adjusted(1.0, 1.0, -1.0, -1.0);
    painter.drawEllipse(place);
    if (option.state & State_On) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(enabled ? C().text : C().border));
        const double inset = place.width() * 0.28;
        painter.drawEllipse(place.adjusted(inset, inset, -inset, -inset));
    }
    painter.restore();
}

void CStyle::DrawField(const QStyleOption& option, QPainter& painter, const QWidget* widget) const {
    const bool enabled = option.state & State_Enabled;
    const bool faulty = widget && widget->property(FaultProperty).toBool();
    const bool focus = option.state & State_HasFocus;
    const QRgb border = faulty ? C().red : focus ? C().accent : C().border;
    DrawBox(painter, option.rect, QColor(enabled ? C().base : C().window), QColor(border),
            faulty || focus ? FocusWidth : 1);
}

void CStyle::DrawItemPanel(const QStyleOption& option, QPainter& painter) const {
    if (const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(&option))
        if (item->backgroundBrush.style() != Qt::NoBrush)
            painter.fillRect(option.rect, item->backgroundBrush);
    if (option.state & State_Selected)
        painter.fillRect(option.rect, option.palette.highlight());
    else if ((option.state & State_MouseOver) && (option.state & State_Enabled))
        painter.fillRect(option.rect, Mixed(C().base, C().text, 0.07));
}

void CStyle::DrawHandle(const QStyleOption& option, QPainter& painter) const {
    const bool active = option.state & (State_MouseOver | State_Sunken);
    painter.fillRect(option.rect, active ? Mixed(C().window, C().accent, 0.5) : QColor(C().window));
    // Three dots in the middle, along the longer side.
    const bool upright = option.rect.height() > option.rect.width();
    const QPoint step = upright ? QPoint(0, 8) : QPoint(8, 0);
    for (int i = -1; i <= 1; ++i) {
        QRect dot(0, 0, 2, 2);
        dot.moveCenter(option.rect.center() + step * i);
        painter.fillRect(dot, QColor(C().border));
    }
}

void CStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
    const QRect& place = option->rect;
    switch (element) {
    case PE_FrameFocusRect:
        DrawBox(*painter, place, None(),
                QColor(option->state & State_Selected ? C().base : C().accent), FocusWidth);
        return;
    case PE_FrameDefaultButton:
    case PE_FrameButtonTool:
    case PE_FrameStatusBarItem:
    case PE_PanelStatusBar:
    case PE_PanelToolBar:
    case PE_PanelMenuBar:
    case PE_FrameTabBarBase:
    case PE_IndicatorTabTearLeft:
    case PE_IndicatorTabTearRight:
    case PE_PanelItemViewRow:
        return;
    case PE_PanelButtonCommand: {
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        const bool flat = button && (button->features & QStyleOptionButton::Flat);
        const bool standard = button && (button->features & QStyleOptionButton::DefaultButton);
        DrawButton(*option, *painter, flat, standard);
        return;
    }
    case PE_PanelButtonBevel:
    case PE_PanelButtonTool:
    case PE_IndicatorButtonDropDown: {
        QStyleOption panel = *option; // a frame of its own shows the focus
        panel.state &= ~State_HasFocus;
        DrawButton(panel, *painter, option->state & State_AutoRaise, false);
        return;
    }
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        DrawCheckBox(*option, *painter);
        return;
    case PE_IndicatorRadioButton:
        DrawRadioButton(*option, *painter);
        return;
    case PE_IndicatorMenuCheckMark:
        DrawCheckMark(*painter, place, option->palette.color(QPalette::Text));
        return;
    case PE_PanelLineEdit: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth == 0)
            painter->fillRect(place, option->palette.base()); // inside a box that has its own edge
        else
            DrawField(*option, *painter, widget);
        return;
    }
    case PE_FrameLineEdit:
        return; // comes with the panel
    case PE_Frame:
    case PE_FrameMenu:
    case PE_FrameWindow:
    case PE_FrameDockWidget:
    case PE_FrameTabWidget:
        DrawBox(*painter, place, None(),
                QColor(element == PE_Frame && (option->state & State_HasFocus) ? C().accent
                                                                               : C().border));
        return;
    case PE_FrameGroupBox:
        DrawBox(*painter, place, None(), Mixed(C().window, C().border, 0.5));
        return;
    case PE_PanelMenu:
    case PE_Widget:
        painter->fillRect(place, QColor(C().window));
        return;
    case PE_PanelTipLabel:
        painter->fillRect(place, QColor(C().border));
        painter->fillRect(place.adjusted(1, 1, -1, -1), QColor(C().raised));
        return;
    case PE_PanelScrollAreaCorner:
        painter->fillRect(place, QColor(C().window));
        return;
    case PE_PanelItemViewItem:
        DrawItemPanel(*option, *painter);
        return;
    case PE_IndicatorBranch:
        if (option->state & State_Children)
            DrawArrow(*painter, place, option->state & State_Open ? Qt::DownArrow : Qt::RightArrow,
                      QColor(option->state & State_Selected ? C().base : C().text2));
        return;
    case PE_IndicatorHeaderArrow: {
        const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
        if (header && header->sortIndicator != QStyleOptionHeader::None)
            DrawArrow(*painter, place,
                      header->sortIndicator == QStyleOptionHeader::SortUp ? Qt::UpArrow
                                                                          : Qt::DownArrow,
                      QColor(C().text));
        return;
    }
    case PE_IndicatorArrowDown:
    case PE_IndicatorArrowUp:
    case PE_IndicatorArrowLeft:
    case PE_IndicatorArrowRight:
    case PE_IndicatorSpinUp:
    case PE_IndicatorSpinDown:
    case PE_IndicatorColumnViewArrow:
        DrawArrow(*painter, place, ArrowOf(element),
                  QColor(option->state & State_Enabled ? C().text : C().border));
        return;
    case PE_IndicatorDockWidgetResizeHandle:
        DrawHandle(*option, *painter);
        return;
    case PE_IndicatorToolBarSeparator: {
        QRect line = place;
        if (option->state & State_Horizontal)
            line.setRect(place.center().x(), place.top() + 4, 1, place.height() - 8);
        else
            line.setRect(place.left() + 4, place.center().y(), place.width() - 8, 1);
        painter->fillRect(line, QColor(C().border));
        return;
    }
    case PE_IndicatorItemViewItemDrop:
        DrawBox(*painter, place, None(), QColor(C().accent), FocusWidth);
        return;
    case PE_IndicatorTabClose:
        PaintIcon(*painter, place.adjusted(2, 2, -2, -2), QStringLiteral("close"), C().text);
        return;
    default: // no enum of ours: one of Qt's
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

} // namespace qor
