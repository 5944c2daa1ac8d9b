// SPDX-License-Identifier: GPL-3.0-or-later
//
// The SPECIAL sensor line: its first field is the sensor's id, its second the units text.
#include "telemetry/AttachRequest.h"

#include "base/Text.h"
#include "instrument/Instrument.h"
#include "telemetry/FrameData.h"

namespace qor {

namespace {

struct SpecialType {
    std::string_view name;
    std::string CSensor::*field; ///< where the line names the type
    bool linesOfText;            ///< frames end in CR LF
};

constexpr SpecialType SpecialTypes[] = {
    {"BSI", &CSensor::Id, false},
    {"HOBILABS_HS2_D", &CSensor::Id, false},
    {"HEITRONICS_IRC", &CSensor::Id, true},
    {"AOS_EZCOMPASS_3", &CSensor::Units, true},
    {"SEABIRD_37SIMCT", &CSensor::Units, true},
    {"SEABIRD_19SCT", &CSensor::Units, true},
};

constexpr std::string_view PairType = "BSI";
constexpr std::size_t MaxSyncBytes = std::tuple_size_v<decltype(CFrameInfo::syncBytes)>;

/// A BSI line's pairs stand in its units. More than a frame record holds are no pairs at all: half
/// of them would cut frames in the wrong places.
std::vector<std::uint8_t> SyncPairs(const CSensor& special) {
    std::string bytes = DecodeEscapes(special.Units);
    if (bytes.size() > MaxSyncBytes)
        return {};
    return {bytes.begin(), bytes.end()};
}

} // namespace

AttachRequest MakeAttachRequest(const CInstrument& instrument) {
    AttachRequest request;
    request.instrumentName = instrument.Name();
    request.syncHeader = instrument.SyncHeader();
    request.frameSize = instrument.FrameSize();
    request.terminator = instrument.Terminator();
    const CSensor* special = instrument.NextSensor("SPECIAL");
    if (special == nullptr)
        return request;
    for (const SpecialType& type : SpecialTypes) {
        if (!EqualsNoCase(special->*type.field, type.name))
            continue;
        request.typeName = type.name;
        request.noSync = true;
        if (type.linesOfText)
            request.terminator = "\r\n";
        if (type.name == PairType)
            request.syncBytes = SyncPairs(*special);
        break;
    }
    return request;
}

} // namespace qor
