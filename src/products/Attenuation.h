// SPDX-License-Identifier: GPL-3.0-or-later
//
// The diffuse attenuation coefficient of one light field (downwelling or upwelling irradiance,
// upwelling radiance) from what was measured on the way down. One object a light field, fed by the
// package's rows under the document's lock; it knows nothing of sensors and frames.
#pragma once

#include <deque>
#include <optional>

namespace qor {

class CAttenuation {
  public:
    /// Adds light (any unit, above 0) measured at a depth (m); other values are passed over. The
    /// window is the stretch of depth in metres over which the slope is taken.
    void Add(double depth, double light, double window);

    /// K in 1/m: minus the least-squares slope of ln(light) on depth over the window that ends at
    /// the last depth; empty until the cast has covered the window (Smith and Baker 1984).
    std::optional<double> Coefficient() const { return Latest; }

  private:
    struct Sample {
        double depth;
        double logLight;
    };
    void Refit(double window);

    std::deque<Sample> Samples; ///< oldest first
    std::optional<double> Latest;
};

} // namespace qor
