// SPDX-License-Identifier: GPL-3.0-or-later
//
// How counts and time spans read on every page. Pure functions.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

/// A count, its thousands set apart by thin spaces (UTF-8).
std::string CountText(std::uint64_t count);

/// A time span that runs, "00:12" or "01:02:10".
std::string ElapsedText(double seconds);

} // namespace qor
