// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/TempFolder.h"
#include "platform/SystemText.h"
#include "views/PickedFile.h"
#include "views/PortList.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

PortFound Port(PortAccess access) {
    return {.name = "/dev/serial/by-id/usb-FTDI_A5",
            .device = "ttyUSB0",
            .maker = "FTDI",
            .detail = "A5",
            .access = std::move(access)};
}

TEST(PortList, SaysWhyAPortCannotBeHadAndWhatToDo) {
    const struct {
        PortAccess access;
        Sign sign;
        const char *state, *why, *command;
    } cases[] = {
        {{}, Sign::Ok, "free", "", ""},
        {{.state = PortState::Missing}, Sign::Off, "not there", "There is no port ttyUSB0.", ""},
        {{.state = PortState::NoPort},
         Sign::Off,
         "no serial port",
         "ttyUSB0 is no serial port.",
         ""},
        {{.state = PortState::NotAllowed, .group = "dialout"},
         Sign::Warning,
         "not allowed: group dialout",
         "You may not open ttyUSB0: it belongs to group dialout.",
         "sudo usermod -aG dialout $USER"},
        {{.state = PortState::NotAllowed, .group = "dialout", .groupAtNextLogin = true},
         Sign::Warning,
         "not allowed: group dialout",
         "You may not open ttyUSB0 yet: you are in group dialout from your next login on.",
         ""},
        {{.state = PortState::NotAllowed},
         Sign::Warning,
         "not allowed",
         "You may not open ttyUSB0. Ask who looks after this computer.",
         ""},
        {{.state = PortState::InUse, .holder = "gpsd", .pid = 812},
         Sign::Warning,
         "in use by gpsd (812)",
         "ttyUSB0 is in use by gpsd (812). Stop it or choose another port.",
         ""},
        {{.state = PortState::InUse},
         Sign::Warning,
         "in use by another program",
         "ttyUSB0 is in use by another program. Stop it or choose another port.",
         ""},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.state);
        const PortFound port = Port(one.access);
        EXPECT_EQ(StateOf(port), one.state);
        EXPECT_EQ(SignOf(port), one.sign);
        EXPECT_EQ(WhyNot(port), one.why);
        EXPECT_EQ(RemedyCommand(port), one.command);
    }
    const std::vector<std::string> there{"/dev/ttyS0", "/dev/ttyUSB1"}, none;
    const auto trouble = [&](PortAccess access, const std::vector<std::string>& ports) {
        return PortTrouble(Port(std::move(access)), ports);
    };
    EXPECT_EQ(trouble({.state = PortState::Missing}, there),
              "There is no port ttyUSB0. There are: /dev/ttyS0, /dev/ttyUSB1.");
    EXPECT_EQ(trouble({.state = PortState::Missing}, none),
              "There is no port ttyUSB0. This computer has none now; is its adapter plugged in?");
    EXPECT_EQ(trouble({.state = PortState::NotAllowed, .group = "dialout"}, there),
              "You may not open ttyUSB0: it belongs to group dialout. Run sudo usermod -aG dialout "
              "$USER and log in again.");
    EXPECT_NE(trouble({}, there), "") << "something is wrong all the same";
    EXPECT_NE(PortTrouble("none", SystemErrorNoHandle).find("as many files"), std::string::npos);
    EXPECT_EQ(TitleOf(Port({})), "FTDI A5");
    EXPECT_EQ(TitleOf({.name = "COM1", .device = "COM1"}), "on board");
}

TEST(PortList, TheSessionsPortsAreKnownByEitherName) {
    std::vector<PortFound> ports{Port({}), {.name = "/dev/ttyS0", .device = "ttyS0"}};
    EXPECT_EQ(OnlyFree(ports), std::nullopt) << "two to choose from";
    MarkInSession(ports, std::vector<std::string>{"/dev/ttyUSB0"});
    EXPECT_EQ(StateOf(ports[0]), "in this session");
    EXPECT_EQ(OnlyFree(ports), 1U);
    ports[1].access.state = PortState::InUse;
    EXPECT_EQ(OnlyFree(ports), std::nullopt);
}

TEST(PortList, RemembersTheLineOfEachPort) {
    CMemoryProfileStore store;
    EXPECT_EQ(LastLineText(store, "COM3"), "");
    SerialResourceSettings settings;
    settings.portName = "COM3";
    settings.baudRate = 57600;
    settings.dataBits = 7;
    settings.parity = 2;
    RememberLine(store, settings);
    EXPECT_EQ(LastLineText(store, "COM3"), "57600 7E1");
    EXPECT_EQ(LastLine(store, "COM3")->portName, "COM3");
    store.WriteText("Ports", "COM3", "fast");
    EXPECT_FALSE(LastLine(store, "COM3")) << "edited by hand";
}

TEST(PickedFile, SaysWhatIsInItOrWhyNothingWouldComeOfIt) {
    const CTempFolder temp;
    const PickedFile package = PickFile(QORVIEW_SOURCE_DIR "/examples/cast.sip");
    EXPECT_EQ(package.fault, "");
    EXPECT_EQ(package.speed, "57600");
    EXPECT_TRUE(package.text.starts_with("cast.sip: QORFAL071, ")) << package.text;
    const PickedFile single = PickFile(QORVIEW_SOURCE_DIR "/examples/gps.tdf");
    EXPECT_EQ(single.text, "gps.tdf: $GPRMC");
    EXPECT_EQ(single.speed, "");
    const PickedFile broken = PickFile(temp.Put("x.sip", "PK"));
    EXPECT_NE(broken.fault, "");
    EXPECT_EQ(broken.fault.find('\n'), std::string::npos);
    EXPECT_NE(PickFile(temp.Path + "none.cal").fault, "");
    EXPECT_NE(PickFile(temp.Put("log.raw", "bytes")).fault, "");
}

} // namespace
} // namespace qor
