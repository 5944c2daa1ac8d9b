// SPDX-License-Identifier: GPL-3.0-or-later
//
// Menus, tabs, headers, handles, progress.
#include "app/look/Icons.h"
#include "app/look/Style.h"

#include <QPainter>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>

namespace qor {

void CStyle::DrawMenuItem(const QStyleOption& option, QPainter& painter,
                          const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(&option);
    if (!item)
        return;
    const QRect& place = item->rect;
    painter.fillRect(place, QColor(C().window));
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        painter.fillRect(
            QRect(place.left() + Theme.Px(8), place.center().y(), place.width() - Theme.Px(16), 1),
            Mixed(C().window, C().border, 0.6));
        return;
    }
    const bool enabled = item->state & State_Enabled;
    const bool selected = item->state & State_Selected;
    if (selected)
        painter.fillRect(place, enabled ? QColor(C().accent) : Mixed(C().window, C().border, 0.3));
    const QColor line(!enabled ? C().border : selected ? C().base : C().text);

    const int side = Theme.Px(20), gap = Theme.Px(8);
    QRect mark(place.left() + gap, place.center().y() - side / 2, side, side);
    if (item->checkType != QStyleOptionMenuItem::NotCheckable) {
        DrawBox(painter, mark, Qt::transparent,
                item->checked ? line : Mixed(C().window, C().border, 0.6));
        if (item->checked)
            DrawCheckMark(painter, mark, line);
    } else if (!item->icon.isNull()) {
        item->icon.paint(&painter, mark, Qt::AlignCenter,
                         !enabled   ? QIcon::Disabled
                         : selected ? QIcon::Selected
                                    : QIcon::Normal);
    }

    QRect text = place.adjusted(2 * gap + side, 0, -gap - side, 0);
    const qsizetype tab = item->text.indexOf(QLatin1Char('\t'));
    painter.save();
    painter.setPen(line);
    QFont font = item->font;
    painter.setFont(font);
    const int flags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextShowMnemonic;
    painter.drawText(text, flags | Qt::AlignLeft, item->text.left(tab));
    if (tab >= 0) {
        if (enabled && !selected)
            painter.setPen(QColor(C().text2));
        painter.drawText(text, flags | Qt::AlignRight, item->text.mid(tab + 1));
    }
    painter.restore();
    if (item->menuItemType == QStyleOptionMenuItem::SubMenu)
        DrawArrow(painter, QRect(place.right() - gap - side, mark.top(), side, side),
                  widget && widget->isRightToLeft() ? Qt::LeftArrow : Qt::RightArrow, line);
}

void CStyle::DrawMenuBarItem(const QStyleOption& option, QPainter& painter) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(&option);
    if (!item)
        return;
    const bool active = (item->state & State_Selected) && (item->state & State_Enabled);
    painter.fillRect(item->rect, QColor(active ? C().accent : C().window));
    painter.save();
    painter.setPen(QColor(active ? C().base : item->state & State_Enabled ? C().text : C().border));
    painter.drawText(item->rect, Qt::AlignCenter | Qt::TextSingleLine | Qt::TextShowMnemonic,
                     item->text);
    painter.restore();
}

void CStyle::DrawHeaderSection(const QStyleOption& option, QPainter& painter) const {
    const bool hover = option.state & State_MouseOver;
    painter.fillRect(option.rect, hover ? Mixed(C().window, C().text, 0.08) : QColor(C().window));
    painter.fillRect(QRect(option.rect.left(), option.rect.bottom(), option.rect.width(), 1),
                     QColor(C().border));
}

void CStyle::DrawTab(const QStyleOption& option, QPainter& painter) const {
    const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(&option);
    if (!tab)
        return;
    const bool selected = tab->state & State_Selected;
    const bool hover = tab->state & State_MouseOver;
    const bool below =
        tab->shape == QTabBar::RoundedSouth || tab->shape == QTabBar::TriangularSouth;
    const QRect& place = tab->rect;
    painter.fillRect(place, selected ? QColor(C().base)
                            : hover  ? Mixed(C().raised, C().text, 0.08)
                                     : QColor(C().raised));
    const int thick = 3;
    if (selected)
        painter.fillRect(QRect(place.left(), below ? place.bottom() - thick + 1 : place.top(),
                               place.width(), thick),
                         QColor(C().accent));
    painter.fillRect(QRect(place.right(), place.top(), 1, place.height()),
                     Mixed(C().window, C().border, 0.6));
}

void CStyle::DrawProgress(const QStyleOption& option, QPainter& painter) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(&option);
    if (!bar)
        return;
    const int whole = bar->maximum - bar->minimum;
    QRect done = bar->rect.adjusted(2, 2, -2, -2);
    if (whole > 0)
        done.setWidth(done.width() * std::clamp(bar->progress - bar->minimum, 0, whole) / whole);
    painter.fillRect(done, QColor(C().accent));
}

void CStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                         const QWidget* widget) const {
    const QRect& place = option->rect;
    switch (element) {
    case CE_PushButton:
        // The edge shows the focus.
        proxy()->drawControl(CE_PushButtonBevel, option, painter, widget);
        proxy()->drawControl(CE_PushButtonLabel, option, painter, widget);
        return;
    case CE_PushButtonBevel: {
        proxy()->drawPrimitive(PE_PanelButtonCommand, option, painter, widget);
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        if (button && (button->features & QStyleOptionButton::HasMenu))
            DrawArrow(
                *painter,
                QRect(place.right() - Theme.Px(24), place.top(), Theme.Px(20), place.height()),
                Qt::DownArrow, QColor(C().text));
        return;
    }
    case CE_MenuItem:
        DrawMenuItem(*option, *painter, widget);
        return;
    case CE_MenuBarItem:
        DrawMenuBarItem(*option, *painter);
        return;
    case CE_MenuBarEmptyArea:
    case CE_MenuEmptyArea:
    case CE_MenuHMargin:
    case CE_MenuVMargin:
    case CE_ToolBar:
        painter->fillRect(place, QColor(C().window));
        return;
    case CE_MenuScroller:
        painter->fillRect(place, QColor(C().window));
        DrawArrow(*painter, place, option->state & State_DownArrow ? Qt::DownArrow : Qt::UpArrow,
                  QColor(C().text));
        return;
    case CE_HeaderSection:
    case CE_HeaderEmptyArea:
        DrawHeaderSection(*option, *painter);
        return;
    case CE_TabBarTabShape:
        DrawTab(*option, *painter);
        return;
    case CE_Splitter:
        DrawHandle(*option, *painter);
        return;
    case CE_RubberBand:
        DrawBox(*painter, place, Qt::transparent, QColor(C().accent), 2);
        return;
    case CE_ProgressBarGroove:
        DrawBox(*painter, place, QColor(C().base), QColor(C().border));
        return;
    case CE_ProgressBarContents:
        DrawProgress(*option, *painter);
        return;
    case CE_SizeGrip:
        return;
    case CE_ShapedFrame: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->frameShape == QFrame::HLine)
            painter->fillRect(QRect(place.left(), place.center().y(), place.width(), 1),
                              QColor(C().border));
        else if (frame && frame->frameShape == QFrame::VLine)
            painter->fillRect(QRect(place.center().x(), place.top(), 1, place.height()),
                              QColor(C().border));
        else if (frame && frame->frameShape != QFrame::NoFrame)
            proxy()->drawPrimitive(PE_Frame, option, painter, widget);
        return;
    }
    case CE_DockWidgetTitle: {
        const auto* title = qstyleoption_cast<const QStyleOptionDockWidget*>(option);
        painter->fillRect(place, QColor(C().window));
        if (title)
            painter->drawText(place.adjusted(8, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft,
                              title->title);
        return;
    }
    default: // no enum of ours: one of Qt's
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

} // namespace qor
