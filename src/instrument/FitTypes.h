// SPDX-License-Identifier: GPL-3.0-or-later
//
// The fit types of definition files, one row each: what the definition reader allows and repairs,
// what comes of a raw value, and the loop that converts whole frames. To add one: an enumerator in
// Sensor.h, its row here, its function in Calibration.cpp (a number) or TimeText.cpp (a text).
// Without a row, or with a row that lacks its function, nothing compiles; a fit without a loop is
// converted sensor by sensor.
#pragma once

#include "instrument/AsciiNumber.h"
#include "instrument/DataTypes.h"

#include <limits>
#include <string>

namespace qor {

/// What a sensor yields: a number (COUNT, OPTIC and POLY fits of numeric data), a text (AS data
/// with a NONE or COUNT fit, and the time and position fits), or nothing.
enum class ValueKind : std::uint8_t { None, Number, Text };

/// The calibrated value of an OPTIC3 sensor's integration-time sensor in the same frame.
struct IntegrationTimeValue {
    ConversionStatus status = ConversionStatus::NotUsable;
    double seconds = 0.0;
};

struct FitInput {
    const CSensor& sensor;
    const RawValue& raw;
    const IntegrationTimeValue& time; ///< matters to OPTIC3 only
    bool immersed;
};

/// From a raw value to a finite number; on failure `value` is left alone. NotUsable for a sensor
/// without the coefficients that its fit needs.
using NumberFit = ConversionStatus (*)(const FitInput& input, double& value);
ConversionStatus CountValue(const FitInput& input, double& value);
ConversionStatus Optic1Value(const FitInput& input, double& value);
ConversionStatus Optic2Value(const FitInput& input, double& value);
ConversionStatus Optic3Value(const FitInput& input, double& value);
ConversionStatus FactoredValue(const FitInput& input, double& value);
ConversionStatus UnfactoredValue(const FitInput& input, double& value);

/// The text of a raw value whose magnitude is below the fit's limit; cannot fail.
using TextFit = std::string (*)(const RawValue& raw, DataType data);
std::string PositionText(const RawValue& raw, DataType data);
std::string ClockText(const RawValue& raw, DataType data);
std::string DateText(const RawValue& raw, DataType data);
std::string CalendarText(const RawValue& raw, DataType data);

/// How the conversion plan converts many fields of the fit at once.
enum class FitLoop : std::uint8_t {
    None, ///< not at all
    Count,
    Gains,        ///< offset and factor chosen by the raw value's two low bits
    Factors,      ///< offset, then factors
    TimedFactors, ///< and one more, divided by the integration time
    Factored,     ///< polynomials
    Unfactored
};

struct FitRow {
    FitType fit;
    std::string_view keyword;
    DataTypes allowed;
    DataType otherData;                   ///< what a data type becomes that is not allowed
    CorrectiveAction otherAction;         ///< what the parse log says of it
    std::uint32_t fewestGains, mostGains; ///< coefficient lines
    std::size_t fewestCoefficients, mostCoefficients; ///< on each of them
    ValueKind ofNumbers, ofText; ///< what comes of a raw number, and of an AS field
    bool optic;
    NumberFit number = nullptr;
    FitLoop loop = FitLoop::None;
    TextFit text = nullptr;
    double textLimit = 0.0; ///< the magnitude of the raw value from which on there is no text
};

inline constexpr std::size_t AnyCount = std::numeric_limits<std::size_t>::max();
inline constexpr double NoLimit = std::numeric_limits<double>::infinity();
/// Decided: degrees that no 32-bit integer holds are no position.
inline constexpr double PositionLimit = 2147483648.0 * 100.0;
/// Decided: what lies further than 28,800 years from 1970 is no time; the calendar's years end not
/// far behind.
inline constexpr double CalendarLimit = 9.1e11;

// clang-format off
inline constexpr FitRow FitTable[] = {
    {FitType::NONE, "NONE", AnyDataType, DataType::AS, CorrectiveAction::None,
     0, 0, 0, 0, ValueKind::None, ValueKind::Text, false},
    {FitType::COUNT, "COUNT", AnyDataType, DataType::AS, CorrectiveAction::None,
     0, 0, 0, 0, ValueKind::Number, ValueKind::Text, false, CountValue, FitLoop::Count},
    {FitType::DELIMITER, "DELIMITER", TextOnly, DataType::AS, CorrectiveAction::DataTypeAS,
     0, 0, 0, 0, ValueKind::None, ValueKind::None, false},
    {FitType::OPTIC1, "OPTIC1", WholeNumbers, DataType::BU, CorrectiveAction::DataTypeBU,
     1, 4, 3, 3, ValueKind::Number, ValueKind::None, true, Optic1Value, FitLoop::Gains},
    {FitType::OPTIC2, "OPTIC2", AnyButText, DataType::AF, CorrectiveAction::DataTypeAF,
     1, 1, 3, 3, ValueKind::Number, ValueKind::None, true, Optic2Value, FitLoop::Factors},
    {FitType::OPTIC3, "OPTIC3", AnyButText, DataType::AF, CorrectiveAction::DataTypeAF,
     1, 1, 4, 4, ValueKind::Number, ValueKind::None, true, Optic3Value, FitLoop::TimedFactors},
    {FitType::POLYF, "POLYF", AnyButText, DataType::AF, CorrectiveAction::DataTypeAF,
     1, 1, 1, AnyCount, ValueKind::Number, ValueKind::None, false, FactoredValue,
     FitLoop::Factored},
    {FitType::POLYU, "POLYU", AnyButText, DataType::AF, CorrectiveAction::DataTypeAF,
     1, 1, 1, AnyCount, ValueKind::Number, ValueKind::None, false, UnfactoredValue,
     FitLoop::Unfactored},
    {FitType::DDMM, "DDMM", FloatingNumbers, DataType::AF, CorrectiveAction::DataTypeAF,
     0, 0, 0, 0, ValueKind::Text, ValueKind::None, false, nullptr, FitLoop::None, PositionText,
     PositionLimit},
    {FitType::HHMMSS, "HHMMSS", FloatingNumbers, DataType::AF, CorrectiveAction::DataTypeAF,
     0, 0, 0, 0, ValueKind::Text, ValueKind::None, false, nullptr, FitLoop::None, ClockText,
     NoLimit},
    // Kept: the log says AS while the type becomes AI.
    {FitType::DDMMYY, "DDMMYY", WholeNumbers, DataType::AI, CorrectiveAction::DataTypeAS,
     0, 0, 0, 0, ValueKind::Text, ValueKind::None, false, nullptr, FitLoop::None, DateText,
     NoLimit},
    {FitType::TIME2, "TIME2", AnyButText, DataType::AF, CorrectiveAction::DataTypeAF,
     0, 0, 0, 0, ValueKind::Text, ValueKind::None, false, nullptr, FitLoop::None, CalendarText,
     CalendarLimit},
};
// clang-format on

/// What the code that walks the table relies on.
constexpr bool IsSound(const FitRow& row) {
    const bool number = row.ofNumbers == ValueKind::Number, text = row.ofNumbers == ValueKind::Text;
    // The parse log has texts for these counts alone.
    const auto hasAction = [](std::uint32_t count) { return count < 2 || count == 4; };
    // The conversion plan takes a short number for one within the limit without reading it.
    constexpr double LongestShortNumber = 1e11;
    static_assert(ShortAsciiFloatLength == 11);
    return row.allowed.Has(row.otherData) && row.fewestGains <= row.mostGains &&
           hasAction(row.fewestGains) && hasAction(row.mostGains) &&
           row.fewestCoefficients <= row.mostCoefficients &&
           (row.fewestGains > 0) == (row.fewestCoefficients > 0) &&
           (row.number != nullptr) == number && (row.text != nullptr) == text &&
           (number || row.loop == FitLoop::None) && (!row.optic || number) &&
           (text ? row.textLimit >= LongestShortNumber : row.textLimit == 0.0) &&
           row.ofText != ValueKind::Number;
}
constexpr bool AllSound() {
    for (const FitRow& row : FitTable)
        if (!IsSound(row))
            return false;
    return true;
}
static_assert(IsWholeTable(FitTable, &FitRow::fit));
// GCC's sanitizer of undefined behaviour, which comes with that of addresses here, takes no
// function's address for a constant.
#if defined(__clang__) || !defined(__SANITIZE_ADDRESS__)
static_assert(AllSound());
#endif

constexpr const FitRow& RowOf(FitType fit) {
    return FitTable[static_cast<std::size_t>(fit)];
}

constexpr bool IsOptic(FitType fit) {
    return RowOf(fit).optic;
}

constexpr bool IsTimeText(FitType fit) {
    return RowOf(fit).ofNumbers == ValueKind::Text;
}

/// The fit gives a number by coefficients.
constexpr bool IsCalibrated(FitType fit) {
    return RowOf(fit).number && RowOf(fit).fewestCoefficients > 0;
}

} // namespace qor
