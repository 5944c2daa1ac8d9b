// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/Attenuation.h"
#include "products/OceanMath.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qor {
namespace {

TEST(OceanMath, SalinityAgreesWithAnIndependentImplementationOverTheScalesRange) {
    // Made with SP_from_C of the GSW oceanographic toolbox (python3-gsw 3.6.16 of Debian 12), its
    // temperatures turned into those of 1968 by 1.00024.
    const struct {
        double conductivity, temperature, pressure, salinity;
    } references[] = {
        {2.386, -1.5, 0, 2.499674904},    {3.332, 10, 200, 2.500303507},
        {4.589, 24, 10, 2.499758448},     {8.415, 2, 4000, 8.000006585},
        {29.484, 34.5, 0, 15.000014544},  {16.633, -1.5, 0, 20.000325743},
        {26.516, 2, 4000, 28.000495708},  {37.781, 15, 10000, 27.999695733},
        {44.036, 18.5, 35, 32.999909345}, {59.991, 34.5, 0, 33.000027748},
        {52.028, 24, 10, 35.000374261},   {34.861, 2, 4000, 37.999811014},
        {39.720, 5, 1500, 41.500427600},  {53.990, 18.5, 35, 41.499716017},
        {73.439, 34.5, 0, 41.500059339},
    };
    for (const auto& one : references)
        EXPECT_NEAR(PracticalSalinity(one.conductivity, one.temperature, one.pressure),
                    one.salinity, 1e-8)
            << one.conductivity << ' ' << one.temperature << ' ' << one.pressure;
    EXPECT_NEAR(PracticalSalinity(42.914, 15, 0), 35.0, 1e-6);
    for (double conductivity : {-1.0, std::nan(""), HUGE_VAL})
        EXPECT_EQ(PracticalSalinity(conductivity, 15, 0), 0.0) << "what is not finite is zero";
}

TEST(OceanMath, ScatteringUsesBothExponents) {
    EXPECT_NEAR(SeawaterScattering(500, 0),
                1.38e-4 * (1 + 0.8348623853211009 * 0.20610734567297942), 1e-17);
    EXPECT_NEAR(SeawaterScattering(500, 37) / SeawaterScattering(500, 0), 1.3, 1e-12);
    EXPECT_NEAR(SeawaterScattering(470, 35) / SeawaterScattering(500, 35), std::pow(0.94, -4.23),
                1e-12);
    EXPECT_NEAR(WaterBackscattering(470) / WaterBackscattering(500), std::pow(0.94, -4.24), 1e-12);
    EXPECT_EQ(WaterBackscattering(500), 0.0014654);
    EXPECT_EQ(ParticulateBackscattering(1.0), 6.911503720000001);
}

/// A display over a descent: pressures arrive, velocities come out.
struct Descent {
    VelocityState& shared;
    PressureHistory history{};
    double Pass(double pressure, std::optional<double> timer, std::uint32_t frame = 0) {
        if (PressureMoved(history, pressure))
            ComputeVelocity(history, shared, pressure, timer, frame, 4.0);
        return shared.velocity;
    }
};

TEST(OceanMath, VelocityWaitsForAQuarterOfAUnit) {
    VelocityState shared;
    Descent descent{shared};
    EXPECT_EQ(descent.Pass(10.0, 100.0), 0.0);
    EXPECT_EQ(descent.Pass(10.2, 190.0), 0.0);   // however much time passes
    EXPECT_EQ(descent.Pass(10.25, 200.0), 0.25); // the first one takes one second
    EXPECT_EQ(descent.Pass(11.25, 202.0), 0.5);
    EXPECT_EQ(descent.Pass(11.0, 203.0), -0.25);

    // The timer comes once a second, the pressure four times.
    VelocityState slow;
    Descent seldom{slow};
    for (int quarter = 0; quarter <= 12; ++quarter)
        seldom.Pass(0.3 * quarter, quarter / 4);
    EXPECT_NEAR(slow.velocity, 1.2, 1e-9);

    VelocityState other;
    Descent untimed{other}; // without a timer frames are counted, here 4 a second
    untimed.Pass(1.0, {}, 1);
    EXPECT_EQ(untimed.Pass(2.0, {}, 5), 1.0);
    EXPECT_EQ(untimed.Pass(4.0, {}, 13), 1.0);
}

TEST(OceanMath, TwoDisplaysShareTheVelocity) {
    VelocityState shared;
    Descent first{shared}, second{shared};
    first.Pass(1.0, 0.0);
    first.Pass(3.0, 1.0);
    EXPECT_EQ(second.Pass(3.0, 1.0), 2.0);
    // The same frame seen by both: no time lies between, so the velocity stands.
    EXPECT_EQ(first.Pass(4.0, 2.0), 1.0);
    EXPECT_EQ(second.Pass(4.0, 2.0), 1.0);
    EXPECT_EQ(second.Pass(6.0, 3.0), 2.0);
}

TEST(Attenuation, IsTheSlopeOverTheWindow) {
    CAttenuation attenuation;
    for (int i = 0; i <= 60; ++i) {
        const double depth = 0.25 * i;
        // Clear water below 6 m: once the window has left the surface layer only that counts.
        const double logLight = depth < 6 ? -0.2 * depth : -1.2 - 0.05 * (depth - 6);
        attenuation.Add(depth, std::exp(logLight), 5.0);
        EXPECT_EQ(attenuation.Coefficient().has_value(), depth >= 5.0) << depth;
        if (depth == 5.75) {
            EXPECT_NEAR(attenuation.Coefficient().value_or(0), 0.2, 1e-12);
        }
    }
    EXPECT_NEAR(attenuation.Coefficient().value_or(0), 0.05, 1e-12);
}

TEST(Attenuation, PassesOverDarknessAndMissingDepthsAndEmptiesAtOneDepth) {
    CAttenuation attenuation;
    for (int i = 0; i <= 10; ++i)
        for (const auto& [depth, light] :
             {std::pair{1.0 * i, std::exp(-0.1 * i)}, {1.0 * i, 0.0}, {1.0 * i, -1.0}, {NAN, 1.0}})
            attenuation.Add(depth, light, 5.0);
    EXPECT_NEAR(attenuation.Coefficient().value_or(0), 0.1, 1e-12);
    for (int i = 0; i < 2100; ++i)
        attenuation.Add(10.0, 0.3, 5.0);
    EXPECT_FALSE(attenuation.Coefficient());
}

} // namespace
} // namespace qor
