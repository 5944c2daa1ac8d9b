// SPDX-License-Identifier: GPL-3.0-or-later
//
// The end of a text frame, which is looked for only once.
#include "telemetry/FrameEnd.h"

#include <algorithm>

namespace qor {

// Decided: once the ended stream has shown no terminator for an instrument, later frames of it are
// not looked through again, which would take a time that grows with the square of what is left.
Ending CFrameEnd::FindTerminator(const AttachedInstrument& instrument, ByteSpan bytes,
                                 bool declared, bool ended, std::size_t& length) {
    if (instrument.endless)
        return Ending::Unfinished;
    ByteSpan frame = bytes.first(std::min(bytes.size(), LongestTextFrame));
    if (!Terminator.Find(frame, instrument.info.terminator)) {
        if (Terminator.Scanned() == LongestTextFrame)
            return Ending::Endless;
        return ended ? Ending::Unfinished : Ending::Waiting;
    }
    length = Terminator.Scanned();
    std::size_t wanted = declared ? std::min(instrument.frameLength, LongestTextFrame) : 0;
    return bytes.size() >= wanted || ended ? Ending::Complete : Ending::Waiting;
}

} // namespace qor
