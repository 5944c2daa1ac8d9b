// SPDX-License-Identifier: GPL-3.0-or-later
//
// How much one read asks of a serial line on Windows, and how long that may then keep what has come
// to itself. Pure.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace qor {

/// Decided: a read asks for no more than the line brings in a twentieth of a second. It ends when
/// it has that or the line pauses, so on a line that never pauses a larger one would hold back what
/// has come: late times, silence where there is none, and frames that the end of the run discards.
/// As slow as a line may be, a read is worth its while: four bytes take less than half a second.
constexpr std::size_t ReadSizeAt(std::uint32_t baudRate) {
    constexpr std::uint32_t ReadsPerSecond = 20, BitsPerByte = 10;
    constexpr std::size_t Smallest = 4, Largest = 1024 * 1024;
    return std::clamp<std::size_t>(baudRate / (BitsPerByte * ReadsPerSecond), Smallest, Largest);
}

/// Milliseconds from the first byte of a read that never pauses until it ends, or, with the read
/// interval, until it ends because the line pauses.
constexpr int LongestReadAt(std::uint32_t baudRate, std::uint32_t interval) {
    constexpr std::uint64_t BitsPerByte = 12; // with a parity bit and two stop bits
    constexpr std::uint64_t Margin = 10;      // of the driver
    const std::uint64_t bits = ReadSizeAt(baudRate) * BitsPerByte;
    return static_cast<int>(bits * 1000 / std::max(baudRate, 1U) + interval + Margin);
}

} // namespace qor
