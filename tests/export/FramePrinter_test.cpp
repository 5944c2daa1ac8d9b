// SPDX-License-Identifier: GPL-3.0-or-later
//
// Printing of a running log: into a reader that takes all, one that stalls and one that goes.
#include "export/FramePrinter.h"

#include "fakes/SessionFixture.h"

#include <algorithm>

namespace qor {
namespace {

using testing::HasSubstr;

class AFramePrinter : public ASession {
  protected:
    void Print(PrintFormat format) {
        Printer.emplace(Doc, PrintSettings{format}, [this](std::string_view text) {
            Reading.Set();
            MayRead.Wait();
            CLock lock(Guard);
            Got.append(text);
            return Reader;
        });
    }
    std::size_t Lines() {
        CLock lock(Guard);
        return static_cast<std::size_t>(std::ranges::count(Got, '\n'));
    }
    void SetReader(StreamWrite reader) {
        CLock lock(Guard);
        Reader = reader;
    }

    CEvent MayRead, Reading; ///< the reader; the printer has handed it something
    CMutex Guard;
    std::string Got GUARDED_BY(Guard);
    StreamWrite Reader GUARDED_BY(Guard) = StreamWrite::Done;
    std::optional<CFramePrinter> Printer;
    CQorViewIns* Pro = Add("PRO", Port);
};

TEST_F(AFramePrinter, PrintsTheFramesThatTheLogTakesAndNamesIt) {
    MayRead.Set();
    Print(PrintFormat::JsonLines);
    ASSERT_TRUE(Printer->CanPrint() && Printer->Start());
    Offer(*Pro, {CounterFrame("PRO", 1)});
    ASSERT_TRUE(Begin());
    Offer(*Pro, {CounterFrame("PRO", 2), CounterFrame("PRO", 3)});
    Offer(*Pro, {CounterFrame("PRO", 4)}, true);
    Doc.RawLog.EndLogFile(true);
    ASSERT_TRUE(Begin("next.raw"));
    Offer(*Pro, {CounterFrame("PRO", 5)});
    Printer->Finish(10'000);
    EXPECT_EQ(Lines(), 3U) << "none before the log, nor one that is not usable";
    CLock lock(Guard);
    EXPECT_THAT(Got, testing::AllOf(HasSubstr("cast.raw"), HasSubstr("next.raw")));
}

TEST_F(AFramePrinter, ATableHasOneInstrument) {
    Print(PrintFormat::Csv);
    EXPECT_TRUE(Printer->CanPrint());
    Add("TWO", Port);
    EXPECT_FALSE(Printer->CanPrint());
}

TEST_F(AFramePrinter, AStalledReaderCostsRowsThatAreCountedAndNoFrameOfTheLog) {
    Print(PrintFormat::JsonLines);
    ASSERT_TRUE(Printer->Start());
    ASSERT_TRUE(Begin());
    Offer(*Pro, {CounterFrame("PRO", 0)});
    Reading.Wait();
    const std::vector<std::string> many(1000, CounterFrame("PRO", 1));
    std::uint64_t offered = 1;
    for (; Printer->Figures().unprinted == 0 && offered < 200'000; offered += many.size())
        Offer(*Pro, many);
    EXPECT_TRUE(Printer->Figures().waits);
    MayRead.Set();
    Printer->Finish(10'000);
    EXPECT_GT(Printer->Figures().unprinted, 0U);
    EXPECT_EQ(Printer->Figures().unprinted + Lines(), offered);
    EXPECT_EQ(FramesThisLog(*Pro).written, offered);
}

TEST_F(AFramePrinter, AReaderThatGoesEndsThePrintingAlone) {
    SetReader(StreamWrite::ReaderGone);
    MayRead.Set();
    Print(PrintFormat::Csv);
    ASSERT_TRUE(Printer->Start());
    ASSERT_TRUE(Begin());
    while (Printer->Figures().state == StreamWrite::Done) // the table's head goes out at once
        std::this_thread::yield();
    Offer(*Pro, {CounterFrame("PRO", 1)});
    Printer->Finish(10'000);
    EXPECT_EQ(Lines(), 1U);
    EXPECT_EQ(FramesThisLog(*Pro).written, 1U);
}

} // namespace
} // namespace qor
