// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/SeaWater.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

// The figures are those of the GSW oceanographic toolbox (python3-gsw 3.6.16 of Debian 12):
// SR_from_SP, pt0_from_t, CT_from_t, sigma0, sound_speed, z_from_p and O2sol_SP_pt.
TEST(SeaWater, AgreesWithAnIndependentImplementationOverTheOceansRange) {
    const struct {
        double practical, temperature, pressure, latitude;
        double absolute, potential, conservative, sigma, sound, depth, oxygen;
    } references[] = {
        {35, 15, 0, 0, 35.165040000, 15.000000000, 14.989410917, 25.975637465, 1506.6561991,
         0.0000000, 247.7783753},
        {2.5, -0.5, 5, 45, 2.511788571, -0.499786443, -0.504490064, 1.855200873, 1403.4134677,
         4.9593603, 454.6055499},
        {8, 24, 10, 60, 8.037723429, 23.998152119, 24.952659526, 3.321927293, 1502.9259976,
         9.9054899, 250.4634358},
        {34.9, 2.1, 4000, -60, 35.064568457, 1.761995047, 1.760333042, 27.910580931, 1524.9980079,
         3925.3450358, 332.8348871},
        {35.2, 28.5, 50, 5, 35.365983086, 28.488044409, 28.486696723, 22.384789873, 1543.2135851,
         49.7173731, 195.0815547},
        {33.1, -1.8, 600, 80, 33.256080686, -1.812721698, -1.807575406, 26.639916070, 1447.6464686,
         592.7928157, 370.5443565},
        {38.6, 13.5, 2500, 38, 38.782015543, 13.109287155, 13.015978631, 29.163405313, 1547.1339267,
         2466.6130181, 250.9111747},
        {34.7, 1.4, 10000, 11, 34.863625371, 0.224589721, 0.225696129, 27.852659517, 1627.2992202,
         9724.6879868, 346.6903452},
        {0, 4, 100, 47, 0.000000000, 3.999872896, 4.236913224, -0.023890405, 1423.3421642,
         99.1460593, 409.6272669},
        {41, 34, 0, 25, 41.193332571, 34.000000000, 33.729867665, 24.780467709, 1559.3393482,
         0.0000000, 172.9432998},
    };
    for (const auto& one : references) {
        const double absolute = AbsoluteSalinity(one.practical, {});
        const double potential = PotentialTemperature(absolute, one.temperature, one.pressure);
        const double conservative =
            ConservativeTemperature(absolute, one.temperature, one.pressure);
        EXPECT_NEAR(absolute, one.absolute, 1e-9);
        EXPECT_NEAR(potential, one.potential, 2e-9) << one.temperature;
        EXPECT_NEAR(conservative, one.conservative, 2e-9) << one.temperature;
        EXPECT_NEAR(SigmaTheta(absolute, conservative), one.sigma, 2e-9) << one.temperature;
        EXPECT_NEAR(SoundSpeed(absolute, conservative, one.pressure), one.sound, 2e-7);
        EXPECT_NEAR(DepthInMetres(one.pressure, one.latitude), one.depth, 2e-7);
        EXPECT_NEAR(OxygenSolubility(one.practical, potential), one.oxygen, 2e-7);
    }
}

TEST(SeaWater, TheBalticSeaHasSaltOfItsOwn) {
    const struct {
        GeoPosition position;
        double absolute; ///< of practical salinity 7.2
    } cases[] = {{{58, 20}, 7.303053943}, {{58, 6}, 7.233951086},   {{50, 20}, 7.233951086},
                 {{65, 25}, 7.303053943}, {{65, 16}, 7.233951086},  {{55, 10}, 7.303053943},
                 {{55, 9}, 7.233951086},  {{66.5, 29}, 7.233951086}};
    for (const auto& one : cases)
        EXPECT_NEAR(AbsoluteSalinity(7.2, one.position), one.absolute, 1e-9)
            << one.position.latitude << ' ' << one.position.longitude;
}

} // namespace
} // namespace qor
