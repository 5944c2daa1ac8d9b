// SPDX-License-Identifier: GPL-3.0-or-later
#include "products/Position.h"
#include "products/Wind.h"

#include <gtest/gtest.h>

#include <cmath>

namespace qor {
namespace {

TEST(Position, IsReadFromDegreesAndMinutes) {
    const struct {
        const char *text, *hemisphere;
        std::optional<double> degrees;
    } cases[] = {
        {"4807.038", "N", 48 + 7.038 / 60},
        {"01131.000", "E", 11 + 31.0 / 60},
        {"3351.65", "s", -(33 + 51.65 / 60)},
        {" 15112.6 ", " W", -(151 + 12.6 / 60)},
        {"0000.00", "S", 0.0},
        {"9000", "N", 90.0},
        {"9000.01", "N", {}},
        {"18000.01", "E", {}},
        {"4860.0", "N", {}},
        {"4807.038", "", {}},
        {"4807.038", "X", {}},
        {"-4807.0", "N", {}},
        {"+4807.0", "N", {}},
        {"", "N", {}},
        {"48o07", "N", {}},
        {"1e999", "E", {}},
    };
    for (const auto& one : cases) {
        const std::optional<double> degrees = DegreesOf(one.text, one.hemisphere);
        ASSERT_EQ(degrees.has_value(), one.degrees.has_value()) << one.text;
        EXPECT_NEAR(degrees.value_or(0), one.degrees.value_or(0), 1e-12) << one.text;
    }
}

TEST(Position, TheWayBetweenTwoIsAGreatCircle) {
    // Los Angeles to New York as the Aviation Formulary works it out: 0.623585 and 1.150035
    // radians.
    const GeoPosition angeles{33.95, -118.4}, york{40 + 38 / 60.0, -(73 + 47 / 60.0)};
    constexpr double Radians = 57.29577951308232;
    EXPECT_NEAR(DistanceBetween(angeles, york) / 6371008.8, 0.623585, 1e-6);
    EXPECT_NEAR(BearingBetween(angeles, york), 1.150035 * Radians, 1e-4);
    EXPECT_NEAR(BearingBetween({0, 179.9}, {0, -179.9}), 90.0, 1e-9) << "over the date line";
    EXPECT_NEAR(BearingBetween({10, 0}, {9, -1e-9}), 180.0, 1e-6);
    EXPECT_EQ(DistanceBetween(york, york), 0.0);
    EXPECT_NEAR(DistanceBetween({0, 0}, {0, 180}), 20015115, 1.0) << "as far as it gets";
}

TEST(Position, TheInstrumentsClockIsComparedWithinHalfADayOrByItsDate) {
    EXPECT_EQ(SecondsOfDay("123519"), 45319.0);
    EXPECT_EQ(SecondsOfDay("235960.50"), 86400.5);
    for (const char* text : {"", "12351", "243519", "126019", "123561", "12:35:19", "123519x"})
        EXPECT_FALSE(SecondsOfDay(text)) << text;
    EXPECT_EQ(MidnightOf("230394"), 764380800);
    EXPECT_EQ(MidnightOf("290224"), 1709164800);
    for (const char* text : {"", "290223", "000124", "010024", "011324", "2303940"})
        EXPECT_FALSE(MidnightOf(text)) << text;

    const double computer = 1709164800 + 10.0; // ten seconds into a day
    EXPECT_EQ(ClockDifference(computer, 8.5, {}), 1.5);
    EXPECT_EQ(ClockDifference(computer, 86390.0, {}), 20.0) << "over midnight";
    EXPECT_EQ(ClockDifference(computer, 86390.0, MidnightOf("290224")), 10.0 - 86390.0);
    EXPECT_EQ(ClockDifference(computer, 8.5, MidnightOf("280224")), 86401.5) << "a day behind";
}

// The cases that Smith, Bourassa and Sharp publish with their procedure for true winds.
TEST(Wind, TrueWindIsTheApparentOnePlusTheShipsWay) {
    const struct {
        double speed, course, heading, relativeFrom, relativeSpeed;
        double trueSpeed;
        std::optional<double> trueFrom;
    } cases[] = {
        {0, 0, 0, 90, 5, 5, 90},
        {0, 0, 90, 90, 5, 5, 180},
        {5, 0, 0, 0, 5, 0, {}},
        {5, 0, 0, 0, 0, 5, 180},
        {5, 180, 180, 180, 5, 10, 0},
        {5, 90, 90, 90, 5, 7.0710678118654755, 225},
        {5, 90, 45, 135, 5, 7.0710678118654755, 225},
        {5, 225, 225, 270, 5, 7.0710678118654755, 90},
        {3, 270, 270, 90, 4, 5, 36.86989764584405},
        {0, 0, 0, 0, 0, 0, {}},
    };
    for (const auto& one : cases) {
        const Wind wind =
            TrueWind(one.relativeSpeed, one.relativeFrom, {one.speed, one.course, one.heading});
        EXPECT_NEAR(wind.speed, one.trueSpeed, 1e-12);
        ASSERT_EQ(wind.from.has_value(), one.trueFrom.has_value()) << one.trueSpeed;
        // North is 0 or, a rounding away, 360.
        EXPECT_NEAR(std::remainder(wind.from.value_or(0) - one.trueFrom.value_or(0), 360), 0, 1e-9);
    }
}

} // namespace
} // namespace qor
