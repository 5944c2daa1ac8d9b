// SPDX-License-Identifier: GPL-3.0-or-later
//
// Dialogs for files, never modal. The system's own by day; at night Qt's, in our palette, because
// nothing tells the system to be dark.
#pragma once

#include "app/look/Theme.h"

#include <QStringList>

#include <functional>

class QFileDialog;

namespace qor {

using FilesChosen = std::function<void(const QStringList& paths)>;

/// `filters` as Qt takes them: "Sessions (*.qor)".
QFileDialog* AskOpenFiles(const CTheme& theme, QWidget* parent, const QString& title,
                          const QStringList& filters, bool several, FilesChosen then);
/// A name that is typed without an ending takes that of the filter; an existing file is asked
/// about.
QFileDialog* AskSaveFile(const CTheme& theme, QWidget* parent, const QString& title,
                         const QStringList& filters, const QString& suggestion, FilesChosen then);
QFileDialog* AskFolder(const CTheme& theme, QWidget* parent, const QString& title,
                       const QString& folder, FilesChosen then);

} // namespace qor
