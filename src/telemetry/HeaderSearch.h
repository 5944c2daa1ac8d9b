// SPDX-License-Identifier: GPL-3.0-or-later
//
// The search of a byte range for the first of several header texts. What is found is what a plain
// walk over bytes and candidates finds (see Search); how fast does not depend on how many
// candidates there are. Called by CFrameSync under the frame lock; compiled when the candidates
// change, const after that.
#pragma once

#include "base/Bytes.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace qor {

/// How a search ended, and where: `position` bytes are done with, the match or the undecided
/// partial match begins behind them.
struct SearchResult {
    enum class Outcome {
        None,    ///< nothing among the examined bytes
        Pending, ///< only bytes that have not come yet can tell
        Found,
    };
    Outcome outcome = Outcome::None;
    std::size_t position = 0;
    std::uint32_t candidate = 0;
};

class CHeaderSearch {
  public:
    CHeaderSearch() = default;
    CHeaderSearch(const CHeaderSearch&) = delete; // the tree's labels lie in the candidates
    CHeaderSearch& operator=(const CHeaderSearch&) = delete;

    /// Takes the candidates in their order; an empty one keeps its place and never matches.
    void Compile(std::vector<std::string> candidates);
    std::size_t Count() const { return Candidates.size(); }
    /// True when no other candidate begins with this one, nor this one with another: where it
    /// stands, nothing else can.
    bool StandsAlone(std::size_t candidate) const { return Alone[candidate]; }

    /// Walks from the first byte on. At each position the candidates are tried in order and the
    /// first that stands there is found; while it takes more bytes to tell whether an earlier one
    /// does, a later one is not found yet. Positions that are tried: the next one, but behind a
    /// partial match of the last candidate the one where that match broke.
    /// Kept: an occurrence that overlaps such a broken match is missed.
    /// At most `limit` positions are tried; `ended`: no more bytes will come.
    SearchResult Search(ByteSpan bytes, std::size_t limit, bool ended) const;

    /// Whether one of the candidates from `first` on stands at the first byte, the earliest in
    /// order; never drops a byte. No two candidates may be equal, but for empty ones.
    SearchResult MatchFrom(std::size_t first, ByteSpan bytes, bool ended) const;

  private:
    static constexpr std::uint32_t NoIndex = UINT32_MAX;

    /// A step of the prefix tree: the bytes that lead to it, and who ends at it or below it.
    struct Node {
        std::string_view label;
        std::uint32_t here = NoIndex;  ///< the candidate that ends here
        std::uint32_t below = NoIndex; ///< the first candidate in order that is longer
        std::uint32_t child = NoIndex; ///< the only child
        std::uint32_t table = NoIndex; ///< or the table of children by their first byte
        bool last = false;             ///< the last candidate ends here or below
    };
    using ChildTable = std::array<std::uint32_t, 256>;

    struct Entry {
        std::string_view text;
        std::uint32_t index;
    };

    std::uint32_t Build(std::span<const Entry> entries, std::size_t depth, bool prefixed);
    void AddChildren(std::uint32_t node, std::span<const Entry> entries, std::size_t depth,
                     bool prefixed);
    void MarkPairs(std::string_view header);
    const Node* Child(const Node& node, std::uint8_t byte) const;
    std::size_t SkipJunk(const std::uint8_t* bytes, std::size_t from, std::size_t end) const;
    SearchResult Compare(ByteSpan bytes, bool ended) const;
    SearchResult MatchInTree(std::size_t first, ByteSpan bytes) const;

    std::vector<std::string> Candidates;
    std::vector<bool> Alone;
    std::size_t Longest = 0;
    std::vector<Node> Nodes{1}; ///< the first is the root
    std::vector<ChildTable> Tables;
    /// For each pair of bytes: 1 when a candidate begins with it.
    std::vector<std::uint8_t> Begins;
};

} // namespace qor
