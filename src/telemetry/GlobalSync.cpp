// SPDX-License-Identifier: GPL-3.0-or-later
//
// Kept: the bytes before the global string stay and are searched for headers once it has passed.
// Decided: of those, the last 1 MB, so that a string that never comes costs no more memory.
#include "telemetry/GlobalSync.h"

namespace qor {

namespace {

constexpr std::size_t BytesKept = 1U << 20;

} // namespace

void CGlobalSync::SetText(const std::string& text) {
    if (text == Text)
        return;
    Text = text;
    Headers.Compile({text});
    Restart();
}

void CGlobalSync::Restart() {
    Searched = 0;
    HasPassed = Text.empty();
}

bool CGlobalSync::Search(ByteSpan bytes, std::size_t limit, bool ended) {
    SearchResult result{};
    while (Searched < bytes.size() && result.outcome == SearchResult::Outcome::None) {
        result = Headers.Search(bytes.subspan(Searched), limit, ended);
        Searched += result.position;
    }
    HasPassed = result.outcome == SearchResult::Outcome::Found;
    return HasPassed;
}

std::size_t CGlobalSync::DropSurplus() {
    if (Searched <= BytesKept)
        return 0;
    std::size_t surplus = Searched - BytesKept;
    Searched = BytesKept;
    return surplus;
}

} // namespace qor
