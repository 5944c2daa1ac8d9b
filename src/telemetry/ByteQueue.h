// SPDX-License-Identifier: GPL-3.0-or-later
//
// The received bytes of a resource in arrival order: one piece of memory with a read position, so
// that searching and cutting work on plain byte ranges. Guarded by the frame lock of its resource.
// It grows only with bytes that were received.
#pragma once

#include "base/Bytes.h"

#include <memory>

namespace qor {

class CByteQueue {
  public:
    /// The bytes not consumed yet. Valid until the next Prepare or Clear.
    ByteSpan Bytes() const { return {Memory.get() + Begin, End - Begin}; }
    std::size_t Size() const { return End - Begin; }
    bool Empty() const { return Begin == End; }
    /// Where the first unconsumed byte, and the next byte to come, stand in the stream.
    std::uint64_t Offset() const { return HeadOffset; }
    std::uint64_t EndOffset() const { return HeadOffset + Size(); }

    /// Room for so many bytes behind the last one; Commit says how many of them were filled.
    std::span<std::uint8_t> Prepare(std::size_t bytes);
    void Commit(std::size_t bytes) { End += bytes; }
    /// Removes bytes from the front; there must be so many.
    void Consume(std::size_t bytes) {
        Begin += bytes;
        HeadOffset += bytes;
        if (Begin == End)
            Rewind();
    }
    /// Forgets all bytes; the stream begins anew at this offset.
    void Clear(std::uint64_t offset = 0);

  private:
    void Rewind();

    std::unique_ptr<std::uint8_t[]> Memory;
    std::size_t Capacity = 0;
    std::size_t Begin = 0;
    std::size_t End = 0;
    std::uint64_t HeadOffset = 0;
};

} // namespace qor
