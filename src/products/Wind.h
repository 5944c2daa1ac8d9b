// SPDX-License-Identifier: GPL-3.0-or-later
//
// True wind from what an anemometer on a moving ship reads. Pure arithmetic.
#pragma once

#include <optional>

namespace qor {

struct Wind {
    double speed = 0.0;
    /// Where it comes from, 0 to 360 degrees clockwise; empty when there is none.
    std::optional<double> from;
};

/// The ship's way over ground; the speed in the anemometer's units.
struct ShipsWay {
    double speed = 0.0;
    double course = 0.0;  ///< where it goes, degrees clockwise from north
    double heading = 0.0; ///< where the bow points; without a compass the course
};

/// The wind over ground, its direction from north, given what blows at the ship: its speed and
/// where it comes from, clockwise from the bow. Smith, Bourassa and Sharp (1999), J. Atmos. Ocean.
/// Tech. 16.
Wind TrueWind(double relativeSpeed, double relativeFrom, const ShipsWay& ship);

} // namespace qor
