// SPDX-License-Identifier: GPL-3.0-or-later
//
// The search for the end of a text frame, resumed where it stopped when more bytes come. Used by
// CFrameSync for the frame at the head of the byte queue and for lines without a sync header.
#pragma once

#include "base/Bytes.h"

namespace qor {

class CTerminatorScan {
  public:
    /// A new frame: the next Find looks from its first byte on.
    void Restart() { *this = {}; }
    /// Goes on in the frame's bytes, which begin with those seen before. True when the terminator
    /// was found: it ends with byte `Scanned()`. Kept: a byte that breaks a partial match is not
    /// tried as the terminator's first byte again, so CR CR LF does not end a frame whose
    /// terminator is CR LF.
    bool Find(ByteSpan frame, std::string_view terminator);
    /// Bytes looked at so far.
    std::size_t Scanned() const { return Position; }
    /// `bytes` were removed from the front of what was looked at.
    void Consumed(std::size_t bytes) { Position -= bytes; }

  private:
    std::size_t Position = 0;
    std::size_t Matched = 0;
    bool Done = false;
};

} // namespace qor
