// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the descent velocity remembers for the whole program: the document owns one of these and
// lends it to every package display. Guarded by the document's lock.
#pragma once

#include <cstdint>
#include <optional>

namespace qor {

/// Kept: one for the process, not one a view: two package displays share it, so a second display
/// opens with the velocity that the first one found.
struct VelocityState {
    std::optional<double> timer;        ///< package timer at the last computation
    std::optional<std::uint32_t> frame; ///< frame number at the last computation
    double velocity = 0.0;              ///< dbar per second, positive downward
};

} // namespace qor
