// SPDX-License-Identifier: GPL-3.0-or-later
//
// What reader and writer of session files, and what takes the same figures from forms, share: names
// of members, where their values stand in the records, and the bounds of numbers. In the order of
// writing.
#pragma once

#include "session/SessionRecord.h"

namespace qor {

inline constexpr const char* SessionVersionName = "qorview-session";
inline constexpr int SessionVersion = 1;

struct Range {
    double least, greatest;
};
inline constexpr Range BaudRange = {1, 12'000'000};
inline constexpr Range SequenceRange = {0, 999};
inline constexpr Range TareRange = {-12'000, 12'000}; // dbar
inline constexpr Range SalinityRange = {0, 50};
inline constexpr Range IrradianceRange = {0, 100'000};
inline constexpr Range WindowRange = {0.001, 12'000}; // dbar

struct InstrumentFlag {
    const char* name;
    std::optional<bool> InstrumentRecord::*flag;
};
inline constexpr InstrumentFlag InstrumentFlags[] = {
    {"immersed", &InstrumentRecord::immersed},
    {"acquire", &InstrumentRecord::acquire},
    {"log", &InstrumentRecord::log},
    {"check", &InstrumentRecord::check},
    {"check-counter", &InstrumentRecord::checkCounter},
    {"check-sum", &InstrumentRecord::checkSum},
    {"beep", &InstrumentRecord::beep},
};

struct PackageNumber {
    const char* name;
    std::optional<double> PackageRecord::*number;
    Range range;
};
inline constexpr PackageNumber PackageNumbers[] = {
    {"default-salinity", &PackageRecord::defaultSalinity, SalinityRange},
    {"saturation-irradiance", &PackageRecord::saturationIrradiance, IrradianceRange},
    {"attenuation-window", &PackageRecord::attenuationWindow, WindowRange},
};

struct StationText {
    const char* name;
    std::string StationInformation::*text;
};
inline constexpr StationText StationTexts[] = {
    {"cruise", &StationInformation::cruiseId},   {"operator", &StationInformation::operatorName},
    {"latitude", &StationInformation::latitude}, {"longitude", &StationInformation::longitude},
    {"zone", &StationInformation::zone},         {"comment", &StationInformation::comment},
    {"station", &StationInformation::stationId}, {"cast", &StationInformation::cast},
};

} // namespace qor
