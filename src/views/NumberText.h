// SPDX-License-Identifier: GPL-3.0-or-later
//
// How counts and time spans read on every page. Pure functions.
#pragma once

#include "platform/Clock.h"

#include <cstdint>
#include <string>

namespace qor {

/// A count, its thousands set apart by thin spaces (UTF-8).
std::string CountText(std::uint64_t count);

/// How old something is, "0.3 s", "38 s", "4 min", "3 h"; "--" for less than no time.
std::string AgeText(std::int64_t milliseconds);

/// A moment as it stands under an exported plot, "2026-06-21 12:00:00 UTC"; empty when unknown.
std::string UtcText(const FrameTime& time);

/// The local time of day, "12:00:00".
std::string TimeOfDayText(const FrameTime& time);

/// The local day and time as lines of the session log have them.
std::string DayAndTimeText(const FrameTime& time);

/// A time span that runs, "00:12" or "01:02:10".
std::string ElapsedText(double seconds);

} // namespace qor
