// SPDX-License-Identifier: GPL-3.0-or-later
//
// The strip below the tool row in which everything is said that needs no decision, with the next
// step as a button. It is gone when nothing is unseen and never takes the focus.
#pragma once

#include "app/frame/MessageHistory.h"
#include "app/look/Theme.h"

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QToolButton;

namespace qor {

class CSignLabel;

class CMessageStrip : public QWidget {
    Q_OBJECT

  public:
    explicit CMessageStrip(const CTheme& theme, QWidget* parent = nullptr);

    void Post(StripMessage message);
    void Close(const std::string& topic);
    const CMessageHistory& History() const { return Said; }
    /// The window with everything that was said.
    void OpenHistory();

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void Refresh();
    void FitText();
    void MakeButtons(const StripMessage& message);

    const CTheme& Theme;
    CMessageHistory Said;
    CSignLabel* SignShown;
    QLabel* Text;
    QHBoxLayout* ButtonPlace;
    QToolButton* HistoryButton;
    QToolButton* CloseButton;
    QString FullText;
};

} // namespace qor
