// SPDX-License-Identifier: GPL-3.0-or-later
//
// The search for a sequence that stands again and again at one distance, as the header of binary
// records does. A guess for StreamLook; a pure function, any thread.
#pragma once

#include "base/Bytes.h"

#include <cstddef>
#include <optional>
#include <string>

namespace qor {

/// A sequence that stands again and again.
struct ByteRepeat {
    std::string bytes; ///< 3 to 16
    std::size_t first = 0;
    std::size_t count = 0;
    std::size_t distance = 0; ///< from one to the next, most often
};

/// The sequence that explains at least half of the bytes, at most 4096 bytes from one to the next.
std::optional<ByteRepeat> FindRepeat(ByteSpan bytes);

} // namespace qor
