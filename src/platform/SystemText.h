// SPDX-License-Identifier: GPL-3.0-or-later
//
// The operating system's own message for one of its error numbers.
#pragma once

#include <cstdint>
#include <string>

namespace qor {

/// The system's numbers for memory that it could not give, a device that is not there, one that
/// another has open, one that went away under a read, and for more open files than a program may
/// have.
#if defined(_WIN32)
inline constexpr std::uint32_t SystemErrorNoMemory = 8; // ERROR_NOT_ENOUGH_MEMORY
inline constexpr std::uint32_t SystemErrorNoDevice = 2; // ERROR_FILE_NOT_FOUND
inline constexpr std::uint32_t SystemErrorInUse = 5;    // ERROR_ACCESS_DENIED
inline constexpr std::uint32_t SystemErrorGone = 31;    // ERROR_GEN_FAILURE
inline constexpr std::uint32_t SystemErrorNoHandle = 4; // ERROR_TOO_MANY_OPEN_FILES
#else
inline constexpr std::uint32_t SystemErrorNoMemory = 12; // ENOMEM
inline constexpr std::uint32_t SystemErrorNoDevice = 2;  // ENOENT
inline constexpr std::uint32_t SystemErrorInUse = 16;    // EBUSY
inline constexpr std::uint32_t SystemErrorGone = 5;      // EIO
inline constexpr std::uint32_t SystemErrorNoHandle = 24; // EMFILE
#endif

/// The message of a system error number (errno on POSIX, GetLastError on Windows), ending in CR LF.
std::string SystemErrorText(std::uint32_t error);

} // namespace qor
