// SPDX-License-Identifier: GPL-3.0-or-later
//
// The roles that an instrument of the session can fill, as one table: number, name in options and
// session files, name for people.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qor {

enum class InstrumentRole : std::int32_t {
    Profiler = 1,
    Reference = 2,
    Tracker = 4,
    SqmInstrument = 5,
    DeviceUnderTest = 6,
    WeatherStation = 7,
    Gps = 8,
};
inline constexpr std::size_t RoleTableSize = 9; ///< role numbers are below it

struct RoleRow {
    InstrumentRole role;
    std::string_view name;  ///< in options and files
    std::string_view title; ///< for people
};
inline constexpr std::array RoleTable = {
    RoleRow{InstrumentRole::Profiler, "profiler", "Profiler"},
    RoleRow{InstrumentRole::Reference, "reference", "Reference"},
    RoleRow{InstrumentRole::Tracker, "tracker", "Tracker"},
    RoleRow{InstrumentRole::SqmInstrument, "sqm", "SQM instrument"},
    RoleRow{InstrumentRole::DeviceUnderTest, "dut", "Device under test"},
    RoleRow{InstrumentRole::WeatherStation, "weather", "Weather station"},
    RoleRow{InstrumentRole::Gps, "gps", "GPS"},
};

/// The role of a name (compared without case), or nothing.
std::optional<InstrumentRole> RoleOfName(std::string_view name);
/// The row of a role.
const RoleRow& RowOf(InstrumentRole role);
/// All names for a help text: profiler, reference, ... or gps.
std::string PlainRoleNames();
/// All names for a message: "profiler", "reference", ... or "gps", in quotes.
std::string AllRoleNames();

} // namespace qor
