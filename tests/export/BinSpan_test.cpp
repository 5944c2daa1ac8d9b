// SPDX-License-Identifier: GPL-3.0-or-later
//
// Which bin a value lies in, what a span may be called, and what a bin says of its numbers.
#include "export/FrameBins.h"

#include "fakes/DefinedInstrument.h"

#include <gmock/gmock.h>

#include <cmath>

namespace qor {
namespace {

TEST(BinSpan, PlacesLieInBins) {
    const struct {
        const char* span;
        double place, bin, centre;
    } cases[] = {
        {"1 dbar", 0.0, 0, 0.5},    {"1dbar", -0.25, -1, -0.5},
        {" 0.5 m ", 1.5, 3, 1.75},  {"0.1 s", 1'782'000'000.3, 17'820'000'003, 1'782'000'000.35},
        {"0.07 s", 0.21, 3, 0.245}, {"5 min", 299.999, 0, 150},
        {"1 h", 3600, 1, 5400},
    };
    for (const auto& row : cases) {
        const std::optional<BinSpan> span = ReadBinSpan(row.span);
        ASSERT_TRUE(span) << row.span;
        EXPECT_EQ(span->BinOf(row.place), row.bin) << row.span;
        EXPECT_DOUBLE_EQ(span->Centre(row.bin), row.centre) << row.span;
    }
    for (const char* wrong : {"", "1", "m", "0 m", "-1 m", "nan s", "inf m", "1e400 m", "0x1 m",
                              "1 furlong", "0.005 s", "1 dbar 2 m", "1e9 s"})
        EXPECT_FALSE(ReadBinSpan(wrong)) << wrong;
}

TEST(BinNumbers, KeepTheirDigitsFarFromZero) {
    CBinNumbers numbers;
    EXPECT_FALSE(numbers.Mean());
    numbers.Add(1e9 + 4);
    EXPECT_EQ(numbers.Mean(), 1e9 + 4);
    EXPECT_FALSE(numbers.Deviation());
    for (const double value : {7.0, 13.0, 16.0})
        numbers.Add(1e9 + value);
    EXPECT_DOUBLE_EQ(*numbers.Mean(), 1e9 + 10);
    EXPECT_DOUBLE_EQ(*numbers.Deviation(), std::sqrt(30.0));
    EXPECT_EQ(numbers.Count(), 4U);
}

TEST(FrameBins, HaveAllTheirColumnsWhenTheyAreFull) {
    const auto definition = DefineFixed("TEMP NONE 'C' 1 BU 0 COUNT\n");
    CLiveInstrument live(*definition);
    CFrameData frame;
    frame.Bytes.assign({'H', 'D', 'R', 7});
    live.Take(frame);
    CFrameBins bins({}, {&live}, false, 4);
    const auto take = [&](double depth) { return bins.Take({live, {}, {}, depth}, {}); };
    EXPECT_TRUE(take(0.5) && take(1.5));
    EXPECT_FALSE(take(2.5));
    EXPECT_FALSE(take(2.5));
    EXPECT_TRUE(take(1.6));
    ASSERT_EQ(bins.Bins().size(), 2U);
    for (const auto& [number, bin] : bins.Bins())
        EXPECT_EQ(bin.columns.at(0).Mean(), 7.0);
}

} // namespace
} // namespace qor
