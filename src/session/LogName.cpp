// SPDX-License-Identifier: GPL-3.0-or-later
//
// The naming modes of raw logs. See LogName.h.
#include "session/LogName.h"

#include "base/Text.h"
#include "session/SessionState.h"

#include <algorithm>
#include <vector>

namespace qor {
namespace {

constexpr const char* RawExtension = ".raw";
constexpr std::int32_t LastSqmSequence = 999;

bool HasExtension(const std::string& name) {
    std::size_t dot = name.rfind('.');
    std::size_t separator = name.find_last_of("/\\");
    bool inFileName = separator == std::string::npos || dot > separator;
    return dot != std::string::npos && inFileName && dot + 1 < name.size();
}

void AdvanceCast(std::string& cast) {
    if (cast.size() < 2)
        return;
    if (cast[1] != 'Z') {
        ++cast[1];
        return;
    }
    cast[1] = 'A';
    // Kept: the first character is not limited and moves past 'Z' to the next character code.
    ++cast[0];
}

std::string UserFileName(const LogNaming& naming) {
    std::string name = naming.logUserFileName;
    if (name.empty())
        return name;
    if (!HasExtension(name))
        name += RawExtension;
    if (naming.numbered)
        name.insert(name.rfind('.'), Format("_%03d", naming.number));
    return name;
}

} // namespace

std::string_view NamingName(LogNamingMode mode) {
    return std::ranges::find(NamingTable, mode, &NamingRow::mode)->name;
}

std::optional<LogNamingMode> NamingOfName(std::string_view name) {
    const auto found = std::ranges::find(NamingTable, name, &NamingRow::name);
    return found == NamingTable.end() ? std::nullopt : std::optional(found->mode);
}

std::string AllNamingNames() {
    std::vector<std::string_view> names;
    for (const NamingRow& row : NamingTable)
        names.push_back(row.name);
    return QuotedChoice(names);
}

std::string LogDisplayName(const LogNaming& naming, const StationInformation& station) {
    switch (naming.logNamingMode) {
    case LogNamingMode::UserFileName:
        return UserFileName(naming);
    case LogNamingMode::AutoCast:
        return station.cast.empty() ? "" : station.stationId + station.cast + RawExtension;
    case LogNamingMode::TimeStamp:
        return TimeStampDisplayName;
    case LogNamingMode::Sqm:
        return naming.sqmBaseName + Format("%03d", naming.sqmSequence) + RawExtension;
    }
    return {};
}

std::string TimeStampFileName(const CalendarTime& local) {
    return Format("%04d-%03d-%02d%02d%02d.raw", local.year, local.dayOfYear, local.hour,
                  local.minute, local.second);
}

void AdvanceLogFileName(LogNaming& naming, StationInformation& station) {
    naming.logNameReady = false;
    naming.logNamePrompted = false;
    switch (naming.logNamingMode) {
    case LogNamingMode::UserFileName:
        naming.number += naming.numbered ? 1 : 0;
        break;
    case LogNamingMode::AutoCast:
        AdvanceCast(station.cast);
        break;
    case LogNamingMode::TimeStamp:
        naming.logFileDisplayName = TimeStampDisplayName;
        break;
    case LogNamingMode::Sqm:
        // Kept: after the last number the next file has the same one and is asked about.
        if (naming.sqmSequence < LastSqmSequence)
            ++naming.sqmSequence;
        break;
    }
}

} // namespace qor
