// SPDX-License-Identifier: GPL-3.0-or-later
//
// The state of logging, to be read from two metres: a sign, a word, how long, how much disk is
// left; below, the file and its frames. Practice and replay stand before the state, with a hatched
// edge. A click opens the status of the log. All texts but the state's word are the page's.
#pragma once

#include "app/look/Theme.h"
#include "views/SessionPages.h"

#include <QAbstractButton>

namespace qor {

class CBanner : public QAbstractButton {
    Q_OBJECT

  public:
    explicit CBanner(const CTheme& theme, QWidget* parent = nullptr);

    void ShowPage(const LogPage& page);
    /// Larger, for the watch mode.
    void SetWatch(bool watch);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    struct Dress {
        QColor fill, text, edge;
        int edgeWidth;
    };
    Dress DressOf(LogState state) const;
    QString StateWord() const;
    QString Prefix() const;
    QString FirstLine() const;
    QString SecondLine() const;
    void PaintStateSign(QPainter& painter, const QRect& place, const QColor& colour) const;
    int PaintDiskLeft(QPainter& painter, const QRect& place, const Dress& dress) const;
    void PaintHatch(QPainter& painter, const QRect& place, const Dress& dress) const;

    const CTheme& Theme;
    LogPage Page;
    bool Watch = false;
};

} // namespace qor
