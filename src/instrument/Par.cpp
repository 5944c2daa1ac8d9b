// SPDX-License-Identifier: GPL-3.0-or-later
//
// The PAR channel list and its sum. The list is built once an instrument, the sum once a display
// refresh or frame.
#include "instrument/Par.h"

#include "base/Text.h"
#include "instrument/Calibration.h"
#include "instrument/FitTypes.h"

#include <cmath>
#include <set>
#include <utility>

namespace qor {

namespace {

constexpr double LowestWavelength = 399.5, HighestWavelength = 700.4;
constexpr double PhotonsPerEnergy = 8.355108835736473e-05;

bool IsParSensor(const CSensor& sensor, std::string_view type) {
    return EqualsNoCase(sensor.Type, type) && sensor.Units == "uW/cm^2/nm" && IsOptic(sensor.Fit);
}

/// A selection sort with exchange, by an ordered set of what is not yet placed: channels of equal
/// wavelength end in the order that the exchanges give them, in little time however many they are.
void SelectionSort(std::vector<ParChannel>& channels) {
    std::set<std::pair<double, std::size_t>> remaining;
    for (std::size_t i = 0; i < channels.size(); ++i)
        remaining.emplace(channels[i].wavelength, i);
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const std::size_t least = remaining.begin()->second;
        remaining.erase(remaining.begin());
        if (least == i)
            continue;
        remaining.erase({channels[i].wavelength, i});
        remaining.emplace(channels[i].wavelength, least);
        std::swap(channels[i], channels[least]);
    }
}

/// Sums over the band; `valueOf(sensor, value)` fetches an irradiance.
template <class ValueOf>
ConversionStatus Sum(const std::vector<ParChannel>& channels, ValueOf valueOf, double& par) {
    if (channels.empty())
        return ConversionStatus::NotUsable;
    double sum = 0.0;
    for (std::size_t i = 0; i < channels.size(); ++i) {
        const double wavelength = channels[i].wavelength;
        double irradiance = 0.0;
        const ConversionStatus status = valueOf(*channels[i].sensor, irradiance);
        if (status != ConversionStatus::Good)
            return status;
        if (irradiance < 0.0)
            irradiance = 0.0;
        double width = 0.0;
        if (i > 0)
            width += (wavelength - channels[i - 1].wavelength) / 2.0;
        if (i + 1 < channels.size())
            width += (channels[i + 1].wavelength - wavelength) / 2.0;
        sum += irradiance * wavelength * width;
    }
    if (!std::isfinite(sum))
        return ConversionStatus::NotFinite;
    par = PhotonsPerEnergy * sum;
    return ConversionStatus::Good;
}

} // namespace

bool HasParSeries(const CInstrument& instrument, std::string_view type) {
    for (const CSensor& sensor : instrument.Sensors())
        if (IsParSensor(sensor, type))
            return true;
    return false;
}

std::vector<ParChannel> ParSeries(const CInstrument& instrument, std::string_view type) {
    std::vector<ParChannel> channels;
    for (const CSensor& sensor : instrument.Sensors()) {
        // Decided: a channel whose id is no number is left out.
        const std::optional<double> wavelength = WholeNumber(sensor.Id);
        if (IsParSensor(sensor, type) && wavelength && *wavelength >= LowestWavelength &&
            *wavelength <= HighestWavelength)
            channels.push_back({*wavelength, &sensor});
    }
    if (channels.empty())
        return channels;
    SelectionSort(channels);
    if (std::floor(channels.back().wavelength) < 700.0)
        channels.push_back({700.0, channels.back().sensor});
    if (std::ceil(channels.front().wavelength) > 400.0)
        channels.insert(channels.begin(), ParChannel{400.0, channels.front().sensor});
    return channels;
}

std::vector<ParChannel> ParList(const CInstrument& instrument) {
    // Kept: with both series the surface one stands for both PAR rows.
    return ParSeries(instrument, HasParSeries(instrument, "ES") ? "ES" : "ED");
}

ConversionStatus ComputePar(const std::vector<ParChannel>& channels, ByteSpan frame, bool immersed,
                            double& par) {
    return Sum(
        channels,
        [&](const CSensor& sensor, double& value) {
            return CalibratedValue(sensor, frame, immersed, value);
        },
        par);
}

ConversionStatus ComputePar(const std::vector<ParChannel>& channels, const FrameValues& values,
                            double& par) {
    return Sum(
        channels,
        [&](const CSensor& sensor, double& value) {
            const auto index = static_cast<std::size_t>(sensor.Index);
            if (index >= values.statuses.size())
                return ConversionStatus::MissingArgument;
            value = values.numbers[index];
            return values.statuses[index];
        },
        par);
}

} // namespace qor
