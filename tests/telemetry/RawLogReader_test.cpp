// SPDX-License-Identifier: GPL-3.0-or-later
//
// What a raw log says without definitions, also when it lies or is cut off, in files longer than
// the pieces in which they are read.
#include "telemetry/RawLogReader.h"

#include "fakes/RawLogText.h"
#include "fakes/TempFolder.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

class ARawLog : public testing::Test {
  protected:
    CRawLogReader Read(const std::string& content) {
        CRawLogReader reader;
        EXPECT_EQ(reader.Open(Folder.Put("log.raw", content)), FileCause::None);
        while (!reader.AtEnd())
            EXPECT_EQ(reader.ReadOn(), FileCause::None);
        EXPECT_EQ(reader.BytesRead(), content.size());
        return reader;
    }

    CTempFolder Folder;
    const std::int64_t Begin = SecondsFromCalendar(2024, 2, 29, 23, 59, 58);
    const std::string Head =
        Record(HeaderTag::Cast, "AA") + Record(HeaderTag::TimeStamp, "Thu Feb 29 23:59:58 2024");
};

TEST_F(ARawLog, SaysWhenItWasBegunAndWhatItsTareIs) {
    const struct {
        const char *begun, *tare;
        std::optional<std::int64_t> seconds;
        std::optional<double> value;
    } cases[] = {
        {"Thu Feb 29 23:59:58 2024", "1.250000", Begin, 1.25},
        {"Thu Jan  1 00:00:01 1970", " -3 ", 1, -3.0},
        {"Thu Foo 29 23:59:58 2024", "OFF", {}, {}},
        {"29.2.2024", "nan", {}, {}},
        {"", "1.5 dbar", {}, {}},
    };
    for (const auto& c : cases) {
        const std::string head =
            Record(HeaderTag::TimeStamp, c.begun) + Record(HeaderTag::PressureTare, c.tare);
        CRawLogReader reader = Read(head + "frames");
        EXPECT_EQ(reader.Header().BeginTime(), c.seconds) << c.begun;
        EXPECT_EQ(reader.Header().PressureTare(), c.value) << c.tare;
        EXPECT_EQ(HeaderOf(Folder.Path + "log.raw").PressureTare(), c.value);
    }
    EXPECT_FALSE(HeaderOf(Folder.Path + "none.raw").IsRawLog());
    EXPECT_EQ(CRawLogReader().Open(Folder.Path + "none.raw"), FileCause::FileNotFound);
}

TEST_F(ARawLog, KeepsItsWellFormedRecordsAndNeedsNone) {
    std::string malformed(HeaderRecordSize, 'x');
    malformed.replace(0, HeaderRecordStart.size(), HeaderRecordStart);
    CRawLogReader reader = Read(malformed + Head + Head.substr(0, 127));
    ASSERT_EQ(reader.Header().records.size(), 2U);
    EXPECT_EQ(reader.Header().records[0].tag + reader.Header().records[0].value, "CASTAA");
    EXPECT_EQ(reader.Header().size, 3 * HeaderRecordSize);
    EXPECT_TRUE(reader.Header().IsRawLog());
    for (const std::string& capture : {std::string(), Head.substr(0, 100), "frames" + Head})
        EXPECT_FALSE(Read(capture).Header().IsRawLog());
}

// The pieces are of 256 KB: stamps and tags lie across them.
TEST_F(ARawLog, TimesAreFoundWhereverPiecesEnd) {
    auto stamp = [this](int second) { return MakeTimeStamp(CalendarFromSeconds(Begin + second)); };
    for (std::size_t before : {0U, 262144U - 20, 262144U - 3, 262144U + 128 - 3}) {
        const std::string junk(before, 'j');
        CRawLogReader reader = Read(Head + junk + Tag(Begin + 1, 250) + stamp(2) + junk + stamp(3) +
                                    Tag(Begin + 4, 250) + stamp(5).substr(0, 30));
        const RawLogTimes& times = reader.Times();
        EXPECT_EQ(times.timeStamps, 2U) << before << ": a sentence cut off is none";
        EXPECT_EQ(times.firstTimeStamp.seconds, Begin + 2);
        EXPECT_EQ(times.lastTimeStamp.seconds, Begin + 3);
        EXPECT_EQ(times.firstTag.seconds, Begin + 1) << before;
        EXPECT_EQ(times.lastTag.seconds, Begin + 4) << before;
        EXPECT_EQ(times.lastTag.milliseconds, 250);
    }
}

TEST_F(ARawLog, TagsStandWithinAYearOfTheBegin) {
    constexpr std::int64_t day = 86400;
    for (auto [seconds, known] : {std::pair{Begin - day, true},
                                  {Begin - day - 1, false},
                                  {Begin + 366 * day, true},
                                  {Begin + 366 * day + 1, false}})
        EXPECT_EQ(Read(Head + Tag(seconds, 250)).Times().firstTag.known, known) << seconds - Begin;
    EXPECT_FALSE(Read(Record(HeaderTag::Cast, "AA") + Tag(Begin, 250)).Times().firstTag.known)
        << "a log that does not say when it was begun";
    // A recorder whose clock was never set begins in 1970.
    CRawLogReader early =
        Read(Record(HeaderTag::TimeStamp, "Thu Jan  1 00:00:01 1970") + Tag(1, 250) + Tag(60, 250));
    EXPECT_EQ(early.Times().firstTag.seconds, 1);
    EXPECT_EQ(early.Times().lastTag.seconds, 60);
}

} // namespace
} // namespace qor
