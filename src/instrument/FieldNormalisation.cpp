// SPDX-License-Identifier: GPL-3.0-or-later
//
// Walks the rows of the fit types and data types. Called by the definition reader for every sensor
// that it accepts.
#include "instrument/FieldNormalisation.h"

#include "instrument/FitTypes.h"

#include <algorithm>

namespace qor {

namespace {

void NormaliseVariableField(CSensor& sensor, CDefinitionLog& log) {
    if (!sensor.VariableLength || RowOf(sensor.Data).characters)
        return;
    const bool integer = sensor.Fit == FitType::OPTIC1;
    log.Diagnostic(DefinitionStatus::DataTypeInvalid,
                   integer ? CorrectiveAction::DataTypeAI : CorrectiveAction::DataTypeAS);
    sensor.Data = integer ? DataType::AI : DataType::AS;
}

CorrectiveAction GainRangeAction(std::uint32_t count) {
    return count == 0   ? CorrectiveAction::GainRanges0
           : count == 1 ? CorrectiveAction::GainRanges1
                        : CorrectiveAction::GainRanges4;
}

void NormaliseByFit(CSensor& sensor, CDefinitionLog& log) {
    const FitRow& row = RowOf(sensor.Fit);
    if (!row.allowed.Has(sensor.Data)) {
        log.Diagnostic(DefinitionStatus::DataTypeInvalid, row.otherAction);
        sensor.Data = row.otherData;
    }
    const std::uint32_t gains = std::clamp(sensor.GainRanges, row.fewestGains, row.mostGains);
    if (gains != sensor.GainRanges) {
        log.Diagnostic(DefinitionStatus::GainRange, GainRangeAction(gains));
        sensor.GainRanges = gains;
    }
}

void NormaliseLength(CSensor& sensor, CDefinitionLog& log) {
    const DataTypeRow& row = RowOf(sensor.Data);
    if (sensor.FieldLength >= row.shortest && sensor.FieldLength <= row.longest)
        return;
    log.Diagnostic(DefinitionStatus::FieldLength, row.otherAction);
    sensor.FieldLength = row.otherLength;
}

} // namespace

void NormaliseField(CSensor& sensor, FrameType frame, CDefinitionLog& log) {
    if (sensor.Fit != FitType::NONE && sensor.FieldLength == 0 && frame == FrameType::Fixed) {
        log.Diagnostic(DefinitionStatus::FieldLength, CorrectiveAction::FitTypeNone);
        sensor.Fit = FitType::NONE;
        sensor.IntegrationTime = nullptr;
    }
    NormaliseVariableField(sensor, log);
    NormaliseByFit(sensor, log);
    NormaliseLength(sensor, log);
}

} // namespace qor
