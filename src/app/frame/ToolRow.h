// SPDX-License-Identifier: GPL-3.0-or-later
//
// The few large buttons: connect, start, log, tare, station. A button whose action must not happen
// by a hand that slips (stopping the log) is held for a second.
#pragma once

#include "app/frame/Actions.h"

#include <QTimer>
#include <QToolButton>

namespace qor {

/// A tool button that triggers its action on a click, or, when it is told to, only when it is held.
class CToolRowButton : public QToolButton {
    Q_OBJECT

  public:
    CToolRowButton(const CTheme& theme, QAction* action, const QString& name,
                   QWidget* parent = nullptr);

    void SetAction(QAction* action, const QString& name);
    /// 0: a click does.
    void SetHold(int milliseconds);
    void SetNarrow(bool narrow);
    /// The largest size in which the name fits, and the one that is used.
    int FittingTextPixels() const;
    void SetTextPixels(int pixels);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;

  private:
    void BeginHold();
    void EndHold();
    void HoldOn();

    const CTheme& Theme;
    QAction* Action = nullptr;
    QTimer Tick;
    int HoldFor = 0, HeldFor = 0;
    int TextPixels = 0; ///< 0: as the theme has it
    bool Narrow = false;
};

class CToolRow : public QWidget {
    Q_OBJECT

  public:
    CToolRow(const CTheme& theme, const CActions& actions, QWidget* parent = nullptr);

    /// While a log is open its button stops it, and must be held.
    void SetLogging(bool logging);
    void SetNarrow(bool narrow);

  private:
    void AlignTexts();

    const CActions& Actions;
    std::vector<CToolRowButton*> Buttons;
    CToolRowButton* LogButton = nullptr;
};

} // namespace qor
