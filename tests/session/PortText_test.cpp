// SPDX-License-Identifier: GPL-3.0-or-later
//
// Ports, line formats and spans as people write them.
#include "session/PortText.h"
#include "session/SpanText.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(PortText, ANameMayHoldColonsAndIsFollowedByItsLineSettings) {
    struct {
        const char *text, *name, *line; // no line: refused
        bool baudGiven;
    } cases[] = {
        {"COM3", "COM3", "19200:8N1", false},
        {"/dev/ttyUSB0:57600", "/dev/ttyUSB0", "57600:8N1", true},
        {"p:4800:7e2", "p", "4800:7E2", true},
        {"p:4800:5S1.5", "p", "4800:5S1.5", true},
        {"usb:hub:left", "usb:hub:left", "19200:8N1", false},
        {"pci-0:14.0-usb-0:2:1.0-port0", "pci-0:14.0-usb-0:2:1.0-port0", "19200:8N1", false},
        {"usb-0:2:1.0-port0:4800:8N2", "usb-0:2:1.0-port0", "4800:8N2", true},
        {"hub:2-1", "hub:2-1", "19200:8N1", false},
        {"", nullptr, nullptr, false},
        {":9600", nullptr, nullptr, false},
        {"p:0", nullptr, nullptr, false},
        {"p:4294967296", nullptr, nullptr, false},
        {"p:-9600", nullptr, nullptr, false},
        {"p:4800:9N1", nullptr, nullptr, false},
        {"p:4800:8N1.5x", nullptr, nullptr, false},
        {"p:8N1", nullptr, nullptr, false},
    };
    for (const auto& row : cases) {
        const std::optional<PortText> port = ParsePort(row.text);
        ASSERT_EQ(port.has_value(), row.line != nullptr) << row.text;
        if (!port)
            continue;
        EXPECT_EQ(port->settings.portName, row.name);
        EXPECT_EQ(LineTextOf(port->settings), row.line);
        EXPECT_EQ(port->baudGiven, row.baudGiven);
    }
}

TEST(SpanText, OptionsAreShortAndFilesAreInFull) {
    struct {
        const char *text, *option, *file; // null: refused
    } cases[] = {
        {"90", nullptr, nullptr},
        {"90:00", "01:30:00", nullptr},
        {"00:10:00", "00:10:00", "same"},
        {"1:00:00", "01:00:00", "same"},
        {"100:00:01", "100:00:01", "same"},
        {"00:60:00", "01:00:00", nullptr},
        {"00:00:60", "00:01:00", nullptr},
        {"0:0:5", "00:00:05", nullptr},
        {"00:00:00", nullptr, nullptr},
        {"", nullptr, nullptr},
        {":05:00", nullptr, nullptr},
        {"01::00", nullptr, nullptr},
        {"0:01:00:00", nullptr, nullptr},
        {"-1:00:00", nullptr, nullptr},
        {"01:00:+5", "01:00:05", nullptr},
        {"9999999:00:00", nullptr, nullptr},
        {"1000000:00:00", nullptr, nullptr},
        {"999999:59:59", "999999:59:59", "same"},
        {"999999:60:00", nullptr, nullptr},
        {"999999h60m", nullptr, nullptr},
        {"01:00:00 ", nullptr, nullptr},
        {"10m", "00:10:00", nullptr},
        {"1h30m", "01:30:00", nullptr},
        {"45s", "00:00:45", nullptr},
        {"2H90M", "03:30:00", nullptr},
        {"1h0m5s", "01:00:05", nullptr},
        {"m", nullptr, nullptr},
        {"30m1h", nullptr, nullptr},
        {"5m5m", nullptr, nullptr},
        {"1h30", nullptr, nullptr},
        {"10x", nullptr, nullptr},
        {"-5m", nullptr, nullptr},
        {"0s", nullptr, nullptr},
        {"9999999h", nullptr, nullptr},
        {"1.5h", nullptr, nullptr},
        {"10m:00", nullptr, nullptr},
    };
    for (const auto& row : cases) {
        const std::optional<LogSpan> option = ParseSpan(row.text), file = ParseFullSpan(row.text);
        EXPECT_EQ(option ? SpanText(*option) : "", row.option ? row.option : "") << row.text;
        EXPECT_EQ(SpanFault(row.text).empty(), option.has_value()) << row.text;
        ASSERT_EQ(file.has_value(), row.file != nullptr) << row.text;
        if (file) {
            EXPECT_EQ(SpanText(*file), row.option);
        }
    }
    EXPECT_EQ(SpanFault("10"), "Is that 10m or 00:00:10?");
    EXPECT_EQ(SpanFault("090"), "Is that 90m or 00:01:30?");
}

} // namespace
} // namespace qor
