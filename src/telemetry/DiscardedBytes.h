// SPDX-License-Identifier: GPL-3.0-or-later
//
// What becomes of the bytes of a played file. Of those that belong to nothing: how many in how many
// pieces, where, a sample of them, and whether the file ends in the middle of something; of the
// others: how many are header, frames, tags and time stamps. Filled by CFrameSync under the frame
// lock while the file plays, read by whoever had it kept when the file is at its end.
#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qor {

/// Bytes of a file that stand together.
struct BytePiece {
    std::uint64_t offset = 0, length = 0;

    bool operator==(const BytePiece&) const = default;
};

/// Of the bytes that belong to something; with the discarded ones they are the whole file.
struct NamedBytes {
    std::uint64_t header = 0, frames = 0, tags = 0, stamps = 0;
};

class CDiscardedBytes {
  public:
    static constexpr std::size_t LargestSample = 256U << 10;
    static constexpr std::size_t MostPlaces = 1000;

    /// The bytes that stand at this offset of the stream are in no frame.
    void Take(std::uint64_t offset, ByteSpan bytes);
    /// What begins at the offset (such as "a frame of X") has no end where the stream ends. It was
    /// no torn end when a frame is cut behind it.
    void CutShort(std::uint64_t offset, std::string what);
    void FrameCut() { TornAt.reset(); }
    /// A frame and its tag were taken out of the stream.
    void Count(std::size_t frame, std::size_t tag) {
        Known.frames += frame;
        Known.tags += tag;
    }
    /// A header record or a time-stamp sentence was.
    void CountRecord(BytePiece record, bool ofHeader);

    std::uint64_t Total() const { return Bytes; }
    std::uint64_t Pieces() const { return PieceCount; }
    /// Where the first piece begins; 0 when there is none.
    std::uint64_t First() const { return FirstAt; }
    /// The first bytes, piece behind piece, and where in them each piece begins.
    ByteSpan Sample() const { return Kept; }
    const std::vector<std::size_t>& PieceStarts() const { return Starts; }
    /// Where the torn end begins, and what it was; empty when the end is whole.
    const std::optional<std::uint64_t>& Torn() const { return TornAt; }
    const std::string& TornWhat() const { return What; }
    /// The first places of discarded bytes, of at most MostPlaces pieces.
    const std::vector<BytePiece>& Places() const { return Found; }
    const NamedBytes& Named() const { return Known; }
    /// Where header records stand behind other things: the first places, and how many there are.
    const std::vector<BytePiece>& LaterHeaders() const { return Later; }
    std::uint64_t LaterHeaderCount() const { return LaterCount; }

  private:
    std::uint64_t Bytes = 0, PieceCount = 0, FirstAt = 0;
    std::uint64_t EndAt = 0; ///< of the last piece
    std::vector<std::uint8_t> Kept;
    std::vector<std::size_t> Starts;
    std::optional<std::uint64_t> TornAt;
    std::string What;
    std::vector<BytePiece> Found;
    NamedBytes Known;
    std::uint64_t HeaderEnd = 0; ///< of the header record that came last
    std::vector<BytePiece> Later;
    std::uint64_t LaterCount = 0;
};

} // namespace qor
