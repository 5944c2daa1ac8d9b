// SPDX-License-Identifier: GPL-3.0-or-later
//
// The pieces of a raw log as text.
#pragma once

#include "base/Bytes.h"
#include "telemetry/RawLogFormat.h"

#include <string>
#include <string_view>

namespace qor {

inline std::string Tag(std::int64_t seconds, std::uint16_t milliseconds = 0) {
    return std::string(AsText(MakeTimeTag({.seconds = seconds, .milliseconds = milliseconds})));
}

inline std::string Record(HeaderTag tag, std::string_view value) {
    return std::string(AsText(MakeHeaderRecord(FormatHeaderLine(static_cast<int>(tag), value))));
}

} // namespace qor
