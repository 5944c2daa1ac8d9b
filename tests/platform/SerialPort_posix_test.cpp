// SPDX-License-Identifier: GPL-3.0-or-later
//
// The serial port against a pseudo-terminal of this system: its far end plays the instrument.
#if !defined(_WIN32)
#include "platform/SerialPort.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace qor {
namespace {

class APort : public testing::Test {
  protected:
    APort() {
        Instrument = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
        ::grantpt(Instrument);
        ::unlockpt(Instrument);
        Name = ::ptsname(Instrument);
        // As a terminal usually is: with echo and lines, which the port must do away with.
        Keeper = ::open(Name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~APort() override {
        ::close(Keeper);
        ::close(Instrument);
    }
    void Send(std::string_view bytes) {
        ASSERT_EQ(::write(Instrument, bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    SystemError OpenConfigured() {
        for (SystemError error :
             {Port->Open(Name), Port->SaveTimeouts(), Port->ReadSettings(),
              Port->WriteSettings({250000, 8, 0, 0}), Port->SetReadInterval(6),
              Port->SetQueues(1024, 0), Port->SetEventMask(0xC0), Port->CreateInput()})
            if (error != 0)
                return error;
        return 0;
    }
    /// All bytes until a wait brings none.
    std::string Receive() {
        std::string received;
        std::size_t got = 0;
        for (;;) {
            IssueResult issued = Port->IssueRead(Buffer, got);
            if (issued == IssueResult::Pending) {
                if (Port->Wait(50) != WaitResult::ReadDone)
                    return received;
                EXPECT_EQ(Port->CollectRead(got), 0u);
            }
            received.append(AsText({Buffer, got}));
        }
    }

    int Instrument = -1, Keeper = -1;
    std::string Name;
    std::unique_ptr<CSerialPort> Port = MakeSystemSerialPort();
    std::uint8_t Buffer[16];
};

TEST_F(APort, BytesArriveUnchangedInReadsOfAnySize) {
    ASSERT_EQ(OpenConfigured(), 0u);
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    Send(all);
    EXPECT_EQ(Receive(), all);
    Send("0123456789abcdef"); // exactly one buffer
    EXPECT_EQ(Receive(), "0123456789abcdef");
}

TEST_F(APort, ReadReturnsAsSoonAsBytesAreThere) {
    ASSERT_EQ(OpenConfigured(), 0u);
    std::size_t got = 0;
    std::uint32_t mask = 0;
    EXPECT_EQ(Port->IssueRead(Buffer, got), IssueResult::Pending);
    EXPECT_EQ(Port->IssueStatusWait(mask), IssueResult::Pending);
    EXPECT_EQ(Port->Wait(0), WaitResult::TimeOut);
    Send("x");
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Port->Wait(10'000), WaitResult::ReadDone);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(Port->CollectRead(got), 0u);
    EXPECT_EQ(got, 1u);
}

TEST_F(APort, WaitingTakesNoProcessorTime) {
    ASSERT_EQ(OpenConfigured(), 0u);
    std::size_t got = 0;
    ASSERT_EQ(Port->IssueRead(Buffer, got), IssueResult::Pending);
    rusage before{}, after{};
    ::getrusage(RUSAGE_THREAD, &before);
    EXPECT_EQ(Port->Wait(200), WaitResult::TimeOut);
    ::getrusage(RUSAGE_THREAD, &after);
    auto micros = [](const timeval& time) { return time.tv_sec * 1'000'000 + time.tv_usec; };
    EXPECT_LT(micros(after.ru_utime) + micros(after.ru_stime) - micros(before.ru_utime) -
                  micros(before.ru_stime),
              20'000);
}

TEST_F(APort, WhatIsNoFreeSerialDeviceIsRefused) {
    for (const auto& [name, error] : {std::pair(std::string("/dev/null"), ENOTTY),
                                      {testing::TempDir(), ENOTTY},
                                      {"/etc/passwd", ENOTTY},
                                      {"/dev/none", ENOENT},
                                      {"", ENOENT}})
        EXPECT_EQ(Port->Open(name), static_cast<SystemError>(error)) << name;
}

TEST_F(APort, CharacterFormatsThatNoDriverHasAreRefused) {
    ASSERT_EQ(Port->Open(Name), 0u);
    ASSERT_EQ(Port->ReadSettings(), 0u);
    struct {
        LineSettings settings;
        bool works;
    } cases[] = {{{9600, 8, 0, 0}, true},  {{9600, 7, 2, 2}, true},  {{1234567, 8, 4, 0}, true},
                 {{9600, 5, 3, 1}, true},  {{9600, 8, 0, 1}, false}, {{9600, 5, 0, 2}, false},
                 {{9600, 4, 0, 0}, false}, {{9600, 9, 0, 0}, false}, {{9600, 8, 5, 0}, false},
                 {{9600, 8, 0, 3}, false}, {{0, 8, 0, 0}, false}};
    for (const auto& row : cases)
        EXPECT_EQ(Port->WriteSettings(row.settings) == 0, row.works)
            << row.settings.baudRate << " " << int(row.settings.dataBits) << " "
            << int(row.settings.parity) << " " << int(row.settings.stopBits);
    EXPECT_NE(Port->SetQueues(0, 0), 0u);
}

} // namespace
} // namespace qor
#endif
