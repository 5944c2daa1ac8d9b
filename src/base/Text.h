// SPDX-License-Identifier: GPL-3.0-or-later
//
// Small helpers for 8-bit text: formatting, comparison without case, trimming, locale-proof
// numbers. Every layer uses them; they hold no state.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#if defined(__MINGW32__) && !defined(__clang__)
// The C++ library brings the standard's printf along; the compiler would check for Microsoft's.
#define QOR_PRINTF(formatIndex, firstArgument)                                                     \
    __attribute__((format(gnu_printf, formatIndex, firstArgument)))
#elif defined(__GNUC__)
#define QOR_PRINTF(formatIndex, firstArgument)                                                     \
    __attribute__((format(printf, formatIndex, firstArgument)))
#else
#define QOR_PRINTF(formatIndex, firstArgument)
#endif

namespace qor {

/// A count as Format's %llu takes it.
constexpr unsigned long long Printed(std::uint64_t count) {
    return count;
}

/// printf into a string of whatever length it takes.
std::string Format(const char* format, ...) QOR_PRINTF(1, 2);

/// True when the texts are equal but for the case of ASCII letters.
bool EqualsNoCase(std::string_view a, std::string_view b);

/// ASCII letters lowered; every other byte kept.
std::string ToLower(std::string_view text);

/// White space as the C locale has it: blank, TAB, LF, VT, FF, CR.
constexpr bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
constexpr bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

std::string_view TrimLeft(std::string_view text);
std::string_view Trim(std::string_view text);

/// The text as a decimal floating-point number, read locale-independently. Empty unless the whole
/// text is a number (optional sign, digits, point, exponent; no "inf", "nan" or hexadecimal). A
/// number beyond double's range gives an infinity, one too small gives 0: callers that need a
/// finite number test for it.
std::optional<double> WholeNumber(std::string_view text);

/// The number at the beginning of the text after leading white space ("12abc" gives 12), or empty
/// when there is none. Same number syntax and range behaviour as WholeNumber.
std::optional<double> LeadingNumber(std::string_view text);

/// The text as a plain decimal count: an optional "+", digits, nothing else, below 2^32.
std::optional<std::uint32_t> WholeCount(std::string_view text);

/// The fewest digits that read back to the same double.
std::string ShortestNumber(double value);

/// The number with so many decimal places (0 to 20), as printf has it in the C locale: with a
/// width "%9.2f", with zeros before it "%09.2f". Numbers too long for the width keep their length.
std::string FixedNumber(double value, int decimals, std::size_t width = 0, char fill = ' ');

/// The same for "%.4g": so many significant digits (1 to 17), as an exponent where that is shorter.
std::string GeneralNumber(double value, int digits, std::size_t width = 0);

/// Decodes "\xHH" escapes to bytes; every other character stands for itself. A malformed escape
/// makes the whole result empty.
std::string DecodeEscapes(std::string_view text);

/// Bytes as a person and DecodeEscapes read them: what is not printable ASCII as "\xHH".
std::string Printable(std::string_view bytes);

/// The words in quotes as one choice: "a", "b" or "c".
std::string QuotedChoice(std::span<const std::string_view> words);

/// A message of several lines as one line: every run of white space becomes a blank.
std::string OneLine(std::string_view message);

/// UTF-8 of 8-bit text: each byte 0x00 to 0xFF becomes the code point U+0000 to U+00FF.
std::string Utf8Of(std::string_view bytes);

/// True when the bytes are well-formed UTF-8 (no overlong forms, surrogates or code points beyond
/// U+10FFFF).
bool IsUtf8(std::string_view bytes);

/// The text behind the three bytes with which some editors begin UTF-8.
constexpr std::string_view WithoutByteOrderMark(std::string_view text) {
    text.remove_prefix(text.starts_with("\xef\xbb\xbf") ? 3 : 0);
    return text;
}

} // namespace qor
