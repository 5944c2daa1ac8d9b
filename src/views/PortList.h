// SPDX-License-Identifier: GPL-3.0-or-later
//
// The ports of the computer as a form lists them: what each is called, whether it can be had, and
// what to do where it cannot; with the line settings that it had last time, which the settings of
// displays keep. Pure but for that store.
#pragma once

#include "platform/PortAccess.h"
#include "session/ProfileStore.h"
#include "telemetry/ResourceSettings.h"
#include "views/PageHead.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qor {

struct PortFound {
    std::string name;        ///< what a session keeps and what is opened
    std::string device;      ///< the system's short name: ttyUSB0, COM3
    std::string maker = {};  ///< of the adapter; empty for a port of the computer itself
    std::string detail = {}; ///< its serial number, its model, or both
    PortAccess access = {};
    bool inSession = false;

    bool operator==(const PortFound&) const = default;
};

/// "FTDI A50285BI", "on board".
std::string TitleOf(const PortFound& port);
/// Its state in a few words: "free", "not allowed: group dialout", "in use by gpsd (812)".
std::string StateOf(const PortFound& port);
Sign SignOf(const PortFound& port);
/// Why it cannot be connected and what to do, as one sentence; empty when it can.
std::string WhyNot(const PortFound& port);
/// The command that lets this user open it; empty where none would.
std::string RemedyCommand(const PortFound& port);

/// For a port that could not be connected: why not and what to do, looked up now, as whole
/// sentences. Never empty.
/// `error`: the system's, where it is known.
std::string PortTrouble(const std::string& name, std::uint32_t error = 0);
/// The same, made of what is known.
std::string PortTrouble(const PortFound& port, std::span<const std::string> there);

/// Marks those that the session has, by either of their names.
void MarkInSession(std::span<PortFound> ports, std::span<const std::string> names);
/// The one port that can be had; nothing when there are none or several.
std::optional<std::size_t> OnlyFree(std::span<const PortFound> ports);

/// "57600 8N1", as the port was used last time; empty when it was not.
std::string LastLineText(const CProfileStore& store, const std::string& name);
/// The same as settings of that port.
std::optional<SerialResourceSettings> LastLine(const CProfileStore& store, const std::string& name);
void RememberLine(CProfileStore& store, const SerialResourceSettings& settings);

} // namespace qor
