// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operating system's own message for one of its error numbers.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

/// The system's number for memory that it could not give (ENOMEM, ERROR_NOT_ENOUGH_MEMORY).
#if defined(_WIN32)
inline constexpr std::uint32_t SystemErrorNoMemory = 8;
#else
inline constexpr std::uint32_t SystemErrorNoMemory = 12;
#endif

/// The message of a system error number (errno on POSIX, GetLastError on Windows), ending in CR LF.
std::string SystemErrorText(std::uint32_t error);

} // namespace qor
