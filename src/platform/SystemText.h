// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operating system's own message for one of its error numbers.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

/// The message of a system error number (errno on POSIX, GetLastError on Windows), ending in CR LF.
std::string SystemErrorText(std::uint32_t error);

} // namespace qor
