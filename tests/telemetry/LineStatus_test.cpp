// SPDX-License-Identifier: GPL-3.0-or-later
//
// Line errors: which are reported, how often, in which words.
#include "telemetry/LineStatus.h"

#include "fakes/CollectingSink.h"
#include "fakes/ScriptedPort.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

class ALine : public testing::Test {
  protected:
    std::vector<std::string> Decode(std::uint32_t mask, std::uint32_t errors) {
        Port.SetErrors(errors);
        EXPECT_EQ(Status.Decode(Port, "COM1", mask, Error), CommResult::Success);
        return Sink.Take();
    }
    using Lines = std::vector<std::string>;

    CPortScript Script;
    CScriptedPort Port{Script};
    CCollectingSink Sink;
    CLineStatus Status{Sink};
    SystemError Error = 0;
};

TEST_F(ALine, EveryErrorHasItsLineInOrder) {
    EXPECT_EQ(Decode(0xC0, 0), Lines{});
    EXPECT_EQ(Decode(0, 0), Lines{});
    EXPECT_EQ(Decode(EventLineError, 0xFFFF),
              (Lines{"Break error on COM1.\r\n", "Hardware framing error on COM1.\r\n",
                     "I/O error on COM1.\r\n", "Mode error on COM1.\r\n",
                     "Input buffer overflow on COM1.\r\n", "Character buffer overrun on COM1.\r\n",
                     "Rx parity error on COM1.\r\n",
                     "Unable to transmit on COM1. The buffer is full.\r\n"}));
}

TEST_F(ALine, FiveFramingErrorsInARowSuggestAWrongBaudRate) {
    const std::string error = "Hardware framing error on COM1.\r\n";
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(Decode(EventLineError, LineFraming), Lines{error});
    EXPECT_EQ(Decode(EventLineError, LineFraming),
              (Lines{error, "Detected possible incorrect baud rate on COM1.\r\n"}));
    EXPECT_EQ(Decode(EventLineError, LineFraming), Lines{});
    EXPECT_EQ(Decode(EventLineError, LineBreak), Lines{"Break error on COM1.\r\n"});
    EXPECT_EQ(Decode(EventLineError, LineFraming), Lines{}) << "a break does not reset the count";
    EXPECT_EQ(Decode(EventLineError, LineParity), Lines{"Rx parity error on COM1.\r\n"});
    EXPECT_EQ(Decode(EventLineError, LineFraming), Lines{error});
    for (int i = 0; i < 4; ++i)
        Decode(EventLineError, LineBreak);
    EXPECT_EQ(Decode(EventLineError, LineBreak), Lines{"Break error on COM1.\r\n"});
    EXPECT_EQ(Decode(EventLineError, LineBreak), Lines{}) << "the sixth";
}

} // namespace
} // namespace qor
