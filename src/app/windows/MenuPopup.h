// SPDX-License-Identifier: GPL-3.0-or-later
//
// A view's menu as a Qt menu. What cannot be chosen is grey and says why.
#pragma once

#include "views/Menu.h"

class QMenu;
class QPoint;
class QWidget;

namespace qor {

/// Fills a menu; choosing an entry runs what it holds.
void FillMenu(QMenu& menu, const Menu& entries);

/// Opens the menu at a place of the screen and returns at once; it deletes itself when it closes.
void OpenMenu(const Menu& entries, const QPoint& screenPlace, QWidget* parent);

} // namespace qor
