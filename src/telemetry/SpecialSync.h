// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where frames begin in telemetry that carries no sync header: BSI packets, told by the byte pairs
// at their fixed places, and lines, told by their terminator. At most one such instrument uses a
// resource, alone. Called by CFrameSync under the frame lock.
#pragma once

#include "telemetry/HeaderSearch.h"
#include "telemetry/TerminatorScan.h"

namespace qor {

class CSpecialSync {
  public:
    /// Frames of packets: for each pair (a, b) the bytes a, b, then 2b data bytes and a check byte.
    /// There must be at least one pair and no half one.
    void UsePackets(ByteSpan pairs);
    /// Frames that are lines; the terminator must not be empty.
    void UseLines(std::string_view terminator);
    void UseNothing();

    bool Active() const { return Packets() || Lines(); }
    bool Packets() const { return !Pairs.empty(); }
    bool Lines() const { return !Terminator.empty(); }
    /// The length of a frame of packets.
    std::size_t PacketsLength() const { return Length; }
    static std::size_t PacketsLengthOf(ByteSpan pairs);

    /// Finds where a frame begins, as CHeaderSearch::Search. Bytes before the result's position are
    /// to be dropped before the next call.
    SearchResult Search(ByteSpan bytes, std::size_t limit, bool ended);
    /// Where a line begins is no longer known: the rest of one passes unused.
    void LoseLine();

  private:
    SearchResult SearchPackets(ByteSpan bytes, std::size_t limit, bool ended) const;
    SearchResult SearchLine(ByteSpan bytes, std::size_t limit);

    std::vector<std::uint8_t> Pairs;
    std::size_t Length = 0;
    std::string Terminator;
    CTerminatorScan PartialLine;
    bool AtLine = false; ///< the next byte begins a line
};

} // namespace qor
