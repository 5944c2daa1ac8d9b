// SPDX-License-Identifier: GPL-3.0-or-later
//
// The byte queue's memory: the unread rest is moved to the front only when it is no longer than
// what was read since, and the memory grows by half, so a byte costs constant time on average.
#include "telemetry/ByteQueue.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

constexpr std::size_t SmallestMemory = 4096;
constexpr std::size_t MemoryToKeep = 4U
                                     << 20; // more than this is given back when the queue is empty

} // namespace

std::span<std::uint8_t> CByteQueue::Prepare(std::size_t bytes) {
    std::size_t size = Size();
    if (Capacity - End < bytes) {
        if (Begin >= size && Capacity - size >= bytes) {
            if (size != 0)
                std::memcpy(Memory.get(), Memory.get() + Begin, size);
        } else {
            std::size_t needed = size + bytes;
            std::size_t capacity = std::max(needed + needed / 2, SmallestMemory);
            auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
            if (size != 0)
                std::memcpy(larger.get(), Memory.get() + Begin, size);
            Memory = std::move(larger);
            Capacity = capacity;
        }
        Begin = 0;
        End = size;
    }
    return {Memory.get() + End, bytes};
}

/// All bytes are consumed: the memory is used from its start again.
void CByteQueue::Rewind() {
    Begin = End = 0;
    if (Capacity > MemoryToKeep) {
        Memory.reset();
        Capacity = 0;
    }
}

void CByteQueue::Clear(std::uint64_t offset) {
    Consume(Size());
    HeadOffset = offset;
}

} // namespace qor
