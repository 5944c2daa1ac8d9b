// SPDX-License-Identifier: GPL-3.0-or-later
//
// The header of a SeaBASS file (seabass.gsfc.nasa.gov, metadata headers): which keys it has, where
// their values come from, and how they are written. A further key is a row of one table. Pure.
#pragma once

#include "telemetry/RawLogFormat.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

/// Values by key; those of a call, or those of a file.
using SeaBassValues = std::map<std::string, std::string, std::less<>>;

/// Why a call cannot set the key to the value, for the operator; empty when it can.
std::string WhyNoSeaBassValue(std::string_view key, std::string_view value);

/// A value as the header takes it: what is no visible ASCII becomes "_"; "NA" for none.
std::string SeaBassText(std::string_view value);

/// "20260621" and "12:00:00" of seconds since 1970, UTC.
std::string SeaBassDate(std::int64_t seconds);
std::string SeaBassTime(std::int64_t seconds);

/// All lines from "/begin_header" on that stand before the comments. A value that is in neither of
/// both is that of the log's header where it has one, else "NA" and in `unknown` if it is required.
std::string SeaBassHeaderLines(const SeaBassValues& given, const SeaBassValues& found,
                               std::span<const HeaderRecord> header,
                               std::vector<std::string>& unknown);

} // namespace qor
