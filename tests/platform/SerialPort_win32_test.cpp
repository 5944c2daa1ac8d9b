// SPDX-License-Identifier: GPL-3.0-or-later
//
// What can be said of Windows ports without one: which names are refused, and that nothing is left
// open by a refusal. Real input is tried by tests/windows/acquisition.py.
#if defined(_WIN32)
#include "platform/File.h"
#include "platform/ReadSize_win32.h"
#include "platform/SerialPort.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(SerialPort, RefusesNamesThatAreNoPort) {
    constexpr SystemError FileNotFound = 2, InvalidName = 123, BadDevice = 1200;
    std::string file = (std::filesystem::temp_directory_path() / "qorport").string();
    ASSERT_EQ(CFile().CreateExclusive(file), FileCause::None);
    struct {
        std::string name;
        SystemError error;
    } cases[] = {
        {"COM255", FileNotFound}, {"", InvalidName}, {std::string("COM1\0", 5), InvalidName},
        {"NUL", BadDevice},       {file, BadDevice},
    };
    std::unique_ptr<CSerialPort> port = MakeSystemSerialPort();
    for (const auto& row : cases)
        EXPECT_EQ(port->Open(row.name), row.error) << row.name;
    EXPECT_EQ(RemoveFile(file), FileCause::None);
}

TEST(SerialPort, ReadOfALineThatNeverPausesEndsWhenItSaysAndBeforeThatIsTakenForSilence) {
    constexpr int Silence = 1500;
    for (const std::uint32_t rate : {110U, 300U, 600U, 1200U, 2400U, 9600U, 57600U, 921600U}) {
        const int oneByte = static_cast<int>(12 * 1000 / rate), interval = oneByte + 6;
        const int longest = LongestReadAt(rate, static_cast<std::uint32_t>(interval));
        EXPECT_GE(longest, static_cast<int>(ReadSizeAt(rate)) * oneByte + interval) << rate;
        EXPECT_LT(longest, Silence) << rate;
    }
}

} // namespace
} // namespace qor
#endif
