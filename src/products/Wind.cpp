// SPDX-License-Identifier: GPL-3.0-or-later
//
// The apparent wind is the true wind less the ship's own motion: adding the motion gives it back.
#include "products/Wind.h"

#include "products/Position.h"

#include <cmath>

namespace qor {

Wind TrueWind(double relativeSpeed, double relativeFrom, const ShipsWay& ship) {
    constexpr double Calm = 1e-9; ///< of the speeds that went in: what rounding leaves

    const double apparent = (ship.heading + relativeFrom) * RadiansPerDegree;
    const double course = ship.course * RadiansPerDegree;
    const double east = -relativeSpeed * std::sin(apparent) + ship.speed * std::sin(course);
    const double north = -relativeSpeed * std::cos(apparent) + ship.speed * std::cos(course);
    Wind wind{std::hypot(east, north), {}};
    if (wind.speed > Calm * (std::fabs(relativeSpeed) + std::fabs(ship.speed))) {
        const double from = std::atan2(-east, -north) / RadiansPerDegree;
        wind.from = from < 0.0 ? from + 360.0 : from;
    }
    return wind;
}

} // namespace qor
