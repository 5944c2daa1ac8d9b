// SPDX-License-Identifier: GPL-3.0-or-later
//
// Spectra of optical instruments: the series of channels that an instrument has, the spectrum in
// its current frame, and the comparison of two spectra. Used by the spectral displays and the
// command line; instruments are read under the document's lock.
#pragma once

#include "products/LiveInstrument.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

struct SpectrumPoint {
    double wavelength = 0.0; ///< nm
    double value = 0.0;
};

/// A DUT channel beside what was found for it.
struct ComparisonPoint {
    double wavelength = 0.0;
    double dut = 0.0;
    std::optional<double> reference; ///< empty: no reference channel was accepted
    std::optional<double>
        percent; ///< 100 (dut - reference) / reference; not finite for reference 0
};

/// Compares two spectra, each in ascending wavelength; one point for every DUT channel.
std::vector<ComparisonPoint> CompareSpectra(std::span<const SpectrumPoint> dut,
                                            std::span<const SpectrumPoint> reference);

/// What a spectrum (ascending) is at a wavelength: the value of its nearest channel when that is
/// less than 1.5 nm away; otherwise, between two channels that are at most 10 nm apart, the value
/// on the line between them; otherwise nothing.
std::optional<double> ValueAt(std::span<const SpectrumPoint> spectrum, double wavelength);

/// A spectrum over a reference, channel by channel; channels for which the reference has no value,
/// or zero, are left out.
std::vector<SpectrumPoint> RatioOf(std::span<const SpectrumPoint> spectrum,
                                   std::span<const SpectrumPoint> reference);

/// A spectrum less a dark one; channels for which the dark has no value are left out, for with
/// their dark in them they would look bright.
std::vector<SpectrumPoint> LessDark(std::span<const SpectrumPoint> spectrum,
                                    std::span<const SpectrumPoint> dark);

/// The optical sensors of one type and units whose ids are wavelengths, ascending.
struct OpticalSeries {
    struct Channel {
        double wavelength;
        int sensor; ///< index
    };
    std::string type;
    std::string units;
    std::vector<Channel> channels;
};

/// The instrument's series, in the order in which their first sensors stand.
std::vector<OpticalSeries> SeriesOf(const CInstrument& instrument);

/// The index of the series of a type (compared without case): the first one for an empty type, the
/// only one whatever the type; -1 when there is none.
int ChooseSeries(const std::vector<OpticalSeries>& series, std::string_view type);

/// What a spectrum is made of: values by the calibration, or raw counts.
enum class SpectrumReading : std::uint8_t { Calibrated, RawCounts };

/// A channel's reading in the instrument's current frame, or nothing.
std::optional<double> ReadChannel(const CLiveInstrument& instrument,
                                  const OpticalSeries::Channel& channel, SpectrumReading reading);

/// The spectrum in the instrument's current frame; channels without a value are left out.
std::vector<SpectrumPoint> SpectrumOf(const CLiveInstrument& instrument,
                                      const OpticalSeries& series);

/// The point nearest to a wavelength, or null for an empty spectrum.
const SpectrumPoint* NearestPoint(std::span<const SpectrumPoint> spectrum, double wavelength);

} // namespace qor
