// SPDX-License-Identifier: GPL-3.0-or-later
//
// The history of one watched value against time and depth, for plots: everything of the last hour,
// then thinned in steps so that every least and greatest value stays, until days fit into a few
// megabytes. Fed with every frame on the acquisition thread and read by displays, both under the
// document's lock; a value costs a few nanoseconds and, once the full part is full, no allocation.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace qor {

struct HistoryPoint {
    double time = 0.0; ///< s, to a millisecond
    double value = 0.0;
    double depth = 0.0; ///< with a float's digits; not a number: none was known
    bool gap = false;   ///< no line leads here from the point before: something is missing between
};

struct HistoryLimits {
    double fullSeconds = 3600.0;        ///< kept as it came
    std::size_t fullPoints = 1u << 18;  ///< of those at most
    std::size_t levelPoints = 1u << 15; ///< in each of the thinned levels
};

class CHistoryCurve {
  public:
    explicit CHistoryCurve(const HistoryLimits& limits = {}) : Limits(limits) {}

    /// The next value. Times go forward (feed a clock that never steps): an earlier one is taken
    /// for the last. A value that is not finite is a gap.
    void Append(double time, double value, double depth = std::numeric_limits<double>::quiet_NaN());
    /// Something is missing here (a stale or lost instrument): no line crosses it, however the
    /// curve is thinned.
    void MarkGap();
    void Clear();

    /// The points from `from` to `to`, both included, oldest first: all of them, or the least and
    /// the greatest of equal stretches of time when they are more than `most`. Their number is
    /// `most` at most; the list's memory is used again.
    void Query(double from, double to, std::size_t most, std::vector<HistoryPoint>& points) const;

    std::optional<HistoryPoint> Latest() const;
    /// The oldest time that is still there; empty without points.
    std::optional<double> OldestTime() const;
    std::size_t Points() const;
    /// Memory that is held for points.
    std::size_t Bytes() const;

  private:
    static constexpr std::size_t ChunkPoints = 512;
    static constexpr std::size_t LevelCount = 4;
    /// 16 bytes a point. The highest bit of an offset says that there is a gap before.
    struct Chunk {
        double base = 0.0;
        std::size_t count = 0;
        std::array<double, ChunkPoints> values;
        std::array<float, ChunkPoints> depths;
        std::array<std::uint32_t, ChunkPoints> offsets; ///< ms from the base

        HistoryPoint At(std::size_t index) const;
        /// The first point not before (`after` false) or behind (true) a time.
        std::size_t Find(double time, bool after) const;
    };
    struct Level {
        std::deque<std::unique_ptr<Chunk>> chunks;
        std::size_t points = 0;
    };

    void Push(std::size_t level, const HistoryPoint& point);
    void Trim(std::size_t level);
    void Thin(const Chunk& chunk, std::size_t into);
    template <class Take> void ForEach(double from, double to, Take take) const;

    HistoryLimits Limits;
    std::array<Level, LevelCount> Levels;   ///< the full one first, then older and thinner
    std::array<bool, LevelCount> OpenGap{}; ///< a gap that the level's next point will carry
    std::vector<std::unique_ptr<Chunk>> Spare;
    double LastTime = -std::numeric_limits<double>::infinity();
};

} // namespace qor
