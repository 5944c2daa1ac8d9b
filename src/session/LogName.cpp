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

bool HasControl(std::string_view text) {
    return std::ranges::any_of(text, [](unsigned char c) { return c < 0x20 || c == 0x7F; });
}

bool MayStandInName(std::string_view text) {
    return !HasControl(text) && text.find_first_of("/\\:*?\"<>|") == std::string_view::npos;
}

void AdvanceCast(std::string& cast) {
    if (cast.size() < 2)
        return;
    if (cast[1] != 'Z' && cast[1] != 'z') {
        ++cast[1];
        return;
    }
    cast[1] = cast[1] == 'Z' ? 'A' : 'a';
    // Kept: the first character is not limited and moves past 'Z' to the next character code.
    // Decided: small letters count like capitals, but begin anew with 'a', for what comes after
    // them soon is no character of a file's name.
    cast[0] = cast[0] == 'z' ? 'a' : static_cast<char>(cast[0] + 1);
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

std::string WithSuffix(const std::string& path, int number) {
    if (number == 1)
        return path;
    const std::size_t dot = path.rfind('.');
    return path.substr(0, dot) + "-" + std::to_string(number) + path.substr(dot);
}

std::string NamingFault(const LogNaming& naming) {
    for (const auto& [what, text] : {std::pair{"file name", &naming.logUserFileName},
                                     std::pair{"SQM base name", &naming.sqmBaseName}})
        if (!MayStandInName(*text))
            return Format("The %s \"%s\" holds a character that a file's name cannot.", what,
                          text->c_str());
    if (naming.sqmSequence < 0 || naming.sqmSequence > LastSqmSequence)
        return Format("The sequence number %d is not in 0 to %d.", naming.sqmSequence,
                      LastSqmSequence);
    return {};
}

std::string StoredStationFault(const StationInformation& station, LogNamingMode mode) {
    const std::pair<const char*, const std::string*> texts[] = {
        {"cruise", &station.cruiseId},   {"operator", &station.operatorName},
        {"latitude", &station.latitude}, {"longitude", &station.longitude},
        {"time zone", &station.zone},    {"comment", &station.comment},
        {"station", &station.stationId}, {"cast", &station.cast}};
    for (const auto& [what, text] : texts)
        if (HasControl(*text))
            return Format("The %s holds a control character; a header record is one line.", what);
    if (mode != LogNamingMode::AutoCast)
        return {};
    for (const auto& [what, text] :
         {std::pair{"station", &station.stationId}, std::pair{"cast", &station.cast}})
        if (!MayStandInName(*text))
            return Format("The %s \"%s\" holds a character that a file's name cannot.", what,
                          text->c_str());
    return {};
}

std::string StationFault(const StationInformation& station, LogNamingMode mode) {
    std::string fault = StoredStationFault(station, mode);
    if (fault.empty() && mode == LogNamingMode::AutoCast &&
        (station.cast.size() != 2 || !std::ranges::all_of(station.cast, IsLetter)))
        fault = Format("The cast \"%s\" is not two letters.", station.cast.c_str());
    return fault;
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
