// SPDX-License-Identifier: GPL-3.0-or-later
//
// The inner loops of the conversion plan: plain loops over arrays that the compiler vectorises, on
// ELF systems once for each vector width, chosen when the program is loaded. They judge nothing but
// finiteness; the plan sorts out failures one by one.
#pragma once

#include "base/Bytes.h"
#include "instrument/FieldValue.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace qor {

/// A big-endian integer of 1 to 4 bytes and its polynomial, the rule among ancillary sensors.
struct SingleField {
    std::size_t at = 0;        ///< of the four bytes that end with the field
    std::uint32_t mask = 0;    ///< its bits in them
    std::uint32_t signBit = 0; ///< 0: unsigned
    FieldPolynomial fit;
    std::size_t sensor = 0; ///< where its value goes
};

/// numbers[sensor] of every field. False when some value is not finite.
bool ConvertSingles(const std::uint8_t* frame, std::span<const SingleField> fields,
                    double* numbers);

/// Up to three factor arrays, applied from the left behind the subtraction of `offset`.
struct OpticCoefficients {
    const double* offset = nullptr;
    const double* factors[3] = {};
    int factorCount = 0; ///< 1 to 3
};

/// values[i] = (x[i] - offset[i]) * factors[0][i] * ...; x are big-endian 16-bit counts. False when
/// some value is not finite.
bool ConvertOptic16(const std::uint8_t* bytes, std::size_t count,
                    const OpticCoefficients& coefficients, double* values);

/// The same with x in place of the values.
bool ConvertOptic(std::size_t count, const OpticCoefficients& coefficients, double* values);

/// One big-endian integer of 0 to 4 bytes, signed by two's complement or not.
inline double LoadInteger(const std::uint8_t* bytes, std::size_t width, bool isSigned) {
    std::uint32_t bits = 0;
    if (width == 0)
        return 0.0;
    if (width == 1)
        bits = std::uint32_t{bytes[0]} << 24;
    else if (width == 2)
        bits = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16;
    else if (width == 3)
        bits = static_cast<std::uint32_t>(GetBigEndian({bytes, 3}) << 8);
    else
        bits = static_cast<std::uint32_t>(GetBigEndian({bytes, 4}));
    const auto unused = 32 - 8 * static_cast<unsigned>(width);
    return isSigned ? static_cast<double>(static_cast<std::int32_t>(bits) >> unused)
                    : static_cast<double>(bits >> unused);
}

/// Neighbouring integers as LoadInteger's.
void LoadIntegers(const std::uint8_t* bytes, std::size_t width, bool isSigned, std::size_t count,
                  double* values);

/// Big-endian IEEE 754 numbers of `width` bytes (4 or 8). False when some are not finite.
bool LoadFloats(const std::uint8_t* bytes, std::size_t width, std::size_t count, double* values);

/// quotients[i] = dividends[i] / divisor.
void DivideAll(const double* dividends, double divisor, std::size_t count, double* quotients);

} // namespace qor
