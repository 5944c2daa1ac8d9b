// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/NearName.h"

#include <gtest/gtest.h>
#include <vector>

namespace qor {
namespace {

TEST(NearName, OffersWhatIsNearElseWhatThereIs) {
    const std::vector<std::string> ships = {"QORPRO042", "QORRAD007", "$GPRMC"};
    const std::vector<std::string> words = {"gps", "dut"}, same = {"AB1", "AB2"};
    const std::vector<std::string> none, hostile = {std::string(100'000, 'a')};
    const std::string all = R"( There is "QORPRO042", "QORRAD007" or "$GPRMC".)";
    const struct {
        std::string typed;
        const std::vector<std::string>& names;
        std::string advice;
    } cases[] = {
        {"QORPR042", ships, R"( Did you mean "QORPRO042"?)"},
        {"QORPOR042", ships, R"( Did you mean "QORPRO042"?)"},
        {"qorrad007", ships, R"( Did you mean "QORRAD007"?)"},
        {"QORPRO", ships, R"( Did you mean "QORPRO042"?)"},
        {"GPRMC", ships, R"( Did you mean "$GPRMC"?)"},
        {"PROFILER", ships, all},
        {"", ships, all},
        {"gsp", words, R"( Did you mean "gps"?)"},
        {"gxx", words, R"( There is "gps" or "dut".)"},
        {"AB3", same, R"( Did you mean "AB1" or "AB2"?)"},
        {"ab", same, R"( Did you mean "AB1" or "AB2"?)"},
        {"QORRA", ships, R"( Did you mean "QORRAD007"?)"},
        {"QO", ships, all},
        {"x", {std::vector<std::string>(3, "WORDY")}, R"( There is "WORDY".)"},
        {"b", {std::vector<std::string>{"a"}}, R"( There is "a".)"},
        {"x", none, ""},
        {std::string(100'000, 'a'), ships, all},
        {std::string(60, 'a'), hostile, ""},
    };
    for (const auto& row : cases)
        EXPECT_EQ(NameAdvice(row.typed, row.names), row.advice) << row.typed.substr(0, 20);
}

} // namespace
} // namespace qor
