// SPDX-License-Identifier: GPL-3.0-or-later
//
// "Instruments.ini": what people write by hand, what the program writes into it, and what neither
// may lose.
#include "session/InstrumentDefaults.h"

#include "fakes/TempFolder.h"
#include "platform/File.h"

#include <gmock/gmock.h>

namespace qor {
namespace {

using testing::ElementsAre;

TEST(InstrumentDefaults, DamagedLinesAreNamedAndPassedOver) {
    const InstrumentDefaultsReading reading = ReadInstrumentDefaults("\xEF\xBB\xBF; by hand\r\n"
                                                                     "Immersed=1\n"
                                                                     "[ SATPRO0012 ]\r\n"
                                                                     "immersed = 1\r\n"
                                                                     "LogEnabled=yes\n"
                                                                     "BeepOnError=\n"
                                                                     "nonsense\n"
                                                                     "CounterCheck=0\n"
                                                                     "Colour=blue=red\n"
                                                                     "Title= caf\xE9 [deck] 50% \n"
                                                                     "[broken\n"
                                                                     "Immersed=1\n"
                                                                     "[B]\n"
                                                                     "=1\n"
                                                                     "Checksum\x01"
                                                                     "Check=0\n"
                                                                     "ChecksumCheck=0",
                                                                     "I");
    InstrumentDefaults first, second;
    first.Immersed = true;
    first.CounterCheck = false;
    first.Title = "caf\xC3\xA9 [deck] 50%";
    second.ChecksumCheck = false;
    EXPECT_EQ(reading.instruments.size(), 2u);
    EXPECT_EQ(reading.Of("SATPRO0012"), first);
    EXPECT_EQ(reading.Of("B"), second);
    EXPECT_EQ(reading.Of("satpro0012"), InstrumentDefaults());
    const std::string neither = " is passed over: it is neither [instrument] nor KEY=value.";
    EXPECT_THAT(reading.warnings,
                ElementsAre("I: line 2 is passed over: it stands before the first [instrument].",
                            "I: line 5 is passed over: LogEnabled is 0 or 1.",
                            "I: line 6 is passed over: BeepOnError is 0 or 1.",
                            "I: line 7" + neither, "I: line 11" + neither, "I: line 14" + neither,
                            "I: line 15" + neither));
    std::string junk;
    for (int i = 0; i < 100; ++i)
        junk += "x\n";
    EXPECT_EQ(ReadInstrumentDefaults(junk, "I").warnings.size(), 21u);
    EXPECT_EQ(ReadInstrumentDefaults(junk, "I").warnings.back(),
              "I: 80 more lines are passed over.");
}

TEST(InstrumentDefaults, AwkwardNamesComeBackAndHandWrittenOnesAreUnderstood) {
    InstrumentDefaults defaults;
    defaults.BeepOnError = true;
    defaults.Title = " two\nlines ";
    std::string text;
    const std::string names[] = {"",    "$GPRMC",       "[A]",      "a]b[", " x ",
                                 "%41", "\xFC\x01\x7F", "\xC3\xBC", "=;#"};
    for (const std::string& name : names)
        text = WithInstrumentDefaults(text, name, defaults);
    const InstrumentDefaultsReading reading = ReadInstrumentDefaults(text, "I");
    EXPECT_TRUE(reading.warnings.empty());
    EXPECT_EQ(reading.instruments.size(), std::size(names));
    defaults.Title = "two lines";
    for (const std::string& name : names)
        EXPECT_EQ(reading.Of(name), defaults) << name;

    struct {
        std::string section, name;
    } byHand[] = {{"A]B", "A]B"},
                  {"50%", "50%"},
                  {"%5dx", "]x"},
                  {"M\xC3\xBC", "M\xFC"}, // UTF-8
                  {"M\xFC", "M\xFC"},     // Latin-1
                  {"\xE6\xB5\xB7", "\xE6\xB5\xB7"}};
    for (const auto& row : byHand)
        EXPECT_TRUE(
            ReadInstrumentDefaults('[' + row.section + "]\nImmersed=1", "I").Of(row.name).Immersed)
            << row.section;
}

TEST(InstrumentDefaults, WritingChangesNothingElse) {
    InstrumentDefaults wet;
    wet.Immersed = true;
    wet.Title = "deck";
    const std::string keys = "LogEnabled=1\nAcquisitionEnabled=1\nErrorChecking=1\nCounterCheck=1\n"
                             "ChecksumCheck=1\n";
    EXPECT_EQ(WithInstrumentDefaults("", "A", wet),
              "[A]\nImmersed=1\n" + keys + "BeepOnError=0\nTitle=deck\n");
    const std::string before =
        "# mine\nstray\n[A]\nColour = blue\nimmersed = maybe\n; and\nBeepOnError = 0\n\n"
        "; of B\n[B]\nImmersed=0";
    EXPECT_EQ(WithInstrumentDefaults(before, "A", wet),
              "# mine\nstray\n[A]\nColour = blue\nImmersed=1\n; and\nBeepOnError = 0\n" + keys +
                  "Title=deck\n\n; of B\n[B]\nImmersed=0");
    EXPECT_EQ(WithInstrumentDefaults(before, "B", wet),
              before.substr(0, before.size() - 1) + "1\n" + keys + "BeepOnError=0\nTitle=deck\n");
    // A section that stands twice is set in both places, whichever a reader believes.
    const std::string twice =
        WithInstrumentDefaults("[A]\r\nImmersed=0\r\n[B]\r\n[A]\r\nImmersed=0\r\n", "A", wet);
    EXPECT_EQ(twice.substr(0, 51), "[A]\r\nImmersed=1\r\n[B]\r\n[A]\r\nImmersed=1\r\nLogEnabled=1");
    for (const std::string& text : {before, twice}) {
        const std::string once = WithInstrumentDefaults(text, "A", wet);
        EXPECT_EQ(WithInstrumentDefaults(once, "A", wet), once);
        EXPECT_EQ(ReadInstrumentDefaults(once, "I").Of("A"), wet);
    }
}

TEST(InstrumentDefaults, AFileThatCannotBeReadIsNotReplaced) {
    const CTempFolder temp;
    const std::string path = temp.Path + "new/home/Instruments.ini";
    EXPECT_TRUE(LoadInstrumentDefaults(path).warnings.empty());
    InstrumentDefaults wet;
    wet.Immersed = true;
    EXPECT_EQ(SaveInstrumentDefaults(path, "A", wet), "");
    EXPECT_EQ(LoadInstrumentDefaults(path).Of("A"), wet);
    EXPECT_EQ(SaveInstrumentDefaults(path, "B", {}), "");
    EXPECT_EQ(LoadInstrumentDefaults(path).Of("A"), wet);

    std::filesystem::create_directories(temp.Path + "Instruments.ini");
    EXPECT_EQ(SaveInstrumentDefaults(temp.Path + "Instruments.ini", "A", wet),
              temp.Path + "Instruments.ini: cannot be read. The file could not be accessed.");
    EXPECT_EQ(LoadInstrumentDefaults(temp.Path + "Instruments.ini").warnings.size(), 1u);
}

TEST(InstrumentDefaults, WhatTheSessionSaysGoesFirst) {
    InstrumentDefaults stored;
    stored.Immersed = stored.BeepOnError = true;
    stored.CounterCheck = false;
    stored.Title = "stored";
    InstrumentRecord record;
    EXPECT_EQ(SettingsOf(record, stored), stored);
    record.immersed = record.acquire = record.log = record.check = record.checkSum = false;
    record.checkCounter = true;
    record.title = "";
    InstrumentDefaults expected{false, false, false, false, true, false, true, ""};
    EXPECT_EQ(SettingsOf(record, stored), expected);
}

} // namespace
} // namespace qor
