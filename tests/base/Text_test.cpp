// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Text.h"

#include "fakes/CommaLocale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace qor {
namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

TEST(Text, NumbersAreReadWholeAndLeading) {
    const std::pair<std::string_view, double> alike[] = {
        {"+12", 12},
        {"-0.5", -0.5},
        {".5", 0.5},
        {"-.5e+1", -5},
        {"1E5", 1e5},
        {"1.", 1},
        {"1e400", Infinity},
        {"-1e400", -Infinity},
        {"0.00001e320", Infinity},
        {"123456789e-400", 0},
        {"0e999999", 0},
        {"1e99999999999999999999999", Infinity},
        {"4.9406564584124654e-324", 4.9406564584124654e-324},
        {"2.2250738585072011e-308", 2.2250738585072011e-308},
        {"1.7976931348623157e308", 1.7976931348623157e308},
    };
    for (const auto& [text, value] : alike) {
        EXPECT_EQ(WholeNumber(text), value) << text;
        EXPECT_EQ(LeadingNumber(text), value) << text;
    }
    const std::pair<std::string_view, double> begun[] = {
        {"1e", 1},   {"1e+", 1},     {"12abc", 12},   {"1,5", 1},
        {"0x10", 0}, {"1.5.2", 1.5}, {" \t\r12", 12}, {"12 ", 12},
    };
    for (const auto& [text, leading] : begun) {
        EXPECT_EQ(WholeNumber(text), std::nullopt) << text;
        EXPECT_EQ(LeadingNumber(text), leading) << text;
    }
    for (std::string_view text :
         {"", ".", "+", "-.e5", "+-5", "--5", "- 5", "e5", "inf", "-infinity", "nan", "+NAN(1)"}) {
        EXPECT_EQ(WholeNumber(text), std::nullopt) << text;
        EXPECT_EQ(LeadingNumber(text), std::nullopt) << text;
    }
}

TEST(Text, ALongRowOfZerosOrDigitsStillTellsOverflowFromUnderflow) {
    const std::string zeros(2000, '0');
    EXPECT_EQ(WholeNumber("0." + zeros + "1"), 0.0);
    EXPECT_EQ(WholeNumber("1" + zeros), Infinity);
    EXPECT_EQ(WholeNumber("1" + zeros + "e-2000"), 1.0);
    EXPECT_EQ(WholeNumber("0." + zeros + "1e2001"), 1.0);
}

TEST(Text, CountsArePlainDecimalNumbersBelowTwoToThe32) {
    const std::pair<std::string_view, std::optional<std::uint32_t>> cases[] = {
        {"0", 0u},          {"+4", 4u}, {"007", 7u}, {"4294967295", 4294967295u},
        {"4294967296", {}}, {"-1", {}}, {"+-1", {}}, {"++1", {}},
        {"", {}},           {"+", {}},  {"1.0", {}}, {"1e2", {}},
        {"0x2", {}},        {" 1", {}}, {"1 ", {}},  {"99999999999999999999999", {}},
    };
    for (const auto& [text, count] : cases)
        EXPECT_EQ(WholeCount(text), count) << text;
}

/// The same texts as printf's in the C locale, whatever the locale is.
TEST(Text, NumbersAreWrittenAsPrintfDoesInTheCLocale) {
    const double values[] = {0.0,   -0.0,     0.5,       2.5,          -2.675,    45.125, -5.25,
                             1e-7,  9999.995, 99999.5,   123456.7,     -123456.7, 1e15,   -1e22,
                             1e300, Infinity, -Infinity, std::nan(""), 4.9e-324};
    std::vector<std::string> expected, written;
    for (double value : values) {
        expected.insert(expected.end(),
                        {Format("%f", value), Format("%.2f", value), Format("%09.2f", value),
                         Format("%04.4f", value), Format("%12.3f", value), Format("%.0f", value),
                         Format("%.4g", value), Format("%12.5g", value)});
    }
    const CCommaLocale comma;
    for (double value : values) {
        written.insert(written.end(), {FixedNumber(value, 6), FixedNumber(value, 2),
                                       FixedNumber(value, 2, 9, '0'), FixedNumber(value, 4, 4, '0'),
                                       FixedNumber(value, 3, 12), FixedNumber(value, 0),
                                       GeneralNumber(value, 4), GeneralNumber(value, 5, 12)});
    }
    EXPECT_EQ(written, expected);
    EXPECT_EQ(FixedNumber(-std::nan(""), 2), "-nan")
        << "on Windows too, whose printf has no sign here";
    if (!comma.Active())
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    EXPECT_EQ(Format("%.1f", 0.5), "0,5");
    EXPECT_EQ(ShortestNumber(0.5), "0.5");
    EXPECT_EQ(WholeNumber("0.5"), 0.5);
    EXPECT_EQ(WholeNumber("0,5"), std::nullopt);
}

TEST(Text, EscapesBecomeBytesAndAMalformedOneEmptiesTheText) {
    using namespace std::string_literals;
    const std::pair<std::string_view, std::string> cases[] = {
        {"\\x0D\\x0A", "\r\n"}, {"a\\x00b", "a\0b"s}, {"\\xfF", "\xff"}, {",", ","},
        {"\\n", "\\n"},         {"\\X0D", "\\X0D"},   {"", ""},          {"\\x2C2", ",2"},
        {",\\x0", ""},          {"\\x", ""},          {"\\x+1", ""},     {"\\xG0", ""},
        {"ab\\x1Z", ""},
    };
    for (const auto& [text, bytes] : cases)
        EXPECT_EQ(DecodeEscapes(text), bytes) << text;
}

TEST(Text, ComparisonAndTrimmingKnowAsciiOnly) {
    EXPECT_TRUE(EqualsNoCase("IntTime", "INTTIME"));
    EXPECT_FALSE(EqualsNoCase("INTTIME", "INTTIME2"));
    EXPECT_FALSE(EqualsNoCase("@[`{", "`{@["));
    EXPECT_FALSE(EqualsNoCase("\xC4", "\xE4"));
    EXPECT_EQ(ToLower("Ab[Z\xC4"), "ab[z\xC4");
    EXPECT_EQ(Trim(" \t\v\f\r\na b\r\n"), "a b");
}

} // namespace
} // namespace qor
