// SPDX-License-Identifier: GPL-3.0-or-later
//
// Positions, ways and clocks of GPS sentences.
#include "products/Position.h"

#include "base/Text.h"
#include "platform/Clock.h"

#include <algorithm>
#include <cmath>

namespace qor {

namespace {

constexpr double EarthRadius = 6371008.8; ///< m, mean
constexpr double SecondsOfADay = 86400.0;

bool AllDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsDigit);
}

int TwoDigits(std::string_view text, std::size_t at) {
    return 10 * (text[at] - '0') + (text[at + 1] - '0');
}

/// To 0 <= angle < 360.
double Wrapped(double degrees) {
    const double rest = std::fmod(degrees, 360.0);
    return rest < 0.0 ? rest + 360.0 : rest;
}

} // namespace

std::optional<double> DegreesOf(std::string_view text, std::string_view hemisphere) {
    text = Trim(text);
    hemisphere = Trim(hemisphere);
    const std::optional<double> number = WholeNumber(text);
    if (!number || !IsDigit(text[0]) || hemisphere.size() != 1)
        return std::nullopt;
    const std::string side = ToLower(hemisphere);
    const double most = side == "n" || side == "s" ? 90.0 : side == "e" || side == "w" ? 180.0 : -1;
    const double whole = std::floor(*number / 100.0);
    const double minutes = *number - 100.0 * whole;
    const double degrees = whole + minutes / 60.0;
    if (!(minutes < 60.0) || !(degrees <= most))
        return std::nullopt;
    return side == "s" || side == "w" ? -degrees : degrees;
}

double DistanceBetween(const GeoPosition& from, const GeoPosition& to) {
    const double north = (to.latitude - from.latitude) * RadiansPerDegree;
    const double east = (to.longitude - from.longitude) * RadiansPerDegree;
    const double a = std::sin(north / 2.0) * std::sin(north / 2.0) +
                     std::cos(from.latitude * RadiansPerDegree) *
                         std::cos(to.latitude * RadiansPerDegree) * std::sin(east / 2.0) *
                         std::sin(east / 2.0);
    return 2.0 * EarthRadius * std::asin(std::sqrt(std::min(a, 1.0)));
}

double BearingBetween(const GeoPosition& from, const GeoPosition& to) {
    const double fromLatitude = from.latitude * RadiansPerDegree;
    const double toLatitude = to.latitude * RadiansPerDegree;
    const double east = (to.longitude - from.longitude) * RadiansPerDegree;
    const double y = std::sin(east) * std::cos(toLatitude);
    const double x = std::cos(fromLatitude) * std::sin(toLatitude) -
                     std::sin(fromLatitude) * std::cos(toLatitude) * std::cos(east);
    return Wrapped(std::atan2(y, x) / RadiansPerDegree);
}

LocalPlace PlaceFrom(const GeoPosition& origin, const GeoPosition& position) {
    const double middle = 0.5 * (origin.latitude + position.latitude) * RadiansPerDegree;
    const double east = std::remainder(position.longitude - origin.longitude, 360.0);
    return {EarthRadius * std::cos(middle) * east * RadiansPerDegree,
            EarthRadius * (position.latitude - origin.latitude) * RadiansPerDegree};
}

std::optional<double> SecondsOfDay(std::string_view text) {
    text = Trim(text);
    if (text.size() < 6 || !AllDigits(text.substr(0, 6)))
        return std::nullopt;
    const std::optional<double> seconds = WholeNumber(text.substr(4));
    const int hours = TwoDigits(text, 0), minutes = TwoDigits(text, 2);
    if (!seconds || !(*seconds < 61.0) || hours > 23 || minutes > 59)
        return std::nullopt;
    return 3600.0 * hours + 60.0 * minutes + *seconds;
}

std::optional<std::int64_t> MidnightOf(std::string_view text) {
    text = Trim(text);
    if (text.size() != 6 || !AllDigits(text))
        return std::nullopt;
    const int day = TwoDigits(text, 0), month = TwoDigits(text, 2), year = TwoDigits(text, 4);
    if (day < 1 || month < 1 || month > 12)
        return std::nullopt;
    const std::int64_t midnight =
        SecondsFromCalendar(year < 80 ? 2000 + year : 1900 + year, month, day, 0, 0, 0);
    // A day that the month does not have comes out as another.
    return CalendarFromSeconds(midnight).day == day ? std::optional(midnight) : std::nullopt;
}

double ClockDifference(double computerSeconds, double secondsOfDay,
                       std::optional<std::int64_t> midnight) {
    if (midnight)
        return computerSeconds - (static_cast<double>(*midnight) + secondsOfDay);
    return std::remainder(computerSeconds - secondsOfDay, SecondsOfADay);
}

} // namespace qor
