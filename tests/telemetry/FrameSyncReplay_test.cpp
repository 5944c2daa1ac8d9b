// SPDX-License-Identifier: GPL-3.0-or-later
//
// Playing back raw logs and captures: the same frames at every read size, those that the plainest
// code cuts.
#include "fakes/RawLogText.h"
#include "telemetry/StreamRun.h"

#include <gtest/gtest.h>

#include <random>

namespace qor {
namespace {

const std::int64_t Noon = SecondsFromCalendar(2024, 2, 29, 12, 0, 0);
const std::string Stamp = MakeTimeStamp(CalendarFromSeconds(Noon));
const std::string RawBegin = Record(HeaderTag::Mode, "NONE");

PlainFrame Frame(const char* instrument, const char* bytes, std::uint64_t offset,
                 std::optional<std::int64_t> seconds = {}) {
    if (seconds)
        *seconds *= 1000;
    return {instrument, bytes, offset, seconds};
}

TEST(FrameSyncReplay, RawLogsComeBackAsTheyWereLogged) {
    auto two = {Fixed("A", "AA", 4), Text("G", "$GPGGA,")};
    const std::string taggedA = "AA12" + Tag(Noon);
    const struct {
        std::string stream;
        PlainResult expected;
        const char* why;
    } cases[] = {
        {RawBegin + Record(HeaderTag::Nmea, "$GPGGA") + "$GPGGA,1\r\n" + taggedA + "$GPGGA,2\r\n",
         {{Frame("G", "$GPGGA,1\r\n", 256), Frame("A", "AA12", 266, Noon),
           Frame("G", "$GPGGA,2\r\n", 277)},
          0},
         "the GPS in its role has no tags"},
        {RawBegin + Record(HeaderTag::Nmea, "$GPGGA") + "$GPGGA,1\r\n" + Tag(Noon),
         {{Frame("G", "$GPGGA,1\r\n", 256, Noon)}, 0},
         "another one that the NMEA records name has"},
        {RawBegin + "AA12" + Tag(Noon).substr(0, 6),
         {{Frame("A", "AA12", 128)}, 6},
         "half a tag at the end is no tag"},
        {RawBegin + "??" + Stamp + taggedA,
         {{Frame("A", "AA12", 161, Noon)}, 33},
         "a sentence in junk is junk"},
        {RawBegin + "$PCZDA,AA12" + std::string(80, '.'),
         {{Frame("A", "AA12", 135)}, 87},
         "a sentence without its end is none"},
        {RawBegin.substr(0, 100), {{}, 100}, "half a record"},
    };
    for (const auto& c : cases)
        for (std::size_t chunk = 1; chunk <= c.stream.size(); chunk += 1 + chunk / 8)
            ASSERT_EQ(Play(two, c.stream, [chunk] { return chunk; }), c.expected)
                << c.why << ", chunks of " << chunk;
}

/// A line instrument, one of packets (8 bytes), and one with a header and a size.
const AttachRequest LineByLine = NoSync(Text("L", ""), "SEABIRD_19SCT");
const AttachRequest Packets = NoSync(Fixed("P", "PKT", 99), "BSI", {"Q\1R\0", 4});
const AttachRequest Sized = NoSync(Text("H", "H2", "\r\n", 6), "HOBILABS_HS2_D");
const std::string PacketFrame("Q\1..+R\0+", 8);

TEST(FrameSyncReplay, WhatWasLoggedWithoutHeaderDecodesAgain) {
    const std::vector<AttachRequest> all = {Fixed("A", "AA", 4), LineByLine, Packets, Sized,
                                            Text("G", "$GPGGA,")};
    const std::string tag = Tag(Noon);
    std::string timely = PacketFrame;
    timely.replace(1, 1, "\10").replace(2, 3, std::string(17, '.')).replace(4, 7, tag);
    AttachRequest longPackets = Packets;
    longPackets.syncBytes[1] = 8;
    const struct {
        std::string stream;
        PlainResult expected;
        const char* why;
        std::vector<AttachRequest> instruments;
    } cases[] = {
        {RawBegin + "12.5\r\n" + tag + "AA12" + tag + PacketFrame + tag + "H2\r\n12" + tag +
             "$GPGGA,1\r\n" + "13.0\r\n" + tag + Stamp + "\r\n" + tag,
         {{Frame("L", "12.5\r\n", 128, Noon),
           Frame("A", "AA12", 141, Noon),
           {"P", PacketFrame, 152, Noon * 1000},
           Frame("H", "H2\r\n12", 167, Noon),
           Frame("G", "$GPGGA,1\r\n", 180),
           Frame("L", "13.0\r\n", 190, Noon),
           Frame("L", "\r\n", 234, Noon)},
          0},
         "each by its own rule",
         all},
        {"12.5\r\n" + tag + "AA12" + PacketFrame,
         {{Frame("A", "AA12", 13)}, 21},
         "a capture knows no rules",
         all},
        {RawBegin + std::string("unknown", 7) + tag + "12.5\r\n" + tag,
         {{Frame("L", "12.5\r\n", 142, Noon)}, 14},
         "what nobody knows ends with its tag",
         {LineByLine}},
        {RawBegin + "$GPGGA,1\r\n$GPRMC,1\r\n12.5\r\n" + tag,
         {{Frame("L", "12.5\r\n", 148, Noon)}, 20},
         "sentences that nobody knows have no tag",
         {LineByLine}},
        {RawBegin + "12.5\r\r\n3\r\n" + tag + "5\r\n" + tag + "A!\r\n" + tag.substr(0, 3),
         {{Frame("L", "12.5\r\r\n3\r\n", 128, Noon), Frame("L", "5\r\n", 145, Noon),
           Frame("L", "A!\r\n", 155)},
          3},
         "lines as they were cut, the last one with half a tag",
         {LineByLine}},
        {RawBegin + "12.5\r\n" + tag + "13.0\r\n",
         {{Frame("L", "12.5\r\n", 128, Noon), Frame("L", "13.0\r\n", 141)}, 0},
         "a whole line is one also where its tag was cut off",
         {LineByLine}},
        {RawBegin + "12.5\r\n" + tag.substr(0, 1) + "\r\n",
         {{Frame("L", "12.5\r\n", 128), Frame("L", "\x1E\r\n", 134)}, 0},
         "a cut tag that ends as a line does hides no line",
         {LineByLine}},
        {RawBegin + "xx\r\n12.5", {{}, 8}, "a line without tag is none", {LineByLine}},
        {RawBegin + timely + tag + PacketFrame.substr(0, 5) + tag,
         {{{"P", timely, 128, Noon * 1000}}, 12},
         "packets may hold what reads as a time",
         {longPackets}},
        {RawBegin + "..AA12" + tag + "..12.5\r\n" + tag,
         {{Frame("A", "AA12", 130, Noon), Frame("L", "..12.5\r\n", 141, Noon)}, 2},
         "a header behind junk is found, a line is whatever ends as one",
         all},
    };
    for (const auto& c : cases)
        for (std::size_t chunk = 1; chunk <= c.stream.size(); chunk += 1 + chunk / 8)
            ASSERT_EQ(Play(c.instruments, c.stream, [chunk] { return chunk; }), c.expected)
                << c.why << ", chunks of " << chunk;
}

TEST(FrameSyncReplay, FramesWithoutATagTakeTheNearestTime) {
    const std::int64_t later = Noon + 1000;
    const std::string first = "AA12" + Tag(Noon), second = "AA12" + Tag(later);
    const std::string gpsText = "$G\r\n";
    const char* const gps = gpsText.c_str();
    std::string many;
    std::vector<PlainFrame> manyFrames = {Frame("A", "AA12", 128, Noon)};
    for (std::size_t i = 0; i < CNearTimes::MostWaiting + 1; ++i) {
        manyFrames.push_back(Frame("G", gps, 139 + many.size(), Noon));
        many += gps;
    }
    const struct {
        std::string stream;
        std::vector<PlainFrame> expected;
        const char* why;
        std::uint64_t discarded = 0;
    } cases[] = {
        {gpsText + first + gps + gps + gps + second,
         {Frame("G", gps, 128, Noon), Frame("A", "AA12", 132, Noon), Frame("G", gps, 143, Noon),
          Frame("G", gps, 147, Noon), Frame("G", gps, 151, later), Frame("A", "AA12", 155, later)},
         "before the first, behind one, before the next"},
        {gps + Stamp, {Frame("G", gps, 128, Noon)}, "a time stamp"},
        {first + gps + second.substr(0, 8),
         {Frame("A", "AA12", 128, Noon), Frame("G", gps, 139, Noon), Frame("A", "AA12", 143)},
         "a tag that is cut is its frame's own",
         4},
        {first + many, manyFrames, "more than wait"},
        {gpsText + gps, {Frame("G", gps, 128), Frame("G", gps, 132)}, "a file that carries none"},
    };
    for (const auto& c : cases)
        for (std::size_t chunk = 1; chunk <= c.stream.size() + 128; chunk += 1 + chunk / 8)
            ASSERT_EQ(Play(
                          {Fixed("A", "AA", 4), Text("G", "$G")}, RawBegin + c.stream,
                          [chunk] { return chunk; }, {"G"}, 3, true),
                      (PlainResult{c.expected, c.discarded}))
                << c.why << ", chunks of " << chunk;
}

// A stream without any tag costs a megabyte at a time, and a search that is not quadratic.
TEST(FrameSyncReplay, WhatHoldsNoTagIsGivenUpInPieces) {
    const std::string junk = RawBegin + std::string((3U << 20) - 1, 'x') + "\n";
    PlainResult result =
        Play({LineByLine, Fixed("A", "AA", 4)}, junk + "AA12", [] { return 5000; });
    EXPECT_EQ(result.frames, std::vector<PlainFrame>{Frame("A", "AA12", junk.size())});
    EXPECT_EQ(result.discarded, 3U << 20);
}

TEST(FrameSyncReplay, TheQueueDepthNeverCutsAFileShort) {
    CCollectingSink sink;
    CFrameSync sync(sink, "f.raw", StreamSource::File);
    sync.SetMaxFrameDepth(2);
    EXPECT_EQ(sync.Attach(Fixed("A", "A", 2)), CommResult::Success);
    EXPECT_EQ(sync.SetAcquisition("A", true), CommResult::Success);
    sync.Append(AsBytes(std::string(1000, 'A')));
    EXPECT_TRUE(sync.RunPass(64).moreReady);
    EXPECT_EQ(sync.Frames().Size(), 64U);
    EXPECT_FALSE(sync.RunPass().moreReady);
    EXPECT_EQ(TakeFrames(sync.Frames()).size(), 500U);
    EXPECT_EQ(sink.Messages(), std::vector<std::string>{"A found on f.raw.\r\n"});
}

/// Instruments with headers that share much, and a stream of pieces that nearly are frames.
struct RandomCase {
    std::vector<AttachRequest> instruments;
    std::set<std::string> untagged;
    std::string stream;

    explicit RandomCase(std::mt19937& random) {
        const char* terminators[] = {"", "", "\r\n", "B", "AAB"};
        std::set<std::string> headers;
        const std::size_t count = random() % 20 == 0 ? 25 : 1 + random() % 5;
        while (headers.size() < count)
            headers.insert(Letters(random, 1 + random() % 4));
        for (const std::string& header : headers) {
            AttachRequest request = Text("I" + header, header, terminators[random() % 5],
                                         static_cast<std::int32_t>(random() % 9));
            instruments.insert(instruments.begin() +
                                   static_cast<std::ptrdiff_t>(random() % (instruments.size() + 1)),
                               request);
            if (random() % 4 == 0)
                untagged.insert(request.instrumentName);
        }
        if (random() % 2 == 0)
            AddHeaderless(random);
        if (random() % 3 != 0)
            stream = RawBegin;
        for (std::size_t pieces = random() % 40; pieces-- > 0;)
            stream += Piece(random);
    }

    /// One or two of the kinds that carry no sync header, among the others.
    void AddHeaderless(std::mt19937& random) {
        AttachRequest request = Text("L", "", random() % 3 == 0 ? "AB" : "\r\n");
        request.noSync = true;
        request.typeName = "SEABIRD_19SCT";
        if (random() % 3 != 0)
            instruments.insert(instruments.begin() +
                                   static_cast<std::ptrdiff_t>(random() % (instruments.size() + 1)),
                               request);
        request.instrumentName = "P";
        request.typeName = "BSI";
        request.syncHeader = "AABBA";
        request.syncBytes = {'A', 1};
        if (random() % 2 == 0)
            request.syncBytes.insert(request.syncBytes.end(), {'A', 0});
        if (random() % 3 != 0)
            instruments.push_back(request);
        request.instrumentName = "H";
        request.typeName = "HOBILABS_HS2_D";
        request.syncHeader = "HAB";
        request.frameSize = 7;
        if (random() % 3 == 0)
            instruments.push_back(request);
    }

    static std::string Letters(std::mt19937& random, std::size_t length) {
        std::string text;
        while (text.size() < length)
            text += static_cast<char>('A' + random() % 2);
        return text;
    }

    std::string Piece(std::mt19937& random) const {
        const AttachRequest& instrument = instruments[random() % instruments.size()];
        switch (random() % 8) {
        case 0:
            return Tag(Noon + static_cast<std::int64_t>(random() % 100));
        case 1:
            return random() % 2 == 0 ? Stamp : Stamp.substr(0, random() % 12);
        case 2:
            return random() % 3 == 0 ? RawBegin : RawBegin.substr(0, random() % 9);
        case 3:
            return "\r\n";
        case 4:
            return instrument.syncHeader;
        default: {
            std::size_t size = static_cast<std::size_t>(instrument.frameSize);
            if (instrument.typeName == "BSI" && random() % 2 == 0)
                return std::string("A\1..+A\0+", instrument.syncBytes.size() == 2 ? 5 : 8) +
                       Tag(Noon);
            std::string frame = instrument.syncHeader + Letters(random, random() % 9);
            if (instrument.terminator.empty())
                frame.resize(std::max(size, instrument.syncHeader.size()), '.');
            return frame + instrument.terminator + (random() % 2 == 0 ? Tag(Noon) : "");
        }
        }
    }
};

TEST(FrameSyncReplay, AnyStreamGivesThePlainFramesAtEveryReadSize) {
    std::mt19937 random(11);
    std::size_t frames = 0, tags = 0, lines = 0, packets = 0;
    for (int round = 0; round < 6000; ++round) {
        RandomCase c(random);
        PlainResult expected = CPlainSync(c.instruments, c.stream, c.untagged).Run();
        frames += expected.frames.size();
        for (const PlainFrame& frame : expected.frames) {
            tags += frame.milliseconds ? 1 : 0;
            lines += frame.instrument == "L" ? 1 : 0;
            packets += frame.instrument == "P" ? 1 : 0;
        }
        for (std::size_t longest : {1U, 8U, 1000U})
            ASSERT_EQ(
                Play(
                    c.instruments, c.stream, [&] { return 1 + random() % longest; }, c.untagged),
                expected)
                << round << " at most " << longest;
    }
    EXPECT_GT(frames, 30000U);
    EXPECT_GT(tags, 5000U);
    EXPECT_GT(lines, 500U);
    EXPECT_GT(packets, 500U);
}

} // namespace
} // namespace qor
