// SPDX-License-Identifier: GPL-3.0-or-later
//
// The table of detail lines against the numbering of the codes.
#include "telemetry/CommResult.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(CommResult, DetailLinesStandAtTheirNumbers) {
    auto detail = [](std::uint32_t code) { return CommDetail(static_cast<CommResult>(code)); };
    for (std::uint32_t code : {0x10000009U, 0x10000014U, 0x10000016U, 0x10000027U})
        EXPECT_EQ(detail(code), "\t") << std::hex << code;
    for (std::uint32_t code :
         {0U, 0x10000008U, 0x1000000AU, 0x10000015U, 0x10000020U, 0x10000032U, 0x40000009U})
        EXPECT_EQ(detail(code), "") << std::hex << code;
    EXPECT_EQ(detail(0x10000007U), "\tCommunications status error:");
    EXPECT_EQ(detail(0x10000031U), "\tA BSI instrument must be specified with multiples of \r\n"
                                   "\ttwo-byte data synchronization arrays, using the SPECIAL \r\n"
                                   "\tsensor definition line.\r\n");
    EXPECT_EQ(detail(0x40000008U),
              "\tThe specified communications resource is not a serial port.\r\n");
}

} // namespace
} // namespace qor
