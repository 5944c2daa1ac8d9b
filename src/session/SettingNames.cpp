// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/SettingNames.h"

#include <iterator>
#include <span>

namespace qor {

namespace {

template <class Choice> struct NamedChoice {
    std::string_view name;
    Choice choice;
};

constexpr NamedChoice<InstrumentRole> RoleNames[] = {
    {"profiler", InstrumentRole::Profiler},
    {"reference", InstrumentRole::Reference},
    {"tracker", InstrumentRole::Tracker},
    {"sqm", InstrumentRole::SqmInstrument},
    {"dut", InstrumentRole::DeviceUnderTest},
    {"weather", InstrumentRole::WeatherStation},
    {"gps", InstrumentRole::Gps},
};

constexpr NamedChoice<LogNamingMode> NamingNames[] = {
    {"file", LogNamingMode::UserFileName},
    {"autocast", LogNamingMode::AutoCast},
    {"time-stamp", LogNamingMode::TimeStamp},
    {"sqm", LogNamingMode::Sqm},
};

template <class Choice>
std::string_view NameOf(std::span<const NamedChoice<Choice>> names, Choice choice) {
    for (const auto& row : names)
        if (row.choice == choice)
            return row.name;
    return {};
}

template <class Choice>
std::optional<Choice> ChoiceOf(std::span<const NamedChoice<Choice>> names, std::string_view name) {
    for (const auto& row : names)
        if (row.name == name)
            return row.choice;
    return std::nullopt;
}

template <class Choice> std::string AllOf(std::span<const NamedChoice<Choice>> names) {
    std::string all;
    for (std::size_t i = 0; i < names.size(); ++i)
        all += (i == 0                  ? "\""
                : i + 1 == names.size() ? " or \""
                                        : ", \"") +
               std::string(names[i].name) + '"';
    return all;
}

} // namespace

std::string_view RoleName(InstrumentRole role) {
    return NameOf<InstrumentRole>(RoleNames, role);
}

std::optional<InstrumentRole> RoleOfName(std::string_view name) {
    return ChoiceOf<InstrumentRole>(RoleNames, name);
}

std::string_view NamingName(LogNamingMode mode) {
    return NameOf<LogNamingMode>(NamingNames, mode);
}

std::optional<LogNamingMode> NamingOfName(std::string_view name) {
    return ChoiceOf<LogNamingMode>(NamingNames, name);
}

std::string AllRoleNames() {
    return AllOf<InstrumentRole>(RoleNames);
}

std::string AllNamingNames() {
    return AllOf<LogNamingMode>(NamingNames);
}

} // namespace qor
