// SPDX-License-Identifier: GPL-3.0-or-later
//
// The table of detail lines against the numbering of the codes.
#include "telemetry/CommResult.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(CommResult, DetailLinesStandAtTheirNumbers) {
    auto detail = [](std::uint32_t code) { return CommDetail(static_cast<CommResult>(code)); };
    for (std::uint32_t code : {0x10000009, 0x10000014, 0x10000016, 0x10000027})
        EXPECT_EQ(detail(code), "\t") << std::hex << code;
    for (std::uint32_t code :
         {0, 0x10000008, 0x1000000A, 0x10000015, 0x10000020, 0x10000032, 0x40000009})
        EXPECT_EQ(detail(code), "") << std::hex << code;
    EXPECT_EQ(detail(0x10000007), "\tCommunications status error:");
    EXPECT_EQ(detail(0x10000031), "\tA BSI instrument must be specified with multiples of \r\n"
                                  "\ttwo-byte data synchronization arrays, using the SPECIAL \r\n"
                                  "\tsensor definition line.\r\n");
    EXPECT_EQ(detail(0x40000008),
              "\tThe specified communications resource is not a serial port.\r\n");
}

} // namespace
} // namespace qor
