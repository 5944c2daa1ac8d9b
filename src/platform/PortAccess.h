// SPDX-License-Identifier: GPL-3.0-or-later
//
// Whether a serial port could be opened, and if not why, told without opening it where the system
// can say so. For lists of ports; connecting finds out for itself. Any thread, no lock; looking at
// all processes takes some milliseconds.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace qor {

enum class PortState : std::uint8_t {
    Free,       ///< nothing is known that would be in the way
    Missing,    ///< no such device
    NoPort,     ///< something else has that name
    NotAllowed, ///< this user may not open it
    InUse       ///< another program holds it
};

struct PortAccess {
    PortState state = PortState::Free;
    std::string group = {};        ///< that may open it, where this user may not; empty: not known
    bool groupAtNextLogin = false; ///< the user is in that group, this login is not
    std::string holder = {};       ///< the program that holds it; empty: not known
    std::int64_t pid = 0;

    bool operator==(const PortAccess&) const = default;
};

/// Whether looking opens a free port for a moment, which its instrument may notice: then each is to
/// be looked at once, not again and again.
#if defined(_WIN32)
inline constexpr bool LookingOpensPorts = true;
#else
inline constexpr bool LookingOpensPorts = false;
#endif

/// One for each name, in their order.
std::vector<PortAccess> LookAtPorts(std::span<const std::string> names);

/// The serial ports of this computer, in order.
std::vector<std::string> PortNames();

/// The name by which the system finds the same adapter again whatever it is plugged into; the name
/// itself where there is none.
std::string StablePortName(const std::string& name);

} // namespace qor
