// SPDX-License-Identifier: GPL-3.0-or-later
//
// The look that is in force: palette, text size, size of targets. One object, owned by main and
// lent to every widget, style and icon; user-interface thread. Changing it changes the running
// application; what keeps pixmaps or sizes of its own listens to Changed.
#pragma once

#include "app/look/Tokens.h"

#include <QColor>
#include <QFont>
#include <QObject>
#include <QPen>

namespace qor {

enum class FontRole : std::uint8_t { Text, Ticks, Tool, Value, Fixed, Banner, Watch };

class CTheme : public QObject {
    Q_OBJECT

  public:
    explicit CTheme(QObject* parent = nullptr);

    Look CurrentLook() const { return Shown; }
    const Tokens& Colours() const { return TokensOf(Shown); }
    bool IsNight() const { return Shown == Look::Night; }
    int TextPercent() const { return Percent; }
    bool LargeTargets() const { return Large; }

    void SetLook(Look look);
    /// Night, and from night back to what was before.
    void ToggleNight();
    /// Held between 90 and 200.
    void SetTextPercent(int percent);
    void SetLargeTargets(bool large);

    /// Logical pixels at the present text size.
    int Px(int atFullSize) const;
    /// The least height and width of what is pressed.
    int Target() const;
    QFont Font(FontRole role) const;

    /// Palette and font onto the running application.
    void Apply();

  signals:
    void Changed();

  private:
    Look Shown = Look::Light, BeforeNight = Look::Light;
    int Percent = 100;
    bool Large = false;
    QString Family; ///< of the system's own font
    QString FixedFamily;
};

/// A colour part of the way from one to another, 0 to 1.
QColor Mixed(QRgb from, QRgb to, double part);

/// The pen of a curve by its number among the series.
QPen SeriesPen(Look look, int number, double width);
/// The pen of a curve by its wavelength; at night by its number, where colours cannot tell them.
QPen WavelengthPen(Look look, double nm, int number, double width);

} // namespace qor
