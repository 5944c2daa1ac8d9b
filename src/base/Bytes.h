// SPDX-License-Identifier: GPL-3.0-or-later
//
// Big-endian integers in byte ranges: the byte order of every binary field that instruments send
// and of the raw log's time tags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace qor {

using ByteSpan = std::span<const std::uint8_t>;

/// The 8-bit text as bytes, and bytes as 8-bit text; nothing is copied.
inline ByteSpan AsBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline std::string_view AsText(ByteSpan bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

inline bool BeginsWith(ByteSpan bytes, std::string_view text) {
    return AsText(bytes).starts_with(text);
}

/// The unsigned integer in 1 to 8 bytes, most significant first; 0 for no bytes.
constexpr std::uint64_t GetBigEndian(ByteSpan bytes) {
    std::uint64_t value = 0;
    for (std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

/// Fills the bytes with the low part of the value, most significant byte first.
constexpr void PutBigEndian(std::uint64_t value, std::span<std::uint8_t> bytes) {
    for (std::size_t i = bytes.size(); i-- > 0; value >>= 8)
        bytes[i] = static_cast<std::uint8_t>(value);
}

} // namespace qor
