// SPDX-License-Identifier: GPL-3.0-or-later
//
// Unpacks one member of a gzip file piece by piece, in the memory of its window. CInputFile feeds
// it and looks after further members. One thread at a time.
#pragma once

#include "base/Bytes.h"

#include <memory>

namespace qor {

/// What a step did: bytes taken of what came, bytes made of them.
struct UnpackStep {
    std::size_t taken = 0, made = 0;
    bool memberEnded = false; ///< what comes next is another member, or no part of the file
    bool damaged = false;
};

class CGzipUnpacker {
  public:
    CGzipUnpacker();
    UnpackStep Unpack(ByteSpan bytes, std::span<std::uint8_t> room);
    /// Another member begins.
    void Restart();

  private:
    struct Stream;
    struct End {
        void operator()(Stream* stream) const;
    };
    std::unique_ptr<Stream, End> State; ///< null: there was no memory for it
};

} // namespace qor
