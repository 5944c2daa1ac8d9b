// SPDX-License-Identifier: GPL-3.0-or-later
//
// Access to a loaded instrument. Reading its file is the definition reader's.
#include "instrument/Instrument.h"

#include "base/MessageSink.h"
#include "base/Text.h"
#include "instrument/DefinitionReader.h"

namespace qor {

DefinitionStatus CInstrument::Load(const std::string& path, const LoadProgress& goOn) {
    return CDefinitionReader(*this, path).LoadFile(goOn);
}

std::string CInstrument::ShownName() const {
    return InstrumentName.empty() ? Path.substr(Path.find_last_of("/\\") + 1) : InstrumentName;
}

const CSensor* CInstrument::Sensor(std::int32_t index, CMessageSink* messages) const {
    if (index >= 0 && index < SensorCount())
        return &SensorList[static_cast<std::size_t>(index)];
    if (messages)
        messages->Report("Cannot access instrument sensors.\r\n");
    return nullptr;
}

const CSensor* CInstrument::NextSensor(std::string_view type, std::int32_t after) const {
    for (std::size_t i = after < 0 ? 0 : static_cast<std::size_t>(after) + 1; i < SensorList.size();
         ++i)
        if (EqualsNoCase(SensorList[i].Type, type))
            return &SensorList[i];
    return nullptr;
}

} // namespace qor
