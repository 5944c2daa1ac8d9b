// SPDX-License-Identifier: GPL-3.0-or-later
//
// The small language of ports: a name with its line settings, and the line format alone ("8N1").
// Called where options, session files and dialogs are read and shown; plain functions, any thread.
#pragma once

#include "telemetry/ResourceSettings.h"

#include <optional>
#include <string>
#include <string_view>

namespace qor {

/// The codes are those of SerialResourceSettings.
struct LineFormat {
    std::uint8_t dataBits = 8;
    std::uint8_t parity = 0;
    std::uint8_t stopBits = 0;

    bool operator==(const LineFormat&) const = default;
};

/// "8N1": data bits 5..8, parity N, O, E, M or S (either case), stop bits 1, 1.5 or 2.
std::optional<LineFormat> ParseLineFormat(std::string_view text);
std::string LineFormatText(const LineFormat& format);

/// NAME[:BAUD[:8N1]]. The name may hold colons itself. Empty when there is no name or a number is
/// out of range.
struct PortText {
    SerialResourceSettings settings;
    bool baudGiven = false;
    bool formatGiven = false;
};
std::optional<PortText> ParsePort(std::string_view text);
/// BAUD:8N1 of the settings.
std::string LineTextOf(const SerialResourceSettings& settings);

} // namespace qor
