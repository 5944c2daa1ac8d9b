// SPDX-License-Identifier: GPL-3.0-or-later
//
// Definitions tried on bytes: what fits, and what is said of bytes that do not.
#include "session/FrameTrial.h"
#include "session/PortSample.h"

#include "base/Text.h"
#include "fakes/DefinedInstrument.h"
#include "fakes/ManualClock.h"
#include "fakes/ScriptedPort.h"
#include "telemetry/RawLogFormat.h"

#include <gmock/gmock.h>

#include <bit>

using namespace qor;
using namespace std::string_literals;
using testing::HasSubstr;

namespace {

const std::string Ctd = "VLF_INSTRUMENT CTD '' 3 AS 0 NONE\nVLF_SN 042 '' 3 AI 0 NONE\n"
                        "FIELD NONE ',' 1 AS 0 DELIMITER\nTEMP NONE 'C' V AF 0 COUNT\n"
                        "FIELD NONE ',' 1 AS 0 DELIMITER\nSTATE NONE '' V AS 0 COUNT\n"
                        "TERMINATOR NONE '\\x0D\\x0A' 2 AS 0 DELIMITER\n";
/// Ten bytes: header, two of data, counter, sum.
const std::string Radiometer = "INSTRUMENT RAD '' 3 AS 0 NONE\nSN 017 '' 3 AI 0 NONE\n"
                               "LU 412 'uW' 2 BU 1 OPTIC2\n100 0.5 1.3\n"
                               "FRAME COUNTER '' 1 BU 0 COUNT\nCHECK SUM '' 1 BU 0 COUNT\n";

std::string Record(char counter, const std::string& data = "\x01\x90"s) {
    std::string frame = "RAD017" + data + counter;
    std::uint8_t sum = 0;
    for (char c : frame)
        sum = static_cast<std::uint8_t>(sum - static_cast<std::uint8_t>(c));
    return frame + static_cast<char>(sum);
}

std::string Repeated(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i)
        all += text;
    return all;
}

FrameTrialResult Try(const std::string& definition, const std::string& bytes,
                     std::size_t piece = 4096, std::uint64_t lineErrors = 0) {
    const auto instrument = Define(definition);
    CFrameTrial trial(*instrument);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        trial.Take(AsBytes(std::string_view(bytes).substr(at, piece)));
    FrameTrialResult result = trial.Finish(lineErrors);
    for (TriedField& field : result.first ? result.first->fields : std::vector<TriedField>())
        field.sensor = nullptr; // the instrument goes
    return result;
}

TEST(FrameTrial, ShowsTheFirstFrameFieldByField) {
    for (std::size_t piece : {std::size_t{1}, std::size_t{5}, std::size_t{4096}}) {
        const FrameTrialResult found =
            Try(Ctd, "12,up\r\nCTD042,12.5,up\r\nCTD042,?,down\r\n", piece);
        EXPECT_EQ(found.frames, 2u);
        EXPECT_EQ(found.discarded, 7u);
        EXPECT_EQ(found.shortest, 15u);
        EXPECT_EQ(found.longest, 16u);
        EXPECT_EQ(found.unconverted, 1u) << "of the second frame";
        EXPECT_FALSE(found.dropped || found.checksumErrors || found.nearest);
        EXPECT_TRUE(found.Passed());
        ASSERT_TRUE(found.first);
        EXPECT_EQ(found.first->offset, 7u);
        ASSERT_EQ(found.first->fields.size(), 2u);
        const TriedField& temperature = found.first->fields[0];
        EXPECT_EQ(temperature.offset, 7u);
        EXPECT_EQ(temperature.bytes, "12.5");
        EXPECT_EQ(temperature.raw, 12.5);
        EXPECT_EQ(temperature.number, 12.5);
        EXPECT_EQ(found.first->fields[1].text, "up");
    }
}

TEST(FrameTrial, HoldsTheChecksVerdicts) {
    const FrameTrialResult one = Try(Radiometer, Record(7));
    EXPECT_EQ(one.first->fields[0].number, (400 - 100) * 0.5);
    EXPECT_EQ(one.dropped, std::nullopt) << "one frame alone tells nothing";
    EXPECT_EQ(one.checksumErrors, 0u);
    EXPECT_TRUE(one.Passed());

    const FrameTrialResult gap = Try(Radiometer, Record(1) + Record(2) + Record(4));
    EXPECT_EQ(gap.dropped, 1u);
    EXPECT_FALSE(gap.Passed());
    std::string damaged = Record(1) + Record(2);
    damaged[7] ^= 1;
    EXPECT_EQ(Try(Radiometer, damaged).checksumErrors, 1u);
}

TEST(FrameTrial, DoubtsAFrameThatIsNotAsLongAsTheWayBetweenHeaders) {
    const std::string longer = Repeated(Record(1) + "\x01\x02", 6);
    EXPECT_THAT(Try(Radiometer, longer).doubt, HasSubstr("12 bytes apart, and a frame of the "
                                                         "definition has 10: what lies between"));
    EXPECT_THAT(Try(Radiometer + "TEMP NONE '' 1 BU 0 COUNT\n", Repeated(Record(1), 6)).doubt,
                HasSubstr("swallows"));
    EXPECT_EQ(Try(Radiometer, "junk" + Repeated(Record(1), 6)).doubt, "");
}

TEST(FrameTrial, KnowsTheRecordsAndTagsOfARawLog) {
    const auto tag = MakeTimeTag({.seconds = 1'119'355'200});
    const auto record = MakeHeaderRecord(FormatHeaderLine(0, "HE-612"));
    const auto log = [&](const std::string& frame) {
        return std::string(AsText(record)) + Repeated(frame + std::string(AsText(tag)), 6) + "RAx";
    };
    EXPECT_GT(Try(Radiometer, log(Record(1))).discarded, 0u);
    EXPECT_EQ(Try(Radiometer, log(Record(1))).doubt, "");
    EXPECT_THAT(
        Try(Radiometer, log(Record(1).substr(0, 9))).doubt,
        HasSubstr("16 bytes apart, and a frame of the definition has 10, with its time tag 7 "
                  "more: it swallows"));
    const FrameTrialResult none = Try(Ctd, log("xCTD07"));
    EXPECT_EQ(none.nearest->header.first, HeaderRecordSize + 1);
    EXPECT_THAT(none.nearest->cause, HasSubstr("first at byte 129"));
}

/// Text as a receiver at twice the speed sees it: each bit twice.
std::string AtTwiceTheSpeed(const std::string& text) {
    std::string bits;
    for (char c : text) {
        std::string one = "0";
        for (unsigned bit = 0; bit < 8; ++bit)
            one += (static_cast<unsigned char>(c) >> bit & 1U) != 0 ? '1' : '0';
        for (char bit : one + "1")
            bits += std::string(2, bit);
    }
    std::string seen;
    for (std::size_t at = bits.find('0'); at < bits.size(); at = bits.find('0', at + 10)) {
        if (at + 10 > bits.size())
            break;
        unsigned byte = 0;
        for (unsigned bit = 0; bit < 8; ++bit)
            byte |= (bits[at + 1 + bit] == '1' ? 1U : 0U) << bit;
        seen += static_cast<char>(byte);
    }
    return seen;
}

std::string WithEvenParity(std::string text) {
    for (char& c : text)
        if (std::popcount(static_cast<unsigned char>(c)) % 2 == 1)
            c = static_cast<char>(c | '\x80');
    return text;
}

TEST(FrameTrial, NamesTheLikelyCauseWhenThereIsNoFrame) {
    const std::string gps = Repeated("$GPRMC,1,2,3*11\r\n$GPGGA,1,2,3*22\r\n", 3);
    const std::string lines = Repeated("CTD042,12.5,up\n", 4);
    const struct {
        std::string definition, bytes;
        const char *cause, *look;
        std::uint64_t lineErrors = 0;
    } cases[] = {
        {Ctd, "", "No bytes came", "no bytes"},
        {Ctd, gps, "\"CTD042\" is not there",
         "NMEA sentences ($GPGGA, $GPRMC): 5, ending in \\x0D"},
        {Ctd, lines, "the terminator \\x0D\\x0A does not follow it; lines end in \\x0A.",
         "lines of text: 3, ending in \\x0A, with 2 \",\" in most of them; they begin with \"CTD0"},
        {Ctd, Repeated("CTD077,12.5,up\r\n", 4),
         "first 4 of 6 bytes of the sync header are there (4 times, first at byte 0): behind "
         "\"CTD0\" stands \"77\" where the definition has \"42\". Is it an instrument of another "
         "serial number?",
         "lines of text"},
        {Ctd, Repeated("ctd042,12.5,up\r\n", 4), "stands there in other letters, as \"ctd042\"",
         "lines of text"},
        {Ctd, Repeated("PAR;3;4\r\n", 4), "lines begin with \"PAR\"", "with 2 \";\""},
        {Ctd, "CTD042,12.5,up CTD042,12.6,up CTD042,", "no line ends at all", "without line ends"},
        {Ctd, AtTwiceTheSpeed(Repeated("CTD042,12.5,up\r\n", 4)), "the bytes are no text",
         "binary"},
        {Ctd, WithEvenParity(lines), "read them as 7E1", "seven data bits"},
        {Ctd, "\x01\x02\x03zzz", "The port found framing or parity errors", "binary", 3},
        {Radiometer, Record(1).substr(0, 8), "no whole frame: one has 10 bytes, and 8 follow.", ""},
        {Radiometer, "xx" + Repeated("SPEC" + Record(3).substr(3), 30), "could be one",
         "binary records of 11 bytes"},
        {Radiometer, std::string(40, '\xFF') + std::string(60, '\0'), "Try another baud rate",
         "read at another speed"},
        {"INSTRUMENT NONE '' 0 AS 0 NONE\nSPECIAL HEITRONICS_IRC '' 0 AS 0 NONE\n"
         "A NONE '' 2 BU 0 COUNT\n",
         "12\n13\n", "lines that end in \\x0D\\x0A, and there is none; lines end in \\x0A.", ""},
        {"INSTRUMENT NONE '' 0 AS 0 NONE\nA NONE '' 2 BU 0 COUNT\n", "12\n13\n",
         "can never give a frame", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(Printable(c.bytes.substr(0, 60)));
        const FrameTrialResult result = Try(c.definition, c.bytes, 4096, c.lineErrors);
        EXPECT_FALSE(result.Passed());
        ASSERT_TRUE(result.nearest);
        EXPECT_THAT(result.nearest->cause, HasSubstr(c.cause));
        EXPECT_THAT(result.nearest->look.sentence, HasSubstr(c.look));
    }
    const HeaderTrace trace = TraceHeader("aab", AsBytes("aaaa.aaa"));
    EXPECT_EQ(trace.seen, 2u);
    EXPECT_EQ(trace.times, 5u) << "also where they overlap";
}

TEST(PortSample, ReadsUntilThereIsEnoughOrTheTimeIsOver) {
    CPortScript script;
    CManualClock clock;
    CEvent stop;
    std::string taken;
    const auto read = [&] {
        taken.clear();
        return ReadPort({}, script.Factory(), clock, 5000, stop, [&](ByteSpan bytes) {
            taken += AsText(bytes);
            return taken.size() < 4;
        });
    };
    script.Bytes("ab").Bytes("cd").Bytes("ef");
    EXPECT_EQ(read().result, CommResult::Success);
    EXPECT_EQ(taken, "abcd");
    script.Repair();
    script.Bytes("a").Then([&] { clock.Advance(6000); }).Bytes("b").Bytes("c");
    EXPECT_EQ(read().result, CommResult::Success);
    EXPECT_EQ(taken, "ab");
    script.Repair();
    script.Fail("Open", 13);
    const PortSample refused = read();
    EXPECT_EQ(refused.result, CommResult::PortNotOpened);
    EXPECT_EQ(refused.error, 13u);
    script.Repair();
    script.Bytes("a").ThenFail("CollectRead", 5);
    EXPECT_EQ(read().result, CommResult::ReadNotCollected);
}

} // namespace
