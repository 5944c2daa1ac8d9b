// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the definition reader's status codes and corrective actions, a row each. The reader
// puts them into the parse log; nothing else interprets them.
#include "instrument/DefinitionStatus.h"

#include "base/EnumTable.h"

#include <iterator>

namespace qor {

namespace {

/// A status as the report of a load and as a diagnostic of a line; a null where it never is one.
struct DefinitionRow {
    DefinitionStatus status;
    const char *report, *diagnostic;
};

constexpr const char* NoText = nullptr;

constexpr DefinitionRow DefinitionTable[] = {
    {DefinitionStatus::NoError, "\tNo error.\r\n", "No error.\r\n"},
    {DefinitionStatus::FileNotSpecified,
     "\tThe Calibration or Telemetry Definition File was not specified.\r\n"
     "\tInstrument processing aborted.\r\n",
     NoText},
    {DefinitionStatus::AlreadyDefined,
     "\tThe instrument has already been defined.\r\n"
     "\tInstrument processing aborted.\r\n",
     NoText},
    {DefinitionStatus::OpenFailed, "\tInstrument processing aborted.\r\n", NoText},
    {DefinitionStatus::ReadFailed, "\tInstrument processing aborted.\r\n", NoText},
    {DefinitionStatus::FileCorrupted,
     "\tThe file format is invalid or corrupted.\r\n"
     "\tInstrument processing aborted.\r\n",
     NoText},
    {DefinitionStatus::HeaderNotFound, "\tInstrument processing aborted.\r\n", NoText},
    {DefinitionStatus::TerminatorNotFound,
     "\tThe TERMINATOR delimiter could not be found.\r\n"
     "\tInstrument processing aborted.\r\n",
     NoText},
    {DefinitionStatus::HeaderFitType,
     "\tThe fit type parameter is invalid.\r\n"
     "\tInstrument processing aborted.\r\n",
     NoText},
    {DefinitionStatus::LineFormat, NoText, "Unexpected sensor definition line format.\r\n"},
    {DefinitionStatus::UnitsFormat, NoText, "The units parameter format is invalid.\r\n"},
    {DefinitionStatus::FitTypeInvalid, NoText, "The fit type parameter is invalid.\r\n"},
    {DefinitionStatus::GainRangesMissing, NoText,
     "More gain ranges expected before the end of file.\r\n"},
    {DefinitionStatus::CoefficientInvalid, NoText,
     "Invalid gain coefficient found in gain range line.\r\n"},
    {DefinitionStatus::CoefficientCount, NoText,
     "Unexpected number of gain coefficients found in gain range line.\r\n"},
    {DefinitionStatus::FieldLength,
     "\tThe field length parameter is invalid.\r\n"
     "\tInstrument processing aborted.\r\n",
     "The field length parameter is invalid.\r\n"},
    {DefinitionStatus::DataTypeInvalid,
     "\tThe data type parameter is invalid.\r\n"
     "\tInstrument processing aborted.\r\n",
     "The data type parameter is invalid.\r\n"},
    {DefinitionStatus::GainRange,
     "\tThe gain range parameter is invalid.\r\n"
     "\tInstrument processing aborted.\r\n",
     "The gain range parameter is invalid.\r\n"},
    {DefinitionStatus::SensorReference, "\tThe sensor reference is invalid.\r\n", NoText},
    {DefinitionStatus::SensorNotFound, "\tThe sensor could not be found.\r\n", NoText},
    {DefinitionStatus::VariableInFixed, NoText,
     "Variable field length parameter found in a fixed frame length format.\r\n"},
    {DefinitionStatus::AfterTerminator, NoText,
     "Cannot have sensors defined after the TERMINATOR delimiter.\r\n"},
    {DefinitionStatus::DelimiterLine, NoText, "Invalid DELIMITER definition line.\r\n"},
    {DefinitionStatus::NotVariable, NoText,
     "The field length parameter does not specify a variable length field.\r\n"},
    {DefinitionStatus::FieldDelimiterLength, NoText,
     "The FIELD delimiter field length is invalid.\r\n"},
    {DefinitionStatus::TerminatorLength, NoText,
     "The TERMINATOR delimiter field length is invalid.\r\n"},
    {DefinitionStatus::DelimiterUse, NoText, "Invalid use of the DELIMITER fit type.\r\n"},
    {DefinitionStatus::NoIntegrationTime, NoText,
     "No valid integration time sensor was found.\r\n"},
    {DefinitionStatus::Success, "", NoText},
    {DefinitionStatus::NotHeaderLine, NoText, NoText},
};
static_assert(IsAscendingTable(DefinitionTable, &DefinitionRow::status));
static_assert(EnumeratorsIn<DefinitionStatus, 0x30000000, 0x60>() + 1 ==
              std::size(DefinitionTable));

struct ActionRow {
    CorrectiveAction action;
    const char* text;
};

constexpr ActionRow ActionTable[] = {
    {CorrectiveAction::None, "\t\t> No action taken.\r\n"},
    {CorrectiveAction::SensorIgnored, "\t\t> Sensor ignored.\r\n"},
    {CorrectiveAction::UnitsIgnored, "\t\t> Sensor units ignored.\r\n"},
    {CorrectiveAction::ExtraParametersIgnored,
     "\t\t> Extra sensor definition line parameters ignored.\r\n"},
    {CorrectiveAction::CoefficientIgnored, "\t\t> Gain coefficient ignored.\r\n"},
    {CorrectiveAction::ExtraCoefficientsIgnored, "\t\t> Extra gain coefficients ignored.\r\n"},
    {CorrectiveAction::FitTypeNone, "\t\t> Fit type set to NONE.\r\n"},
    {CorrectiveAction::DataTypeBU, "\t\t> Data type set to BU.\r\n"},
    {CorrectiveAction::DataTypeAF, "\t\t> Data type set to AF.\r\n"},
    {CorrectiveAction::DataTypeAS, "\t\t> Data type set to AS.\r\n"},
    {CorrectiveAction::DataTypeAI, "\t\t> Data type set to AI.\r\n"},
    {CorrectiveAction::GainRanges0, "\t\t> Gain ranges set to 0.\r\n"},
    {CorrectiveAction::GainRanges1, "\t\t> Gain ranges set to 1.\r\n"},
    {CorrectiveAction::GainRanges4, "\t\t> Gain ranges set to 4.\r\n"},
    {CorrectiveAction::FieldLength1, "\t\t> Field length set to 1.\r\n"},
    {CorrectiveAction::FieldLength4, "\t\t> Field length set to 4.\r\n"},
    {CorrectiveAction::FieldLength8, "\t\t> Field length set to 8.\r\n"},
    {CorrectiveAction::FieldLengthVariable, "\t\t> Field length set to V (variable).\r\n"},
    {CorrectiveAction::FieldDelimiterComma, "\t\t> FIELD delimiter set to \",\".\r\n"},
    {CorrectiveAction::TerminatorCrLf, "\t\t> TERMINATOR delimiter set to \"\\x0D\\x0A\".\r\n"},
};

static_assert(IsAscendingTable(ActionTable, &ActionRow::action));
static_assert(EnumeratorsIn<CorrectiveAction, 0x30000000, 0x60>() + 1 == std::size(ActionTable));

const DefinitionRow* Find(DefinitionStatus status) {
    for (const DefinitionRow& row : DefinitionTable)
        if (row.status == status)
            return &row;
    return nullptr;
}

} // namespace

std::string_view ReportText(DefinitionStatus status) {
    const DefinitionRow* const row = Find(status);
    return row && row->report ? row->report : "\tUnknown error.\r\n";
}

std::string_view DiagnosticText(DefinitionStatus status) {
    const DefinitionRow* const row = Find(status);
    return row && row->diagnostic ? row->diagnostic : "Unknown error.\r\n";
}

std::string_view ActionText(CorrectiveAction action) {
    for (const ActionRow& row : ActionTable)
        if (row.action == action)
            return row.text;
    return "\t\t> Unknown action.\r\n";
}

} // namespace qor
