// SPDX-License-Identifier: GPL-3.0-or-later
//
// The application's style: the Fusion style's layout with everything that is painted drawn flat
// from the theme's tokens. Fusion itself shades with white and with shades of the palette, which
// would light up at night. Owned by the application object; user-interface thread.
//
// Style.cpp has sizes, hints and which widgets are given what; StylePrimitives.cpp,
// StyleControls.cpp and StyleComplex.cpp paint.
#pragma once

#include "app/look/Theme.h"

#include <QProxyStyle>

namespace qor {

class CStyle : public QProxyStyle {
    Q_OBJECT

  public:
    explicit CStyle(const CTheme& theme);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option,
                    const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                           const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap standard, const QStyleOption* option,
                       const QWidget* widget) const override;
    QPixmap standardPixmap(StandardPixmap standard, const QStyleOption* option,
                           const QWidget* widget) const override;
    void polish(QWidget* widget) override;
    void unpolish(QWidget* widget) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

    /// Draws the caret of text fields: Qt inverts what lies under it, which is cyan on black.
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    const Tokens& C() const { return Theme.Colours(); }

    void DrawButton(const QStyleOption& option, QPainter& painter, bool flat, bool standard) const;
    void DrawCheckBox(const QStyleOption& option, QPainter& painter) const;
    void DrawRadioButton(const QStyleOption& option, QPainter& painter) const;
    void DrawField(const QStyleOption& option, QPainter& painter, const QWidget* widget) const;
    void DrawItemPanel(const QStyleOption& option, QPainter& painter) const;
    void DrawHandle(const QStyleOption& option, QPainter& painter) const;
    void DrawMenuItem(const QStyleOption& option, QPainter& painter, const QWidget* widget) const;
    void DrawMenuBarItem(const QStyleOption& option, QPainter& painter) const;
    void DrawHeaderSection(const QStyleOption& option, QPainter& painter) const;
    void DrawTab(const QStyleOption& option, QPainter& painter) const;
    void DrawProgress(const QStyleOption& option, QPainter& painter) const;
    void DrawComboBox(const QStyleOptionComplex& option, QPainter& painter,
                      const QWidget* widget) const;
    void DrawSpinBox(const QStyleOptionComplex& option, QPainter& painter,
                     const QWidget* widget) const;
    void DrawScrollBar(const QStyleOptionComplex& option, QPainter& painter,
                       const QWidget* widget) const;
    void DrawSlider(const QStyleOptionComplex& option, QPainter& painter,
                    const QWidget* widget) const;

    const CTheme& Theme;
};

/// A rectangle with a border inside of it, corners slightly round. A transparent fill or a width of
/// 0 leaves that out.
void DrawBox(QPainter& painter, const QRect& place, const QColor& fill, const QColor& border,
             int width = 1);
void DrawArrow(QPainter& painter, const QRect& place, Qt::ArrowType direction,
               const QColor& colour);
void DrawCheckMark(QPainter& painter, const QRect& place, const QColor& colour);

/// The property of a field that holds something it should not: it gets a red edge.
inline constexpr const char* FaultProperty = "qorFault";

} // namespace qor
