// SPDX-License-Identifier: GPL-3.0-or-later
//
// When a disk that fills up is worth a word to whoever runs logs unattended: once below a day, once
// below an hour, and again when there was more room in between. Pure; the caller looks.
#pragma once

#include "base/MessageSink.h"

#include <cstdint>
#include <optional>

namespace qor {

class CSpaceWarning {
  public:
    /// SpaceLow or SpaceShort when that is to be said now. `secondsLeft`: at the present rate,
    /// empty when that is not known; `now`: monotonic milliseconds. A burst is no rate: only what
    /// holds for three seconds counts.
    std::optional<Event> Look(std::optional<double> secondsLeft, std::int64_t now,
                              const std::string& folder);

  private:
    enum class Level : std::uint8_t { Enough, Day, Hour };
    static Level LevelOf(double secondsLeft, Level said);

    Level Said = Level::Enough, Seen = Level::Enough;
    std::int64_t SeenSince = 0;
};

} // namespace qor
