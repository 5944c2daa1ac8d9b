// SPDX-License-Identifier: GPL-3.0-or-later
//
// The types that an instrument's SPECIAL line may name: telemetry without a sync header, and how
// its frames are found all the same. Telemetry builds its searches by it, the verdict on a
// definition asks whether there is one. No state.
#pragma once

#include "instrument/Instrument.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace qor {

/// How frames of the type are found.
enum class SpecialSearch : std::uint8_t {
    Packets, ///< by byte pairs at fixed places, which the line's units give
    Header,  ///< by a sync header after all
    Lines    ///< frames are lines of text that end in CR LF
};

struct SpecialType {
    std::string_view name;
    SpecialSearch search;
    const CSensor* line; ///< the instrument's SPECIAL line
};

/// The type of the instrument's first SPECIAL line, or empty: no such line, or none that is known.
std::optional<SpecialType> SpecialTypeOf(const CInstrument& instrument);

/// The bytes of the pairs that a line of packets gives; empty when its units are malformed or give
/// more than a frame record holds.
inline constexpr std::size_t MaxSyncBytes = 12;
std::vector<std::uint8_t> SyncPairsOf(const CSensor& special);

} // namespace qor
