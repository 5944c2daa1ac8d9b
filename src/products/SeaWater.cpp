// SPDX-License-Identifier: GPL-3.0-or-later
//
// The published polynomials, summed term by term from their tables.
#include "products/SeaWater.h"

#include "products/SeaWaterTables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace qor {

namespace {

constexpr double ReferenceSalinityRatio = 35.16504 / 35.0; ///< g/kg to practical salinity
constexpr double SalinityUnit = 40.0 * ReferenceSalinityRatio;
constexpr double SalinityOffset = 24.0; ///< g/kg, of the specific volume's x
constexpr double TemperatureUnit = 40.0;
constexpr double PressureUnit = 1e4; ///< dbar
constexpr double PascalsPerUnit = 1e8;
constexpr double HeatCapacity = 3991.86795711963; ///< J/(kg K), by definition
constexpr double ZeroCelsius = 273.15;

/// 1, value, value^2 ...
using Powers = std::array<double, 8>;
Powers PowersOf(double value) {
    Powers powers{1.0};
    for (std::size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * value;
    return powers;
}

/// What is made of the specific volume along the pressure.
enum class AlongPressure { Itself, Derivative, Integral };

double SpecificVolume(double salinity, double temperature, double pressure, AlongPressure what) {
    const Powers x = PowersOf(std::sqrt((std::max(salinity, 0.0) + SalinityOffset) / SalinityUnit));
    const Powers y = PowersOf(temperature / TemperatureUnit);
    const double zed = pressure / PressureUnit;
    const Powers z = PowersOf(zed);
    double sum = 0.0;
    for (const auto& [i, j, k, coefficient] : SpecificVolumeTerms) {
        double along = z[k];
        if (what == AlongPressure::Derivative)
            along = k > 0 ? k * z[k - 1u] : 0.0;
        else if (what == AlongPressure::Integral)
            along = z[k] * zed / (k + 1);
        sum += coefficient * x[i] * y[j] * along;
    }
    return sum;
}

/// A derivative (0, 1 or 2) of the Gibbs energy with respect to temperature.
double Gibbs(unsigned derivative, double salinity, double temperature, double pressure) {
    const double x2 = std::max(salinity, 0.0) / SalinityUnit;
    const Powers x = PowersOf(std::sqrt(x2));
    const Powers y = PowersOf(temperature / TemperatureUnit);
    const Powers z = PowersOf(pressure / PressureUnit);
    const double logarithm = x2 > 0.0 ? x2 * std::log(x[1]) : 0.0;
    double sum = 0.0;
    for (const auto& [i, j, k, coefficient] : GibbsTerms) {
        if (j < derivative)
            continue;
        double factor = i == 1 ? logarithm : x[i];
        for (unsigned n = 0; n < derivative; ++n)
            factor *= (j - n) / TemperatureUnit;
        sum += coefficient * factor * y[j - derivative] * z[k];
    }
    return sum;
}

/// The box around the Baltic Sea, whose western and eastern limits are broken lines.
bool IsBaltic(const GeoPosition& position) {
    struct Corner {
        double longitude, latitude;
    };
    constexpr Corner West[] = {{12.6, 50.0}, {7.0, 59.0}, {26.0, 69.0}};
    constexpr Corner East[] = {{45.0, 50.0}, {26.0, 69.0}};
    const auto at = [&position](const Corner& from, const Corner& to) {
        return from.longitude + (to.longitude - from.longitude) *
                                    (position.latitude - from.latitude) /
                                    (to.latitude - from.latitude);
    };
    if (!(position.latitude > 50.0 && position.latitude < 69.0))
        return false;
    const double west = position.latitude < 59.0 ? at(West[0], West[1]) : at(West[1], West[2]);
    return position.longitude > west && position.longitude < at(East[0], East[1]);
}

} // namespace

double AbsoluteSalinity(double practicalSalinity, const std::optional<GeoPosition>& position) {
    constexpr double BalticRivers = 0.087; ///< g/kg of the fresh water that flows in
    if (position && IsBaltic(*position))
        return (35.16504 - BalticRivers) / 35.0 * practicalSalinity + BalticRivers;
    return ReferenceSalinityRatio * practicalSalinity;
}

double PotentialTemperature(double absoluteSalinity, double temperature, double pressure) {
    constexpr int Steps = 4; // each squares the error; the first guess is right within 2 degrees
    const double entropy = Gibbs(1, absoluteSalinity, temperature, pressure);
    double potential = temperature;
    for (int step = 0; step < Steps; ++step)
        potential -= (Gibbs(1, absoluteSalinity, potential, 0.0) - entropy) /
                     Gibbs(2, absoluteSalinity, potential, 0.0);
    return potential;
}

double ConservativeTemperature(double absoluteSalinity, double temperature, double pressure) {
    const double potential = PotentialTemperature(absoluteSalinity, temperature, pressure);
    const double enthalpy = Gibbs(0, absoluteSalinity, potential, 0.0) -
                            (ZeroCelsius + potential) * Gibbs(1, absoluteSalinity, potential, 0.0);
    return enthalpy / HeatCapacity;
}

double SeaWaterDensity(double absoluteSalinity, double conservativeTemperature, double pressure) {
    return 1.0 / SpecificVolume(absoluteSalinity, conservativeTemperature, pressure,
                                AlongPressure::Itself);
}

double SigmaTheta(double absoluteSalinity, double conservativeTemperature) {
    return SeaWaterDensity(absoluteSalinity, conservativeTemperature, 0.0) - 1000.0;
}

double SoundSpeed(double absoluteSalinity, double conservativeTemperature, double pressure) {
    const double volume =
        SpecificVolume(absoluteSalinity, conservativeTemperature, pressure, AlongPressure::Itself);
    const double slope = SpecificVolume(absoluteSalinity, conservativeTemperature, pressure,
                                        AlongPressure::Derivative);
    return volume * std::sqrt(PascalsPerUnit / -slope);
}

double DepthInMetres(double pressure, double latitude) {
    constexpr double GravityGrowth = 2.26e-7; ///< 1/m
    const double sine = std::sin(latitude * std::numbers::pi / 180.0);
    const double gravity = 9.780327 * (1.0 + (5.2792e-3 + 2.32e-5 * sine * sine) * sine * sine);
    const double work = PascalsPerUnit * SpecificVolume(35.0 * ReferenceSalinityRatio, 0.0,
                                                        pressure, AlongPressure::Integral);
    // gravity (d + growth d^2 / 2) = work
    return 2.0 * work /
           (gravity + std::sqrt(gravity * gravity + 2.0 * GravityGrowth * gravity * work));
}

double OxygenSolubility(double practicalSalinity, double potentialTemperature) {
    constexpr std::array<double, 6> A = {5.80871, 3.20291, 4.17887, 5.10006, -9.86643e-2, 3.80369};
    constexpr std::array<double, 4> B = {-7.01577e-3, -7.70028e-3, -1.13864e-2, -9.51519e-3};
    constexpr double C = -2.75915e-7;
    const double temperature68 = potentialTemperature * 1.00024;
    const double scaled = std::log((298.15 - temperature68) / (ZeroCelsius + temperature68));
    const Powers powers = PowersOf(scaled);
    double sum = C * practicalSalinity * practicalSalinity;
    for (std::size_t i = 0; i < A.size(); ++i)
        sum += A[i] * powers[i];
    for (std::size_t i = 0; i < B.size(); ++i)
        sum += B[i] * powers[i] * practicalSalinity;
    return std::exp(sum);
}

} // namespace qor
