// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bar of a replay: to the start, play and pause, speed, the place with the marks of casts.
#pragma once

#include "app/look/Theme.h"
#include "views/SessionPages.h"

#include <QSlider>
#include <QWidget>

#include <vector>

class QComboBox;
class QLabel;
class QToolButton;

namespace qor {

/// A slider of places, with marks; it does not follow the replay while the hand is on it.
class CSeekSlider : public QSlider {
    Q_OBJECT

  public:
    explicit CSeekSlider(const CTheme& theme, QWidget* parent = nullptr);
    void SetMarks(std::vector<double> marks);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const CTheme& Theme;
    std::vector<double> Marks;
};

class CReplayBar : public QWidget {
    Q_OBJECT

  public:
    /// The speeds on offer, as texts; which one was chosen is told by its place.
    CReplayBar(const CTheme& theme, const QStringList& speeds, QWidget* parent = nullptr);

    void ShowPage(const ReplayPage& page);

  signals:
    void PlayPressed();
    void RestartPressed();
    void SpeedChosen(int place);
    void SeekAsked(double place); ///< 0 to 1

  private:
    const CTheme& Theme;
    QToolButton *Restart, *Play;
    QComboBox* Speed;
    CSeekSlider* Seek;
    QLabel* Times;
    bool Playing = false;
};

} // namespace qor
