// SPDX-License-Identifier: GPL-3.0-or-later
//
// Unpacks Zstandard frames piece by piece, in the memory of a window that is bounded whatever the
// file asks for. CInputFile feeds it. One thread at a time. A build without the library unpacks
// none.
#pragma once

#include "platform/GzipUnpacker.h"

namespace qor {

class CZstdUnpacker {
  public:
    /// Whether this build can.
    static bool IsThere();
    CZstdUnpacker();
    UnpackStep Unpack(ByteSpan bytes, std::span<std::uint8_t> room);
    /// Another frame begins.
    void Restart();

  private:
    struct Stream;
    struct End {
        void operator()(Stream* stream) const;
    };
    std::unique_ptr<Stream, End> State; ///< null: there was no memory for it
};

} // namespace qor
