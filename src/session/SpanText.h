// SPDX-License-Identifier: GPL-3.0-or-later
//
// Spans of time as people write them: in options and dialogs as short as one likes, in files always
// in full. Plain functions, any thread.
#pragma once

#include "session/SessionState.h"

#include <optional>
#include <string>
#include <string_view>

namespace qor {

/// [HH:]MM:SS, or with units as in "1h30m", "10m", "45s". Empty when malformed, zero or from
/// a million hours on, and for a number without a unit, which people read as minutes as often as
/// seconds.
std::optional<LogSpan> ParseSpan(std::string_view text);

/// What is wrong with such a text, as one sentence, or empty.
std::string SpanFault(std::string_view text);

/// HH:MM:SS alone: one to six digits of hours, two of minutes and seconds, these below 60. Empty
/// when malformed or zero.
std::optional<LogSpan> ParseFullSpan(std::string_view text);

/// What is wrong with the spans that log options ask for, as one sentence, or empty.
std::string OptionsFault(const LogOptions& options);

/// The same of the round times at which logs begin: at most a day apart, without a repeat, and no
/// log longer than from one to the next.
std::string EveryFault(const LogOptions& options);

/// HH:MM:SS with minutes and seconds below 60, whatever the span's own parts are.
std::string SpanText(const LogSpan& span);

} // namespace qor
