// SPDX-License-Identifier: GPL-3.0-or-later
#include "simulation/CastModel.h"

#include "base/Text.h"
#include "instrument/FitTypes.h"
#include "products/OceanMath.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace qor {

namespace {

constexpr double WinchSpeed = 0.6;          // m/s
constexpr double SoakSeconds = 5.0;         // at the surface before each cast
constexpr double BottomSeconds = 15.0;      // before it is heaved again
constexpr double SurfaceDepth = 0.3;        // m
constexpr double Thermocline = 32.0;        // m
constexpr double ChlorophyllMaximum = 42.0; // m
constexpr double SurfaceReflection = 0.96;
constexpr double NoValue = std::numeric_limits<double>::quiet_NaN();

struct SpectralPoint {
    double wavelength; // nm
    double value;
};
/// Downwelling irradiance above the surface, clear sky at noon, uW/cm^2/nm.
constexpr SpectralPoint SkyIrradiance[] = {
    {340, 45},  {380, 72},  {420, 112}, {460, 142}, {500, 146}, {550, 143}, {600, 136},
    {650, 129}, {685, 119}, {700, 117}, {757, 108}, {762, 62},  {768, 105}, {820, 90}};
/// Diffuse attenuation of water alone, and of chlorophyll (1 mg/m^3, exponent 0.69), 1/m.
constexpr SpectralPoint WaterAttenuation[] = {
    {340, 0.030}, {380, 0.016}, {410, 0.011}, {440, 0.012}, {490, 0.017},
    {510, 0.033}, {530, 0.045}, {555, 0.064}, {580, 0.10},  {600, 0.24},
    {650, 0.36},  {700, 0.63},  {750, 2.5},   {820, 2.6}};
constexpr SpectralPoint PigmentAttenuation[] = {
    {340, 0.16},  {400, 0.12},  {440, 0.11},  {490, 0.074}, {555, 0.047},
    {600, 0.038}, {650, 0.046}, {675, 0.056}, {700, 0.020}, {820, 0.005}};

double Interpolate(std::span<const SpectralPoint> table, double wavelength) {
    if (wavelength <= table.front().wavelength)
        return table.front().value;
    for (std::size_t i = 1; i < table.size(); ++i)
        if (wavelength <= table[i].wavelength) {
            const SpectralPoint &a = table[i - 1], &b = table[i];
            return a.value + (b.value - a.value) * (wavelength - a.wavelength) /
                                 (b.wavelength - a.wavelength);
        }
    return table.back().value;
}

double Step(double depth, double centre, double width) {
    return 1.0 / (1.0 + std::exp((centre - depth) / width));
}

double Temperature(double depth) {
    return 18.6 - 7.4 * Step(depth, Thermocline, 4.0) - 0.004 * depth;
}

double Salinity(double depth) {
    return 33.4 + 0.75 * Step(depth, Thermocline, 6.0);
}

double Chlorophyll(double depth) {
    double distance = (depth - ChlorophyllMaximum) / 9.0;
    return 0.25 + 1.7 * std::exp(-distance * distance);
}

/// Optical depth from the surface: the attenuation summed in steps of half a metre.
double OpticalDepth(double wavelength, double depth) {
    constexpr double step = 0.5;
    double water = Interpolate(WaterAttenuation, wavelength),
           pigment = Interpolate(PigmentAttenuation, wavelength);
    const int steps = static_cast<int>(std::ceil(depth / step));
    double sum = 0.0;
    for (int i = 0; i < steps; ++i)
        sum += (water + pigment * std::pow(Chlorophyll(i * step), 0.69)) *
               std::min(step, depth - i * step);
    return sum;
}

double InWaterIrradiance(double wavelength, double depth) {
    return SurfaceReflection * Interpolate(SkyIrradiance, wavelength) *
           std::exp(-OpticalDepth(wavelength, depth));
}

/// Upwelling radiance over downwelling irradiance: blue water with little reflection in the red.
double RadianceRatio(double wavelength) {
    double distance = (wavelength - 470.0) / 75.0;
    return 0.0012 + 0.011 * std::exp(-distance * distance);
}

/// The conductivity (mS/cm) that gives this salinity: bisection, since the scale grows with it.
double Conductivity(double salinity, double temperature, double pressure) {
    double low = 1.0, high = 80.0;
    for (int i = 0; i < 60; ++i) {
        double middle = 0.5 * (low + high);
        (PracticalSalinity(middle, temperature, pressure) < salinity ? low : high) = middle;
    }
    return 0.5 * (low + high);
}

double SpectralValue(std::string_view type, double wavelength, double depth) {
    if (type == "es")
        return Interpolate(SkyIrradiance, wavelength);
    double downwelling = InWaterIrradiance(wavelength, depth);
    if (type == "ed")
        return downwelling;
    double radiance = downwelling * RadianceRatio(wavelength);
    return type == "lu" ? radiance : 4.2 * radiance; // "eu"
}

double CastValue(const CSensor& sensor, double depth, double seconds) {
    std::string type = ToLower(sensor.Type);
    std::optional<double> number = WholeNumber(sensor.Id);
    if (number && IsOptic(sensor.Fit) &&
        (type == "es" || type == "ed" || type == "lu" || type == "eu"))
        return SpectralValue(type, *number, depth);
    if (type == "pres" || type == "pressure")
        return depth; // 1 dbar to the metre is near enough here
    if (type == "temp" || type == "temperature")
        return Temperature(depth);
    if (type == "cond" || type == "conductivity")
        return Conductivity(Salinity(depth), Temperature(depth), depth);
    if (type == "tilt")
        return EqualsNoCase(sensor.Id, "X") ? 2.5 * std::sin(seconds * 0.9)
                                            : 1.8 * std::cos(seconds * 0.7);
    if (type == "timer")
        return seconds;
    if (type == "cdom")
        return 1.1 + 0.9 * Step(depth, Thermocline, 10.0);
    if (type == "nitrate" || type == "no3")
        return 0.4 + 14.0 * Step(depth, Thermocline + 8.0, 7.0);
    if (type == "chl" || type == "fluor")
        return Chlorophyll(depth);
    if ((type == "beta" || type == "vsf") && number)
        return 1.1e-4 + 9.0e-4 * Chlorophyll(depth) * 500.0 / *number;
    return NoValue;
}

/// Down, a stay, up, and again.
double DepthAt(double seconds, double deepest) {
    const double way = std::max(deepest - SurfaceDepth, 0.0) / WinchSpeed;
    const double since = std::fmod(seconds, SoakSeconds + way + BottomSeconds + way) - SoakSeconds;
    const double down = std::clamp(since, 0.0, way);
    const double up = std::max(since - way - BottomSeconds, 0.0);
    return SurfaceDepth + (down - up) * WinchSpeed;
}

} // namespace

CFrameMaker::ValueSource CastValues(double depth, std::function<double()> seconds) {
    return [depth, seconds = std::move(seconds)](const CSensor& sensor) {
        const double now = seconds();
        return CastValue(sensor, DepthAt(now, depth), now);
    };
}

} // namespace qor
