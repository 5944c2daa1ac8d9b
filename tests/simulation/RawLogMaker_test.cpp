// SPDX-License-Identifier: GPL-3.0-or-later
//
// Raw logs made from definitions: what a reader of raw logs finds in them again.
#include "simulation/RawLogMaker.h"

#include "fakes/DefinedInstrument.h"
#include "telemetry/RawLogFormat.h"

#include <gmock/gmock.h>

namespace qor {
namespace {

constexpr FrameTime Noon{1'115'122'805, 900, 120, true, true};

TEST(RawLogMaker, EveryFrameHasItsTimeButThoseOfTheGpsAndTheHeaderNamesThese) {
    const auto profiler = DefineFixed("X 1 '' 4 BU 0 COUNT\n");
    const auto gps = DefineDelimited("FIELD NONE ',' 1 AS 0 DELIMITER\nA NONE '' V AI 0 COUNT\n");
    CRawLogMaker maker(Noon);
    maker.LeaveUntagged(*gps);
    std::vector<std::uint8_t> log = maker.HeaderBlock("a test");
    std::vector<std::string> records;
    for (ByteSpan rest = log; !rest.empty(); rest = rest.subspan(HeaderRecordSize)) {
        const auto record = ParseHeaderRecord(rest.first(HeaderRecordSize));
        ASSERT_TRUE(record);
        records.push_back(record->tag + "=" + record->value);
    }
    EXPECT_THAT(records, testing::IsSupersetOf({"COMMENT=a test", "NMEA=$TXT",
                                                "TIME-STAMP=Tue May 03 14:20:05 2005"}));

    CSimulator simulator(1, 0.0, {.noise = 3});
    simulator.Add(*profiler, {.rate = 4});
    simulator.Add(*gps, {.rate = 0}); // has no rate of its own: once a second
    std::size_t tagged = 0, plain = 0;
    for (int i = 0; i < 20; ++i) {
        const SimulatedFrame frame = simulator.Next();
        log.clear();
        maker.Append(frame, log);
        const ByteSpan tag = ByteSpan(log).subspan(3 + frame.bytes.size());
        (tag.empty() ? plain : tagged) += 1;
        ASSERT_EQ(tag.empty(), frame.instrument == gps.get());
        if (tag.empty())
            continue;
        const auto time = ParseTimeTag(tag);
        ASSERT_TRUE(time);
        EXPECT_EQ(time->seconds * 1000 + time->milliseconds,
                  (Noon.seconds + 2 * 3600) * 1000 + Noon.milliseconds +
                      std::int64_t{250} * static_cast<std::int64_t>(tagged - 1));
    }
    EXPECT_EQ(tagged, 16U);
    EXPECT_EQ(plain, 4U);
}

TEST(RawLogMaker, ADroppedFrameLeavesNoTagAndItsCounterMovesOn) {
    const auto profiler = DefineFixed("FRAME COUNTER '' 1 BU 0 COUNT\n");
    CRawLogMaker maker(Noon);
    CSimulator simulator(1, 0.0, {.drop = 1.0});
    simulator.Add(*profiler, {.rate = 10});
    std::vector<std::uint8_t> log;
    for (int i = 0; i < 3; ++i)
        maker.Append(simulator.Next(), log);
    EXPECT_TRUE(log.empty());
    simulator.SetFaults({});
    simulator.SkipTo(0.65); // 0.3 to 0.6 were not heard
    const SimulatedFrame frame = simulator.Next();
    EXPECT_EQ(frame.bytes, (std::vector<std::uint8_t>{'H', 'D', 'R', 7}));
    EXPECT_DOUBLE_EQ(frame.seconds, 0.7);
}

} // namespace
} // namespace qor
