// SPDX-License-Identifier: GPL-3.0-or-later
//
// What checks of values say of a value, as the primary flags of QARTOD number it. Pure.
#pragma once

#include <cstdint>
#include <vector>

namespace qor {

enum class QcFlag : std::uint8_t {
    Good = 1,
    NotEvaluated = 2,
    Suspect = 3,
    Bad = 4,
    Missing = 9,
};

/// What was found in a frame.
struct FrameQc {
    QcFlag time = QcFlag::NotEvaluated; ///< whether it came as soon as was to be expected
    std::vector<QcFlag> sensors = {};   ///< by index; not evaluated for texts
    std::vector<QcFlag> products = {};  ///< of the derived rows, in their order
};

/// The worse of what two tests say: a test that was not made says nothing.
constexpr QcFlag Worse(QcFlag a, QcFlag b) {
    if (a == QcFlag::NotEvaluated)
        return b;
    return b == QcFlag::NotEvaluated || a > b ? a : b;
}

} // namespace qor
