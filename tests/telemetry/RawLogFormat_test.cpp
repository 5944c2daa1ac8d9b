// SPDX-License-Identifier: GPL-3.0-or-later
//
// The bytes of a raw log: what is made reads back, and what is not of the form is refused.
#include "telemetry/RawLogFormat.h"

#include <gtest/gtest.h>

#include <set>

namespace qor {
namespace {

TEST(RawLogFormat, EveryHeaderLineFitsItsRecordAndReadsBack) {
    std::set<std::string> tags;
    for (int index = 0; index < 25; ++index) {
        for (std::size_t length : {0U, 1U, 90U, 100U, 107U, 112U, 500U}) {
            std::string value(length, 'v');
            std::string line = FormatHeaderLine(index, value);
            ASSERT_LE(line.size(), HeaderRecordSize);
            auto parsed = ParseHeaderRecord(MakeHeaderRecord(line));
            ASSERT_TRUE(parsed) << line;
            EXPECT_EQ(parsed->value, value.substr(0, parsed->value.size()));
            EXPECT_TRUE(parsed->value == value || line.size() == HeaderRecordSize)
                << "a value is cut only when it must be";
            tags.insert(parsed->tag);
        }
    }
    EXPECT_EQ(tags.size(), 25U);
    EXPECT_EQ(FormatHeaderLine(5, {"a\0b", 3}), "QORHDR a (COMMENT)\r\n");
    EXPECT_EQ(FormatHeaderLine(-1, "x") + FormatHeaderLine(25, "x"), "");
}

TEST(RawLogFormat, MalformedHeaderRecordsAreRefused) {
    auto parse = [](std::string_view line) { return ParseHeaderRecord(MakeHeaderRecord(line)); };
    EXPECT_EQ(parse("QORHDR a (b) (x)\r\nc (COMMENT)\r\n")->value, "a (b) (x)\r\nc");
    EXPECT_FALSE(parse("QORHDR (MODE)\r\n")) << "the blank before the tag is the value's";
    EXPECT_FALSE(parse("QORHDR value (MODE)"));
    EXPECT_FALSE(parse("qorhdr value (MODE)\r\n"));
    EXPECT_FALSE(parse(std::string("QORHDR ") + std::string(121, '(')));
    EXPECT_FALSE(ParseHeaderRecord(AsBytes("QORHDR value (MODE)\r\n"))) << "shorter than a record";
}

TEST(RawLogFormat, TimeTagsAreExactAndReadBack) {
    FrameTime time{.seconds = SecondsFromCalendar(2005, 5, 3, 23, 59, 59), .milliseconds = 999};
    auto tag = MakeTimeTag(time);
    EXPECT_EQ(GetBigEndian(ByteSpan(tag).first(3)), 2005123U);
    EXPECT_EQ(GetBigEndian(ByteSpan(tag).subspan(3)), 235959999U);
    time.known = true;
    EXPECT_EQ(ParseTimeTag(tag), time);
    FrameTime east = time;
    east.seconds -= 3 * 3600;
    east.utcOffsetMinutes = 180;
    EXPECT_EQ(MakeTimeTag(east), tag) << "a tag holds local time";
}

TEST(RawLogFormat, WhatIsNoDateOrTimeIsNoTag) {
    const struct {
        std::uint64_t date, time;
        bool valid;
    } cases[] = {{1970001, 0, true},          {2199365, 235959999, true}, {1969365, 0, false},
                 {2200001, 0, false},         {2005000, 0, false},        {2005366, 0, false},
                 {2004366, 0, true},          {2100366, 0, false},        {2004367, 0, false},
                 {2004001, 240000000, false}, {2004001, 6000000, false},  {2004001, 60000, false},
                 {2004001, 4294967295, false}};
    CTimeTagReader reader;
    for (const auto& c : cases) {
        std::array<std::uint8_t, TimeTagSize> tag{};
        PutBigEndian(c.date, std::span(tag).first(3));
        PutBigEndian(c.time, std::span(tag).subspan(3));
        EXPECT_EQ(ParseTimeTag(tag).has_value(), c.valid) << c.date << ' ' << c.time;
        EXPECT_EQ(reader.Read(tag), ParseTimeTag(tag)) << "whatever the reader read before";
    }
    for (int first = 0; first < 256; ++first)
        EXPECT_EQ(MayBeginTimeTag(static_cast<std::uint8_t>(first)),
                  first >= 0x1E && first <= 0x21);
    EXPECT_FALSE(ParseTimeTag(AsBytes("\x1e\x97\xd3\x00\x00\x00")));
}

TEST(RawLogFormat, TimeStampsAreExactAndReadBack) {
    std::int64_t seconds = SecondsFromCalendar(2026, 11, 13, 14, 23, 5);
    std::string sentence = MakeTimeStamp(CalendarFromSeconds(seconds));
    EXPECT_EQ(sentence, "$PCZDA,142305.00,13,11,2026,,\r\n");
    EXPECT_EQ(ParseTimeStamp(sentence), (FrameTime{.seconds = seconds, .known = true}));
    for (const char* wrong : {"", "$PCZDA,142305.00,31,11,2026,,", "$PCZDA,142360.00,13,11,2026,,",
                              "$PCZDA,1423o5.00,13,11,2026,,", "$PCZDA,142305.00,13,11,2026,"})
        EXPECT_FALSE(ParseTimeStamp(wrong)) << wrong;
}

TEST(RawLogFormat, ATimeStampEndsWithin82Bytes) {
    std::string sentence = "$PCZDA,142305.00,13,11,2026,,\r\n";
    EXPECT_EQ(TimeStampLength(AsBytes(sentence + "more")), sentence.size());
    EXPECT_EQ(TimeStampLength(AsBytes("$PCZDB")), 0U);
    std::string longest = "$PCZDA," + std::string(73, 'x') + "\r\n";
    EXPECT_EQ(TimeStampLength(AsBytes(longest)), 82U);
    EXPECT_EQ(TimeStampLength(AsBytes("$PCZDA," + std::string(74, 'x') + "\r\n")), 0U);
    EXPECT_EQ(TimeStampLength(AsBytes("$PCZDA," + std::string(74, 'x'))), std::nullopt);
}

} // namespace
} // namespace qor
