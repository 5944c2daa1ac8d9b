// SPDX-License-Identifier: GPL-3.0-or-later
//
// The string of a resource that has to pass before any frame is cut. Called by CFrameSync under the
// frame lock.
#pragma once

#include "telemetry/HeaderSearch.h"

namespace qor {

class CGlobalSync {
  public:
    /// The string to wait for; empty: none. The one in use already changes nothing.
    void SetText(const std::string& text);
    /// Another stream: the string has to pass again.
    void Restart();
    /// The bytes it was looked for in are gone.
    void ForgetBytes() { Searched = 0; }

    /// The string has passed, or there is none.
    bool Passed() const { return HasPassed; }
    /// Looks on in the queue's bytes, at most `limit` places at a time, and removes none; true when
    /// the string has passed now.
    bool Search(ByteSpan bytes, std::size_t limit, bool ended);
    /// How many bytes at the head of the queue are no longer kept for the search of headers. The
    /// caller removes them, whoever searches goes on behind them.
    std::size_t DropSurplus();

  private:
    std::string Text;
    CHeaderSearch Headers;
    std::size_t Searched = 0; ///< bytes at the head in which it does not begin
    bool HasPassed = true;
};

} // namespace qor
