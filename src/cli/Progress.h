// SPDX-License-Identifier: GPL-3.0-or-later
//
// A progress bar on standard error for work that takes more than two seconds; nothing where that is
// no terminal or the operator asked for quiet. Called as often as one likes: it looks at the clock
// itself and draws at most ten times a second.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

class CProgress {
  public:
    /// A total of 0 is not known: the bytes done are shown.
    CProgress(const std::string& title, std::uint64_t total, bool quiet);
    ~CProgress();
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// So much of the total is done.
    void Update(std::uint64_t done);

  private:
    const std::string Title; ///< fit for a terminal
    std::uint64_t Total;
    std::int64_t Begun = 0, Drawn = 0; ///< monotonic milliseconds
    bool Visible;
    bool OnScreen = false;
};

} // namespace qor
