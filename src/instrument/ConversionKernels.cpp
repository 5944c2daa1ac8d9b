// SPDX-License-Identifier: GPL-3.0-or-later
//
// The loops themselves. Operations stand in the order of the formulas and are never fused, so every
// clone gives the same bits.
#include "instrument/ConversionKernels.h"

#include <bit>
#include <cstring>

// Clones need the loader's indirect functions; sanitizers and other systems do without.
#if defined(__x86_64__) && defined(__GLIBC__) && defined(__GNUC__) && !defined(__clang__) &&       \
    !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define QOR_CLONES __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define QOR_CLONES
#endif
#if defined(__GNUC__)
#define QOR_INLINE inline __attribute__((always_inline))
#define QOR_RESTRICT __restrict__
#else
#define QOR_INLINE inline
#define QOR_RESTRICT
#endif

namespace qor {

namespace {

constexpr std::uint64_t ExponentMask = 0x7ff0000000000000;
constexpr std::uint64_t LowestExponentBit = 0x0010000000000000;
constexpr std::uint64_t SignBit = 0x8000000000000000;

/// A set sign bit tells that the value is not finite; the bits of many values may be joined by OR.
QOR_INLINE std::uint64_t NotFiniteBit(double value) {
    return (std::bit_cast<std::uint64_t>(value) & ExponentMask) + LowestExponentBit;
}

QOR_INLINE std::uint16_t Load16(const std::uint8_t* bytes) {
    std::uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    if constexpr (std::endian::native == std::endian::little)
        value = static_cast<std::uint16_t>(value << 8 | value >> 8);
    return value;
}

QOR_INLINE std::uint32_t Load32(const std::uint8_t* bytes) {
    return std::uint32_t{Load16(bytes)} << 16 | Load16(bytes + 2);
}

struct CountsIn16 {
    const std::uint8_t* bytes;
    QOR_INLINE double operator()(std::size_t i, double) const {
        return static_cast<double>(static_cast<std::int32_t>(Load16(bytes + 2 * i)));
    }
};

struct CountsInPlace {
    QOR_INLINE double operator()(std::size_t, double value) const { return value; }
};

template <int Factors, class Counts>
QOR_INLINE bool RunOptic(Counts counts, std::size_t count, const double* QOR_RESTRICT offset,
                         const double* QOR_RESTRICT first, const double* QOR_RESTRICT second,
                         const double* QOR_RESTRICT third, double* QOR_RESTRICT values) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) {
        double value = (counts(i, values[i]) - offset[i]) * first[i];
        if constexpr (Factors > 1)
            value *= second[i];
        if constexpr (Factors > 2)
            value *= third[i];
        values[i] = value;
        bits |= NotFiniteBit(value);
    }
    return (bits & SignBit) == 0;
}

QOR_CLONES bool Optic16With1(const std::uint8_t* bytes, std::size_t count, const double* offset,
                             const double* first, double* values) {
    return RunOptic<1>(CountsIn16{bytes}, count, offset, first, nullptr, nullptr, values);
}

QOR_CLONES bool Optic16With2(const std::uint8_t* bytes, std::size_t count, const double* offset,
                             const double* first, const double* second, double* values) {
    return RunOptic<2>(CountsIn16{bytes}, count, offset, first, second, nullptr, values);
}

QOR_CLONES bool Optic16With3(const std::uint8_t* bytes, std::size_t count, const double* offset,
                             const double* first, const double* second, const double* third,
                             double* values) {
    return RunOptic<3>(CountsIn16{bytes}, count, offset, first, second, third, values);
}

QOR_CLONES bool OpticWith1(std::size_t count, const double* offset, const double* first,
                           double* values) {
    return RunOptic<1>(CountsInPlace{}, count, offset, first, nullptr, nullptr, values);
}

QOR_CLONES bool OpticWith2(std::size_t count, const double* offset, const double* first,
                           const double* second, double* values) {
    return RunOptic<2>(CountsInPlace{}, count, offset, first, second, nullptr, values);
}

QOR_CLONES bool OpticWith3(std::size_t count, const double* offset, const double* first,
                           const double* second, const double* third, double* values) {
    return RunOptic<3>(CountsInPlace{}, count, offset, first, second, third, values);
}

QOR_CLONES void LoadUnsigned8(const std::uint8_t* bytes, std::size_t count, double* values) {
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<double>(static_cast<std::int32_t>(bytes[i]));
}

QOR_CLONES void LoadUnsigned16(const std::uint8_t* bytes, std::size_t count, double* values) {
    for (std::size_t i = 0; i < count; ++i)
        values[i] = static_cast<double>(static_cast<std::int32_t>(Load16(bytes + 2 * i)));
}

QOR_CLONES void LoadSigned16(const std::uint8_t* bytes, std::size_t count, double* values) {
    for (std::size_t i = 0; i < count; ++i)
        values[i] =
            static_cast<double>(std::int32_t{static_cast<std::int16_t>(Load16(bytes + 2 * i))});
}

} // namespace

bool ConvertSingles(const std::uint8_t* frame, std::span<const SingleField> fields,
                    double* numbers) {
    std::uint64_t bits = 0;
    for (const SingleField& field : fields) {
        const std::int64_t sign = field.signBit;
        const std::int64_t magnitude = Load32(frame + field.at) & field.mask;
        const double value = field.fit(static_cast<double>((magnitude ^ sign) - sign));
        numbers[field.sensor] = value;
        bits |= NotFiniteBit(value);
    }
    return (bits & SignBit) == 0;
}

bool ConvertOptic16(const std::uint8_t* bytes, std::size_t count, const OpticCoefficients& c,
                    double* values) {
    if (c.factorCount == 1)
        return Optic16With1(bytes, count, c.offset, c.factors[0], values);
    if (c.factorCount == 2)
        return Optic16With2(bytes, count, c.offset, c.factors[0], c.factors[1], values);
    return Optic16With3(bytes, count, c.offset, c.factors[0], c.factors[1], c.factors[2], values);
}

bool ConvertOptic(std::size_t count, const OpticCoefficients& c, double* values) {
    if (c.factorCount == 1)
        return OpticWith1(count, c.offset, c.factors[0], values);
    if (c.factorCount == 2)
        return OpticWith2(count, c.offset, c.factors[0], c.factors[1], values);
    return OpticWith3(count, c.offset, c.factors[0], c.factors[1], c.factors[2], values);
}

void LoadIntegers(const std::uint8_t* bytes, std::size_t width, bool isSigned, std::size_t count,
                  double* values) {
    if (width == 1 && !isSigned)
        return LoadUnsigned8(bytes, count, values);
    if (width == 2)
        return isSigned ? LoadSigned16(bytes, count, values) : LoadUnsigned16(bytes, count, values);
    for (std::size_t i = 0; i < count; ++i)
        values[i] = LoadInteger(bytes + i * width, width, isSigned);
}

bool LoadFloats(const std::uint8_t* bytes, std::size_t width, std::size_t count, double* values) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < count; ++i, bytes += width) {
        const std::uint32_t high = Load32(bytes);
        values[i] = width == 4
                        ? static_cast<double>(std::bit_cast<float>(high))
                        : std::bit_cast<double>(std::uint64_t{high} << 32 | Load32(bytes + 4));
        bits |= NotFiniteBit(values[i]);
    }
    return (bits & SignBit) == 0;
}

QOR_CLONES void DivideAll(const double* QOR_RESTRICT dividends, double divisor, std::size_t count,
                          double* QOR_RESTRICT quotients) {
    for (std::size_t i = 0; i < count; ++i)
        quotients[i] = dividends[i] / divisor;
}

} // namespace qor
