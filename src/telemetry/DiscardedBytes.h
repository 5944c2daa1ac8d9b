// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a played file holds that belongs to no frame: how many bytes in how many pieces, a sample of
// them, and whether the file ends in the middle of something. Filled by CFrameSync under the frame
// lock while the file plays, read by whoever had it kept when the file is at its end.
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qor {

class CDiscardedBytes {
  public:
    static constexpr std::size_t LargestSample = 256U << 10;

    /// The bytes that stand at this offset of the stream are in no frame.
    void Take(std::uint64_t offset, ByteSpan bytes);
    /// What begins at the offset (such as "a frame of X") has no end where the stream ends. It was
    /// no torn end when a frame is cut behind it.
    void CutShort(std::uint64_t offset, std::string what);
    void FrameCut() { TornAt.reset(); }

    std::uint64_t Total() const { return Bytes; }
    std::uint64_t Pieces() const { return Count; }
    /// Where the first piece begins; 0 when there is none.
    std::uint64_t First() const { return FirstAt; }
    /// The first bytes, piece behind piece, and where in them each piece begins.
    ByteSpan Sample() const { return Kept; }
    const std::vector<std::size_t>& PieceStarts() const { return Starts; }
    /// Where the torn end begins, and what it was; empty when the end is whole.
    const std::optional<std::uint64_t>& Torn() const { return TornAt; }
    const std::string& TornWhat() const { return What; }

  private:
    std::uint64_t Bytes = 0, Count = 0, FirstAt = 0;
    std::uint64_t EndAt = 0; ///< of the last piece
    std::vector<std::uint8_t> Kept;
    std::vector<std::size_t> Starts;
    std::optional<std::uint64_t> TornAt;
    std::string What;
};

} // namespace qor
