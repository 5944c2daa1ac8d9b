// SPDX-License-Identifier: GPL-3.0-or-later
//
// The synchroniser on a live port: attaching, global synchronisation, stamps, queue depth, loss of
// synchronisation, and definitions that mean harm.
#include "base/Text.h"
#include "telemetry/StreamRun.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

using namespace std::string_literals;

class FrameSync : public testing::Test {
  protected:
    void Add(const AttachRequest& request) {
        ASSERT_EQ(Sync.Attach(request), CommResult::Success);
        ASSERT_EQ(Sync.SetAcquisition(request.instrumentName, true), CommResult::Success);
    }
    /// Bytes that arrive now, a second after the ones before.
    PassResult Feed(std::string_view bytes) {
        Now.seconds += 1;
        Sync.Append(AsBytes(bytes), Now);
        return Sync.RunPass();
    }
    /// The frames cut since the last look, as one text: "name:bytes name:bytes".
    std::string Cut() {
        std::string text;
        Stamps.clear();
        for (const PlainFrame& frame : TakeFrames(Sync.Frames())) {
            text += (text.empty() ? "" : " ") + frame.instrument + ":" + frame.bytes;
            Stamps.push_back(frame.milliseconds.value_or(-1) / 1000);
        }
        return text;
    }

    CCollectingSink Sink;
    CFrameSync Sync{Sink, "COM1", StreamSource::ReportingPort};
    FrameTime Now{.known = true};
    std::vector<std::int64_t> Stamps;
};

TEST_F(FrameSync, AttachRefusesByItsRules) {
    auto lines = NoSync(Text("L", ""), "HEITRONICS_IRC");
    EXPECT_EQ(Sync.Attach(NoSync(Fixed("B", "b", 9), "BSI", "abc")), CommResult::BsiWithoutPairs);
    EXPECT_EQ(Sync.Attach(NoSync(Fixed("B", "b", 9), "BSI")), CommResult::BsiWithoutPairs);
    EXPECT_EQ(Sync.Attach(lines), CommResult::Success);
    EXPECT_EQ(Sync.Attach(Fixed("A", "A", 2)), CommResult::SecondWithoutSync);
    EXPECT_EQ(Sync.Detach("L"), CommResult::Success);
    EXPECT_EQ(Sync.Detach("L"), CommResult::InstrumentNotAttached);
    EXPECT_EQ(Sync.Attach(Fixed("A", "A", 2)), CommResult::Success);
    EXPECT_EQ(Sync.Attach(Fixed("A2", "A", 3)), CommResult::InstrumentAlreadyAttached);
    EXPECT_EQ(Sync.Attach(lines), CommResult::WithoutSyncRefused);
    EXPECT_EQ(Sync.SetAcquisition("A2", true), CommResult::InstrumentNotAttached);

    CFrameSync file(Sink, "f.raw", StreamSource::File);
    EXPECT_EQ(file.Attach(Fixed("A", "A", 2)), CommResult::Success);
    EXPECT_EQ(file.Attach(lines), CommResult::Success) << "only live ports know the flag";
    EXPECT_NE(file.IdentityOf("A"), Sync.IdentityOf("A"));
    EXPECT_EQ(file.IdentityOf("nobody"), 0U);
}

TEST_F(FrameSync, FoundIsReportedAgainOnlyAfterALoss) {
    Add(Fixed("A", "A", 2));
    Feed("A1");
    Feed("A2A3");
    Sync.GoIdle();
    Feed("A4");
    EXPECT_EQ(Sink.Count("A found on COM1.\r\n"), 2U);
    EXPECT_EQ(Cut(), "A:A1 A:A2 A:A3 A:A4") << "a loss of synchronisation costs no queued frame";
}

TEST_F(FrameSync, NothingIsCutUntilTheGlobalStringHasPassed) {
    Sync.SetGlobalSync("SYNC");
    Add(Fixed("A", "A", 2));
    EXPECT_FALSE(Feed("A1SY").globalSyncFound);
    Sync.GoIdle();
    Feed("A2S");
    EXPECT_EQ(Cut(), "");
    EXPECT_TRUE(Feed("YNCA3").globalSyncFound);
    EXPECT_EQ(Cut(), "A:A1 A:A2 A:A3") << "a global search removes nothing";
    Sync.GoIdle();
    Feed("A4");
    EXPECT_EQ(Cut(), "A:A4");
    EXPECT_EQ(Sink.Count("Telemetry synchronized on COM1.\r\n"), 1U);
}

TEST_F(FrameSync, AGlobalStringThatIsLateCostsOneMegabyte) {
    Sync.SetGlobalSync("SYNC");
    Add(Fixed("A", "A", 2));
    for (int i = 0; i < 300; ++i)
        Feed(std::string(10000, '.'));
    Feed("SYNCA1");
    EXPECT_EQ(Cut(), "A:A1");
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 3000000U + 4);
}

TEST_F(FrameSync, AFrameIsStampedWithTheReadOfItsLastByte) {
    Add(Text("T", "T", "\r\n", 8));
    Add(Fixed("A", "A", 4));
    Feed("A123A1"); // second 1
    Feed("23T\r");  // second 2
    Feed("\nA12");  // second 3 ends the text frame, whose declared size comes later
    Feed("3");      // second 4
    Feed("..");     // second 5
    EXPECT_EQ(Cut(), "A:A123 A:A123 T:T\r\n A:A123");
    EXPECT_EQ(Stamps, (std::vector<std::int64_t>{1, 2, 3, 4}));
}

TEST_F(FrameSync, ADepthBeyondTheLimitDropsTheOldest) {
    Add(Fixed("A", "A", 3));
    for (int i = 0; i < 201; ++i)
        Feed(Format("A%02d", i % 100));
    EXPECT_EQ(Sink.Count("COM1 frame buffer exceeded maximum depth.\r\n"), 0U);
    Feed("Axx");
    Feed("Ayy");
    EXPECT_EQ(Sink.Count("COM1 frame buffer exceeded maximum depth.\r\n"), 2U);
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 6U);
    EXPECT_EQ(Sync.Frames().Size(), 201U);
    EXPECT_EQ(Sync.Frames().Front().Text(), "A02");
    EXPECT_EQ(Sync.Frames().Front().Info.frameCounter, 3U);
}

TEST_F(FrameSync, AMemoryBeyondTheLimitDropsTheOldestAndIsToldOnceABurst) {
    Add(Fixed("A", "A", 100));
    const std::string told = "COM1 frame buffer is full: the oldest frames are lost.\r\n";
    const std::string frame = "A" + std::string(99, '.');
    Sync.SetMaxFrameDepth(1000);
    Sync.SetMaxFrameBytes(3 * (100 + sizeof(CFrameData)));
    for (std::size_t burst : {1U, 2U}) {
        for (int i = 0; i < 3; ++i)
            Feed(frame);
        EXPECT_EQ(Sink.Count(told), burst - 1);
        for (int i = 0; i < 4; ++i)
            Feed(frame);
        EXPECT_EQ(Sink.Count(told), burst);
        EXPECT_EQ(Sync.Figures().framesLost, 4 * burst);
        EXPECT_EQ(Sync.Figures().bytesLost, 400 * burst);
        EXPECT_EQ(Sync.Figures().bytesDiscarded, 400 * burst);
        EXPECT_EQ(Sync.Frames().Front().Info.frameCounter, 7 * burst - 2);
        EXPECT_EQ(TakeFrames(Sync.Frames()).size(), 3U);
    }
    Sync.SetMaxFrameBytes(1);
    Feed(frame + frame);
    EXPECT_EQ(Sync.Frames().Size(), 1U) << "one is always kept";
}

// A declared size of 8, of which less has come.
TEST_F(FrameSync, AShortTextFrameWaitsForTheIdlePeriodOrTheStop) {
    for (bool idle : {true, false}) {
        CFrameSync sync(Sink, "COM2", StreamSource::ReportingPort);
        for (const AttachRequest& request : {Text("T", "T", "\r\n", 8), Fixed("A", "A", 4)}) {
            ASSERT_EQ(sync.Attach(request), CommResult::Success);
            ASSERT_EQ(sync.SetAcquisition(request.instrumentName, true), CommResult::Success);
        }
        sync.Append(AsBytes("T1\r\nT2\r\nA2"), {.seconds = 5, .known = true});
        EXPECT_TRUE(sync.RunPass().framesQueued);
        EXPECT_EQ(TakeFrames(sync.Frames()).size(), 1U);
        EXPECT_TRUE((idle ? sync.GoIdle() : sync.CutRest()).framesQueued);
        auto frames = TakeFrames(sync.Frames());
        ASSERT_EQ(frames.size(), 1U);
        EXPECT_EQ(frames[0], (PlainFrame{"T", "T2\r\n", 4, 5000}));
        EXPECT_EQ(sync.Figures().bytesDiscarded, 0U);
        sync.Append(AsBytes("34"));
        sync.RunPass();
        EXPECT_EQ(TakeFrames(sync.Frames()).size(), idle ? 1U : 0U) << "the rest of A";
    }
}

TEST_F(FrameSync, TheStopCutsWhatLiesCompleteBehindWhatDoesNot) {
    Sync.SetMaxFrameDepth(1);
    Add(Fixed("Long", "L", 100));
    Add(Fixed("A", "A", 2));
    Feed("junk");
    Feed("L...A1..A2.A3");
    EXPECT_EQ(Cut(), "");
    EXPECT_TRUE(Sync.CutRest().framesQueued);
    EXPECT_EQ(Sync.Figures().framesLost, 1U);
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 4U + 2) << "the junk and the frame lost for the depth";
    EXPECT_EQ(Cut(), "A:A2 A:A3");
}

TEST_F(FrameSync, DisabledInstrumentsTakeNoPart) {
    Add(Fixed("A", "A", 4));
    Add(Fixed("B", "B", 2));
    Feed("A1");
    EXPECT_EQ(Sync.SetAcquisition("A", false), CommResult::Success);
    Feed("B1");
    EXPECT_EQ(Cut(), "B:B1") << "the stream is searched afresh";
    EXPECT_EQ(Sync.SetAcquisition("B", false), CommResult::Success);
    Feed("B2");
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 4U);
    EXPECT_EQ(Sync.SetAcquisition("B", true), CommResult::Success);
    Feed("B3");
    EXPECT_EQ(Cut(), "B:B3");
}

TEST_F(FrameSync, DetachingBetweenBytesOfAFrameSearchesAfresh) {
    Add(Fixed("A", "A", 2));
    Add(Fixed("B", "B", 4));
    Feed("A1B1");
    EXPECT_EQ(Sync.Detach("A"), CommResult::Success);
    Feed("23A2B456");
    EXPECT_EQ(Cut(), "A:A1 B:B123 B:B456");
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 2U);
    Add(Fixed("C", "C", 2));
    Feed("B123C1");
    EXPECT_EQ(Sync.Detach("C"), CommResult::Success);
    Feed("B123C1B456");
    EXPECT_EQ(Cut(), "B:B123 C:C1 B:B123 B:B456") << "what followed B is gone";
}

TEST_F(FrameSync, DefinitionsThatMeanHarmNeitherLoopNorAllocate) {
    Add(Fixed("Z", "Z", 0));
    Add(Fixed("N", "NN", INT32_MIN));
    Add(Fixed("E", "", INT32_MAX));
    Add(Fixed("Short", "SHORT", 2));
    Feed("ZNNSHORT.");
    EXPECT_EQ(Cut(), "Z:Z N:NN Short:SH");
    Add(Fixed("Huge", "H", INT32_MAX));
    Feed("HZHZ");
    EXPECT_EQ(Cut(), "Z:Z Z:Z") << "what the queue shall never hold is not waited for";
    auto messages = Sink.Messages();
    EXPECT_EQ(messages.back(),
              "Frames of Huge are longer than 4194304 bytes and are not cut on COM1.\r\n");
    EXPECT_EQ(std::count(messages.begin(), messages.end(), messages.back()), 1);
}

TEST_F(FrameSync, ATerminatorComesWithinAMegabyteOrNotAtAll) {
    Add(Text("T", "T", "\r\n", INT32_MAX));
    std::string endless = "T" + std::string((1U << 20) - 1, '.');
    for (std::size_t at = 0; at < endless.size(); at += 99999)
        Feed(std::string_view(endless).substr(at, 99999));
    EXPECT_EQ(Sync.Figures().bytesDiscarded, endless.size());
    Feed(endless);
    EXPECT_EQ(Sink.Messages().size(), 1U) << "once until a frame is cut";
    // The frame itself may be as long as that, and its declared size is waited for no longer.
    endless.replace(endless.size() - 2, 2, "\r\n");
    Feed(endless);
    EXPECT_EQ(Sync.Frames().Size(), 1U);
    EXPECT_EQ(Sync.Frames().Front().Bytes.size(), 1U << 20);
}

TEST_F(FrameSync, LinesWithoutHeaderBeginBehindTheFirstTerminator) {
    Add(NoSync(Text("L", ""), "AOS_EZCOMPASS_3"));
    Feed("tial\r");
    Feed("\n$C1\r\n$C2");
    EXPECT_EQ(Cut(), "L:$C1\r\n");
    EXPECT_EQ(Sync.Figures().bytesDiscarded, 6U);
    Feed("x\r\n");
    EXPECT_EQ(Cut(), "L:$C2x\r\n");
    Sync.GoIdle();
    Feed("$C3\r\n$C");
    EXPECT_EQ(Cut(), "L:$C3\r\n") << "silence between lines takes none away";
    Sync.GoIdle();
    Feed("4\r\n$C5\r\n");
    EXPECT_EQ(Cut(), "L:$C5\r\n") << "silence within a line does";
    Sync.ForgetBytes();
    Feed("$C6\r\n");
    EXPECT_EQ(Cut(), "") << "after a reconnection the first line may be a partial one";
    for (const char* before : {"", "ial"}) {
        Sync.ForgetBytes();
        Feed(before);
        Sync.GoIdle();
        Feed("$C7\r\n");
        EXPECT_EQ(Cut(), "L:$C7\r\n") << "after silence it is a whole one";
    }
}

// What has come without a header, in chunks of every size.
TEST_F(FrameSync, NoSyncFramesDoNotDependOnTheChunks) {
    struct {
        AttachRequest request;
        std::string stream;
        std::vector<std::string> frames;
        std::uint64_t discarded;
    } const cases[] = {
        // Packets of 3 + 2 x 1 and 3 + 2 x 0 bytes, found where every pair stands.
        {NoSync(Fixed("B", "BSI", 99), "BSI", {"Q\1R\0", 4}),
         "xQ\1..+R\0+Q\1Q\1Q\1..+R\0+Q\1..+R\0+"s,
         {"Q\1..+R\0+"s, "Q\1..+R\0+"s, "Q\1..+R\0+"s},
         5},
        {NoSync(Text("L", ""), "AOS_EZCOMPASS_3"),
         "a\r\r\nb\r\nc\r\r\nd\r\n\r\ne",
         {"c\r\r\nd\r\n", "\r\n"}, // a terminator that a CR has broken off is not tried again
         7},
        {NoSync(Text("H", "H2", "\r\n", 6), "HOBILABS_HS2_D"), "..H2\r\n12H234", {"H2\r\n12"}, 2},
    };
    for (const auto& [request, stream, frames, discarded] : cases)
        for (std::size_t chunk = stream.size(); chunk > 0; --chunk) {
            CFrameSync sync(Sink, "COM2", StreamSource::ReportingPort);
            ASSERT_EQ(sync.Attach(request), CommResult::Success);
            ASSERT_EQ(sync.SetAcquisition(request.instrumentName, true), CommResult::Success);
            for (std::size_t at = 0; at < stream.size(); at += chunk) {
                sync.Append(AsBytes(stream).subspan(at, std::min(chunk, stream.size() - at)));
                sync.RunPass();
            }
            std::vector<std::string> cut;
            for (const PlainFrame& frame : TakeFrames(sync.Frames()))
                cut.push_back(frame.bytes);
            EXPECT_EQ(cut, frames) << chunk;
            EXPECT_EQ(sync.Figures().bytesDiscarded, discarded) << chunk;
        }
}

} // namespace
} // namespace qor
