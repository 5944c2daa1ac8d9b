// SPDX-License-Identifier: GPL-3.0-or-later
//
// 8-bit text: formatting, comparison without case, trimming and numbers that no locale can change.
// Called from every layer and every thread; nothing here keeps state.
#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>

namespace qor {

namespace {

constexpr char LowerOf(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

/// The power of ten of the number's first significant digit, as far as its sign matters: from_chars
/// says only that a number is out of range, not at which end.
long long DecimalMagnitude(std::string_view number) {
    constexpr long long Beyond = 1'000'000'000'000'000;
    const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, exponentAt);
    const auto point = static_cast<long long>(std::min(mantissa.find('.'), mantissa.size()));
    const auto first = static_cast<long long>(mantissa.find_first_of("123456789"));

    long long exponent = 0;
    std::string_view digits = number.substr(exponentAt).substr(exponentAt < number.size() ? 1 : 0);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+'))
        digits.remove_prefix(1);
    for (char c : digits)
        exponent = std::min(exponent * 10 + (c - '0'), Beyond);
    return point - first + (negative ? -exponent : exponent);
}

/// Reads a number at the beginning of the text and sets the characters that it takes; 0 of them
/// when there is none.
double ReadNumber(std::string_view text, std::size_t& used) {
    used = 0;
    const char* const end = text.data() + text.size();
    const char* begin = text.data();
    const bool negative = begin != end && *begin == '-';
    if (begin != end && (*begin == '+' || *begin == '-'))
        ++begin;
    // from_chars would also take a second minus, "inf" and "nan".
    if (begin == end || !(IsDigit(*begin) || *begin == '.'))
        return 0.0;
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(begin, end, value);
    if (result.ec == std::errc::invalid_argument)
        return 0.0;
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view number(begin, static_cast<std::size_t>(result.ptr - begin));
        value = DecimalMagnitude(number) > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    used = static_cast<std::size_t>(result.ptr - text.data());
    return negative ? -value : value;
}

/// Blanks go before the sign, zeros behind it.
std::string Padded(std::string number, std::size_t width, char fill) {
    const std::size_t behindSign = fill == '0' && number.starts_with('-') ? 1 : 0;
    if (number.size() < width)
        number.insert(behindSign, width - number.size(), fill);
    return number;
}

} // namespace

std::string Format(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text;
    if (length > 0) {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, again);
    }
    va_end(again);
    return text;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return x == y || LowerOf(x) == LowerOf(y);
           });
}

std::string ToLower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), LowerOf);
    return lower;
}

std::string_view TrimLeft(std::string_view text) {
    while (!text.empty() && IsSpace(text.front()))
        text.remove_prefix(1);
    return text;
}

std::string_view Trim(std::string_view text) {
    text = TrimLeft(text);
    while (!text.empty() && IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}

std::optional<double> WholeNumber(std::string_view text) {
    std::size_t used = 0;
    const double value = ReadNumber(text, used);
    if (used == 0 || used != text.size())
        return std::nullopt;
    return value;
}

std::optional<double> LeadingNumber(std::string_view text) {
    std::size_t used = 0;
    const double value = ReadNumber(TrimLeft(text), used);
    if (used == 0)
        return std::nullopt;
    return value;
}

std::optional<std::uint32_t> WholeCount(std::string_view text) {
    if (text.starts_with('+'))
        text.remove_prefix(1);
    std::uint32_t count = 0;
    const char* const end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, count);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return count;
}

std::string ShortestNumber(double value) {
    char digits[32]; // the longest is "-2.2250738585072014e-308"
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    return {digits, result.ptr};
}

std::string FixedNumber(double value, int decimals, std::size_t width, char fill) {
    char digits[340]; // sign, 309 digits, point, 20 places
    const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed,
                                   std::clamp(decimals, 0, 20));
    return Padded({digits, end.ptr}, width, std::isfinite(value) ? fill : ' ');
}

std::string GeneralNumber(double value, int digits, std::size_t width) {
    char text[32]; // sign, 17 digits, point, exponent
    const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general,
                                   std::clamp(digits, 1, 17));
    return Padded({text, end.ptr}, width, ' ');
}

std::string DecodeEscapes(std::string_view text) {
    std::string bytes;
    while (!text.empty()) {
        if (!text.starts_with("\\x")) {
            bytes += text.front();
            text.remove_prefix(1);
            continue;
        }
        unsigned byte = 0;
        const std::string_view digits = text.substr(2, 2);
        const char* const end = digits.data() + digits.size();
        const std::from_chars_result result = std::from_chars(digits.data(), end, byte, 16);
        if (digits.size() != 2 || result.ec != std::errc() || result.ptr != end)
            return {};
        bytes += static_cast<char>(static_cast<unsigned char>(byte));
        text.remove_prefix(4);
    }
    return bytes;
}

std::string Printable(std::string_view bytes) {
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string text;
    for (char c : bytes) {
        if (c >= ' ' && c <= '~') {
            text += c;
            continue;
        }
        const auto byte = static_cast<std::uint8_t>(c);
        text += "\\x";
        text += Digits[byte >> 4U];
        text += Digits[byte & 15U];
    }
    return text;
}

std::string QuotedChoice(std::span<const std::string_view> words) {
    std::string all;
    for (std::size_t i = 0; i < words.size(); ++i) {
        all += i == 0 ? "" : i + 1 == words.size() ? " or " : ", ";
        all += '"' + std::string(words[i]) + '"';
    }
    return all;
}

std::string OneLine(std::string_view message) {
    std::string line;
    for (char c : message) {
        bool space = IsSpace(c);
        if (space && (line.empty() || line.back() == ' '))
            continue;
        line += space ? ' ' : c;
    }
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    return line;
}

std::string Utf8Of(std::string_view bytes) {
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0 | byte >> 6);
            text += static_cast<char>(0x80 | (byte & 0x3F));
        }
    }
    return text;
}

bool IsUtf8(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size();) {
        auto lead = static_cast<unsigned char>(bytes[i++]);
        int more = lead < 0x80                   ? 0
                   : lead >= 0xC2 && lead < 0xE0 ? 1
                   : lead >= 0xE0 && lead < 0xF0 ? 2
                   : lead >= 0xF0 && lead < 0xF5 ? 3
                                                 : -1;
        if (more < 0 || static_cast<std::size_t>(more) > bytes.size() - i)
            return false;
        std::uint32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
        for (int k = 0; k < more; ++k, ++i) {
            auto next = static_cast<unsigned char>(bytes[i]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = code << 6 | (next & 0x3Fu);
        }
        constexpr std::uint32_t least[] = {0, 0x80, 0x800, 0x10000};
        if (code < least[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
            return false;
    }
    return true;
}

} // namespace qor
