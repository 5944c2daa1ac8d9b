// SPDX-License-Identifier: GPL-3.0-or-later
//
// A ring of spectra; sums are made when they are asked for, which is far less often than frames
// come.
#include "products/SpectrumRing.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

CSpectrumRing::CSpectrumRing(const OpticalSeries& series, std::size_t capacity,
                             SpectrumReading reading)
    : Channels(series.channels), Capacity(std::max<std::size_t>(capacity, 1)), Reading(reading),
      Values(Channels.size() * Capacity) {}

void CSpectrumRing::Add(const CLiveInstrument& instrument) {
    double* value = Values.data() + Next * Channels.size();
    for (const OpticalSeries::Channel& channel : Channels)
        *value++ = ReadChannel(instrument, channel, Reading)
                       .value_or(std::numeric_limits<double>::quiet_NaN());
    Next = (Next + 1) % Capacity;
    Kept = std::min(Kept + 1, Capacity);
}

template <class Take>
void CSpectrumRing::ForEachValue(std::size_t channel, std::size_t latest, Take take) const {
    for (std::size_t back = 1; back <= std::min(latest, Kept); ++back) {
        const std::size_t spectrum = (Next + Capacity - back) % Capacity;
        const double value = Values[spectrum * Channels.size() + channel];
        if (!std::isnan(value))
            take(value);
    }
}

std::vector<SpectrumPoint> CSpectrumRing::Mean(std::size_t latest) const {
    std::vector<SpectrumPoint> points;
    for (std::size_t channel = 0; channel < Channels.size(); ++channel) {
        double sum = 0.0, count = 0.0;
        ForEachValue(channel, latest, [&](double value) {
            sum += value;
            count += 1.0;
        });
        if (count > 0.0)
            points.push_back({Channels[channel].wavelength, sum / count});
    }
    return points;
}

std::vector<SpectrumBand> CSpectrumRing::Band(std::size_t latest) const {
    std::vector<SpectrumBand> points;
    for (std::size_t channel = 0; channel < Channels.size(); ++channel) {
        SpectrumBand band{Channels[channel].wavelength, HUGE_VAL, -HUGE_VAL};
        ForEachValue(channel, latest, [&band](double value) {
            band.least = std::min(band.least, value);
            band.most = std::max(band.most, value);
        });
        if (band.least <= band.most)
            points.push_back(band);
    }
    return points;
}

} // namespace qor
