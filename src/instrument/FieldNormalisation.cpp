// SPDX-License-Identifier: GPL-3.0-or-later
//
// What each fit type and data type allows, as tables, and the few lines that walk them. Called by
// the definition reader for every sensor that it accepts.
#include "instrument/FieldNormalisation.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace qor {

namespace {

constexpr unsigned SetOf(DataType type) {
    return 1U << static_cast<unsigned>(type);
}

template <class... Types> constexpr unsigned SetOf(DataType first, Types... others) {
    return SetOf(first) | SetOf(others...);
}

constexpr unsigned AnyType = ~0U;
constexpr unsigned AnyButText = AnyType & ~SetOf(DataType::AS);
constexpr unsigned Text = SetOf(DataType::AS);
constexpr unsigned Integers = SetOf(DataType::BU, DataType::BS, DataType::AI);
constexpr unsigned Floats = SetOf(DataType::BF, DataType::BD, DataType::AF);
constexpr unsigned Characters = SetOf(DataType::AI, DataType::AF, DataType::AS);

/// What a fit type allows, and what a data type becomes that it does not allow.
struct FitRule {
    unsigned allowed;
    DataType otherwise;
    CorrectiveAction action;
    std::uint32_t fewestGains;
    std::uint32_t mostGains;
};

constexpr FitRule FitRules[] = {
    /* NONE */ {AnyType, DataType::AS, CorrectiveAction::None, 0, 0},
    /* COUNT */ {AnyType, DataType::AS, CorrectiveAction::None, 0, 0},
    /* DELIMITER */ {Text, DataType::AS, CorrectiveAction::DataTypeAS, 0, 0},
    /* OPTIC1 */ {Integers, DataType::BU, CorrectiveAction::DataTypeBU, 1, 4},
    /* OPTIC2 */ {AnyButText, DataType::AF, CorrectiveAction::DataTypeAF, 1, 1},
    /* OPTIC3 */ {AnyButText, DataType::AF, CorrectiveAction::DataTypeAF, 1, 1},
    /* POLYF */ {AnyButText, DataType::AF, CorrectiveAction::DataTypeAF, 1, 1},
    /* POLYU */ {AnyButText, DataType::AF, CorrectiveAction::DataTypeAF, 1, 1},
    /* DDMM */ {Floats, DataType::AF, CorrectiveAction::DataTypeAF, 0, 0},
    /* HHMMSS */ {Floats, DataType::AF, CorrectiveAction::DataTypeAF, 0, 0},
    // Kept: the log says AS while the type becomes AI.
    /* DDMMYY */ {Integers, DataType::AI, CorrectiveAction::DataTypeAS, 0, 0},
    /* TIME2 */ {AnyButText, DataType::AF, CorrectiveAction::DataTypeAF, 0, 0},
};

/// What a data type allows as field length, and what any other length becomes.
struct LengthRule {
    std::uint32_t shortest;
    std::uint32_t longest;
    std::uint32_t otherwise;
    CorrectiveAction action;
};

constexpr std::uint32_t AnyLength = std::numeric_limits<std::uint32_t>::max();

constexpr LengthRule LengthRules[] = {
    /* BU */ {0, 4, 4, CorrectiveAction::FieldLength4},
    /* BS */ {0, 4, 4, CorrectiveAction::FieldLength4},
    /* BF */ {4, 4, 4, CorrectiveAction::FieldLength4},
    /* BD */ {8, 8, 8, CorrectiveAction::FieldLength8},
    // Kept: the log says 4 while the length becomes 8.
    /* HU */ {0, 8, 8, CorrectiveAction::FieldLength4},
    /* HS */ {0, 8, 8, CorrectiveAction::FieldLength4},
    /* AI */ {0, AnyLength, 0, CorrectiveAction::None},
    /* AF */ {0, AnyLength, 0, CorrectiveAction::None},
    /* AS */ {0, AnyLength, 0, CorrectiveAction::None},
};

void NormaliseVariableField(CSensor& sensor, CDefinitionLog& log) {
    if (!sensor.VariableLength || (SetOf(sensor.Data) & Characters) != 0)
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
    const FitRule& rule = FitRules[static_cast<std::size_t>(sensor.Fit)];
    if ((SetOf(sensor.Data) & rule.allowed) == 0) {
        log.Diagnostic(DefinitionStatus::DataTypeInvalid, rule.action);
        sensor.Data = rule.otherwise;
    }
    const std::uint32_t gains = std::clamp(sensor.GainRanges, rule.fewestGains, rule.mostGains);
    if (gains != sensor.GainRanges) {
        log.Diagnostic(DefinitionStatus::GainRange, GainRangeAction(gains));
        sensor.GainRanges = gains;
    }
}

void NormaliseLength(CSensor& sensor, CDefinitionLog& log) {
    const LengthRule& rule = LengthRules[static_cast<std::size_t>(sensor.Data)];
    if (sensor.FieldLength >= rule.shortest && sensor.FieldLength <= rule.longest)
        return;
    log.Diagnostic(DefinitionStatus::FieldLength, rule.action);
    sensor.FieldLength = rule.otherwise;
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
