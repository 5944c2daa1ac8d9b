// SPDX-License-Identifier: GPL-3.0-or-later
//
// Status codes of loading a definition file, the actions that repair a line, and their texts.
#pragma once

#include <cstdint>
#include <string_view>

namespace qor {

enum class [[nodiscard]] DefinitionStatus : std::uint32_t{
    NoError = 0,
    FileNotSpecified = 0x30000000,
    AlreadyDefined = 0x30000001,
    OpenFailed = 0x30000002,
    ReadFailed = 0x30000003,
    FileCorrupted = 0x30000004,
    HeaderNotFound = 0x30000005,
    TerminatorNotFound = 0x30000006,
    HeaderFitType = 0x30000007,
    LineFormat = 0x30000008,
    UnitsFormat = 0x30000009,
    FitTypeInvalid = 0x3000000a,
    GainRangesMissing = 0x3000000b,
    CoefficientInvalid = 0x3000000c,
    CoefficientCount = 0x3000000d,
    FieldLength = 0x3000000e,
    DataTypeInvalid = 0x3000000f,
    GainRange = 0x30000010,
    SensorReference = 0x30000011,
    SensorNotFound = 0x30000012,
    VariableInFixed = 0x30000013,
    AfterTerminator = 0x30000014,
    DelimiterLine = 0x30000015,
    NotVariable = 0x30000016,
    FieldDelimiterLength = 0x30000017,
    TerminatorLength = 0x30000018,
    DelimiterUse = 0x30000019,
    NoIntegrationTime = 0x3000001a,
    Success = 0x30000040,
    NotHeaderLine = 0x30000041,
};

enum class CorrectiveAction : std::uint32_t {
    None = 0,
    SensorIgnored = 0x30000020,
    UnitsIgnored = 0x30000021,
    ExtraParametersIgnored = 0x30000022,
    CoefficientIgnored = 0x30000023,
    ExtraCoefficientsIgnored = 0x30000024,
    FitTypeNone = 0x30000025,
    DataTypeBU = 0x30000026,
    DataTypeAF = 0x30000027,
    DataTypeAS = 0x30000028,
    DataTypeAI = 0x30000029,
    GainRanges0 = 0x3000002a,
    GainRanges1 = 0x3000002b,
    GainRanges4 = 0x3000002c,
    FieldLength1 = 0x3000002d,
    FieldLength4 = 0x3000002e,
    FieldLength8 = 0x3000002f,
    FieldLengthVariable = 0x30000030,
    FieldDelimiterComma = 0x30000031,
    TerminatorCrLf = 0x30000032,
};

/// The report text of a load's status (file-error texts and the success summary are the reader's).
std::string_view ReportText(DefinitionStatus status);
/// The text of a per-line diagnostic, and of the action that followed.
std::string_view DiagnosticText(DefinitionStatus status);
std::string_view ActionText(CorrectiveAction action);

} // namespace qor
