// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where the frame at the head of the byte queue ends. Called by CFrameSync under the frame lock.
#pragma once

#include "telemetry/AttachedInstruments.h"
#include "telemetry/TerminatorScan.h"

namespace qor {

/// Whether there is an end.
enum class Ending {
    Complete,
    Waiting,    ///< more bytes may bring it
    Unfinished, ///< no more bytes will come
    Endless,    ///< no terminator within LongestTextFrame
    TooLong,    ///< a declared size beyond LongestFixedFrame
};

class CFrameEnd {
  public:
    static constexpr std::size_t LongestTextFrame = 1U << 20;
    /// Decided: a definition may claim two gigabytes, but the queue shall not grow to hold them.
    static constexpr std::size_t LongestFixedFrame = 4U << 20;

    /// Another frame.
    void Restart() { Terminator.Restart(); }
    /// The length of the instrument's frame at the first byte, when it is complete. `declared`: a
    /// frame whose terminator has come still waits until its declared size has. `ended`: no more
    /// bytes will come.
    Ending Find(const AttachedInstrument& instrument, ByteSpan bytes, bool declared, bool ended,
                std::size_t& length) {
        if (instrument.byTerminator)
            return FindTerminator(instrument, bytes, declared, ended, length);
        length = instrument.frameLength;
        if (length > LongestFixedFrame)
            return Ending::TooLong;
        if (bytes.size() >= length)
            return Ending::Complete;
        return ended ? Ending::Unfinished : Ending::Waiting;
    }

  private:
    Ending FindTerminator(const AttachedInstrument& instrument, ByteSpan bytes, bool declared,
                          bool ended, std::size_t& length);

    CTerminatorScan Terminator;
};

} // namespace qor
