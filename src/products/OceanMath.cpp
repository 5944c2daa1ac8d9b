// SPDX-License-Identifier: GPL-3.0-or-later
//
// The formulas of derived products. Pure arithmetic on the caller's thread; constants are the
// published ones, or the system's own where the comment says so.
#include "products/OceanMath.h"

#include <array>
#include <cmath>

namespace qor {

namespace {

// Kept: both factors come from pi taken as 3.1415926; tilts of older logs were computed with them.
constexpr double RadiansPerTiltDegree = 0.017453292222222222;
constexpr double DegreesPerRadian = 57.295780490442965;

constexpr double LeastPressureChange = 0.25;

/// Sum of coefficients times rising powers, in the order written.
template <std::size_t N> double Polynomial(const std::array<double, N>& coefficients, double x) {
    double sum = 0.0;
    for (std::size_t i = N; i-- > 0;)
        sum = sum * x + coefficients[i];
    return sum;
}

} // namespace

double TiltDegrees(double x, double y) {
    const double tangent =
        std::hypot(std::tan(x * RadiansPerTiltDegree), std::tan(y * RadiansPerTiltDegree));
    return std::atan(tangent) * DegreesPerRadian;
}

double DepthOf(double pressure, double offset) {
    return pressure - offset;
}

double PracticalSalinity(double conductivity, double temperature, double pressure) {
    constexpr double RatioPerConductivity = 0.023302418791070513; // 1 / 42.914 mS/cm
    constexpr std::array<double, 4> E = {0.0, 2.070e-5, -6.370e-10, 3.989e-15};
    constexpr std::array<double, 3> D = {1.0, 3.426e-2, 4.464e-4};
    constexpr double D3 = 4.215e-1, D4 = -3.107e-3;
    constexpr std::array<double, 5> C = {0.6766097, 2.00564e-2, 1.104259e-4, -6.9698e-7, 1.0031e-9};
    constexpr std::array<double, 6> A = {0.0080, -0.1692, 25.3851, 14.0941, -7.0261, 2.7081};
    constexpr std::array<double, 6> B = {0.0005, -0.0056, -0.0066, -0.0375, 0.0636, -0.0144};
    constexpr double K = 0.0162;

    const double ratio = conductivity * RatioPerConductivity;
    const double pressureTerm = 1.0 + Polynomial(E, pressure) / (Polynomial(D, temperature) +
                                                                 (D3 + D4 * temperature) * ratio);
    const double root = std::sqrt(ratio / (pressureTerm * Polynomial(C, temperature)));
    const double above15 = temperature - 15.0;
    const double salinity =
        Polynomial(A, root) + above15 / (1.0 + K * above15) * Polynomial(B, root);
    return std::isfinite(salinity) ? salinity : 0.0;
}

double SeawaterScattering(double wavelength, double salinity) {
    constexpr double Angle = 2.04203519; // 117 degrees with pi taken as 3.1415926
    const double cosine = std::cos(Angle);
    return 1e-4 * 1.38 * std::pow(wavelength * 0.002, -4.23) *
           (1.0 + 0.8348623853211009 * (cosine * cosine)) * (1.0 + 0.008108108108108109 * salinity);
}

double ParticulateScattering(double total, double wavelength, double salinity) {
    return total - SeawaterScattering(wavelength, salinity);
}

double ParticulateBackscattering(double particulateScattering) {
    return 6.911503720000001 * particulateScattering; // 2 x 3.1415926 x 1.1
}

double WaterBackscattering(double wavelength) {
    // Kept: the exponent is -4.24 here and -4.23 in the volume scattering above.
    return 0.0014654 * std::pow(wavelength * 0.002, -4.24);
}

double LightSaturation(double par, double saturationIrradiance) {
    return 100.0 * std::tanh(par / saturationIrradiance);
}

bool PressureMoved(PressureHistory& history, double pressure) {
    if (!history.previous)
        history.previous = pressure;
    return std::fabs(pressure - *history.previous) >= LeastPressureChange;
}

void ComputeVelocity(PressureHistory& history, VelocityState& state, double pressure,
                     std::optional<double> timer, std::uint32_t frameNumber, double frameRate) {
    // Decided: pressures between two readings of the timer wait for the next one, or only the last
    // of them would count over the whole time.
    if (timer && timer == history.timer)
        return;
    history.timer = timer;
    double seconds = 1.0;
    if (timer && state.timer)
        seconds = *timer - *state.timer;
    else if (!timer && state.frame)
        seconds =
            (static_cast<double>(frameNumber) - static_cast<double>(*state.frame)) / frameRate;
    const double velocity = (pressure - history.previous.value_or(pressure)) / seconds;
    // Decided: two displays that compute from the very same frame leave no time between them; the
    // velocity that the first one found stands.
    if (std::isfinite(velocity) && std::isfinite(seconds))
        state.velocity = velocity;
    history.previous = pressure;
    if (timer)
        state.timer = timer;
    state.frame = frameNumber;
}

} // namespace qor
