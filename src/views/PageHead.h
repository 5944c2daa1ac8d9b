// SPDX-License-Identifier: GPL-3.0-or-later
//
// What every page says about itself, whatever it shows: its state as a sign, the value that leads
// its title bar, and, where there is nothing to show, a sentence that says why with the next step.
// Views fill it, faces draw it; no widget and no colour here.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qor {

/// A state as faces draw it (a shape), read it out (a word) and print it (a letter).
enum class Sign : std::uint8_t { None, Ok, Waiting, Stale, Warning, Alarm, Error, Off };
inline constexpr int SignCount = 8;

/// The word of a sign, for screen readers and prints; empty for None.
constexpr std::string_view SignWord(Sign sign) {
    switch (sign) {
    case Sign::None:
        return "";
    case Sign::Ok:
        return "ok";
    case Sign::Waiting:
        return "waiting";
    case Sign::Stale:
        return "stale";
    case Sign::Warning:
        return "warning";
    case Sign::Alarm:
        return "alarm";
    case Sign::Error:
        return "error";
    case Sign::Off:
        return "off";
    }
    return "";
}

/// The one of two signs that an operator is to see first: alarm, error, warning, stale, waiting,
/// off, ok.
constexpr Sign WorseSign(Sign a, Sign b) {
    constexpr int Ranks[SignCount] = {0, 1, 3, 4, 5, 7, 6, 2}; // in the order of the enumerators
    return Ranks[static_cast<int>(a)] >= Ranks[static_cast<int>(b)] ? a : b;
}

enum class PageState : std::uint8_t {
    Live,    ///< shows what comes
    Empty,   ///< has nothing that it could show: the sentence says why
    Waiting, ///< knows what it will show and has no frame yet
    Gone     ///< what it showed was removed
};

struct PageHead {
    PageState state = PageState::Live;
    Sign sign = Sign::None;
    std::string leading;  ///< the value beside the title
    std::string sentence; ///< for the states that are not live
    std::string remedy;   ///< the text of the sentence's button; empty: no button

    bool operator==(const PageHead&) const = default;
};

} // namespace qor
