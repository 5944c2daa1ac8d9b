// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the command line says on standard error, a line at a time. From any thread.
#pragma once

#include <string>
#include <string_view>

namespace qor {

/// One line: "qorview-cli: error: ", "qorview-cli: warning: " or "qorview-cli: hint: " and the
/// text.
void ReportError(const std::string& text);
void ReportWarning(const std::string& text);
void ReportHint(const std::string& text);
/// Text as it is.
void WriteError(std::string_view text);

} // namespace qor
