// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Report.h"

#include "platform/Console.h"

namespace qor {

void WriteError(std::string_view text) {
    // A standard error that nobody reads is no reason to stop.
    [[maybe_unused]] StreamWrite result = WriteStream(StandardStream::Error, text);
}

void ReportError(const std::string& text) {
    WriteError("qorview-cli: error: " + text + "\n");
}

void ReportWarning(const std::string& text) {
    WriteError("qorview-cli: warning: " + text + "\n");
}

void ReportHint(const std::string& text) {
    WriteError("qorview-cli: hint: " + text + "\n");
}

} // namespace qor
