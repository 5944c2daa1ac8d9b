// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/VariableFields.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

using namespace qor;
using namespace std::string_literals;

namespace {

using Fields = std::vector<std::optional<std::string>>;

struct Cut {
    std::string frame, delimiters, terminator;
    Fields fields;
};

TEST(VariableFields, FramesAreCutAtOneDelimiterCharacterAfterTheOther) {
    const Cut cases[] = {
        {"$A,1,22,\r\n", ",,,", "\r\n", {"1", "22", ""}},
        {"$A,1;2 3*", ",; ", "*", {"1", "2", "3"}},
        {"$A,1,2\r\n", ",,,", "\r\n", {"1", "2", std::nullopt}},
        {"$A,1", ",,,", "\r\n", {"1", std::nullopt, std::nullopt}},
        {"", ",", "\r\n", {std::nullopt}},
        {"$A,1,2", ",", "\r\n", {"1,2"}},            // only as many cuts as delimiters
        {"A,B,1,2\r\n", ",,", "\r\n", {"B", "1,2"}}, // a delimiter in the header cuts too
        {"$A,\0,\xFF\n"s, ",,", "\n", {"\0"s, "\xFF"}},
        {"$A,1\rx,2\r\n", ",,", "\r\n", {"1\rx", "2"}}, // the terminator ends the last field only
        {"$A,1\n2", ",", "", {"1\n2"}},
        {"$A,1;2:3/4|5*", ",;:/|", "*", {"1", "2", "3", "4", "5"}}, // more than a vector looks for
        {std::string(63, 'x') + ",1;" + std::string(70, 'y') + ",\r\n",
         ",;,",
         "\r\n",
         {"1", std::string(70, 'y'), ""}},
    };
    for (const Cut& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.frame));
        std::vector<std::size_t> cuts(c.delimiters.size() + 1);
        const std::size_t count =
            CFieldCutter(c.delimiters, c.terminator).Cut(AsBytes(c.frame), cuts.data());
        Fields all, single;
        for (std::size_t k = 0; k < c.delimiters.size(); ++k) {
            const auto text = [&](FieldRange r) {
                return c.frame.substr(r.begin, r.end - r.begin);
            };
            const FieldRange range = CFieldCutter::Field(cuts.data(), k);
            all.push_back(k < count ? std::optional(text(range)) : std::nullopt);
            FieldRange one;
            const bool found = CutField(AsBytes(c.frame), c.delimiters, c.terminator, k, one);
            single.push_back(found ? std::optional(text(one)) : std::nullopt);
        }
        EXPECT_EQ(all, c.fields);
        EXPECT_EQ(single, c.fields);
    }
}

} // namespace
