// SPDX-License-Identifier: GPL-3.0-or-later
//
// Diffuse attenuation over a sliding window of depth. Samples are kept in the order of time, so a
// turn from down to up drops the old leg as soon as it leaves the window.
#include "products/Attenuation.h"

#include <cmath>
#include <cstddef>

namespace qor {

namespace {

/// An instrument that hangs at one depth must not collect for ever; at 20 Hz this is more than a
/// minute and a half, in which even a slow profiler passes its window.
constexpr std::size_t MostSamples = 2048;

} // namespace

void CAttenuation::Add(double depth, double light, double window) {
    if (!std::isfinite(depth) || !std::isfinite(light) || light <= 0.0)
        return;
    Samples.push_back({depth, std::log(light)});
    if (Samples.size() > MostSamples)
        Samples.pop_front();
    Refit(window);
}

void CAttenuation::Refit(double window) {
    Latest.reset();
    const double depth = Samples.back().depth;
    std::size_t reach = Samples.size();
    while (reach > 0 && !(std::fabs(Samples[reach - 1].depth - depth) >= window))
        --reach;
    if (reach == 0)
        return; // nothing yet as far away as the window is long
    // The sample that fills the window proves that it is filled; everything before it is history.
    Samples.erase(Samples.begin(), Samples.begin() + static_cast<std::ptrdiff_t>(reach - 1));

    double count = 0.0, depthSum = 0.0, logSum = 0.0;
    for (const Sample& sample : Samples) {
        if (std::fabs(sample.depth - depth) > window)
            continue;
        count += 1.0;
        depthSum += sample.depth;
        logSum += sample.logLight;
    }
    double variance = 0.0, covariance = 0.0;
    for (const Sample& sample : Samples) {
        if (std::fabs(sample.depth - depth) > window)
            continue;
        variance += (sample.depth - depthSum / count) * (sample.depth - depthSum / count);
        covariance += (sample.depth - depthSum / count) * (sample.logLight - logSum / count);
    }
    if (variance > 0.0)
        Latest = -covariance / variance;
}

} // namespace qor
