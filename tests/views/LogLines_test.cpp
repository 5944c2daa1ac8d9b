// SPDX-License-Identifier: GPL-3.0-or-later
//
// The lines of a running log, from figures that are made up.
#include "views/LogLines.h"
#include "views/SpaceWarning.h"

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

TEST(LogLines, TheLogSaysWhereItsBytesGo) {
    LogStatus log;
    EXPECT_EQ(LogLine(log, 3600.0 * 30, 99), "");
    log.loggingActive = log.logOpen = true;
    log.logFilePath = "/data/cast.raw";
    log.fileSize = 2'340'000;
    log.waitingBytes = 1'200'000;
    log.waitingCapacity = 64'000'000;
    const std::string waits = "1.2 MB of 64.0 MB wait in memory";
    EXPECT_EQ(LogLine(log, {}, 99), "log: cast.raw 2.3 MB");
    EXPECT_EQ(LogLine(log, 3600.0 * 30, 99), "log: cast.raw 2.3 MB, 30 h left");
    EXPECT_EQ(LogLine(log, {}, 9), "log: cast");
    log.stalledMilliseconds = 7300;
    EXPECT_EQ(LogLine(log, {}, 99), "log: disk has taken nothing for 7 s, " + waits);
    log.runUnstored = 3;
    log.recovering = true;
    EXPECT_EQ(LogLine(log, {}, 99),
              "log: NO FILE, " + waits + ", 3 LOST (received and not stored)");
    log.runFrames = 12;
    EXPECT_EQ(LogSummary(log, 2, 120.0), "logs: 12 frames in 2 files, 3 received and not stored; "
                                         "at this rate the disk has 2 min left\n");
    log.runGone = 2;
    EXPECT_EQ(LogLine(log, {}, 199), "log: NO FILE, " + waits +
                                         ", 3 LOST (received and not stored), 2 LOST (file deleted "
                                         "or cut)");
}

TEST(SpaceWarning, SaysOnceThatTheDiskFillsUp) {
    constexpr double hour = 3600.0;
    const struct {
        std::int64_t at; // seconds
        std::optional<double> hours;
        std::optional<EventKind> said;
    } looks[] = {
        {0, {}, {}},
        {1, 20.0, {}},
        {3, 30.0, {}}, // a burst was no rate
        {4, 20.0, {}},
        {6, {}, {}},
        {7, 20.0, EventKind::SpaceLow},
        {60, 20.0, {}},
        {61, 30.0, {}},
        {65, 30.0, {}}, // wavering about the limit
        {66, 0.5, {}},
        {70, 0.5, EventKind::SpaceShort},
        {71, 1.5, {}},
        {75, 1.5, {}},
        {76, 500.0, {}},
        {80, 500.0, {}}, // there is room again
        {81, 0.9, {}},
        {85, 0.9, EventKind::SpaceShort},
    };
    CSpaceWarning warning;
    for (const auto& look : looks) {
        const auto left = look.hours ? std::optional(*look.hours * hour) : std::nullopt;
        const std::optional<Event> said = warning.Look(left, look.at * 1000, "/data");
        EXPECT_EQ(said ? std::optional(said->kind) : std::nullopt, look.said) << look.at;
    }
}

} // namespace
} // namespace qor
