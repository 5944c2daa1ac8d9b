// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definition text as a stranger may send it. The same text in one piece and in small pieces must
// give the same instrument, and what a load accepts must keep the promises that conversion relies
// on.
#include "Require.h"

#include "instrument/DefinitionReader.h"
#include "instrument/FitTypes.h"

#include <algorithm>

namespace {

using namespace qor;

DefinitionStatus Load(CInstrument& instrument, std::string_view text, std::size_t pieceSize) {
    CDefinitionReader reader(instrument, "fuzz.tdf");
    reader.Begin("/fuzz.tdf");
    while (!text.empty() && reader.Feed(text.substr(0, pieceSize)))
        text.remove_prefix(std::min(pieceSize, text.size()));
    return reader.Finish();
}

void CheckSensor(const CInstrument& instrument, const CSensor& sensor) {
    Require(sensor.Instrument == &instrument && instrument.Sensor(sensor.Index) == &sensor);
    Require(sensor.Coefficients.size() == sensor.GainRanges && sensor.GainRanges <= 4);
    Require(!sensor.VariableLength || sensor.FieldLength == 0);
    if (sensor.Data < DataType::HU)
        Require(sensor.FieldLength <= 8);
    if (sensor.Fit == FitType::OPTIC3)
        Require(sensor.IntegrationTime && sensor.IntegrationTime->Index < sensor.Index);
    for (const std::vector<double>& set : sensor.Coefficients)
        Require(set.size() >= (IsOptic(sensor.Fit) ? 3U : 1U));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    CInstrument whole, pieces;
    const DefinitionStatus status = Load(whole, text, std::string_view::npos);
    Require(Load(pieces, text, size > 0 ? 1 + data[0] % 16U : 1) == status);
    Require(pieces.ParseLog() == whole.ParseLog() && pieces.Name() == whole.Name());
    Require(pieces.SensorCount() == whole.SensorCount() && pieces.FrameSize() == whole.FrameSize());
    Require(whole.FrameSize() >= 0);
    for (const CSensor& sensor : whole.Sensors())
        CheckSensor(whole, sensor);
    return 0;
}
