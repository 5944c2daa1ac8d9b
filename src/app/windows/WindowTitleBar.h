// SPDX-License-Identifier: GPL-3.0-or-later
//
// The one title bar of every dock and display window: sign, title, leading value, and the buttons
// that the window has. In a narrow window only the menu stays, which holds the rest.
#pragma once

#include "app/look/Theme.h"
#include "views/PageHead.h"

#include <QWidget>

#include <string>

class QLabel;
class QToolButton;

namespace qor {

class CSignLabel;

class CWindowTitleBar : public QWidget {
    Q_OBJECT

  public:
    /// The buttons beside menu, float and close.
    struct Has {
        bool pause = false;
        bool fit = false;
        bool menu = true;
    };

    CWindowTitleBar(const CTheme& theme, Has has, QWidget* parent = nullptr);

    void SetTitle(const QString& title);
    void SetSign(Sign sign);
    /// The value beside the title; `paused`, when not empty, stands there instead, in amber.
    void SetLeading(const QString& leading, const QString& paused = {});
    void SetPauseDown(bool down);
    /// True while there is room for the menu alone.
    bool IsNarrow() const { return Narrow || Compact; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  signals:
    void PausePressed();
    void FitPressed();
    void MenuPressed(QPoint screenPlace);
    void FloatPressed();
    void ClosePressed();

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QToolButton* AddButton(const char* icon, const QString& tip);
    void TakeTheme();
    void FitTitle();
    void ShowButtons();

    const CTheme& Theme;
    Has Wanted;
    CSignLabel* SignShown;
    QLabel* Title;
    QLabel* Leading;
    QToolButton *Pause, *Fit, *Menu, *Float, *Close;
    QString FullTitle;
    QString FullLeading;
    bool PausedShown = false;
    bool Narrow = false;
    bool Compact = false; ///< until the width changes: the value needs the buttons' room
};

} // namespace qor
