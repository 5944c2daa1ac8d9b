// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a GPS sentence says, as numbers: positions in degrees, the way between two of them, and how
// far its clock is from this computer's. Pure arithmetic; which sensor is which is the caller's
// business.
#pragma once

#include <cstdint>
#include <numbers>
#include <optional>
#include <string_view>

namespace qor {

inline constexpr double RadiansPerDegree = std::numbers::pi / 180.0;

struct GeoPosition {
    double latitude = 0.0;  ///< degrees, north positive
    double longitude = 0.0; ///< degrees, east positive
};

/// Degrees from a sentence's DDMM.mmm or DDDMM.mmm and its hemisphere (N, S, E or W, in either
/// case); south and west are negative. Empty when the text is no such angle.
std::optional<double> DegreesOf(std::string_view text, std::string_view hemisphere);

/// Great-circle distance in metres on a sphere of the mean radius; within 0.6 % of the ellipsoid's.
double DistanceBetween(const GeoPosition& from, const GeoPosition& to);
/// The course over ground at the start of the great circle, 0 to 360 degrees clockwise from north.
double BearingBetween(const GeoPosition& from, const GeoPosition& to);

/// Metres east and north of a place nearby, on the same sphere; good to a part in a thousand over
/// some hundred kilometres.
struct LocalPlace {
    double east = 0.0;
    double north = 0.0;
};
LocalPlace PlaceFrom(const GeoPosition& origin, const GeoPosition& position);

/// Seconds since midnight from a sentence's HHMMSS or HHMMSS.sss (second 60: a leap second).
std::optional<double> SecondsOfDay(std::string_view text);
/// Midnight of a sentence's DDMMYY in seconds since 1970; years 80 to 99 are the last century's.
std::optional<std::int64_t> MidnightOf(std::string_view text);

/// This computer's clock minus the instrument's, in seconds. Without the instrument's date the
/// difference is the one within half a day.
double ClockDifference(double computerSeconds, double secondsOfDay,
                       std::optional<std::int64_t> midnight);

} // namespace qor
