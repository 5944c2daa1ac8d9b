// SPDX-License-Identifier: GPL-3.0-or-later
//
// The latest spectra of one series, for a mean over them and the band that they fill. Fed with
// every frame on the acquisition thread and read by displays, both under the document's lock. All
// memory is taken when it is made: a frame allocates nothing.
#pragma once

#include "products/Spectrum.h"

#include <vector>

namespace qor {

struct SpectrumBand {
    double wavelength = 0.0;
    double least = 0.0;
    double most = 0.0;
};

class CSpectrumRing {
  public:
    /// Keeps the last `capacity` spectra of a series, at least one.
    CSpectrumRing(const OpticalSeries& series, std::size_t capacity,
                  SpectrumReading reading = SpectrumReading::Calibrated);

    /// Takes the spectrum in the instrument's current frame; the instrument is the series' own.
    void Add(const CLiveInstrument& instrument);
    void Clear() { Kept = 0; }

    /// How many spectra are held.
    std::size_t Count() const { return Kept; }
    /// The mean over the latest spectra, as many as asked for and held. Each channel over the
    /// spectra in which it has a value; one without any is left out.
    std::vector<SpectrumPoint> Mean(std::size_t latest) const;
    /// The least and the greatest value of each channel, over the same spectra.
    std::vector<SpectrumBand> Band(std::size_t latest) const;

  private:
    template <class Take>
    void ForEachValue(std::size_t channel, std::size_t latest, Take take) const;

    std::vector<OpticalSeries::Channel> Channels;
    std::size_t Capacity;
    SpectrumReading Reading;
    std::vector<double> Values; ///< spectrum after spectrum; not a number: no value
    std::size_t Next = 0;       ///< the spectrum to be overwritten
    std::size_t Kept = 0;
};

} // namespace qor
