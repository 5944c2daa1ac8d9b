// SPDX-License-Identifier: GPL-3.0-or-later
//
// The rules of the definition reader that relate a line to the lines before it: the header that
// opens the file, the integration time that an optical channel refers to, the separators of a
// variable frame.
#include "instrument/DefinitionReader.h"

#include "instrument/FitTypes.h"

namespace qor {

/// NotHeaderLine, NoError when the line was a header line and is used up, or a fatal status.
DefinitionStatus CDefinitionReader::CheckHeader(const CSensor& line) {
    // Decided: a header whose text is empty (an instrument without sync header) closes like any.
    if (HeaderClosed)
        return DefinitionStatus::NotHeaderLine;
    if (!HeaderFound) {
        const bool variable = EqualsNoCase(line.Type, "VLF_INSTRUMENT");
        if (variable || EqualsNoCase(line.Type, "INSTRUMENT")) {
            const DefinitionStatus status = TakeHeader(line, "INSTRUMENT", false);
            HeaderFound = status == DefinitionStatus::NoError;
            if (HeaderFound && variable)
                Target.Frame = FrameType::Variable;
            return status;
        }
        if (line.FieldLength != 0)
            return Fail(FaultMessage("INSTRUMENT definition line not found."),
                        DefinitionStatus::HeaderNotFound);
        return DefinitionStatus::NotHeaderLine;
    }
    if (EqualsNoCase(line.Type, Target.Frame == FrameType::Fixed ? "SN" : "VLF_SN"))
        return TakeHeader(line, "SN (Serial Number)", true);
    if (line.FieldLength != 0) {
        Target.InstrumentName = Target.Header;
        HeaderClosed = true;
    }
    return DefinitionStatus::NotHeaderLine;
}

/// Checks a header line and adds it to the sync header and the frame.
DefinitionStatus CDefinitionReader::TakeHeader(const CSensor& line, const char* name, bool serial) {
    const bool dataTypeFits = line.Data == DataType::AS || (serial && line.Data == DataType::AI);
    DefinitionStatus fault = DefinitionStatus::NoError;
    if (line.FieldLength != line.Id.size())
        // NOLINTNEXTLINE(bugprone-branch-clone): the first fault in this order is reported
        fault = DefinitionStatus::FieldLength;
    else if (!dataTypeFits)
        fault = DefinitionStatus::DataTypeInvalid;
    else if (line.GainRanges != 0)
        fault = DefinitionStatus::GainRange;
    else if (line.Fit != FitType::NONE && line.Fit != FitType::COUNT)
        fault = DefinitionStatus::HeaderFitType;
    else if (!Grow(line.FieldLength))
        fault = DefinitionStatus::FieldLength;
    if (fault != DefinitionStatus::NoError)
        return Fail(FaultMessage(Format("Invalid %s definition line found.", name)), fault);
    Target.Header += line.Id;
    if (serial)
        Target.Serial += line.Id;
    return DefinitionStatus::NoError;
}

/// Sets the sensor's integration-time sensor: the first usable INTTIME sensor whose id is this
/// sensor's type. False when there is none before it.
bool CDefinitionReader::FindIntegrationTime(CSensor& sensor) const {
    const auto found = IntegrationTimes.find(ToLower(sensor.Type));
    if (found == IntegrationTimes.end())
        return false;
    sensor.IntegrationTime = found->second;
    return true;
}

/// Remembers a usable INTTIME sensor: a search through the list for every channel would let a
/// hostile file of a few megabytes run for hours.
void CDefinitionReader::NoteIntegrationTime(const CSensor& sensor) {
    if (IsCalibrated(sensor.Fit) && EqualsNoCase(sensor.Type, "INTTIME") &&
        EqualsNoCase(sensor.Units, "sec"))
        IntegrationTimes.try_emplace(ToLower(sensor.Id), &sensor);
}

/// Places an accepted sensor line among the separators; false when the line is not kept, being a
/// separator itself or rejected.
bool CDefinitionReader::ApplyDelimiterRules(CSensor& sensor) {
    if (const DefinitionStatus fault = DelimiterFault(sensor); fault != DefinitionStatus::NoError)
        return Drop(fault);
    if (FieldPending) {
        // A field of no length (a rate, a remark) may stand between a separator and its field.
        FieldPending = !sensor.VariableLength;
        return true;
    }
    if (sensor.Fit != FitType::DELIMITER)
        return true;
    if (EqualsNoCase(sensor.Type, "FIELD"))
        TakeFieldDelimiter(sensor);
    else
        TakeTerminator(sensor);
    return false;
}

DefinitionStatus CDefinitionReader::DelimiterFault(const CSensor& sensor) const {
    const bool delimiter = sensor.Fit == FitType::DELIMITER;
    if (Target.Frame == FrameType::Fixed)
        return delimiter ? DefinitionStatus::DelimiterUse : DefinitionStatus::NoError;
    if (TerminatorSeen)
        return DefinitionStatus::AfterTerminator;
    if (FieldPending && sensor.VariableLength)
        return delimiter ? DefinitionStatus::DelimiterUse : DefinitionStatus::NoError;
    if (FieldPending)
        return sensor.FieldLength == 0 ? DefinitionStatus::NoError : DefinitionStatus::NotVariable;
    const bool separator = delimiter && (EqualsNoCase(sensor.Type, "FIELD") ||
                                         EqualsNoCase(sensor.Type, "TERMINATOR"));
    return separator || (!delimiter && sensor.FieldLength == 0) ? DefinitionStatus::NoError
                                                                : DefinitionStatus::DelimiterLine;
}

void CDefinitionReader::TakeFieldDelimiter(CSensor& line) {
    if (line.FieldLength != 1) {
        Log.Diagnostic(DefinitionStatus::FieldLength, CorrectiveAction::FieldLength1);
        line.FieldLength = 1;
    }
    std::string delimiter = DecodeEscapes(line.Units);
    if (delimiter.size() != line.FieldLength) {
        Log.Diagnostic(DefinitionStatus::FieldDelimiterLength,
                       CorrectiveAction::FieldDelimiterComma);
        delimiter = ",";
    }
    Target.Delimiters += delimiter;
    FieldPending = true;
}

void CDefinitionReader::TakeTerminator(const CSensor& line) {
    Target.FrameTerminator = DecodeEscapes(line.Units);
    if (Target.FrameTerminator.empty() || Target.FrameTerminator.size() != line.FieldLength) {
        Log.Diagnostic(DefinitionStatus::TerminatorLength, CorrectiveAction::TerminatorCrLf);
        Target.FrameTerminator = "\r\n";
    }
    TerminatorSeen = true;
    std::int32_t variableIndex = 0;
    for (CSensor& sensor : Target.SensorList)
        if (sensor.VariableLength)
            sensor.VariableIndex = variableIndex++;
}

} // namespace qor
