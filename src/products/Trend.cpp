// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/Trend.h"

#include <cmath>

namespace qor {

namespace {

constexpr double Minute = 60.0, ThreeHours = 3 * 3600.0, TenMinutes = 600.0;
constexpr std::size_t MostWinds = 20'000; ///< of a station that sends faster than it should

} // namespace

void CTrend::Add(double time, double value) {
    if (!std::isfinite(time) || !std::isfinite(value))
        return;
    if (Latest && time < Latest->time)
        Clear(); // the clock was set back, or another file begins
    Latest = Sample{time, value};
    if (Minutes.empty() || time - Minutes.back().time >= Minute)
        Minutes.push_back(*Latest);
    while (Minutes.size() > 1 && time - Minutes[1].time >= ThreeHours)
        Minutes.pop_front();
}

std::optional<CTrend::Change> CTrend::SinceThreeHours() const {
    if (!Latest || Latest->time - Minutes.front().time < Minute)
        return std::nullopt;
    return Change{Latest->value - Minutes.front().value, Latest->time - Minutes.front().time};
}

void CWindRose::Add(double time, const Wind& wind) {
    if (!std::isfinite(time))
        return;
    if (!Winds.empty() && time < Winds.back().time)
        Winds.clear();
    constexpr double Width = 360.0 / static_cast<double>(Sectors);
    const bool blows = wind.from && std::isfinite(*wind.from) && wind.speed > 0.0;
    Winds.push_back(
        {time, blows ? static_cast<int>(std::lround(*wind.from / Width)) % static_cast<int>(Sectors)
                     : -1});
    if (Winds.size() > MostWinds)
        Winds.pop_front();
    Forget(time);
}

void CWindRose::Forget(double now) {
    while (!Winds.empty() && now - Winds.front().time > TenMinutes)
        Winds.pop_front();
}

std::array<double, CWindRose::Sectors> CWindRose::Shares() const {
    std::array<double, Sectors> shares{};
    for (const Sample& sample : Winds)
        if (sample.sector >= 0)
            shares[static_cast<std::size_t>(sample.sector)] += 1.0;
    for (double& share : shares)
        share /= Winds.empty() ? 1.0 : static_cast<double>(Winds.size());
    return shares;
}

} // namespace qor
