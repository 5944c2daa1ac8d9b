// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Calibration.h"
#include "instrument/FieldText.h"

#include "fakes/CommaLocale.h"
#include "fakes/DefinedInstrument.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace qor;
using namespace std::string_literals;

namespace {

constexpr auto Good = ConversionStatus::Good;
constexpr auto Dry = false;
constexpr auto Wet = true;

/// A sensor's definition lines, what stands behind "HDR" in the frame, and what comes of it: the
/// last sensor of the lines is the tested one.
struct Case {
    std::string lines, body;
    ConversionStatus status;
    double value = 0.0;
    bool immersed = Dry;
};

void ExpectValue(const Case& c) {
    SCOPED_TRACE(c.lines + testing::PrintToString(c.body));
    const auto instrument = DefineFixed(c.lines);
    const std::string frame = "HDR" + c.body;
    double value = -99.0;
    EXPECT_EQ(CalibratedValue(instrument->Sensors().back(), AsBytes(frame), c.immersed, value),
              c.status);
    EXPECT_EQ(value, c.status == Good ? c.value : -99.0);
}

std::string Count(const std::string& lengthAndType) {
    return "X NONE '' " + lengthAndType + " 0 COUNT\n";
}

TEST(Calibration, RawValuesFollowTheirDataType) {
    constexpr auto NoNumber = ConversionStatus::NoNumber;
    constexpr auto NotFinite = ConversionStatus::NotFinite;
    const Case cases[] = {
        {Count("1 BU"), "\xFE", Good, 254},
        {Count("3 BU"), "\xFF\xFF\xFE", Good, 16777214},
        {Count("4 BU"), "\xFF\xFF\xFF\xFF", Good, 4294967295.0},
        {Count("2 BU"), "\x01", ConversionStatus::FrameTooShort},
        {Count("1 BS"), "\x80", Good, -128},
        {Count("3 BS"), "\x80\x00\x01"s, Good, -8388607},
        {Count("4 BS"), "\x80\x00\x00\x00"s, Good, -2147483648.0},
        {Count("4 BF"), "\xC0\x20\x00\x00"s, Good, -2.5},
        {Count("4 BF"), "\x7F\xC0\x00\x00"s, NotFinite},
        {Count("8 BD"), "\x3F\xF8\x00\x00\x00\x00\x00\x00"s, Good, 1.5},
        {Count("8 BD"), "\x7F\xF0\x00\x00\x00\x00\x00\x01"s, NotFinite},
        {Count("4 HU"), "01aF", Good, 0x1AF},
        {Count("2 HU"), "1g", NoNumber},
        {Count("4 HS"), "8123", Good, 291},
        {Count("4 HS"), "C123", Good, -291},
        {Count("4 HS"), "3FFF", Good, 0x3FFF},
        {Count("8 HS"), "7FFFFFFF", Good, -1073741823.0},
        {Count("1 HS"), "5", Good, -1},
        {Count("5 AI"), "12abc", Good, 12},
        {Count("5 AI"), "  -42", Good, -42},
        {Count("6 AI"), "\0\0\61\x80\62\0"s, Good, 12}, // 1 and 2
        {Count("4 AI"), "1\0\62\63"s, Good, 1},
        {Count("3 AI"), "- 1", NoNumber},
        {Count("3 AI"), "\0\0\0"s, NoNumber},
        {Count("10 AI"), "2147483647", NoNumber},
        {Count("11 AI"), "-2147483647", Good, -2147483647.0},
        {Count("11 AI"), "-2147483648", NoNumber},
        {Count("6 AF"), "1.25e2", Good, 125},
        {Count("5 AF"), ".5abc", Good, 0.5},
        {Count("5 AF"), "1e999", NotFinite},
        {Count("3 AF"), "nan", NoNumber},
        {Count("3 AS"), "123", ConversionStatus::WrongDataType},
    };
    for (const Case& c : cases)
        ExpectValue(c);
}

TEST(Calibration, FieldsOfNoBytesAreZeroOrHoldNoNumber) {
    for (const char* type : {"BU", "BS", "HS", "AI"}) {
        const auto instrument = DefineDelimited(Count(std::string("0 ") + type));
        double value = -99.0;
        const bool text = type[0] == 'A';
        EXPECT_EQ(CalibratedValue(*instrument->Sensor(0), AsBytes("$TXT"), Dry, value),
                  text ? ConversionStatus::NoNumber : Good);
        EXPECT_EQ(value, text ? -99.0 : 0.0) << type;
    }
}

TEST(Calibration, FitsApplyTheirCoefficientsInTheOrderWritten) {
    const std::string time = "INTTIME ES 'sec' 2 BU 1 POLYU\n0 0.001\n";
    const std::string optic1 = "X NONE '' 2 BU 2 OPTIC1\n10 0.3 1.7\n20 0.07 1.9\n";
    const std::string oneGain = "X NONE '' 1 BU 1 OPTIC1\n10 0.3 1.7\n";
    const std::string optic3 = time + "ES 400 '' 2 BU 1 OPTIC3\n100 0.0013 1.4 0.128\n";
    const Case cases[] = {
        {optic1, "\x01\x00"s, Good, (256.0 - 10) * 0.3},
        {optic1, "\x01\x01"s, Good, (256.0 - 20) * 0.07},
        {optic1, "\x01\x01"s, Good, (256.0 - 20) * 1.9 * 0.07, Wet},
        {optic1, "\x01\x03"s, ConversionStatus::GainOutOfRange},
        {oneGain, "\x09", ConversionStatus::GainOutOfRange}, // just behind the last line
        {"X NONE '' 1 BS 4 OPTIC1\n0 1 1\n0 10 1\n0 100 1\n0 1000 1\n", "\xFB", Good, -8000},
        {"X NONE '' 2 BS 1 OPTIC2\n-3 0.1 1.3\n", "\xFF\xFF", Good, (-1.0 - -3) * 1.3 * 0.1, Wet},
        {optic3, "\x00\x40\x01\x00"s, Good, (256.0 - 100) * (0.128 / (64 * 0.001)) * 1.4 * 0.0013,
         Wet},
        {optic3, "\x00\x00\x01\x00"s, ConversionStatus::NotFinite}, // no time at all
        {"X NONE '' 1 BU 1 POLYU\n1 0.1 0.01 0.001\n", "\x07", Good,
         1 + 0.1 * 7 + 0.01 * 49 + 0.001 * 343},
        {"X NONE '' 1 BU 1 POLYF\n0.7 3 -1.1\n", "\x07", Good, 0.7 * (7.0 - 3) * (7 - -1.1)},
        {"X NONE '' 8 BD 1 POLYU\n0 1 1\n", "\x7F\xE0\x00\x00\x00\x00\x00\x00"s,
         ConversionStatus::NotFinite},
        {"X NONE '' 4 BF 1 POLYU\n5\n", "\x7F\xC0\x00\x00"s, ConversionStatus::NotFinite},
    };
    for (const Case& c : cases)
        ExpectValue(c);
}

TEST(Calibration, ExtractionFailsBeforeTheFitDoes) {
    const std::string badTime = "INTTIME ES 'sec' 2 AI 1 POLYU\n0 1\n"
                                "ES 400 '' 2 AI 1 OPTIC3\n0 1 1 1\n";
    const Case cases[] = {
        {"X NONE '' 2 BU 0 NONE\n", "ab", ConversionStatus::NotUsable},
        {"X NONE '' 2 BU 0 NONE\n", "a", ConversionStatus::FrameTooShort},
        {"X NONE '' 2 AI 0 NONE\n", "ab", ConversionStatus::NoNumber},
        {"X NONE '' 6 AI 0 DDMMYY\n", "010203", ConversionStatus::NotUsable},
        {badTime, "x 5 ", ConversionStatus::NoNumber}, // the integration time's status
        {badTime, "x 5", ConversionStatus::FrameTooShort},
    };
    for (const Case& c : cases)
        ExpectValue(c);
    double value = 0.0;
    const auto instrument = DefineFixed(Count("1 BU"));
    EXPECT_EQ(CalibratedValue(*instrument->Sensor(0), {}, Dry, value),
              ConversionStatus::MissingArgument);
}

TEST(Calibration, AnIntegrationTimeMayNeedOneItself) {
    ExpectValue({"INTTIME INTTIME 'sec' 1 BU 1 POLYU\n0 0.5\n"
                 "INTTIME ES 'sec' 1 BU 1 OPTIC2\n0 2 3\n"
                 "INTTIME INTTIME 'sec' 1 BU 1 OPTIC3\n0 1 1 1\n"
                 "ES 1 '' 1 BU 1 OPTIC3\n1 10 1 12\n",
                 "\x01\x01\x01\x03", Good, (3.0 - 1) * (12.0 / (1 * 3.0 * 2)) * 1.0 * 10, Wet});
}

TEST(Calibration, TextsOfTimesAndPositions) {
    struct {
        std::string lengthTypeFit, body, text;
        ConversionStatus status = Good;
    } const cases[] = {
        {"6 AI 0 DDMMYY", "130705", "13/07/05"},
        {"6 AI 0 DDMMYY", " 10705", "01/07/05"},
        {"4 BU 0 DDMMYY", "\xFF\xFF\xFF\xFF", "42/94/95"},
        {"9 AF 0 HHMMSS", "93015.5  ", "09:30:15.50"},
        {"9 AF 0 HHMMSS", "-235959.9", "23:59:59.90"},
        {"5 AF 0 HHMMSS", "1e300", "10:00:60.00"},
        {"7 AF 0 DDMM", "-4530.5", "45 30' 30\""},
        {"8 AF 0 DDMM", "4530.999", "45 30' 60\""},
        {"5 AF 0 DDMM", "1e300", "", ConversionStatus::NotFinite},
        {"4 BU 0 TIME2", "\x40\x00\x00\x00"s, "04-01-10 13.37.04"},
        {"2 AI 0 TIME2", "-1", "69-12-31 23.59.59"},
        {"5 AF 0 TIME2", "1e300", "", ConversionStatus::NotFinite},
        {"6 AF 0 TIME2", "-9e11 ", "50-02-19 08.00.00"},
        {"4 AS 0 NONE", "ab\0c"s, "ab"},
        {"4 AS 0 COUNT", "a", "", ConversionStatus::FrameTooShort},
        {"4 AI 0 COUNT", "1234", "", ConversionStatus::NotUsable},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lengthTypeFit + " " + c.body);
        const auto instrument = DefineFixed("X NONE '' " + c.lengthTypeFit + "\n");
        const std::string frame = "HDR" + c.body;
        std::string text;
        EXPECT_EQ(ValueText(*instrument->Sensor(0), AsBytes(frame), text), c.status);
        EXPECT_EQ(text, c.text);
    }
}

TEST(FieldText, NoLocaleChangesADefinitionOrACell) {
    const CCommaLocale comma;
    if (!comma.Active())
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    struct {
        std::string line, body;
        FieldView view;
        std::string text;
    } const cases[] = {
        {"X NONE '' 2 BU 1 POLYU\n0.5 2.25\n", "\1\2", FieldView::Calibrated, "581.00"},
        {"X NONE '' 4 AF 1 POLYF\n1.5 0.25\n", "1.75", FieldView::Calibrated, "2.25"},
        {"X NONE '' 4 BF 0 COUNT\n", "\x3D\xCC\xCC\xCD", FieldView::RawCounts,
         "0.10000000149011612"},
        {"X NONE '' 9 AF 0 HHMMSS\n", "93015.5  ", FieldView::Calibrated, "09:30:15.50"},
    };
    for (const auto& c : cases) {
        const auto instrument = DefineFixed(c.line);
        const std::string frame = "HDR" + c.body;
        std::string text;
        EXPECT_EQ(FormatField(*instrument->Sensor(0), AsBytes(frame), Dry, c.view, 2, text), Good);
        EXPECT_EQ(text, c.text);
    }
}

TEST(FieldText, ShowsCalibratedRawAndHexadecimalValues) {
    struct {
        std::string line, body, calibrated, raw, hexadecimal;
    } const cases[] = {
        {"X NONE '' 2 BU 1 POLYU\n0.5 2\n", "\x0A\xFF", "5630.50", "2815", "0x0AFF"},
        {"X NONE '' 4 BF 0 COUNT\n", "\x3D\xCC\xCC\xCD", "0.10", "0.10000000149011612",
         "0x3DCCCCCD"},
        {"X NONE '' 4 HU 0 COUNT\n", "0a1B", "2587.00", "2587", "0x0A1B"},
        {"X NONE '' 3 AI 0 COUNT\n", "-12", "-12.00", "-12", "0xFFFFFFF4"},
        {"X NONE '' 4 AF 0 COUNT\n", "1.25", "1.25", "1.25", "1.25"},
        {"X NONE '' 3 AS 0 NONE\n", "abc", "abc", "abc", "abc"},
        {"X NONE '' 6 AI 0 DDMMYY\n", "010203", "01/02/03", "10203", "0x27DB"},
        {"X NONE '' 3 BU 0 NONE\n", "abc", "No numeric value", "6382179", "0x616263"},
        {"X NONE '' 2 AI 0 COUNT\n", "--", "Not a number", "Not a number", "Not a number"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        const auto instrument = DefineFixed(c.line);
        const std::string frame = "HDR" + c.body;
        const auto show = [&](FieldView view) {
            std::string text;
            const ConversionStatus status =
                FormatField(*instrument->Sensor(0), AsBytes(frame), Dry, view, 2, text);
            EXPECT_EQ(status == Good, text != ConversionStatusText(status));
            return text;
        };
        EXPECT_EQ(show(FieldView::Calibrated), c.calibrated);
        EXPECT_EQ(show(FieldView::RawCounts), c.raw);
        EXPECT_EQ(show(FieldView::HexCounts), c.hexadecimal);
    }
}

} // namespace
