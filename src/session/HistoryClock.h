// SPDX-License-Identifier: GPL-3.0-or-later
//
// The time of the curves of one resource: that of its frames, made so that it never goes back. A
// replay that is rewound, or a clock that is set back, goes on from the latest time until the
// frames' own time has overtaken it. Under the document's lock; no clock is asked here.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace qor {

class CHistoryClock {
  public:
    static constexpr double Never = -std::numeric_limits<double>::infinity();

    /// The curves' time of a frame with this time; `last` is what the same instrument got for its
    /// frame before (Never: none). Empty for a time far ahead that no second frame has confirmed: a
    /// damaged stamp must not carry the curves into another century.
    std::optional<double> Take(double frameTime, double last) {
        if (!IsCredible(frameTime))
            return std::nullopt;
        if (frameTime >= Newest)
            Offset = 0.0;
        double time = frameTime + Offset;
        if (time < last) {
            if (last - time < Jitter)
                return last;
            Offset += Newest - time;
            time = Newest;
            Break();
        }
        Newest = std::max(Newest, time);
        return time;
    }

    /// No line leads from the points before to those after.
    void Break() { ++Breaks; }
    std::uint32_t BreakCount() const { return Breaks; }

  private:
    static constexpr double Jitter = 1.0;      ///< s that a clock is put back unnoticed
    static constexpr double LongJump = 3600.0; ///< s ahead that want confirmation

    bool IsCredible(double frameTime) {
        const bool far = frameTime + Offset - Newest > LongJump && Newest != Never;
        const bool confirmed = Doubted && std::fabs(frameTime - *Doubted) < LongJump;
        Doubted = far && !confirmed ? std::optional(frameTime) : std::nullopt;
        return !Doubted;
    }

    double Offset = 0.0;
    double Newest = Never;
    std::optional<double> Doubted;
    std::uint32_t Breaks = 0;
};

} // namespace qor
