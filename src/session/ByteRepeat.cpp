// SPDX-License-Identifier: GPL-3.0-or-later
//
// Three bytes that return vote for the distance; the sequence is what stands around those that
// return there most often. Linear in the bytes.
#include "session/ByteRepeat.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace qor {

namespace {

constexpr std::size_t LongestDistance = 4096, LongestRepeat = 16, GramSize = 3;

std::uint32_t GramAt(ByteSpan bytes, std::size_t at) {
    return static_cast<std::uint32_t>(GetBigEndian(bytes.subspan(at, GramSize)));
}

/// Calls `take(gram, at, distance)` for each three bytes that stood before, not too far away.
/// Runs of one byte say nothing.
template <class Take> void ForEachReturn(ByteSpan bytes, Take take) {
    std::unordered_map<std::uint32_t, std::size_t> last;
    for (std::size_t at = 0; at + GramSize <= bytes.size(); ++at) {
        const std::uint32_t gram = GramAt(bytes, at);
        if (bytes[at] == bytes[at + 1] && bytes[at] == bytes[at + 2])
            continue;
        const auto [before, added] = last.try_emplace(gram, at);
        if (!added && at - before->second <= LongestDistance)
            take(gram, at, at - before->second);
        before->second = at;
    }
}

/// How many bytes beside the places are the same at three quarters of them, going by `step`.
std::size_t Alike(ByteSpan bytes, const std::vector<std::size_t>& places, std::ptrdiff_t from,
                  std::ptrdiff_t step, std::size_t most) {
    const auto byteAt = [&](std::size_t place, std::ptrdiff_t offset) -> int {
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(place) + offset;
        return at >= 0 && at < std::ssize(bytes) ? bytes[static_cast<std::size_t>(at)] : -1;
    };
    std::size_t alike = 0;
    for (; alike < most; ++alike, from += step) {
        const int wanted = byteAt(places[places.size() / 2], from);
        const auto same = std::ranges::count_if(
            places, [&](std::size_t place) { return byteAt(place, from) == wanted; });
        if (wanted < 0 || static_cast<std::size_t>(same) * 4 < places.size() * 3)
            break;
    }
    return alike;
}

/// The sequence that returns most often at the distance, when it does so through half the bytes.
std::optional<ByteRepeat> RepeatAt(ByteSpan bytes, std::size_t distance) {
    std::unordered_map<std::uint32_t, std::vector<std::size_t>> places;
    ForEachReturn(bytes, [&](std::uint32_t gram, std::size_t at, std::size_t found) {
        if (found == distance)
            places[gram].push_back(at);
    });
    const std::vector<std::size_t>* best = nullptr;
    for (const auto& [gram, all] : places)
        if (!best || all.size() > best->size() ||
            (all.size() == best->size() && all.front() < best->front()))
            best = &all;
    if (!best || best->size() < 2 || best->size() * distance * 2 < bytes.size())
        return std::nullopt;
    const std::size_t longest = std::min(LongestRepeat, distance);
    const std::size_t behind = Alike(bytes, *best, GramSize, 1, longest - GramSize);
    const std::size_t before = Alike(bytes, *best, -1, -1, longest - GramSize - behind);
    // The places are those of the second time on; the bytes may not go back to the first whole one.
    const std::size_t start = best->front() - before;
    const bool firstIsWhole = start >= distance;
    return ByteRepeat{std::string(AsText(bytes.subspan(start, before + GramSize + behind))),
                      firstIsWhole ? start - distance : start,
                      best->size() + (firstIsWhole ? 1 : 0), distance};
}

} // namespace

/// Short distances come second: they may be equal values side by side in one record.
std::optional<ByteRepeat> FindRepeat(ByteSpan bytes) {
    std::vector<std::size_t> votes(LongestDistance + 1);
    ForEachReturn(bytes,
                  [&](std::uint32_t, std::size_t, std::size_t distance) { ++votes[distance]; });
    constexpr std::ptrdiff_t Shortest[] = {9, 4, LongestDistance + 1};
    for (std::size_t i = 0; i + 1 < std::size(Shortest); ++i) {
        const auto end = i == 0 ? votes.end() : votes.begin() + Shortest[0];
        const auto best = std::max_element(votes.begin() + Shortest[i], end);
        if (auto repeat = RepeatAt(bytes, static_cast<std::size_t>(best - votes.begin())))
            return repeat;
    }
    return std::nullopt;
}

} // namespace qor
