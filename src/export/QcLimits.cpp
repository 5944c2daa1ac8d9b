// SPDX-License-Identifier: GPL-3.0-or-later
//
// The reading of limits. See QcLimits.h.
#include "export/QcLimits.h"

#include "base/NearName.h"
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/WholeFile.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qor {

namespace {

constexpr std::size_t LargestFile = 1 << 20;
constexpr std::size_t MostRules = 1000;
constexpr double MostAlike = 10000; ///< values that the flat line test looks back at

/// What stands behind the name and the test.
struct TestRow {
    std::string_view word;
    QcTest test;
    std::size_t least, most; ///< numbers
    std::string_view form;
    bool (*right)(const std::vector<double>& numbers);
};

bool IsRange(const std::vector<double>& numbers) {
    return numbers[0] < numbers[1];
}
bool AreSteps(const std::vector<double>& numbers) {
    return numbers[0] >= 0.0 && (numbers.size() < 2 || numbers[1] >= numbers[0]);
}
bool IsFlat(const std::vector<double>& numbers) {
    const auto isCount = [](double n) { return n >= 2.0 && n <= MostAlike && n == std::floor(n); };
    return isCount(numbers[0]) && isCount(numbers[1]) && numbers[0] <= numbers[1] &&
           numbers[2] >= 0.0;
}
bool IsGap(const std::vector<double>& numbers) {
    return numbers[0] > 0.0;
}

constexpr TestRow Tests[] = {
    {"gross", QcTest::Gross, 2, 2, "gross LEAST GREATEST, the lesser one first", IsRange},
    {"suspect", QcTest::Suspect, 2, 2, "suspect LEAST GREATEST, the lesser one first", IsRange},
    {"warning", QcTest::Warning, 2, 2, "warning LEAST GREATEST, the lesser one first", IsRange},
    {"alarm", QcTest::Alarm, 2, 2, "alarm LEAST GREATEST, the lesser one first", IsRange},
    {"spike", QcTest::Spike, 1, 2, "spike SUSPECT [BAD], BAD no less than SUSPECT", AreSteps},
    {"rate", QcTest::Rate, 1, 2, "rate SUSPECT [BAD] a second, BAD no less than SUSPECT", AreSteps},
    {"flat", QcTest::Flat, 3, 3,
     "flat SUSPECT BAD WITHIN, whole counts from 2 to 10000 and a difference", IsFlat},
    {"gap", QcTest::Gap, 1, 1, "gap SECONDS s, more than 0", IsGap},
};

std::vector<std::string> WordsOf(std::string_view line) {
    std::vector<std::string> words(1);
    for (const char c : line.substr(0, line.find('#')))
        if (c != ' ' && c != '\t')
            words.back() += c;
        else if (!words.back().empty())
            words.emplace_back();
    if (words.back().empty())
        words.pop_back();
    return words;
}

const TestRow* RowOf(std::string_view word) {
    const auto* row = std::ranges::find_if(
        Tests, [&](const TestRow& one) { return EqualsNoCase(one.word, word); });
    return row == std::end(Tests) ? nullptr : row;
}

/// What is wrong with the words; then `rule` is not to be used.
std::string ReadRule(std::vector<std::string> words, QcRule& rule) {
    std::size_t at = 1; // of the test, which ends the name: a product's label may have blanks
    while (at < words.size() && !RowOf(words[at]))
        ++at;
    if (at >= words.size()) {
        std::vector<std::string_view> tests;
        for (const TestRow& one : Tests)
            tests.push_back(one.word);
        return words.size() < 2
                   ? "give a sensor, a test and its limits, as in TEMP gross -2 40"
                   : "there is no test " + Printable(words[1]) + "." + NameAdvice(words[1], tests);
    }
    const TestRow* const row = RowOf(words[at]);
    if (row->test == QcTest::Gap && words.back() == "s")
        words.pop_back();
    rule.name = words[0];
    for (std::size_t i = 1; i < at; ++i)
        rule.name += " " + words[i];
    rule.test = row->test;
    for (std::size_t i = at + 1; i < words.size(); ++i) {
        const std::optional<double> number = WholeNumber(words[i]);
        if (!number || !std::isfinite(*number))
            return Printable(words[i]) + " is no number; give " + std::string(row->form);
        rule.numbers.push_back(*number);
    }
    const std::size_t count = rule.numbers.size();
    return count >= row->least && count <= row->most && row->right(rule.numbers)
               ? std::string()
               : "give " + std::string(row->form);
}

void Apply(const QcRule& rule, QcRules& rules) {
    const std::vector<double>& numbers = rule.numbers;
    const auto steps = [&] {
        return QcSteps{numbers[0], numbers.size() > 1 ? std::optional(numbers[1]) : std::nullopt};
    };
    switch (rule.test) {
    case QcTest::Gross:
        rules.gross = {numbers[0], numbers[1]};
        break;
    case QcTest::Suspect:
        rules.likely = {numbers[0], numbers[1]};
        break;
    case QcTest::Warning:
        rules.warning = {numbers[0], numbers[1]};
        break;
    case QcTest::Alarm:
        rules.alarm = {numbers[0], numbers[1]};
        break;
    case QcTest::Spike:
        rules.spike = steps();
        break;
    case QcTest::Rate:
        rules.rate = steps();
        break;
    case QcTest::Flat:
        rules.flat = {static_cast<std::size_t>(numbers[0]), static_cast<std::size_t>(numbers[1]),
                      numbers[2]};
        break;
    case QcTest::Gap:
        break; // of frames, not of values
    }
}

bool IsAmong(const std::string& name, std::span<const std::string> names) {
    return std::ranges::any_of(names,
                               [&](const std::string& one) { return EqualsNoCase(one, name); });
}

} // namespace

QcRules QcLimits::RulesOf(std::span<const std::string> names, QcRules found) const {
    for (const std::string& name : names)
        for (const QcRule& rule : rules)
            if (EqualsNoCase(rule.name, name))
                Apply(rule, found);
    return found;
}

std::optional<double> QcLimits::GapOf(const std::string& instrument) const {
    std::optional<double> seconds;
    for (const std::string_view name : {EveryValue, std::string_view(instrument)})
        for (const QcRule& rule : rules)
            if (rule.test == QcTest::Gap && EqualsNoCase(rule.name, name))
                seconds = rule.numbers[0];
    return seconds;
}

bool QcLimits::LooksAhead() const {
    return std::ranges::any_of(rules,
                               [](const QcRule& rule) { return rule.test == QcTest::Spike; });
}

std::string QcLimits::WhyUnknown(std::span<const std::string> values,
                                 std::span<const std::string> instruments) const {
    for (const QcRule& rule : rules) {
        const bool gap = rule.test == QcTest::Gap;
        const std::span<const std::string> names = gap ? instruments : values;
        if (rule.name == EveryValue || IsAmong(rule.name, names))
            continue;
        const std::vector<std::string_view> known(names.begin(), names.end());
        return path + ":" + std::to_string(rule.line) + ": there is no " +
               (gap ? "instrument " : "sensor ") + Printable(rule.name) + " to check." +
               NameAdvice(rule.name, known);
    }
    return {};
}

std::string ParseQcLimits(std::string_view text, QcLimits& limits) {
    text = WithoutByteOrderMark(text);
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string_view line = text.substr(at, end - at);
        at = end + 1;
        ++number;
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        const std::vector<std::string> words = WordsOf(line);
        if (words.empty())
            continue;
        const std::string place = limits.path + ":" + std::to_string(number) + ": ";
        QcRule rule{.name = {}, .line = number};
        if (const std::string wrong = ReadRule(words, rule); !wrong.empty())
            return place + wrong + (wrong.ends_with('.') || wrong.ends_with('?') ? "" : ".");
        for (const QcRule& earlier : limits.rules)
            if (earlier.test == rule.test && EqualsNoCase(earlier.name, rule.name))
                return place + "line " + std::to_string(earlier.line) +
                       " has this test of this sensor already; leave out one of them.";
        if (limits.rules.size() == MostRules)
            return place + "more than " + std::to_string(MostRules) + " rules; leave some out.";
        limits.rules.push_back(std::move(rule));
    }
    return {};
}

std::string ReadQcLimits(const std::string& path, QcLimits& limits) {
    limits.path = path;
    std::string text;
    if (const FileCause cause = ReadWholeFile(path, LargestFile, text); cause != FileCause::None)
        return path + ": cannot be read. " + std::string(GetFileErrorText(cause));
    return ParseQcLimits(text, limits);
}

} // namespace qor
