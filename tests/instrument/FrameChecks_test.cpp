// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/FrameChecks.h"

#include "fakes/CollectingSink.h"
#include "fakes/DefinedInstrument.h"

#include <gmock/gmock.h>

using namespace qor;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string CounterLine = "FRAME COUNTER '' 1 BU 0 COUNT\n";
const std::string SumLine = "CHECK SUM '' 1 BU 0 COUNT\n";

/// Feeds counters or frames and tells which of them were faulty.
class FrameChecks : public testing::Test {
  protected:
    void Use(const std::string& lines) {
        Instrument = DefineFixed(lines);
        Checks.SetUp(*Instrument, "HDR", "COM1", Sink);
    }

    FrameCheckResult Check(const std::string& body) { return Checks.Check(AsBytes("HDR" + body)); }

    /// One letter a frame: D dropped, S checksum, V value error, . nothing.
    std::string Feed(const std::vector<std::string>& bodies) {
        std::string found;
        for (const std::string& body : bodies) {
            const FrameCheckResult r = Check(body);
            found += r.valueError ? 'V' : r.checksumError ? 'S' : r.dropped ? 'D' : '.';
        }
        return found;
    }

    std::unique_ptr<CInstrument> Instrument;
    CCollectingSink Sink;
    CFrameChecks Checks;
};

TEST_F(FrameChecks, CountersWrapFrom255AndResynchroniseAfterALoss) {
    Checks.ChecksumEnabled = false;
    Use(CounterLine);
    EXPECT_EQ(Feed({"\xFE", "\xFF", "\0"s, "\1"}), "....");
    EXPECT_EQ(Feed({"\5", "\x63", "\x64"}), "D..");
    EXPECT_EQ(Feed({"\xFF", "\x10", "\x11"}), "D..");
    EXPECT_EQ(Checks.ErrorCount, 2);
    EXPECT_EQ(Checks.DroppedCount, 2u);
    EXPECT_THAT(Sink.Messages(), ElementsAre("Dropped frame detected for HDR on COM1.\r\n",
                                             "Dropped frame detected for HDR on COM1.\r\n"));
}

TEST_F(FrameChecks, AConnectionBeginsAnywhereAndKeepsTheCounts) {
    Use(CounterLine);
    EXPECT_EQ(Feed({"\1", "\2", "\5"}), "..D");
    EXPECT_EQ(Feed({"\6", "\7"}), "..");
    Checks.BeginConnection();
    EXPECT_EQ(Feed({"\x40", "\x41", "\x50"}), "..D");
    EXPECT_EQ(Checks.DroppedCount, 2u);
}

TEST_F(FrameChecks, AnUnreadableCounterEndsTheCheckAndResynchronises) {
    Use("FRAMECOUNTER NONE '' 3 AI 0 COUNT\n" + SumLine);
    Checks.ChecksumIndex = -1;
    EXPECT_EQ(Feed({"254", "255", "000", "xyz", "077", "078", "12"}), "...V..V");
    EXPECT_EQ(Checks.ValueErrorCount, 2u);
    EXPECT_THAT(Sink.Messages(),
                ElementsAre("Sensor value error for HDR on COM1: Not a number.\r\n",
                            "Sensor value error for HDR on COM1: Frame too short.\r\n"));
}

TEST_F(FrameChecks, AsciiCountersBeyondTheWrapNeitherWrapNorOverflow) {
    Checks.ChecksumEnabled = false;
    Use("FRAME NONE '' 10 AI 0 COUNT\n");
    EXPECT_EQ(Feed({"       300", "       301", "2147483646", "2147483646", "2147483646"}),
              "..D.D");
}

TEST_F(FrameChecks, TheChecksumBalancesAllBytesBeforeIt) {
    Use(CounterLine + SumLine + "X NONE '' 1 BU 0 COUNT\n");
    const int header = 'H' + 'D' + 'R';
    const auto frame = [&](int counter, int sum) {
        return std::string{static_cast<char>(counter), static_cast<char>(sum - header - counter),
                           'x'};
    };
    EXPECT_EQ(Feed({frame(1, 256), frame(2, 512), frame(3, 257)}), "..S");
    EXPECT_EQ(Feed({frame(9, 256), frame(10, 256)}), "..") << "an error resynchronises the counter";
    EXPECT_EQ(Checks.ChecksumErrorCount, 1u);
    Checks.BeepOnError = true;
    const FrameCheckResult both = Check(frame(20, 255));
    EXPECT_TRUE(both.dropped && both.checksumError && both.beep);
    EXPECT_EQ(Checks.ErrorCount, 3);
    EXPECT_EQ(Sink.Messages().back(), "Check sum error detected for HDR on COM1.\r\n");
    EXPECT_TRUE(Check(frame(21, 255)).beep) << "of the sum alone";
    Checks.Enabled = false;
    EXPECT_EQ(Feed({frame(99, 1)}), ".");
}

TEST_F(FrameChecks, RoleSensorsAreKnownByTypeIdAndForm) {
    struct {
        std::string lines;
        int counter, sum;
    } const cases[] = {
        {"X NONE '' 1 BU 0 COUNT\n" + CounterLine + SumLine, 1, 2},
        {"frame counter '' 1 BU 0 COUNT\ncheck sum '' 2 AI 0 COUNT\n", 0, 1},
        {"FRAME NONE '' 3 AI 0 COUNT\nCHECK NONE '' 1 BU 0 COUNT\n", 0, -1},
        {"FRAME COUNTER '' 2 BU 0 COUNT\nCHECKSUM SUM '' 1 BU 0 COUNT\n", -1, -1},
        {"FRAMECOUNTER NONE '' 1 BU 0 COUNT\n" + CounterLine + "CHECKSUM NONE '' 1 BU 0 COUNT\n" +
             SumLine,
         0, 2},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.lines);
        Use(c.lines);
        EXPECT_EQ(Checks.CounterIndex, c.counter);
        EXPECT_EQ(Checks.ChecksumIndex, c.sum);
        EXPECT_EQ(Sink.Take().size(), std::size_t{c.counter < 0} + (c.sum < 0));
    }
    Checks.CounterEnabled = Checks.ChecksumEnabled = false;
    Use(CounterLine);
    EXPECT_EQ(Checks.CounterIndex, -1);
    EXPECT_THAT(Sink.Messages(), IsEmpty());
}

TEST(NominalFrameRate, ComesFromAValidRateSensor) {
    CCollectingSink sink;
    const auto rate = [&sink](const std::string& lines) {
        return NominalFrameRate(*DefineFixed(lines), sink);
    };
    EXPECT_EQ(rate(""), 6.0);
    EXPECT_EQ(rate("rate 2.5 'hz' 0 AS 0 NONE\n"), 2.5);
    EXPECT_EQ(rate("RATE 0 'Hz' 0 BU 0 NONE\nRATE 9 'Hz' 0 BU 0 NONE\n"), 0.0);
    EXPECT_THAT(sink.Messages(), IsEmpty());
    for (const char* invalid : {"-1 'Hz' 0 AS", "12x 'Hz' 0 AS", "1e999 'Hz' 0 AS",
                                "NONE 'Hz' 0 AS", "12 'Hz/s' 0 AS", "12 'Hz' 1 AS"}) {
        EXPECT_EQ(rate(std::string("RATE ") + invalid + " 0 NONE\n"), 6.0) << invalid;
        EXPECT_EQ(sink.Take().size(), 1u) << invalid;
    }
}

} // namespace
