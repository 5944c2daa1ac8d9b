// SPDX-License-Identifier: GPL-3.0-or-later
//
// Controls of several parts: combo boxes, spin boxes, scroll bars, sliders.
#include "app/look/Style.h"

#include <QAbstractSpinBox>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace qor {

void CStyle::DrawComboBox(const QStyleOptionComplex& option, QPainter& painter,
                          const QWidget* widget) const {
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(&option);
    if (!combo)
        return;
    const bool enabled = combo->state & State_Enabled;
    if (combo->editable)
        DrawField(option, painter, widget);
    else
        DrawButton(option, painter, false, false);
    const QRect arrow = proxy()->subControlRect(CC_ComboBox, combo, SC_ComboBoxArrow, widget);
    DrawArrow(painter, arrow, Qt::DownArrow, QColor(enabled ? C().text : C().border));
}

void CStyle::DrawSpinBox(const QStyleOptionComplex& option, QPainter& painter,
                         const QWidget* widget) const {
    const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(&option);
    if (!spin)
        return;
    DrawField(option, painter, widget);
    if (spin->buttonSymbols == QAbstractSpinBox::NoButtons)
        return;
    for (const SubControl part : {SC_SpinBoxDown, SC_SpinBoxUp}) {
        const QRect place = proxy()->subControlRect(CC_SpinBox, spin, part, widget);
        const bool up = part == SC_SpinBoxUp;
        const bool can = spin->stepEnabled &
                         (up ? QAbstractSpinBox::StepUpEnabled : QAbstractSpinBox::StepDownEnabled);
        const bool pressed = (spin->activeSubControls & part) && (spin->state & State_Sunken);
        painter.fillRect(place, pressed ? Mixed(C().raised, C().text, 0.2) : QColor(C().raised));
        painter.fillRect(QRect(place.left() - 1, place.top(), 1, place.height()),
                         QColor(C().border));
        const QColor line(can && (spin->state & State_Enabled) ? C().text : C().border);
        const int half = Theme.Px(6);
        const QPoint middle = place.center();
        painter.fillRect(QRect(middle.x() - half, middle.y(), 2 * half, 2), line);
        if (up)
            painter.fillRect(QRect(middle.x() - 1, middle.y() + 1 - half, 2, 2 * half), line);
    }
}

void CStyle::DrawScrollBar(const QStyleOptionComplex& option, QPainter& painter,
                           const QWidget* widget) const {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(&option);
    if (!bar)
        return;
    painter.fillRect(bar->rect, QColor(C().window));
    if (bar->minimum == bar->maximum)
        return;
    const QRect handle = proxy()->subControlRect(CC_ScrollBar, bar, SC_ScrollBarSlider, widget);
    const bool active = (bar->activeSubControls & SC_ScrollBarSlider) &&
                        (bar->state & (State_MouseOver | State_Sunken));
    DrawBox(painter, handle.adjusted(3, 3, -3, -3), QColor(active ? C().text2 : C().border),
            Qt::transparent, 0);
}

void CStyle::DrawSlider(const QStyleOptionComplex& option, QPainter& painter,
                        const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(&option);
    if (!slider)
        return;
    const bool enabled = slider->state & State_Enabled;
    const QRect handle = proxy()->subControlRect(CC_Slider, slider, SC_SliderHandle, widget);
    QRect groove = slider->rect, done = slider->rect;
    const int thick = Theme.Px(6);
    if (slider->orientation == Qt::Horizontal) {
        groove = QRect(groove.left(), groove.center().y() - thick / 2, groove.width(), thick);
        done = QRect(groove.topLeft(), QPoint(handle.center().x(), groove.bottom()));
    } else {
        groove = QRect(groove.center().x() - thick / 2, groove.top(), thick, groove.height());
        done = QRect(QPoint(groove.left(), handle.center().y()), groove.bottomRight());
    }
    DrawBox(painter, groove, QColor(C().base), QColor(C().border));
    DrawBox(painter, done, QColor(enabled ? C().accent : C().border), Qt::transparent, 0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const bool focus = slider->state & State_HasFocus;
    painter.setPen(QPen(QColor(focus ? C().accent : C().border), 2));
    painter.setBrush(QColor(enabled ? C().raised : C().window));
    const int side = std::min(handle.width(), handle.height()) - 2;
    QRect knob(0, 0, side, side);
    knob.moveCenter(handle.center());
    painter.drawEllipse(knob);
    painter.restore();
}

void CStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                QPainter* painter, const QWidget* widget) const {
    switch (control) {
    case CC_ComboBox:
        DrawComboBox(*option, *painter, widget);
        return;
    case CC_SpinBox:
        DrawSpinBox(*option, *painter, widget);
        return;
    case CC_ScrollBar:
        DrawScrollBar(*option, *painter, widget);
        return;
    case CC_Slider:
        DrawSlider(*option, *painter, widget);
        return;
    default: // no enum of ours: one of Qt's
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QRect CStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                             SubControl part, const QWidget* widget) const {
    const QRect& whole = option->rect;
    if (control == CC_SpinBox) {
        const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option);
        const bool buttons = spin && spin->buttonSymbols != QAbstractSpinBox::NoButtons;
        const int side = buttons ? std::min(Theme.Target(), whole.width() / 4) : 0;
        switch (part) {
        case SC_SpinBoxFrame:
            return whole;
        case SC_SpinBoxEditField:
            return whole.adjusted(Theme.Px(6), 2, -2 * side - 2, -2);
        case SC_SpinBoxDown:
            return {whole.right() - 2 * side, whole.top() + 1, side, whole.height() - 2};
        case SC_SpinBoxUp:
            return {whole.right() - side, whole.top() + 1, side, whole.height() - 2};
        default: // no enum of ours: one of Qt's
            return {};
        }
    }
    if (control == CC_GroupBox) {
        const auto* group = qstyleoption_cast<const QStyleOptionGroupBox*>(option);
        const int title =
            group && !group->text.isEmpty() ? group->fontMetrics.height() + Theme.Px(6) : 0;
        const QRect frame = whole.adjusted(0, title, 0, 0);
        if (part == SC_GroupBoxFrame)
            return frame;
        if (part == SC_GroupBoxContents)
            return frame.adjusted(1, 1, -1, -1);
        if (part == SC_GroupBoxLabel)
            return {whole.left(), whole.top(), whole.width(), title};
    }
    if (control == CC_ScrollBar) {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (!bar)
            return {};
        // No arrows: the groove is as long as the bar.
        const bool upright = bar->orientation == Qt::Vertical;
        const int length = upright ? whole.height() : whole.width();
        const double range = static_cast<double>(bar->maximum) - bar->minimum;
        const double share = bar->pageStep / (range + bar->pageStep);
        const int handle =
            range > 0
                ? std::clamp(static_cast<int>(length * share),
                             std::min(length, pixelMetric(PM_ScrollBarSliderMin, bar, widget)),
                             length)
                : length;
        const int start = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                                  length - handle, bar->upsideDown);
        const auto along = [&](int from, int size) {
            return upright ? QRect(whole.left(), whole.top() + from, whole.width(), size)
                           : QRect(whole.left() + from, whole.top(), size, whole.height());
        };
        switch (part) {
        case SC_ScrollBarGroove:
            return whole;
        case SC_ScrollBarSlider:
            return along(start, handle);
        case SC_ScrollBarSubPage:
            return along(0, start);
        case SC_ScrollBarAddPage:
            return along(start + handle, length - start - handle);
        default: // no enum of ours: one of Qt's
            return {};
        }
    }
    return QProxyStyle::subControlRect(control, option, part, widget);
}

} // namespace qor
