// SPDX-License-Identifier: GPL-3.0-or-later
//
// The SPECIAL sensor line: some types stand in its first field, the sensor's id, others in its
// second, the units text.
#include "instrument/SpecialType.h"

#include "base/Text.h"

namespace qor {

namespace {

struct SpecialRow {
    std::string_view name;
    std::string CSensor::*field; ///< where the line names the type
    SpecialSearch search;
};

constexpr SpecialRow SpecialTable[] = {
    {"BSI", &CSensor::Id, SpecialSearch::Packets},
    {"HOBILABS_HS2_D", &CSensor::Id, SpecialSearch::Header},
    {"HEITRONICS_IRC", &CSensor::Id, SpecialSearch::Lines},
    {"AOS_EZCOMPASS_3", &CSensor::Units, SpecialSearch::Lines},
    {"SEABIRD_37SIMCT", &CSensor::Units, SpecialSearch::Lines},
    {"SEABIRD_19SCT", &CSensor::Units, SpecialSearch::Lines},
};

} // namespace

std::optional<SpecialType> SpecialTypeOf(const CInstrument& instrument) {
    const CSensor* const line = instrument.NextSensor("SPECIAL");
    if (!line)
        return std::nullopt;
    for (const SpecialRow& row : SpecialTable)
        if (EqualsNoCase(line->*row.field, row.name))
            return SpecialType{row.name, row.search, line};
    return std::nullopt;
}

// Half of too many pairs would cut frames in the wrong places: they are no pairs at all.
std::vector<std::uint8_t> SyncPairsOf(const CSensor& special) {
    const std::string bytes = DecodeEscapes(special.Units);
    if (bytes.size() > MaxSyncBytes)
        return {};
    return {bytes.begin(), bytes.end()};
}

} // namespace qor
