// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/SpaceWarning.h"

#include "views/SessionPages.h"

#include <utility>

namespace qor {

namespace {

constexpr double Hour = 3600.0, Day = 24.0 * Hour;
constexpr std::int64_t Holds = 3000; // milliseconds

} // namespace

/// Above a limit again is twice of it: what wavers about one is said once.
CSpaceWarning::Level CSpaceWarning::LevelOf(double secondsLeft, Level said) {
    if (secondsLeft < (said == Level::Hour ? 2 * Hour : Hour))
        return Level::Hour;
    return secondsLeft < (said == Level::Enough ? Day : 2 * Day) ? Level::Day : Level::Enough;
}

std::optional<Event> CSpaceWarning::Look(std::optional<double> secondsLeft, std::int64_t now,
                                         const std::string& folder) {
    if (!secondsLeft)
        return std::nullopt;
    const Level level = LevelOf(*secondsLeft, Said);
    if (std::exchange(Seen, level) != level)
        SeenSince = now;
    if (level == Said || now - SeenSince < Holds)
        return std::nullopt;
    const bool worse = level > std::exchange(Said, level);
    if (!worse)
        return std::nullopt;
    const bool urgent = level == Level::Hour;
    return Event{urgent ? EventKind::SpaceShort : EventKind::SpaceLow, folder,
                 "The disk of \"" + folder + "\" takes logs for less than " +
                     (urgent ? "an hour" : "24 hours") +
                     " at the present rate: " + TimeLeftText(*secondsLeft) + ".\r\n"};
}

} // namespace qor
