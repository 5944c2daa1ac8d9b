// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Report.h"

#include "base/TerminalText.h"
#include "platform/Console.h"

namespace qor {

namespace {

/// A name with a line end in it must not look like a line of ours.
void Report(const char* kind, const std::string& text) {
    const bool shown = IsTerminal(StandardStream::Error);
    WriteError(kind + (shown ? TerminalText(text, TerminalLayout::OneLine) : text) + "\n");
}

} // namespace

void WriteError(std::string_view text) {
    // A standard error that nobody reads is no reason to stop.
    [[maybe_unused]] StreamWrite result = WriteText(StandardStream::Error, text);
}

void DrawError(std::string_view bytes) {
    [[maybe_unused]] StreamWrite result = WriteStream(StandardStream::Error, bytes);
}

void ReportError(const std::string& text) {
    Report("qorview-cli: error: ", text);
}

void ReportWarning(const std::string& text) {
    Report("qorview-cli: warning: ", text);
}

void ReportHint(const std::string& text) {
    Report("qorview-cli: hint: ", text);
}

} // namespace qor
