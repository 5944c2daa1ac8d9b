// SPDX-License-Identifier: GPL-3.0-or-later
//
// Where frames stand in telemetry that carries no sync header: BSI packets, told by the byte pairs
// at their fixed places, and lines, told by their terminator. A port carries at most one such
// instrument, alone; a raw log holds any number among others. Called by CFrameSync under the frame
// lock.
#pragma once

#include "telemetry/HeaderSearch.h"
#include "telemetry/TerminatorScan.h"

#include <optional>

namespace qor {

class CSpecialSync {
  public:
    /// Frames of packets: for each pair (a, b) the bytes a, b, then 2b data bytes and a check byte.
    /// There must be at least one pair and no half one.
    void UsePackets(ByteSpan pairs);
    /// Frames that are lines; the terminator must not be empty.
    void UseLines(std::string_view terminator);

    /// The length of a frame of packets; 0 for lines.
    std::size_t PacketsLength() const { return Length; }
    /// The length of the frame of packets that stands at the first byte, all of it; 0: none.
    std::size_t PacketsAt(ByteSpan bytes) const;
    /// Where the line begins that ends with the last byte; empty when there is none, or none that
    /// is shorter than LongestLine. `boundary`: a line begins with the first byte; else its begin
    /// is known only from the terminator of another.
    static constexpr std::size_t LongestLine = 4096;
    std::optional<std::size_t> LineAtEnd(ByteSpan bytes, bool boundary) const;

    /// Finds where a frame begins, as CHeaderSearch::Search. Bytes before the result's position are
    /// to be dropped before the next call.
    SearchResult Search(ByteSpan bytes, std::size_t limit, bool ended);
    /// Where a line begins is no longer known: the rest of one passes unused.
    void LoseLine();
    /// The next byte begins a line.
    void BeginLine() { AtLine = true; }

  private:
    bool IsLines() const { return !Terminator.empty(); }
    bool IsLine(ByteSpan bytes) const;
    /// How far the packets' pairs agree with the first bytes: all of them, or up to a byte that
    /// differs or has not come.
    enum class Agreement { All, Differs, Unknown };
    Agreement Compare(ByteSpan bytes) const;
    SearchResult SearchPackets(ByteSpan bytes, std::size_t limit, bool ended) const;
    SearchResult SearchLine(ByteSpan bytes, std::size_t limit);

    std::vector<std::uint8_t> Pairs;
    std::size_t Length = 0;
    std::string Terminator;
    CTerminatorScan PartialLine;
    bool AtLine = false; ///< the next byte begins a line
};

} // namespace qor
