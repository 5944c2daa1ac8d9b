// SPDX-License-Identifier: GPL-3.0-or-later
//
// The numbers of text frames. The usual notation (a few digits, perhaps a point) is read here in
// one pass; everything else goes to the general readers. Every byte is hostile.
#include "instrument/AsciiNumber.h"

#include "base/Text.h"

#include <cmath>
#include <limits>
#include <optional>

namespace qor {

namespace {

// Powers of ten that a double holds exactly.
constexpr double PowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

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
    std::ptrdiff_t digits = at - first, decimals = 0;
    if (at != end && *at == '.') {
        const std::uint8_t* const fraction = ++at;
        for (; at != end && static_cast<unsigned>(*at - '0') < 10; ++at)
            mantissa = mantissa * 10 + static_cast<unsigned>(*at - '0');
        decimals = at - fraction;
        digits += decimals;
    }
    if (digits == 0 || digits > 15 || (at != end && (*at | 0x20) == 'e'))
        return false;
    const double magnitude = static_cast<double>(mantissa) / PowersOfTen[decimals];
    value = negative ? -magnitude : magnitude;
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

} // namespace qor
