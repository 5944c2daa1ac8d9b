// SPDX-License-Identifier: GPL-3.0-or-later
//
// Sizes, hints, standard icons, and the caret.
#include "app/look/Style.h"

#include "app/look/Icons.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPlainTextEdit>
#include <QStyleOption>
#include <QTextEdit>

#include <algorithm>

namespace qor {

namespace {

constexpr int CornerRadius = 3;
constexpr int CaretWidth = 2;

struct StandardIconName {
    QStyle::StandardPixmap standard;
    const char* icon;
};

constexpr StandardIconName StandardIcons[] = {
    {QStyle::SP_FileDialogNewFolder, "new"},
    {QStyle::SP_FileDialogToParent, "export"},
    {QStyle::SP_FileDialogBack, "rewind"},
    {QStyle::SP_FileDialogListView, "menu"},
    {QStyle::SP_FileDialogDetailedView, "status"},
    {QStyle::SP_FileDialogContentsView, "status"},
    {QStyle::SP_FileDialogInfoView, "help"},
    {QStyle::SP_DirIcon, "open"},
    {QStyle::SP_DirHomeIcon, "open"},
    {QStyle::SP_DirOpenIcon, "open"},
    {QStyle::SP_DirClosedIcon, "open"},
    {QStyle::SP_DirLinkIcon, "open"},
    {QStyle::SP_DirLinkOpenIcon, "open"},
    {QStyle::SP_DriveHDIcon, "save"},
    {QStyle::SP_DriveFDIcon, "save"},
    {QStyle::SP_DriveCDIcon, "save"},
    {QStyle::SP_DriveDVDIcon, "save"},
    {QStyle::SP_DriveNetIcon, "save"},
    {QStyle::SP_ComputerIcon, "monitor"},
    {QStyle::SP_DesktopIcon, "monitor"},
    {QStyle::SP_TrashIcon, "close"},
    {QStyle::SP_FileIcon, "log"},
    {QStyle::SP_FileLinkIcon, "log"},
    {QStyle::SP_ArrowBack, "rewind"},
    {QStyle::SP_ArrowLeft, "rewind"},
    {QStyle::SP_ArrowForward, "play"},
    {QStyle::SP_ArrowRight, "play"},
    {QStyle::SP_ArrowUp, "export"},
    {QStyle::SP_BrowserReload, "replay"},
    {QStyle::SP_TitleBarCloseButton, "close"},
    {QStyle::SP_TitleBarNormalButton, "float"},
    {QStyle::SP_DockWidgetCloseButton, "close"},
    {QStyle::SP_LineEditClearButton, "close"},
    {QStyle::SP_MessageBoxInformation, "help"},
    {QStyle::SP_MessageBoxQuestion, "help"},
    {QStyle::SP_MessageBoxWarning, "warning"},
    {QStyle::SP_MessageBoxCritical, "error"},
    {QStyle::SP_ToolBarHorizontalExtensionButton, "menu"},
    {QStyle::SP_ToolBarVerticalExtensionButton, "menu"},
};

/// The caret's place in a text field, empty when it shows none.
QRect CaretOf(QWidget* widget) {
    if (auto* line = qobject_cast<QLineEdit*>(widget)) {
        if (!line->hasFocus() || line->isReadOnly())
            return {};
        return line->inputMethodQuery(Qt::ImCursorRectangle).toRect();
    }
    QWidget* parent = widget->parentWidget();
    if (auto* plain = qobject_cast<QPlainTextEdit*>(parent))
        return plain->hasFocus() && !plain->isReadOnly() ? plain->cursorRect() : QRect();
    if (auto* text = qobject_cast<QTextEdit*>(parent))
        return text->hasFocus() && !text->isReadOnly() ? text->cursorRect() : QRect();
    return {};
}

/// The widget that a text field paints on, or null.
QWidget* TextSurface(QWidget* widget) {
    if (qobject_cast<QLineEdit*>(widget))
        return widget;
    if (auto* plain = qobject_cast<QPlainTextEdit*>(widget))
        return plain->viewport();
    if (auto* text = qobject_cast<QTextEdit*>(widget))
        return text->viewport();
    return nullptr;
}

} // namespace

CStyle::CStyle(const CTheme& theme) : QProxyStyle(QStringLiteral("Fusion")), Theme(theme) {}

int CStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                        const QWidget* widget) const {
    switch (metric) {
    case PM_ButtonIconSize:
    case PM_SmallIconSize:
    case PM_TabBarIconSize:
    case PM_ListViewIconSize:
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
        return Theme.Px(20);
    case PM_ToolBarIconSize:
        return Theme.Px(24);
    case PM_ScrollBarExtent:
        return Theme.Px(Theme.LargeTargets() ? 24 : 16);
    case PM_ScrollBarSliderMin:
        return Theme.Px(32);
    case PM_DockWidgetSeparatorExtent:
    case PM_SplitterWidth:
        return Theme.Px(Theme.LargeTargets() ? 12 : 6);
    case PM_SliderThickness:
    case PM_SliderControlThickness:
    case PM_SliderLength:
        return Theme.Px(Theme.LargeTargets() ? 32 : 24);
    case PM_DefaultFrameWidth:
    case PM_DockWidgetFrameWidth:
    case PM_MenuPanelWidth:
        return 1;
    case PM_ToolBarFrameWidth:
    case PM_ToolBarItemSpacing:
    case PM_ToolBarItemMargin:
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_TabBarTabShiftVertical:
    case PM_TabBarTabShiftHorizontal:
    case PM_TextCursorWidth: // see eventFilter
        return 0;
    case PM_LayoutHorizontalSpacing:
    case PM_LayoutVerticalSpacing:
        return Theme.Px(size::Between);
    case PM_LayoutLeftMargin:
    case PM_LayoutTopMargin:
    case PM_LayoutRightMargin:
    case PM_LayoutBottomMargin:
        return Theme.Px(size::Margin);
    default: // no enum of ours: one of Qt's
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int CStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* returned) const {
    switch (hint) {
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_ComboBox_Popup:
    case SH_Widget_Animate:
    case SH_Widget_Animation_Duration:
    case SH_RubberBand_Mask:
        return 0;
    case SH_ItemView_ShowDecorationSelected:
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return 1;
    case SH_Slider_AbsoluteSetButtons:
        return Qt::LeftButton;
    case SH_ToolTipLabel_Opacity:
        return 255;
    case SH_DialogButtonLayout:
        return QDialogButtonBox::GnomeLayout;
    default: // no enum of ours: one of Qt's
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
}

QSize CStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                               const QWidget* widget) const {
    const QSize given = QProxyStyle::sizeFromContents(type, option, size, widget);
    switch (type) {
    case CT_PushButton:
        return (given + QSize(Theme.Px(16), 0)).expandedTo({Theme.Px(80), Theme.Target()});
    case CT_ToolButton:
    case CT_ComboBox:
    case CT_LineEdit:
    case CT_TabBarTab:
        return given.expandedTo({0, Theme.Target()});
    case CT_SpinBox:
        // The two buttons stand beside each other, each a target of its own.
        return given.expandedTo({0, Theme.Target()}) + QSize(2 * Theme.Target(), 0);
    case CT_CheckBox:
    case CT_RadioButton:
        return given.expandedTo({0, Theme.Target()});
    case CT_MenuItem: {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        if (item && item->menuItemType == QStyleOptionMenuItem::Separator)
            return {given.width(), Theme.Px(9)};
        return {given.width() + Theme.Px(40), Theme.Target()};
    }
    case CT_MenuBarItem:
        return {given.width(), Theme.Px(size::MenuBar)};
    case CT_HeaderSection:
        return given.expandedTo({0, Theme.Px(28)});
    default: // no enum of ours: one of Qt's
        return given;
    }
}

QRect CStyle::subElementRect(SubElement element, const QStyleOption* option,
                             const QWidget* widget) const {
    const QRect given = QProxyStyle::subElementRect(element, option, widget);
    if (element == SE_LineEditContents)
        return given.adjusted(Theme.Px(5), 0, -Theme.Px(5), 0);
    return given;
}

QIcon CStyle::standardIcon(StandardPixmap standard, const QStyleOption* option,
                           const QWidget* widget) const {
    const auto entry =
        std::find_if(std::begin(StandardIcons), std::end(StandardIcons),
                     [standard](const StandardIconName& row) { return row.standard == standard; });
    if (entry == std::end(StandardIcons))
        return QProxyStyle::standardIcon(standard, option, widget);
    if (standard == SP_MessageBoxWarning || standard == SP_MessageBoxCritical)
        return SignIcon(Theme, standard == SP_MessageBoxWarning ? Sign::Warning : Sign::Error);
    return ThemeIcon(Theme, QString::fromLatin1(entry->icon));
}

QPixmap CStyle::standardPixmap(StandardPixmap standard, const QStyleOption* option,
                               const QWidget* widget) const {
    const int side = pixelMetric(PM_SmallIconSize, option, widget);
    return standardIcon(standard, option, widget).pixmap(side, side);
}

void CStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (QWidget* surface = TextSurface(widget))
        surface->installEventFilter(this);
    if (auto* plain = qobject_cast<QPlainTextEdit*>(widget))
        plain->setCursorWidth(0);
    if (auto* text = qobject_cast<QTextEdit*>(widget))
        text->setCursorWidth(0);
    // Labels, tool tips and boxes have words of instruments and files: none of them is markup.
    if (auto* label = qobject_cast<QLabel*>(widget); label && label->textFormat() == Qt::AutoText)
        label->setTextFormat(Qt::PlainText);
}

void CStyle::unpolish(QWidget* widget) {
    if (QWidget* surface = TextSurface(widget))
        surface->removeEventFilter(this);
    QProxyStyle::unpolish(widget);
}

bool CStyle::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget || event->type() != QEvent::Paint)
        return QProxyStyle::eventFilter(watched, event);
    const QRect caret = CaretOf(widget);
    if (caret.isNull())
        return false;
    // First the widget itself, then the caret on top of it.
    widget->removeEventFilter(this);
    QCoreApplication::sendEvent(widget, event);
    widget->installEventFilter(this);
    QPainter painter(widget);
    painter.fillRect(QRect(caret.center().x(), caret.top(), CaretWidth, caret.height()),
                     QColor(C().accent));
    return true;
}

void DrawBox(QPainter& painter, const QRect& place, const QColor& fill, const QColor& border,
             int width) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double inset = width / 2.0;
    painter.setPen(width > 0 && border.alpha() > 0 ? QPen(border, width) : QPen(Qt::NoPen));
    painter.setBrush(fill.alpha() > 0 ? QBrush(fill) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(place).adjusted(inset, inset, -inset, -inset), CornerRadius,
                            CornerRadius);
    painter.restore();
}

void DrawArrow(QPainter& painter, const QRect& place, Qt::ArrowType direction,
               const QColor& colour) {
    const double half = std::min({place.width() / 2.0, place.height() / 2.0, 5.0});
    const QPointF middle = QRectF(place).center();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(middle);
    switch (direction) {
    case Qt::NoArrow:
    case Qt::DownArrow:
        break;
    case Qt::UpArrow:
        painter.rotate(180.0);
        break;
    case Qt::LeftArrow:
        painter.rotate(90.0);
        break;
    case Qt::RightArrow:
        painter.rotate(-90.0);
        break;
    }
    painter.setPen(QPen(colour, 2.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF shape[] = {{-half, -half / 2}, {0.0, half / 2}, {half, -half / 2}};
    painter.drawPolyline(shape, 3);
    painter.restore();
}

void DrawCheckMark(QPainter& painter, const QRect& place, const QColor& colour) {
    const QRectF box = QRectF(place);
    const auto at = [&box](double x, double y) {
        return QPointF(box.x() + x * box.width(), box.y() + y * box.height());
    };
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(
        QPen(colour, std::max(2.0, box.width() / 9.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const QPointF shape[] = {at(0.22, 0.52), at(0.42, 0.73), at(0.79, 0.27)};
    painter.drawPolyline(shape, 3);
    painter.restore();
}

} // namespace qor
