// SPDX-License-Identifier: GPL-3.0-or-later
//
// What checks of values find in short series, and what a file of limits may say.
#include "export/QcLimits.h"

#include <gmock/gmock.h>

#include <cmath>

namespace qor {
namespace {

using testing::HasSubstr;

/// The flags of a series with a second between its values, as their digits; NaN: no value.
std::string FlagsOf(const QcRules& rules, const std::vector<double>& values) {
    CQcTests tests(rules);
    std::vector<QcFlag> flags;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::optional<double> value =
            std::isnan(values[i]) ? std::nullopt : std::optional(values[i]);
        if (i > 0)
            flags.back() = Worse(flags.back(), tests.SpikeBefore(value));
        flags.push_back(tests.Take(value, static_cast<double>(i)));
    }
    std::string text;
    for (const QcFlag flag : flags)
        text += std::to_string(static_cast<int>(flag));
    return text;
}

TEST(QcTests, FlagSeries) {
    const struct {
        QcRules rules;
        std::vector<double> values;
        const char* flags;
    } cases[] = {
        {{}, {1, NAN, 2}, "292"},
        {{.gross = QcRange{0, 10}, .likely = QcRange{2, 8}}, {-1, 0, 1, 2, 8, 10, 11}, "4331134"},
        {{.spike = QcSteps{1, 3}}, {0, 0, 2, 0, 0, 7, 0, NAN}, "21314429"},
        {{.rate = QcSteps{1, 5}}, {0, 1, 3, 9, 9, NAN, 9}, "2134192"},
        {{.flat = QcFlat{2, 4, 0.15}}, {1, 1.1, 1, 1, 1, 2, 2.2}, "2334411"},
        {{.flat = QcFlat{2, 3, 0}}, {1, NAN, 1, 1, 2}, "29341"},
        {{.warning = QcRange{20, 45}, .alarm = QcRange{45, 180}}, {20, 21, 45, 46, 180}, "13141"},
    };
    for (const auto& row : cases)
        EXPECT_EQ(FlagsOf(row.rules, row.values), row.flags);
}

TEST(QcLimits, TheMostSpecialNameCountsWhateverTheOrder) {
    QcLimits limits;
    ASSERT_EQ(ParseQcLimits("\xEF\xBB\xBFTEMP(W) gross 1 2 # water\r\n\n* gross 5 6\ntemp rate 1\n"
                            "* gap 2.5 s\nCTD gap 9\nT  (W) gross -2 40\nK Ed(490) rate 1",
                            limits),
              "");
    const std::string names[] = {"*", "TEMP", "TEMP(W)"};
    const QcRules rules = limits.RulesOf(names);
    EXPECT_EQ(rules.gross->greatest, 2);
    EXPECT_TRUE(rules.rate && !rules.rate->bad && !rules.spike);
    for (const std::string label : {"T (W)", "k ed(490)"})
        EXPECT_TRUE(limits.RulesOf({&label, 1}).gross || limits.RulesOf({&label, 1}).rate) << label;
    EXPECT_EQ(limits.GapOf("ctd"), 9);
    EXPECT_EQ(limits.GapOf("other"), 2.5);
    EXPECT_FALSE(limits.LooksAhead());
}

TEST(QcLimits, FaultsNameFileAndLine) {
    const struct {
        const char *text, *fault;
    } cases[] = {
        {"TEMP\n", "l.txt:1: give a sensor, a test"},
        {"\nTEMP groos 1 2\n", "l.txt:2: there is no test groos. Did you mean \"gross\"?"},
        {"TEMP gross 2 1", "give gross LEAST GREATEST"},
        {"TEMP gross 1", "give gross LEAST GREATEST"},
        {"TEMP gross 1 nan", "nan is no number"},
        {"TEMP gross 1 1e999", "1e999 is no number"},
        {"TEMP spike 2 1", "give spike SUSPECT [BAD]"},
        {"TEMP rate -1", "give rate SUSPECT [BAD]"},
        {"TEMP flat 1 3 0", "give flat SUSPECT BAD WITHIN"},
        {"TEMP flat 5 1e9 0", "give flat SUSPECT BAD WITHIN"},
        {"TEMP flat 5.5 6 0", "give flat SUSPECT BAD WITHIN"},
        {"* gap 0 s", "give gap SECONDS s"},
        {"* gap 5 min", "min is no number"},
        {"TEMP rate 1\ntemp RATE 2", "l.txt:2: line 1 has this test"},
        {"\x1b[2J gross\x07 1 2", "there is no test gross\\x07."},
    };
    for (const auto& row : cases) {
        QcLimits limits{.path = "l.txt"};
        EXPECT_THAT(ParseQcLimits(row.text, limits), HasSubstr(row.fault));
    }
    QcLimits limits{.path = "l.txt"};
    ASSERT_EQ(ParseQcLimits("* spike 1\nTEMP(X) rate 1\n", limits), "");
    const std::vector<std::string> there = {"TEMP", "TEMP(W)"};
    EXPECT_THAT(limits.WhyUnknown(there, {}), HasSubstr("l.txt:2: there is no sensor TEMP(X)"));
    EXPECT_TRUE(limits.LooksAhead());
}

} // namespace
} // namespace qor
