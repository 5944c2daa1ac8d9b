// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Progress.h"
#include "cli/Report.h"

#include "base/TerminalText.h"
#include "base/Text.h"
#include "platform/Clock.h"
#include "platform/Console.h"

#include <algorithm>

namespace qor {

namespace {

constexpr std::int64_t QuietMilliseconds = 2000, RedrawMilliseconds = 100;
constexpr std::uint64_t BarColumns = 30;

std::int64_t NowMilliseconds() {
    return CSystemClock().MonotonicMilliseconds();
}

} // namespace

CProgress::CProgress(const std::string& title, std::uint64_t total, bool quiet)
    : Title(TerminalText(title, TerminalLayout::OneLine)), Total(total),
      Visible(!quiet && CanDraw(StandardStream::Error)) {
    if (Visible)
        Begun = NowMilliseconds();
}

CProgress::~CProgress() {
    if (OnScreen)
        DrawError("\r\x1b[K");
}

void CProgress::Update(std::uint64_t done) {
    if (!Visible)
        return;
    std::int64_t now = NowMilliseconds();
    if (now - Begun < QuietMilliseconds || now - Drawn < RedrawMilliseconds)
        return;
    Drawn = now;
    OnScreen = true;
    if (Total == 0) {
        DrawError("\r" + Title + Format(": %.1f MB\x1b[K", static_cast<double>(done) / 1e6));
        return;
    }
    double part = static_cast<double>(std::min(done, Total)) / static_cast<double>(Total);
    auto filled = static_cast<std::size_t>(part * static_cast<double>(BarColumns));
    double left =
        part > 0.0 ? static_cast<double>(now - Begun) / 1000.0 * (1.0 - part) / part : 0.0;
    DrawError("\r" + Title + " [" + std::string(filled, '#') +
              std::string(BarColumns - filled, '.') +
              Format("] %3.0f %%  %.0f s left\x1b[K", part * 100.0, left));
}

} // namespace qor
