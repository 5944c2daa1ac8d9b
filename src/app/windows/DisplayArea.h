// SPDX-License-Identifier: GPL-3.0-or-later
//
// The room of the display windows: a main window inside the main window, whose docks they are.
// They nest, tab, float, are dragged in groups, and come back where they were.
#pragma once

#include "app/windows/DisplayWindow.h"

#include <QMainWindow>

#include <vector>

namespace qor {

class CDisplayArea : public QMainWindow {
    Q_OBJECT

  public:
    explicit CDisplayArea(const CTheme& theme, QWidget* parent = nullptr);

    /// Puts a window where a layout that was restored has it, else where the caller says: beside
    /// or behind another, or as a further column.
    enum class Place { Right, Below, Tab };
    void AddDisplay(CDisplayWindow* window, CDisplayWindow* beside = nullptr,
                    Place place = Place::Right);
    /// The same, whatever place its name had before.
    void PlaceDisplay(CDisplayWindow* window, CDisplayWindow* beside = nullptr,
                      Place place = Place::Right);

    /// In the order in which they were added; closed ones are not among them.
    std::vector<CDisplayWindow*> Windows() const;
    /// The window that has the focus, or null.
    CDisplayWindow* Current() const;
    void Show(CDisplayWindow* window);
    void ShowNext();
    /// All windows in a grid of equal parts.
    void TileAll();
    /// The current window as a float on the next screen.
    void MoveToOtherScreen();
    /// Takes the signs of windows that stand behind each other to their tabs.
    void RefreshTabs();

  signals:
    /// The button of the empty area.
    void NewWindowAsked();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void Take(CDisplayWindow* window);
    void ShowWhetherEmpty();

    const CTheme& Theme;
    CNotice* Nothing;
};

} // namespace qor
