// SPDX-License-Identifier: GPL-3.0-or-later
//
// The texts of the definition reader's status codes and corrective actions, each family in one
// table. The reader puts them into the parse log; nothing else interprets them.
#include "instrument/DefinitionStatus.h"

#include <algorithm>
#include <iterator>

namespace qor {

namespace {

template <class Code> struct CodeText {
    Code code;
    std::string_view text;
};

template <class Code, std::size_t Count>
std::string_view FindText(const CodeText<Code> (&table)[Count], Code code,
                          std::string_view otherwise) {
    const auto* const entry =
        std::find_if(std::begin(table), std::end(table),
                     [code](const CodeText<Code>& candidate) { return candidate.code == code; });
    return entry == std::end(table) ? otherwise : entry->text;
}

constexpr CodeText<DefinitionStatus> ReportTexts[] = {
    {DefinitionStatus::NoError, "\tNo error.\r\n"},
    {DefinitionStatus::FileNotSpecified,
     "\tThe Calibration or Telemetry Definition File was not specified.\r\n"
     "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::AlreadyDefined, "\tThe instrument has already been defined.\r\n"
                                       "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::OpenFailed, "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::ReadFailed, "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::FileCorrupted, "\tThe file format is invalid or corrupted.\r\n"
                                      "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::HeaderNotFound, "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::TerminatorNotFound, "\tThe TERMINATOR delimiter could not be found.\r\n"
                                           "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::HeaderFitType, "\tThe fit type parameter is invalid.\r\n"
                                      "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::FieldLength, "\tThe field length parameter is invalid.\r\n"
                                    "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::DataTypeInvalid, "\tThe data type parameter is invalid.\r\n"
                                        "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::GainRange, "\tThe gain range parameter is invalid.\r\n"
                                  "\tInstrument processing aborted.\r\n"},
    {DefinitionStatus::SensorReference, "\tThe sensor reference is invalid.\r\n"},
    {DefinitionStatus::SensorNotFound, "\tThe sensor could not be found.\r\n"},
    {DefinitionStatus::Success, ""},
};

constexpr CodeText<DefinitionStatus> DiagnosticTexts[] = {
    {DefinitionStatus::NoError, "No error.\r\n"},
    {DefinitionStatus::LineFormat, "Unexpected sensor definition line format.\r\n"},
    {DefinitionStatus::UnitsFormat, "The units parameter format is invalid.\r\n"},
    {DefinitionStatus::FitTypeInvalid, "The fit type parameter is invalid.\r\n"},
    {DefinitionStatus::GainRangesMissing, "More gain ranges expected before the end of file.\r\n"},
    {DefinitionStatus::CoefficientInvalid,
     "Invalid gain coefficient found in gain range line.\r\n"},
    {DefinitionStatus::CoefficientCount,
     "Unexpected number of gain coefficients found in gain range line.\r\n"},
    {DefinitionStatus::FieldLength, "The field length parameter is invalid.\r\n"},
    {DefinitionStatus::DataTypeInvalid, "The data type parameter is invalid.\r\n"},
    {DefinitionStatus::GainRange, "The gain range parameter is invalid.\r\n"},
    {DefinitionStatus::VariableInFixed,
     "Variable field length parameter found in a fixed frame length format.\r\n"},
    {DefinitionStatus::AfterTerminator,
     "Cannot have sensors defined after the TERMINATOR delimiter.\r\n"},
    {DefinitionStatus::DelimiterLine, "Invalid DELIMITER definition line.\r\n"},
    {DefinitionStatus::NotVariable,
     "The field length parameter does not specify a variable length field.\r\n"},
    {DefinitionStatus::FieldDelimiterLength, "The FIELD delimiter field length is invalid.\r\n"},
    {DefinitionStatus::TerminatorLength, "The TERMINATOR delimiter field length is invalid.\r\n"},
    {DefinitionStatus::DelimiterUse, "Invalid use of the DELIMITER fit type.\r\n"},
    {DefinitionStatus::NoIntegrationTime, "No valid integration time sensor was found.\r\n"},
};

constexpr CodeText<CorrectiveAction> ActionTexts[] = {
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

} // namespace

std::string_view ReportText(DefinitionStatus status) {
    return FindText(ReportTexts, status, "\tUnknown error.\r\n");
}

std::string_view DiagnosticText(DefinitionStatus status) {
    return FindText(DiagnosticTexts, status, "Unknown error.\r\n");
}

std::string_view ActionText(CorrectiveAction action) {
    return FindText(ActionTexts, action, "\t\t> Unknown action.\r\n");
}

} // namespace qor
