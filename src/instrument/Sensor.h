// SPDX-License-Identifier: GPL-3.0-or-later
//
// One field of an instrument's frame as its definition file describes it. Filled by the definition
// reader, const for the rest of its life.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qor {

class CInstrument;

/// How a field's bytes stand for a raw value. The rows of DataTypes.h say what each one means.
enum class DataType : std::uint8_t { BU, BS, BF, BD, HU, HS, AI, AF, AS };

/// How a raw value becomes an engineering value. The rows of FitTypes.h say what each one means.
enum class FitType : std::uint8_t {
    NONE,
    COUNT,
    DELIMITER,
    OPTIC1,
    OPTIC2,
    OPTIC3,
    POLYF,
    POLYU,
    DDMM,
    HHMMSS,
    DDMMYY,
    TIME2
};

/// The keywords of definition files.
const char* KeywordOf(DataType type);
const char* KeywordOf(FitType fit);
/// What a keyword (in any case) stands for, or empty when it is none.
std::optional<DataType> DataTypeOf(std::string_view keyword);
std::optional<FitType> FitTypeOf(std::string_view keyword);

class CSensor {
  public:
    const CInstrument* Instrument = nullptr; ///< the owner: file path, name, delimiters
    std::string Type;                        ///< family or role; compared without case
    std::string Id;                          ///< "NONE" in the file is an empty id
    std::string Units;
    std::vector<std::vector<double>> Coefficients; ///< one set a gain range, in file order
    const CSensor* IntegrationTime = nullptr; ///< OPTIC3: another sensor of the same instrument
    std::uint32_t FieldLength = 0;            ///< bytes; 0 for a variable-length field
    std::uint32_t GainRanges = 0;             ///< coefficient lines that follow
    std::uint32_t CoefficientLines = 0;       ///< coefficient lines read
    std::uint32_t ByteOffset = 0;             ///< of the field in the frame
    std::int32_t Index = -1;                  ///< in the instrument's sensor list
    std::int32_t VariableIndex =
        -1; ///< among the variable-length fields; -1: none, or no TERMINATOR seen
    std::int32_t LineNumber = 0;
    DataType Data = DataType::BU;
    FitType Fit = FitType::NONE;
    bool VariableLength = false;
};

} // namespace qor
