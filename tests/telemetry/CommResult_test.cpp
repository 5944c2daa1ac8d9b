// SPDX-License-Identifier: GPL-3.0-or-later
//
// The table of detail lines against the numbering of the codes.
#include "telemetry/CommResult.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(CommResult, DetailLinesStandAtTheirNumbers) {
    const struct {
        std::uint32_t code;
        const char* begin;
    } cases[] = {{0x10000001, "\tRead error:"},
                 {0x10000007, "\tCommunications status error:"},
                 {0x10000009, "\t"},
                 {0x10000014, "\t"},
                 {0x10000016, "\t"},
                 {0x10000017, "\tThe instrument has not been attached or defined.\r\n"},
                 {0x10000019, "\tThe communications resource has not been initialized.\r\n"},
                 {0x10000026, "\tThe telemetry abort code has not been reset.\r\n"},
                 {0x10000027, "\t"},
                 {0x10000028, "\tThe file resource is not open.\r\n"},
                 {0x10000031, "\tA BSI instrument must be specified with multiples of \r\n"},
                 {0x40000001, "\tThe communications resource could not be found.\r\n"},
                 {0x40000008, "\tThe specified communications resource is not a serial port.\r\n"},
                 {0, ""},
                 {0x10000008, ""},
                 {0x1000000A, ""},
                 {0x10000015, ""},
                 {0x10000020, ""},
                 {0x10000032, ""},
                 {0x40000009, ""}};
    for (const auto& c : cases) {
        std::string_view detail = CommDetail(static_cast<CommResult>(c.code));
        EXPECT_TRUE(detail.starts_with(c.begin)) << std::hex << c.code;
        EXPECT_EQ(detail.empty(), *c.begin == '\0') << std::hex << c.code;
    }
}

} // namespace
} // namespace qor
