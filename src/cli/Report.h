// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the command line says on standard error, a line at a time. From any thread. Control bytes
// that come with names and texts never reach a terminal as they are.
#pragma once

#include <string>
#include <string_view>

namespace qor {

/// One line: "qorview-cli: error: ", "qorview-cli: warning: " or "qorview-cli: hint: " and the
/// text.
void ReportError(const std::string& text);
void ReportWarning(const std::string& text);
void ReportHint(const std::string& text);
/// Text of one or more lines; a terminal is shown what would control it.
void WriteError(std::string_view text);
/// Bytes of our own as they are, as for a terminal on which lines are drawn. Asks for no memory.
void DrawError(std::string_view bytes);

} // namespace qor
