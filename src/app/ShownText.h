// SPDX-License-Identifier: GPL-3.0-or-later
//
// From the engine's 8-bit texts to what is shown, and back.
#pragma once

#include <QCoreApplication>
#include <QString>

#include <string>

namespace qor {

inline QString Shown(const std::string& text) {
    return QString::fromStdString(text);
}

/// A fixed text of a view in the operator's language, where the catalogue has it.
inline QString ShownInLanguage(const std::string& text) {
    return text.empty() ? QString() : QCoreApplication::translate("Views", text.c_str());
}

} // namespace qor
