// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/SensorUnits.h"

#include <gtest/gtest.h>

#include <string>

namespace qor {
namespace {

TEST(SensorUnits, AreReadInTheSpellingsThatInstrumentsComeWith) {
    using Scale = std::optional<UnitScale> (*)(std::string_view);
    const struct {
        Scale scale;
        std::string units;
        std::optional<double> of100; ///< what 100 of them are in dbar, degrees C or mS/cm
    } cases[] = {
        {PressureScale, "dbar", 100.0},
        {PressureScale, "dBar", 100.0},
        {PressureScale, " DBAR ", 100.0},
        {PressureScale, "(decibars)", 100.0},
        {PressureScale, "Bar", 1000.0},
        {PressureScale, "mbar", 1.0},
        {PressureScale, "hPa", 1.0},
        {PressureScale, "kPa", 10.0},
        {PressureScale, "KPA", 10.0},
        {PressureScale, "MPa", 10000.0},
        {PressureScale, "mPa", {}}, // a thousandth of a pascal
        {PressureScale, "psi", 68.94757293168361},
        {PressureScale, "PSI", 68.94757293168361},
        {PressureScale, "psia", 68.94757293168361 - 10.1325},
        {PressureScale, "bar a", 1000 - 10.1325},
        {PressureScale, "m", 100.0},
        {PressureScale, "m H2O", 98.0665},
        {PressureScale, "", {}},
        {PressureScale, "counts", {}},
        {PressureScale, "dbar/s", {}},
        {PressureScale, "bar\n", {}},
        {PressureScale, std::string(100000, ' ') + "dbar", {}},
        {TemperatureScale, "C", 100.0},
        {TemperatureScale, "c", 100.0},
        {TemperatureScale, "degC", 100.0},
        {TemperatureScale, "deg C", 100.0},
        {TemperatureScale, "Degrees_Celsius", 100.0},
        {TemperatureScale,
         "\xB0"
         "C",
         100.0},
        {TemperatureScale,
         "\xC2\xB0"
         "C",
         100.0},
        {TemperatureScale,
         "\xBA"
         "C",
         100.0},
        {TemperatureScale, "\xC2\xBA C", 100.0},
        {TemperatureScale,
         "\xF8"
         "C",
         100.0},
        {TemperatureScale, "oC", 100.0},
        {TemperatureScale, "K", 100 - 273.15},
        {TemperatureScale, "F", 340.0 / 9},
        {TemperatureScale, "deg. F", 340.0 / 9},
        {TemperatureScale, "deg", {}},
        {TemperatureScale, "\xB0", {}},
        {TemperatureScale, "mV", {}},
        {ConductivityScale, "mS/cm", 100.0},
        {ConductivityScale, "MS/CM", 100.0},
        {ConductivityScale, "mS cm^-1", 100.0},
        {ConductivityScale, "mmho / cm", 100.0},
        {ConductivityScale, "mmhos/cm", 100.0},
        {ConductivityScale, "S/m", 1000.0},
        {ConductivityScale, "S m-1", 1000.0},
        {ConductivityScale, "Siemens/m", 1000.0},
        {ConductivityScale, "mho/m", 1000.0},
        {ConductivityScale, "uS/cm", 0.1},
        {ConductivityScale, "\xB5S/cm", 0.1},
        {ConductivityScale, "\xCE\xBCS/cm", 0.1},
        {ConductivityScale, "umho/cm", 0.1},
        {ConductivityScale, "S", {}},
        {ConductivityScale, "ppt", {}},
    };
    for (const auto& one : cases) {
        const std::optional<UnitScale> scale = one.scale(one.units);
        ASSERT_EQ(scale.has_value(), one.of100.has_value()) << one.units.substr(0, 40);
        if (scale) {
            EXPECT_NEAR(scale->Convert(100), *one.of100, 1e-10) << one.units;
        }
    }
    EXPECT_EQ(PressureScale("kPa")->Convert(123), 12.3) << "decimal steps are exact";
    EXPECT_EQ(PressureScale("psia")->Difference(10), 6.894757293168361) << "without the zero";
}

} // namespace
} // namespace qor
