// SPDX-License-Identifier: GPL-3.0-or-later
//
// The numbers of text frames. The usual notation (a few digits, perhaps a point) is read here in
// one pass; everything else goes to the general readers. Every byte is hostile.
#include "instrument/AsciiNumber.h"

#include "base/Text.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

namespace qor {

namespace {

// Powers of ten that a double holds exactly.
constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

constexpr std::size_t MostDigits = 15; // that a double holds whatever they are

/// The characters of an integer field, skipped bytes left out; -1 at the end.
class CCharacters {
  public:
    explicit CCharacters(ByteSpan field) : Field(field) {}

    int Next() {
        while (At < Field.size()) {
            const std::uint8_t byte = Field[At++];
            if (byte >= 0x80 || (byte == 0 && !Started))
                continue;
            if (byte == 0)
                break;
            Started = true;
            return byte;
        }
        At = Field.size();
        return -1;
    }

  private:
    ByteSpan Field;
    std::size_t At = 0;
    bool Started = false;
};

ConversionStatus ReadAnyInteger(ByteSpan field, std::int32_t& value) {
    constexpr std::int64_t Maximum = std::numeric_limits<std::int32_t>::max();
    CCharacters characters(field);
    int c = characters.Next();
    while (c >= 0 && IsSpace(static_cast<char>(c)))
        c = characters.Next();
    const bool negative = c == '-';
    if (c == '-' || c == '+')
        c = characters.Next();
    if (c < '0' || c > '9')
        return ConversionStatus::NoNumber;
    std::int64_t magnitude = 0;
    for (; c >= '0' && c <= '9'; c = characters.Next()) {
        magnitude = magnitude * 10 + (c - '0');
        if (magnitude > Maximum)
            return ConversionStatus::NoNumber;
    }
    // The largest value is what an overflow would give; it tells nothing. Its negative is a number.
    if (magnitude == Maximum && !negative)
        return ConversionStatus::NoNumber;
    value = static_cast<std::int32_t>(negative ? -magnitude : magnitude);
    return ConversionStatus::Good;
}

/// A plain decimal number that takes the field's beginning and that a division of two exact doubles
/// gives correctly rounded; false leaves it to the general reader.
bool ReadPlainFloat(ByteSpan field, double& value) {
    const std::uint8_t* at = field.data();
    const std::uint8_t* const end = at + field.size();
    while (at != end && IsSpace(static_cast<char>(*at)))
        ++at;
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+'))
        ++at;
    std::uint64_t mantissa = 0;
    const std::uint8_t* const first = at;
    for (; at != end && static_cast<unsigned>(*at - '0') < 10; ++at)
        mantissa = mantissa * 10 + static_cast<unsigned>(*at - '0');
    auto digits = static_cast<std::size_t>(at - first), decimals = std::size_t{0};
    if (at != end && *at == '.') {
        const std::uint8_t* const fraction = ++at;
        for (; at != end && static_cast<unsigned>(*at - '0') < 10; ++at)
            mantissa = mantissa * 10 + static_cast<unsigned>(*at - '0');
        decimals = static_cast<std::size_t>(at - fraction);
        digits += decimals;
    }
    if (digits == 0 || digits > MostDigits || (at != end && (*at | 0x20) == 'e'))
        return false;
    const double magnitude = static_cast<double>(mantissa) / PowersOfTen[decimals];
    value = negative ? -magnitude : magnitude;
    return true;
}

constexpr std::size_t WordSize = sizeof(std::uint64_t);
constexpr std::uint64_t EveryByte = 0x0101010101010101;
constexpr std::uint64_t Point = '.' ^ '0';

/// The last `count` (1 to 8) of the eight bytes before `end`, digits as 0 to 9, the last byte
/// highest; zeros below them.
inline std::uint64_t LastBytes(const std::uint8_t* end, std::size_t count) {
    std::uint64_t word;
    std::memcpy(&word, end - WordSize, sizeof word);
    const std::size_t others = 8 * (WordSize - count);
    return (word ^ '0' * EveryByte) >> others << others;
}

/// The highest bit of every byte that is not a digit.
inline std::uint64_t NoDigits(std::uint64_t bytes) {
    return ((bytes + (0x7f - 9) * EveryByte) | bytes) & 0x80 * EveryByte;
}

/// The number that eight digits make, the first one lowest: neighbours are joined to pairs, fours
/// and the whole.
inline std::uint64_t JoinDigits(std::uint64_t digits) {
    digits = (digits * 10 + (digits >> 8)) & 0x00ff00ff00ff00ff;
    digits = (digits * 100 + (digits >> 16)) & 0x0000ffff0000ffff;
    return (digits * 10000 + (digits >> 32)) & 0x00000000ffffffff;
}

/// Takes the one byte that is not a digit out of the word, moving those before it up; false when it
/// is not the point, or not the only one. `decimals`: digits behind it in the word.
inline bool TakePoint(std::uint64_t& word, std::uint64_t noDigits, std::size_t& decimals) {
    const auto at = static_cast<unsigned>(std::countr_zero(noDigits)) / 8 * 8;
    if ((noDigits & (noDigits - 1)) != 0 || (word >> at & 0xff) != Point)
        return false;
    const std::uint64_t before = (std::uint64_t{1} << at) - 1;
    word = (word & ~before & ~(std::uint64_t{0xff} << at)) | (word & before) << 8;
    decimals = WordSize - 1 - at / 8;
    return true;
}

/// A field of up to sixteen digits, perhaps a sign before and a point among them.
struct ShortNumber {
    std::uint64_t high = 0,
                  low = 0; ///< the digits as JoinDigits takes them, the last ones in `low`
    std::size_t decimals = 0;
    bool negative = false;
};

/// False when the field is anything else: eight bytes in a few steps without a branch on any of
/// them.
inline bool FindShortNumber(ByteSpan frame, FieldRange field, ShortNumber& number) {
    if (std::endian::native != std::endian::little || field.begin == field.end ||
        field.end < 2 * WordSize)
        return false;
    number.negative = frame[field.begin] == '-';
    const std::size_t size = field.end - field.begin - (number.negative ? 1 : 0);
    if (size - 1 >= MostDigits)
        return false;
    const std::uint8_t* const end = frame.data() + field.end;
    number.low = LastBytes(end, std::min(size, WordSize));
    const std::uint64_t noDigits = NoDigits(number.low);
    if (size <= WordSize)
        return noDigits == 0 || (size > 1 && TakePoint(number.low, noDigits, number.decimals));
    number.high = LastBytes(end - WordSize, size - WordSize);
    const std::uint64_t noHighDigits = NoDigits(number.high);
    if (noHighDigits != 0) {
        if (noDigits != 0 || !TakePoint(number.high, noHighDigits, number.decimals))
            return false;
        number.decimals += WordSize;
    } else if (noDigits != 0) {
        if (!TakePoint(number.low, noDigits, number.decimals))
            return false;
        number.low |= number.high >> 56;
        number.high <<= 8;
    }
    return true;
}

} // namespace

ConversionStatus ReadAsciiInteger(ByteSpan field, std::int32_t& value) {
    // Nine digits cannot overflow; any byte that is not a digit takes the careful way.
    if (field.empty() || field.size() > 9)
        return ReadAnyInteger(field, value);
    std::int32_t plain = 0;
    for (std::uint8_t byte : field) {
        if (static_cast<unsigned>(byte - '0') >= 10)
            return ReadAnyInteger(field, value);
        plain = plain * 10 + (byte - '0');
    }
    value = plain;
    return ConversionStatus::Good;
}

ConversionStatus ReadAsciiFloat(ByteSpan field, double& value) {
    double number = 0.0;
    if (!ReadPlainFloat(field, number)) {
        const std::optional<double> any = LeadingNumber(AsText(field));
        if (!any)
            return ConversionStatus::NoNumber;
        number = *any;
    }
    if (!std::isfinite(number))
        return ConversionStatus::NotFinite;
    value = number;
    return ConversionStatus::Good;
}

ConversionStatus ReadAsciiFloat(ByteSpan frame, FieldRange field, double& value) {
    ShortNumber number;
    if (!FindShortNumber(frame, field, number))
        return ReadAsciiFloat(frame.subspan(field.begin, field.end - field.begin), value);
    std::uint64_t mantissa = JoinDigits(number.low);
    if (number.high != 0)
        mantissa += JoinDigits(number.high) * 100000000;
    const double magnitude =
        static_cast<double>(static_cast<std::int64_t>(mantissa)) / PowersOfTen[number.decimals];
    value = number.negative ? -magnitude : magnitude;
    return ConversionStatus::Good;
}

bool IsShortAsciiFloat(ByteSpan frame, FieldRange field) {
    ShortNumber number;
    return FindShortNumber(frame, field, number) &&
           field.end - field.begin <= ShortAsciiFloatLength;
}

} // namespace qor
