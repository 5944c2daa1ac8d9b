// SPDX-License-Identifier: GPL-3.0-or-later
//
// Points stand in chunks. A chunk that grows too old leaves its level at the front and goes on to
// the next one as the extremes of its groups; the last level forgets.
#include "products/HistoryCurve.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr std::uint32_t GapBit = 0x80000000u;
constexpr double LongestChunk = 2e6;    ///< s that offsets in milliseconds can bridge
constexpr double HalfStep = 0.0005;     ///< s: stored times are rounded
constexpr std::size_t GroupPoints = 16; ///< thinned to two

/// The least and the greatest of a run of points, and the gaps between what is kept.
class CExtremes {
  public:
    void Take(const HistoryPoint& point) {
        Gaps += point.gap ? 1 : 0;
        if (Count++ == 0 || point.value < Least.point.value)
            Least = {point, Gaps, Count};
        // The later of equals, so that a level run keeps both its ends.
        if (Count == 1 || point.value >= Most.point.value)
            Most = {point, Gaps, Count};
    }
    std::size_t Taken() const { return Count; }

    /// Hands over what is kept, in the order of time, and begins anew. A gap behind the last one is
    /// carried over to the next run.
    template <class Give> void Finish(Give give) {
        if (Count == 0)
            return;
        const bool leastFirst = Least.place < Most.place;
        for (const Kept& kept : {leastFirst ? Least : Most, leastFirst ? Most : Least}) {
            if (kept.place == GivenPlace)
                continue; // one point is both
            HistoryPoint point = kept.point;
            point.gap = kept.gaps > GivenGaps;
            GivenGaps = kept.gaps;
            GivenPlace = kept.place;
            give(point);
        }
        Count = GivenPlace = 0;
    }
    bool GapIsOpen() const { return Gaps > GivenGaps; }

  private:
    struct Kept {
        HistoryPoint point;
        std::size_t gaps = 0;  ///< seen up to the point, its own included
        std::size_t place = 0; ///< in the run, from 1
    };
    Kept Least, Most;
    std::size_t Count = 0, Gaps = 0, GivenGaps = 0, GivenPlace = 0;
};

} // namespace

HistoryPoint CHistoryCurve::Chunk::At(std::size_t index) const {
    return {base + 0.001 * (offsets[index] & ~GapBit), values[index],
            static_cast<double>(depths[index]), (offsets[index] & GapBit) != 0};
}

std::size_t CHistoryCurve::Chunk::Find(double time, bool after) const {
    std::size_t low = 0, high = count;
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        const double at = At(middle).time;
        if (after ? at <= time : at < time)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

void CHistoryCurve::Append(double time, double value, double depth) {
    if (!std::isfinite(time))
        return;
    if (!std::isfinite(value)) {
        MarkGap();
        return;
    }
    LastTime = std::max(time, LastTime);
    Push(0, {LastTime, value, depth, false});
}

void CHistoryCurve::MarkGap() {
    OpenGap[0] = true;
}

void CHistoryCurve::Clear() {
    *this = CHistoryCurve(Limits);
}

void CHistoryCurve::Push(std::size_t level, const HistoryPoint& point) {
    Level& to = Levels[level];
    if (to.chunks.empty() || to.chunks.back()->count == ChunkPoints ||
        point.time - to.chunks.back()->base > LongestChunk) {
        Trim(level);
        if (Spare.empty()) {
            to.chunks.push_back(std::make_unique<Chunk>());
        } else {
            to.chunks.push_back(std::move(Spare.back()));
            Spare.pop_back();
        }
        to.chunks.back()->base = point.time;
        to.chunks.back()->count = 0;
    }
    Chunk& chunk = *to.chunks.back();
    auto offset = static_cast<std::uint32_t>((point.time - chunk.base) * 1000.0 + 0.5);
    if (point.gap || OpenGap[level])
        offset |= GapBit;
    OpenGap[level] = false;
    chunk.offsets[chunk.count] = offset;
    chunk.values[chunk.count] = point.value;
    chunk.depths[chunk.count] = static_cast<float>(point.depth);
    ++chunk.count;
    ++to.points;
}

void CHistoryCurve::Trim(std::size_t level) {
    Level& from = Levels[level];
    const auto tooOld = [this, level](const Chunk& chunk) {
        return level == 0 && chunk.At(chunk.count - 1).time < LastTime - Limits.fullSeconds;
    };
    const std::size_t most = level == 0 ? Limits.fullPoints : Limits.levelPoints;
    while (!from.chunks.empty() &&
           (from.points + ChunkPoints > most || tooOld(*from.chunks.front()))) {
        std::unique_ptr<Chunk> chunk = std::move(from.chunks.front());
        from.chunks.pop_front();
        from.points -= chunk->count;
        if (level + 1 < LevelCount)
            Thin(*chunk, level + 1);
        Spare.push_back(std::move(chunk));
    }
}

void CHistoryCurve::Thin(const Chunk& chunk, std::size_t into) {
    CExtremes group;
    const auto push = [this, into](const HistoryPoint& point) { Push(into, point); };
    for (std::size_t i = 0; i < chunk.count; ++i) {
        group.Take(chunk.At(i));
        if (group.Taken() == GroupPoints)
            group.Finish(push);
    }
    group.Finish(push);
    if (group.GapIsOpen())
        OpenGap[into] = true;
}

template <class Take> void CHistoryCurve::ForEach(double from, double to, Take take) const {
    bool gapBefore = false;
    for (std::size_t level = LevelCount; level-- > 0;) {
        for (const std::unique_ptr<Chunk>& chunk : Levels[level].chunks) {
            const std::size_t begin = chunk->Find(from, false), end = chunk->Find(to, true);
            if (begin >= end)
                continue;
            take(*chunk, begin, end, gapBefore);
            gapBefore = false;
        }
        // What was thinned away may have ended with a gap, which the next younger point bears.
        gapBefore = gapBefore || OpenGap[level];
    }
}

void CHistoryCurve::Query(double from, double to, std::size_t most,
                          std::vector<HistoryPoint>& points) const {
    points.clear();
    from -= HalfStep;
    to += HalfStep;
    std::size_t count = 0;
    double first = to, last = from;
    ForEach(from, to, [&](const Chunk& chunk, std::size_t begin, std::size_t end, bool) {
        count += end - begin;
        first = std::min(first, chunk.At(begin).time);
        last = std::max(last, chunk.At(end - 1).time);
    });
    const auto give = [&points](const HistoryPoint& point) { points.push_back(point); };
    const bool all = count <= most;
    const std::size_t stretches = most / 2;
    if (count == 0 || (!all && stretches == 0))
        return;
    const double seconds = std::max(last - first, 1e-3) / static_cast<double>(all ? 1 : stretches);
    CExtremes extremes;
    std::size_t stretch = 0;
    ForEach(from, to, [&](const Chunk& chunk, std::size_t begin, std::size_t end, bool gapBefore) {
        for (std::size_t i = begin; i < end; ++i) {
            HistoryPoint point = chunk.At(i);
            point.gap = point.gap || (gapBefore && i == begin);
            if (all) {
                give(point);
                continue;
            }
            const std::size_t now =
                std::min(static_cast<std::size_t>((point.time - first) / seconds), stretches - 1);
            if (now != stretch)
                extremes.Finish(give);
            stretch = now;
            extremes.Take(point);
        }
    });
    extremes.Finish(give);
}

std::optional<HistoryPoint> CHistoryCurve::Latest() const {
    const auto& chunks = Levels[0].chunks;
    return chunks.empty() ? std::nullopt
                          : std::optional(chunks.back()->At(chunks.back()->count - 1));
}

std::optional<double> CHistoryCurve::OldestTime() const {
    for (std::size_t level = LevelCount; level-- > 0;)
        if (!Levels[level].chunks.empty())
            return Levels[level].chunks.front()->base;
    return std::nullopt;
}

std::size_t CHistoryCurve::Points() const {
    std::size_t points = 0;
    for (const Level& level : Levels)
        points += level.points;
    return points;
}

std::size_t CHistoryCurve::Bytes() const {
    std::size_t chunks = Spare.size();
    for (const Level& level : Levels)
        chunks += level.chunks.size();
    return chunks * sizeof(Chunk);
}

} // namespace qor
