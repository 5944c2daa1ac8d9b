// SPDX-License-Identifier: GPL-3.0-or-later
//
// Header search: a table of first byte pairs passes over junk, a prefix tree settles what stands
// at the few places left. A path through the tree meets every candidate that agrees with the bytes,
// and each node knows the first in order among those still possible: that is all the walk over
// candidates would have told.
#include "telemetry/HeaderSearch.h"

#include <algorithm>
#include <cstring>

namespace qor {

namespace {

/// The pair of bytes as a table index, in whatever order this machine loads it fastest.
inline std::size_t PairAt(const std::uint8_t* bytes) {
    std::uint16_t pair;
    std::memcpy(&pair, bytes, sizeof pair);
    return pair;
}

/// The number of leading bytes that agree.
std::size_t Agreeing(std::string_view label, ByteSpan bytes) {
    if (bytes.size() >= label.size() && std::memcmp(label.data(), bytes.data(), label.size()) == 0)
        return label.size();
    std::size_t limit = std::min(label.size(), bytes.size());
    std::size_t count = 0;
    while (count < limit && static_cast<std::uint8_t>(label[count]) == bytes[count])
        ++count;
    return count;
}

} // namespace

void CHeaderSearch::Compile(std::vector<std::string> candidates) {
    Candidates = std::move(candidates);
    Nodes.clear();
    Tables.clear();
    Begins.assign(1U << 16, 0);
    Longest = 0;
    std::vector<Entry> entries;
    for (std::size_t i = 0; i < Candidates.size(); ++i) {
        if (Candidates[i].empty())
            continue;
        entries.push_back({Candidates[i], static_cast<std::uint32_t>(i)});
        MarkPairs(Candidates[i]);
        Longest = std::max(Longest, Candidates[i].size());
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.text != b.text ? a.text < b.text : a.index < b.index;
    });
    Nodes.emplace_back();
    Alone.assign(Candidates.size(), false);
    AddChildren(0, entries, 0, false);
}

void CHeaderSearch::MarkPairs(std::string_view header) {
    std::uint8_t pair[2] = {static_cast<std::uint8_t>(header[0]), 0};
    if (header.size() > 1) {
        pair[1] = static_cast<std::uint8_t>(header[1]);
        Begins[PairAt(pair)] = 1;
        return;
    }
    for (unsigned second = 0; second < 256; ++second) {
        pair[1] = static_cast<std::uint8_t>(second);
        Begins[PairAt(pair)] = 1;
    }
}

/// Makes the node of sorted entries that agree in their first `depth` bytes and in at least one
/// more. `prefixed`: a candidate ends on the way to it.
std::uint32_t CHeaderSearch::Build(std::span<const Entry> entries, std::size_t depth,
                                   bool prefixed) {
    std::string_view first = entries.front().text;
    std::string_view last = entries.back().text;
    std::size_t end = depth + 1;
    while (end < first.size() && end < last.size() && first[end] == last[end])
        ++end;
    auto made = static_cast<std::uint32_t>(Nodes.size());
    Nodes.emplace_back();
    Nodes[made].label = first.substr(depth, end - depth);
    while (!entries.empty() && entries.front().text.size() == end) {
        Nodes[made].here = std::min(Nodes[made].here, entries.front().index);
        Nodes[made].last |= entries.front().index + 1 == Candidates.size();
        entries = entries.subspan(1);
    }
    if (Nodes[made].here != NoIndex && entries.empty())
        Alone[Nodes[made].here] = !prefixed;
    AddChildren(made, entries, end, prefixed || Nodes[made].here != NoIndex);
    return made;
}

void CHeaderSearch::AddChildren(std::uint32_t node, std::span<const Entry> entries,
                                std::size_t depth, bool prefixed) {
    for (const Entry& entry : entries) {
        Nodes[node].below = std::min(Nodes[node].below, entry.index);
        Nodes[node].last |= entry.index + 1 == Candidates.size();
    }
    while (!entries.empty()) {
        char byte = entries.front().text[depth];
        std::size_t count = 1;
        while (count < entries.size() && entries[count].text[depth] == byte)
            ++count;
        if (Nodes[node].table == NoIndex && count < entries.size()) {
            Nodes[node].table = static_cast<std::uint32_t>(Tables.size());
            Tables.emplace_back().fill(NoIndex);
        }
        std::uint32_t child = Build(entries.first(count), depth, prefixed);
        if (Nodes[node].table == NoIndex)
            Nodes[node].child = child;
        else
            Tables[Nodes[node].table][static_cast<std::uint8_t>(byte)] = child;
        entries = entries.subspan(count);
    }
}

inline const CHeaderSearch::Node* CHeaderSearch::Child(const Node& node, std::uint8_t byte) const {
    std::uint32_t child = node.table == NoIndex ? node.child : Tables[node.table][byte];
    return child == NoIndex ? nullptr : &Nodes[child];
}

/// The first position from `from` on whose pair begins a candidate, or `end`. Byte `end` is
/// readable.
std::size_t CHeaderSearch::SkipJunk(const std::uint8_t* bytes, std::size_t from,
                                    std::size_t end) const {
    constexpr std::size_t Stride = 8;
    const std::uint8_t* begins = Begins.data();
    while (from + Stride <= end) {
        unsigned any = 0;
        for (std::size_t i = from; i < from + Stride; ++i)
            any |= begins[PairAt(bytes + i)];
        if (any != 0)
            break;
        from += Stride;
    }
    while (from < end && begins[PairAt(bytes + from)] == 0)
        ++from;
    return from;
}

// Where no candidate stands, `position` is how far the walk goes on from here.
SearchResult CHeaderSearch::Compare(ByteSpan bytes, bool ended) const {
    constexpr auto Pending = SearchResult{SearchResult::Outcome::Pending, 0, 0};
    const Node* node = Nodes.data();
    std::size_t depth = 0;
    std::size_t brokeAt = 0; // how far the last candidate agreed
    std::uint32_t best = NoIndex;
    while (node->below < best) {
        if (depth == bytes.size()) {
            if (!ended)
                return Pending;
            break;
        }
        node = Child(*node, bytes[depth]);
        if (node == nullptr)
            break;
        std::size_t agreeing = Agreeing(node->label, bytes.subspan(depth));
        depth += agreeing;
        if (node->last)
            brokeAt = depth;
        if (agreeing < node->label.size()) {
            if (depth == bytes.size() && !ended && std::min(node->here, node->below) < best)
                return Pending;
            break;
        }
        best = std::min(best, node->here);
    }
    if (best != NoIndex)
        return {SearchResult::Outcome::Found, 0, best};
    return {SearchResult::Outcome::None, std::max<std::size_t>(brokeAt, 1), 0};
}

SearchResult CHeaderSearch::Search(ByteSpan bytes, std::size_t limit, bool ended) const {
    std::size_t end = std::min(limit, bytes.size());
    if (Longest == 0)
        return {SearchResult::Outcome::None, end, 0};
    std::size_t position = 0;
    while (position < end) {
        // The last byte of all has no pair yet: the tree decides on it alone.
        if (position + 1 < bytes.size() && Begins[PairAt(bytes.data() + position)] == 0)
            position = SkipJunk(bytes.data(), position + 1, std::min(end, bytes.size() - 1));
        if (position >= end)
            break;
        SearchResult result = Compare(bytes.subspan(position), ended);
        position += result.position;
        if (result.outcome != SearchResult::Outcome::None)
            return {result.outcome, position, result.candidate};
    }
    return {SearchResult::Outcome::None, position, 0};
}

SearchResult CHeaderSearch::MatchFrom(std::size_t first, ByteSpan bytes, bool ended) const {
    if (ended || bytes.size() >= Longest)
        return MatchInTree(first, bytes);
    for (std::size_t i = first; i < Candidates.size(); ++i) {
        const std::string& header = Candidates[i];
        if (header.empty() || Agreeing(header, bytes) < std::min(header.size(), bytes.size()))
            continue;
        auto outcome = bytes.size() < header.size() ? SearchResult::Outcome::Pending
                                                    : SearchResult::Outcome::Found;
        return {outcome, 0, static_cast<std::uint32_t>(i)};
    }
    return {};
}

SearchResult CHeaderSearch::MatchInTree(std::size_t first, ByteSpan bytes) const {
    std::uint32_t best = NoIndex;
    std::size_t depth = 0;
    const Node* node = Nodes.data();
    while (depth < bytes.size()) {
        node = Child(*node, bytes[depth]);
        if (node == nullptr || Agreeing(node->label, bytes.subspan(depth)) < node->label.size())
            break;
        depth += node->label.size();
        if (node->here >= first)
            best = std::min(best, node->here);
    }
    if (best == NoIndex)
        return {};
    return {SearchResult::Outcome::Found, 0, best};
}

} // namespace qor
