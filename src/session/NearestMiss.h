// SPDX-License-Identifier: GPL-3.0-or-later
//
// Why bytes hold no frame of a definition: how much of its sync header they have and where, what
// they look like instead, and the likely cause as one sentence. For whoever tries a definition or
// waits for its first frame. A pure function of definition and bytes, any thread.
#pragma once

#include "base/Bytes.h"
#include "instrument/Instrument.h"
#include "session/StreamLook.h"

#include <vector>

namespace qor {

/// Where the longest beginning of a sync header stands.
struct HeaderTrace {
    std::size_t length = 0;             ///< of the whole header
    std::size_t seen = 0;               ///< its first bytes that stand somewhere in a row
    std::size_t times = 0;              ///< how often that many do
    std::size_t first = 0;              ///< where they do for the first time, with what is skipped
    std::vector<std::size_t> distances; ///< from one to the next, the first few
    std::string follows;                ///< what stands behind them there

    bool IsWhole() const { return length > 0 && seen == length; }
};
/// `skipped` bytes came before these.
HeaderTrace TraceHeader(std::string_view header, ByteSpan bytes, std::size_t skipped = 0);

/// The distance that is met most often, the shortest of several; 0 when there is none.
std::size_t UsualDistance(const HeaderTrace& trace);

struct NearestMiss {
    HeaderTrace header;
    StreamLook look;
    std::string sample; ///< the first bytes, printable
    std::string cause;  ///< one sentence, or two
};

/// What the bytes of a line without a frame show. `lineErrors`: framing and parity errors that came
/// with them; `skipped` bytes came before them and are not looked at.
NearestMiss NearestMissOf(const CInstrument& instrument, ByteSpan bytes,
                          std::uint64_t lineErrors = 0, std::size_t skipped = 0);

} // namespace qor
