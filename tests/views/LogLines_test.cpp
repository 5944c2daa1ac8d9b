// SPDX-License-Identifier: GPL-3.0-or-later
//
// The lines of a running log, from figures that are made up.
#include "views/LogLines.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

ResourceStatus PortOf(const std::string& name, std::uint64_t bytes = 100) {
    ResourceStatus port;
    port.name = name;
    port.figures.connected = true;
    port.figures.bytesReceived = bytes;
    return port;
}

TEST(LogLines, AStatusLineKeepsTheEndOfALongName) {
    const ResourceStatus port = PortOf("/dev/serial/by-id/usb-Maker_Adapter_A50285BI-if00-port0");
    const struct {
        std::size_t room;
        const char* begin;
    } cases[] = {
        {79, "...r_Adapter_A50285BI-if00-port0 reading 0 frames"},
        {99, "serial/by-id/usb-Maker_Adapter_A50285BI-if00-port0 reading 0"},
        {30, "...f00-port0 reading 0 frames"},
    };
    for (const auto& one : cases) {
        const std::string line = StatusLine(port, 0.0, one.room);
        EXPECT_LE(line.size(), one.room);
        EXPECT_EQ(line.substr(0, std::string(one.begin).size()), one.begin) << one.room;
    }
    EXPECT_EQ(StatusLine(PortOf("/dev/ttyUSB0"), 0.0, 79).substr(0, 12), "/dev/ttyUSB0");
}

TEST(LogLines, InstrumentsWithoutAFrameAreNamedUnlessNobodyLookedForThem) {
    SessionSnapshot session;
    session.resources = {PortOf("COM1"), PortOf("COM2", 0), PortOf("cast.raw")};
    session.resources[0].instruments = {
        {.name = "SENT", .frames = 1}, {.name = "SILENT"}, {.name = "OFF", .acquired = false}};
    session.resources[1].instruments = {{.name = "UNPLUGGED"}};
    session.resources[2].isFile = true;
    session.resources[2].instruments = {{.name = "PLAYED"}};
    const std::vector<std::string> lines = SilentLines(session);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(lines[0].starts_with("SILENT on COM1: no frame came; the port gave 100 bytes."));
    EXPECT_TRUE(lines[1].starts_with("UNPLUGGED on COM2: no frame came, and no byte"));
    EXPECT_NE(SummaryLines(session).find("COM1: 0 of 100 bytes discarded\n"), std::string::npos);
}

} // namespace
} // namespace qor
