// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the discarded bytes of a played log look like when an instrument that was not named sends
// among those that were: sentences by their name, records by the bytes with which they begin. It
// guesses from a sample; noise, and what is left of the named instruments' own frames, is nobody's.
// A pure function, any thread.
#pragma once

#include "telemetry/DiscardedBytes.h"

#include <string>
#include <vector>

namespace qor {

struct UnnamedFrames {
    std::string begin;     ///< of its frames
    std::size_t size = 0;  ///< of most frames, in bytes
    std::size_t count = 0; ///< of frames in the sample
    std::size_t bytes = 0; ///< of these frames
};

/// The likely instruments, the one with the most bytes first; empty when the bytes look like
/// none's. `named`: a frame of each instrument that was named.
std::vector<UnnamedFrames> FindUnnamedFrames(const CDiscardedBytes& discarded,
                                             const std::vector<std::string>& named);

} // namespace qor
