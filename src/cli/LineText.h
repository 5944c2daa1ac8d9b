// SPDX-License-Identifier: GPL-3.0-or-later
//
// The small languages of options: a port with its line settings, a span of time.
#pragma once

#include "session/SessionState.h"
#include "telemetry/ResourceSettings.h"

#include <optional>
#include <string_view>

namespace qor {

/// NAME[:BAUD[:8N1]]: data bits 5..8, parity N, O, E, M or S, stop bits 1, 1.5 or 2. The name may
/// hold colons itself. Empty when there is no name or a number is out of range.
struct PortText {
    SerialResourceSettings settings;
    bool baudGiven = false;
};
std::optional<PortText> ParsePort(std::string_view text);
/// BAUD:8N1 of the settings.
std::string LineTextOf(const SerialResourceSettings& settings);

/// [HH:]MM:SS, or plain seconds. Empty when malformed or zero.
std::optional<LogSpan> ParseSpan(std::string_view text);

} // namespace qor
