// SPDX-License-Identifier: GPL-3.0-or-later
//
// The checks of values: gross range, spike, rate of change, flat line (the tests of QARTOD of these
// names) over the values of one sensor or product as its frames bring them. Pure; one thread.
#pragma once

#include "export/QcFlags.h"

#include <cstddef>
#include <deque>
#include <optional>

namespace qor {

/// Values from least to greatest, both of them included, are good.
struct QcRange {
    double least = 0.0, greatest = 0.0;
};
/// Beyond the first a value is suspect, beyond the second bad.
struct QcSteps {
    double suspect = 0.0;
    std::optional<double> bad = {};
};
/// So many values in a row that differ from the last of them by no more than `within`.
struct QcFlat {
    std::size_t suspect = 0, bad = 0;
    double within = 0.0;
};

/// What the values of one sensor are held to; what is absent is not tested.
struct QcRules {
    std::optional<QcRange> gross = {};  ///< bad outside
    std::optional<QcRange> likely = {}; ///< suspect outside
    /// As operators watch a value: suspect, or bad, between the bounds, which are good.
    std::optional<QcRange> warning = {}, alarm = {};
    std::optional<QcSteps> spike = {}; ///< from the mean of the values before and after
    std::optional<QcSteps> rate = {};  ///< of change, a second
    std::optional<QcFlat> flat = {};
};

class CQcTests {
  public:
    explicit CQcTests(const QcRules& rules) : Rules(rules) {}

    /// The next frame's value, none where it has none, and its time in seconds. What all tests but
    /// the spike's say of it.
    QcFlag Take(std::optional<double> value, std::optional<double> seconds);
    /// What the test for spikes says of the value taken last, by the one that follows.
    QcFlag SpikeBefore(std::optional<double> next) const;

  private:
    QcFlag TestRanges(double value) const;
    QcFlag TestRate(double value, std::optional<double> seconds) const;
    QcFlag TestFlat(double value);

    const QcRules Rules;
    std::optional<double> Before, Last; ///< values of the latest two frames
    std::optional<double> LastSeconds;
    std::deque<double> Latest; ///< values, as many as the flat line test looks at
};

} // namespace qor
