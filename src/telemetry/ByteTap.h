// SPDX-License-Identifier: GPL-3.0-or-later
//
// A copy of the bytes that a port receives, for whoever wants to know why they give no frame: from
// each connection until its first frame, or all of them. Filled by the port's worker, emptied by
// whoever looks after the ports; its lock is a leaf. It is bounded, and once the first frame has
// come it costs one look at a flag a read.
#pragma once

#include "base/Bytes.h"
#include "base/Lock.h"

#include <atomic>
#include <cstdint>
#include <vector>

namespace qor {

/// How the present connection stands.
struct TapState {
    bool framed = false;          ///< it has given a frame
    std::uint64_t bytes = 0;      ///< received; no longer counted once the tap is closed
    std::int64_t firstByte = 0;   ///< on the monotonic clock, milliseconds
    std::int64_t latestByte = 0;  ///< the same
    std::uint64_t unkept = 0;     ///< of all connections: there was no room for them
    std::size_t waiting = 0;      ///< bytes that can be taken
    std::uint32_t connection = 0; ///< its number; 0: none was made yet
};

class CByteTap {
  public:
    /// Bytes that may wait.
    static constexpr std::size_t Room = std::size_t{8} << 20;

    // On any thread.
    /// All bytes from now on, frames or not.
    void KeepAll();
    TapState State() const;
    /// The first bytes that wait, at most so many.
    std::vector<std::uint8_t> Peek(std::size_t most) const;
    /// Takes all that wait; from the first time on they stay beyond the first frame until they are
    /// taken. `bytes` gives its memory.
    void TakeAll(std::vector<std::uint8_t>& bytes);
    /// Nobody wants them any more, also of later connections.
    void Stop();

    // On the thread that connects, before the worker runs.
    void BeginConnection();

    // On the worker's thread.
    bool IsOpen() const { return Open.load(std::memory_order_relaxed); }
    void Take(ByteSpan bytes, std::int64_t now);
    void NoteFrame();

  private:
    void Forget() REQUIRES(TapLock);

    std::atomic<bool> Open = false;
    mutable CMutex TapLock; ///< a leaf
    bool All GUARDED_BY(TapLock) = false;
    bool Stopped GUARDED_BY(TapLock) = false;
    bool Wanted GUARDED_BY(TapLock) = false; ///< somebody takes them
    TapState Now GUARDED_BY(TapLock);
    std::vector<std::uint8_t> Waiting GUARDED_BY(TapLock);
};

} // namespace qor
