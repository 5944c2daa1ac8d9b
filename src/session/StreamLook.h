// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the bytes of a line look like to somebody who has no definition for them: sentences, lines
// of text, records that repeat, a line read at the wrong speed. It guesses, and says so. A pure
// function of the bytes, any thread; what a definition makes of them is NearestMiss's.
#pragma once

#include "session/ByteRepeat.h"

#include <cstdint>
#include <optional>
#include <string>

namespace qor {

enum class StreamKind : std::uint8_t {
    Empty,     ///< no bytes at all
    Sentences, ///< NMEA 0183
    Lines,     ///< text with line ends
    Text,      ///< text without them
    SevenBits, ///< text behind a parity bit
    Records,   ///< binary, and some bytes of it stand again at one distance
    Garbled,   ///< binary, as text becomes at the wrong speed
    Binary,
};

struct StreamLook {
    StreamKind kind = StreamKind::Empty;
    std::string sentence;  ///< "These look like ...", to be shown as it is
    std::string lineEnd;   ///< CR LF, LF or CR; empty where lines have no end
    std::string lineStart; ///< with which most lines begin; empty when they begin differently
    std::optional<ByteRepeat> repeat; ///< of bytes that are no lines
};

/// Looks at the first 64 KiB.
StreamLook LookAt(ByteSpan bytes);

} // namespace qor
