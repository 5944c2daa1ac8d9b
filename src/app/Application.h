// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every program with our windows sets up after the Qt application object: numbers in the C
// locale, icons, style, language.
#pragma once

#include "app/look/Theme.h"

class QApplication;

namespace qor {

/// `theme` lives as long as the application.
void PrepareApplication(QApplication& application, CTheme& theme);

/// A file that comes with the program ("examples/cast.raw", "docs/user-guide.md"): beside it, where
/// it was installed, or in the tree it was built from. Empty when it is not there.
QString InstalledFile(const QString& name);

/// The catalogue of a language ("de"); false when there is none.
bool UseLanguage(QApplication& application, const QString& language);

} // namespace qor
