// SPDX-License-Identifier: GPL-3.0-or-later
//
// The prescribed message boxes and questions: one at a time, in the order asked, never modal, so
// that frames, logging and every window go on behind them. A question's default is No.
#pragma once

#include "app/look/Theme.h"

#include <QDialog>
#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>

class QWidget;

namespace qor {

/// Puts a dialog that is not shown yet over the middle of its window, as far as the screen has
/// room. Left alone, a window system may put it into a corner with its title out of sight.
void PutOver(QWidget& dialog);

class CBoxes : public QObject {
    Q_OBJECT

  public:
    CBoxes(const CTheme& theme, QWidget* window);

    /// A message with OK.
    void Tell(const QString& text, std::function<void()> then = {});
    /// A question; closing the box is No.
    void Ask(const QString& text, std::function<void(bool yes)> then);
    /// What asked wants no answer any more: its questions go, unanswered ones with No.
    void DropQuestions();
    bool IsOpen() const { return Open != nullptr; }
    QDialog* Current() const { return Open; }

  signals:
    /// A box appears: whoever owns the windows brings the first view's forward, and says the text
    /// in the strip too.
    void Appears(QString text);

  private:
    struct Box {
        QString text;
        bool question;
        std::function<void(bool)> then;
    };
    void ShowNext();

    const CTheme& Theme;
    QWidget* Window;
    std::deque<Box> Waiting;
    QPointer<QDialog> Open;
    bool OpenAsks = false;
};

} // namespace qor
