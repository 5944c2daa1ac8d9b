// SPDX-License-Identifier: GPL-3.0-or-later
//
// Series, spectra, and the matching of their channels.
#include "products/Spectrum.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FitTypes.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr double MatchWidth = 1.5;     ///< nm to either side, both ends outside
constexpr double WidestBetween = 10.0; ///< nm between channels that a line may join

/// The reference point for one DUT channel, scanning on from `at`, which stays where the scan ends.
const SpectrumPoint* MatchChannel(double wavelength, std::span<const SpectrumPoint> reference,
                                  std::size_t& at) {
    while (at < reference.size() && reference[at].wavelength <= wavelength - MatchWidth)
        ++at;
    const SpectrumPoint* accepted = nullptr;
    for (; at < reference.size() && reference[at].wavelength < wavelength + MatchWidth; ++at) {
        const double x = reference[at].wavelength;
        // Kept: a further candidate is compared with the one before it, not with that one's
        // distance from the channel, so the nearer of two need not win.
        if (accepted && !(std::fabs(x - wavelength) < std::fabs(x - accepted->wavelength)))
            break;
        accepted = &reference[at];
        if (x >= wavelength)
            break; // Decided: the scan stays here, so the point may serve the next channel too
    }
    return accepted;
}

} // namespace

std::vector<ComparisonPoint> CompareSpectra(std::span<const SpectrumPoint> dut,
                                            std::span<const SpectrumPoint> reference) {
    std::vector<ComparisonPoint> points;
    points.reserve(dut.size());
    std::size_t at = 0;
    for (const SpectrumPoint& channel : dut) {
        ComparisonPoint point{channel.wavelength, channel.value, {}, {}};
        if (const SpectrumPoint* match = MatchChannel(channel.wavelength, reference, at)) {
            point.reference = match->value;
            point.percent = 100.0 * (channel.value - match->value) / match->value;
        }
        points.push_back(point);
    }
    return points;
}

std::optional<double> ValueAt(std::span<const SpectrumPoint> spectrum, double wavelength) {
    const auto above = std::lower_bound(
        spectrum.begin(), spectrum.end(), wavelength,
        [](const SpectrumPoint& point, double limit) { return point.wavelength < limit; });
    const SpectrumPoint* right = above != spectrum.end() ? &*above : nullptr;
    const SpectrumPoint* left = above != spectrum.begin() ? &*(above - 1) : nullptr;
    const double toRight = right ? right->wavelength - wavelength : HUGE_VAL;
    const double toLeft = left ? wavelength - left->wavelength : HUGE_VAL;
    if (std::min(toLeft, toRight) < MatchWidth)
        return toLeft < toRight ? left->value : right->value;
    if (!(toLeft + toRight <= WidestBetween))
        return std::nullopt;
    return left->value + (right->value - left->value) * toLeft / (toLeft + toRight);
}

std::vector<SpectrumPoint> RatioOf(std::span<const SpectrumPoint> spectrum,
                                   std::span<const SpectrumPoint> reference) {
    std::vector<SpectrumPoint> points;
    points.reserve(spectrum.size());
    for (const SpectrumPoint& point : spectrum)
        if (const std::optional<double> value = ValueAt(reference, point.wavelength);
            value && *value != 0.0)
            points.push_back({point.wavelength, point.value / *value});
    return points;
}

std::vector<SpectrumPoint> LessDark(std::span<const SpectrumPoint> spectrum,
                                    std::span<const SpectrumPoint> dark) {
    std::vector<SpectrumPoint> points;
    points.reserve(spectrum.size());
    for (const SpectrumPoint& point : spectrum)
        if (const std::optional<double> value = ValueAt(dark, point.wavelength))
            points.push_back({point.wavelength, point.value - *value});
    return points;
}

std::vector<OpticalSeries> SeriesOf(const CInstrument& instrument) {
    std::vector<OpticalSeries> list;
    for (const CSensor& sensor : instrument.Sensors()) {
        const std::optional<double> wavelength = WholeNumber(sensor.Id);
        if (!IsOptic(sensor.Fit) || !wavelength || !std::isfinite(*wavelength))
            continue;
        auto series = std::find_if(list.begin(), list.end(), [&sensor](const OpticalSeries& one) {
            return EqualsNoCase(one.type, sensor.Type) && one.units == sensor.Units;
        });
        if (series == list.end())
            series = list.insert(list.end(), {sensor.Type, sensor.Units, {}});
        series->channels.push_back({*wavelength, sensor.Index});
    }
    for (OpticalSeries& series : list)
        std::stable_sort(series.channels.begin(), series.channels.end(),
                         [](const auto& a, const auto& b) { return a.wavelength < b.wavelength; });
    return list;
}

int ChooseSeries(const std::vector<OpticalSeries>& series, std::string_view type) {
    if (series.empty())
        return -1;
    if (type.empty() || series.size() == 1)
        return 0;
    const auto found = std::find_if(series.begin(), series.end(), [type](const OpticalSeries& one) {
        return EqualsNoCase(one.type, type);
    });
    return found == series.end() ? -1 : static_cast<int>(found - series.begin());
}

std::optional<double> ReadChannel(const CLiveInstrument& instrument,
                                  const OpticalSeries::Channel& channel, SpectrumReading reading) {
    const CSensor* sensor = instrument.Definition().Sensor(channel.sensor);
    if (!sensor || !instrument.CurrentFrame())
        return std::nullopt;
    double value = 0.0;
    const ConversionStatus status =
        reading == SpectrumReading::Calibrated
            ? instrument.Value(*sensor, value)
            : RawNumber(*sensor, instrument.CurrentFrame()->Span(), value);
    return status == ConversionStatus::Good ? std::optional(value) : std::nullopt;
}

std::vector<SpectrumPoint> SpectrumOf(const CLiveInstrument& instrument,
                                      const OpticalSeries& series) {
    std::vector<SpectrumPoint> points;
    for (const OpticalSeries::Channel& channel : series.channels)
        if (const auto value = ReadChannel(instrument, channel, SpectrumReading::Calibrated))
            points.push_back({channel.wavelength, *value});
    return points;
}

const SpectrumPoint* NearestPoint(std::span<const SpectrumPoint> spectrum, double wavelength) {
    const auto nearest = std::ranges::min_element(spectrum, {}, [=](const SpectrumPoint& point) {
        return std::fabs(point.wavelength - wavelength);
    });
    return nearest == spectrum.end() ? nullptr : &*nearest;
}

} // namespace qor
