// SPDX-License-Identifier: GPL-3.0-or-later
//
// What stands where there is nothing to show: a sentence that says why, and a button that leads on.
#pragma once

#include "app/look/Theme.h"
#include "views/PageHead.h"

#include <QWidget>

class QLabel;
class QPushButton;

namespace qor {

/// Lies over its parent, whose size it follows.
class CNotice : public QWidget {
    Q_OBJECT

  public:
    explicit CNotice(const CTheme& theme, QWidget* parent);
    void ShowHead(const PageHead& head);

  signals:
    void RemedyPressed();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    const CTheme& Theme;
    QLabel* Sentence;
    QPushButton* Remedy;
    bool Covers = false;
};

} // namespace qor
