// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/Text.h"
#include "fakes/CollectingSink.h"
#include "fakes/ScriptedUser.h"
#include "fakes/TempFolder.h"
#include "fakes/ZipMaker.h"
#include "session/Package.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qor {
namespace {

using testing::ElementsAre;

const std::string Definition = "INSTRUMENT HDR '' 3 AS 0 NONE\nPRES NONE 'dbar' 8 BD 0 COUNT\n";
const std::string Properties = "NAME = Cast\r\nBAUDRATE = 57600\r\n";

std::string NotExtracted(const std::string& name) {
    return "The file " + name + "\r\ncould not be extractedfrom the Instrument Package file.";
}
std::string NotDefinition(const std::string& name) {
    return "The file extension for " + name + " \r\nis not a Calibration/TDF file.";
}

/// A package file of the test's making, and what reading it gave.
class PackageTest : public testing::Test {
  protected:
    LoadedPackage Load(const std::string& bytes) {
        Temp.Put("cast.sip", bytes);
        LoadedPackage loaded = LoadPackage(Path, User, Sink);
        EXPECT_EQ(loaded.messages, User.TakeMessages());
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Temp.Path), {}), 1);
        return loaded;
    }
    LoadedPackage Load(const CZipMaker& zip) { return Load(zip.Bytes()); }
    /// The one message about the package as a whole.
    std::string About(const std::string& what) {
        return "The Instrument Package file: " + Path + " \r\n" + what;
    }
    static std::vector<std::string> Names(const LoadedPackage& loaded) {
        std::vector<std::string> names;
        for (const PackageMember& member : loaded.members)
            names.push_back(member.name);
        return names;
    }

    CTempFolder Temp;
    const std::string Path = Temp.Path + "cast.sip";
    CScriptedUser User;
    CCollectingSink Sink;
};

TEST_F(PackageTest, LoadsDefinitionsInArchiveOrderAndPassesOverTheRest) {
    const LoadedPackage loaded =
        Load(CZipMaker()
                 .Add({.name = "PROFILER.CAL", .content = Definition, .method = 8})
                 .Add("notes.txt", "n")
                 .Add("Properties.txt", Properties)
                 .Add("deep/", "")
                 .Add("deep/er/./b.Tdf", Definition)
                 .Add("a.cal", Definition));
    EXPECT_TRUE(loaded.ok);
    EXPECT_EQ(loaded.name, "Cast");
    EXPECT_EQ(loaded.baudRate, "57600");
    EXPECT_THAT(loaded.messages, ElementsAre(NotDefinition("notes.txt")));
    EXPECT_THAT(Names(loaded), ElementsAre("PROFILER.CAL", "deep/er/./b.Tdf", "a.cal"));
    EXPECT_EQ(loaded.members[0].instrument->FileKind(), "Calibration File");
    EXPECT_EQ(loaded.members[1].instrument->FileKind(), "Telemetry Definition File");
    EXPECT_EQ(loaded.members[0].instrument->SensorCount(), 1);
    EXPECT_THAT(loaded.members[0].instrument->FilePath(),
                testing::EndsWith("cast.sip/PROFILER.CAL"));
    EXPECT_TRUE(loaded.failed.empty());
}

TEST_F(PackageTest, SaysWhyThePackageAsAWholeIsRefused) {
    const CZipMaker good = CZipMaker().Add("Properties.txt", Properties).Add("a.cal", Definition);
    const std::string noProperties =
        "The properties file could not be extracted\r\nfrom the Instrument Package file.";
    const struct {
        std::string bytes;
        std::vector<std::string> messages;
    } cases[] = {
        {"", {About("could not be opened.")}},
        {"no archive", {About("could not be opened.")}},
        {good.Bytes().substr(0, 200), {About("could not be opened.")}},
        {CZipMaker().Add("a.cal", Definition).Bytes(), {noProperties}},
        {CZipMaker().Add({.name = "Properties.txt", .content = Properties, .crcFault = 1}).Bytes(),
         {noProperties}},
        {CZipMaker().Add("Properties.txt", "").Bytes(),
         {"The Instrument Package Baud Rate could not be found.\r\n"
          "The default Baud Rate has been set to 19200 bps.",
          About("contains no valid Instruments.")}},
        {CZipMaker().Add("a.txt", "").Add("Properties.txt", Properties).Add("b.txt", "").Bytes(),
         {NotDefinition("a.txt"), NotDefinition("b.txt"), About("contains no valid Instruments.")}},
    };
    for (const auto& one : cases) {
        const LoadedPackage loaded = Load(one.bytes);
        EXPECT_FALSE(loaded.ok);
        EXPECT_EQ(loaded.messages, one.messages);
    }
    EXPECT_TRUE(Load(good).ok);
    EXPECT_FALSE(LoadPackage(Path + "x", User, Sink).ok);
}

TEST_F(PackageTest, AMemberThatCannotBeExtractedCostsNobodyElse) {
    const auto definitionOf = [](std::string_view line) {
        std::string text = Definition;
        while (text.size() < (2 << 20))
            text += line;
        return text;
    };
    std::vector<ZipMember> faults = {
        {.name = "encrypted.cal", .flags = 1},
        {.name = "encrypted.txt", .flags = 1},
        {.name = "method.cal", .method = 6},
        {.name = "bzip2.cal", .method = 12},
        {.name = "aes.cal", .method = 99},
        {.name = "crc.cal", .crcFault = 1},
        {.name = "less.cal", .size = 5000},
        {.name = "more.cal", .method = 8, .size = 10},
        {.name = "damaged.cal", .method = 8, .packed = "\xff\xff\xff\xff"},
        {.name = "cut.cal", .packedSize = 1 << 20},
        {.name = "nowhere.cal", .offset = 1 << 20},
        {.name = "no header.cal", .offset = 7},
        {.name = "extra.cal", .extra = "\1\2\3"},
        {.name = "long extra.cal", .extra = "AB\xff\xff"},
        {.name = "no zip64.cal", .size = 0xffffffff},
        {.name = "zip64.cal", .size = 0xffffffff, .extra = std::string("\1\0\4\0....", 8)},
        {.name = "name length.cal", .nameFault = 5},
        {.name = "line.cal", .content = definitionOf("#")},
        {.name = "sensors.cal", .content = definitionOf("AUX NONE '' 1 BU 0 COUNT\n")},
    };
    for (const char* name : {"../up.cal", "a/../../up.cal", "/abs.cal", "C:drive.cal", "c:/x.cal",
                             "\x1f.cal", "line\n.cal", "\x7f.cal", "\xc2\x9b.cal", ""})
        faults.push_back({.name = name});
    faults.push_back({.name = std::string("nul.cal\0.txt", 12)});
    faults.push_back({.name = std::string(252, 'x') + ".cal"});
    CZipMaker zip;
    zip.Add("Properties.txt", Properties);
    std::vector<std::string> expected;
    for (ZipMember& fault : faults) {
        if (fault.content.empty())
            fault.content = Definition;
        expected.push_back(NotExtracted(fault.name));
        zip.Add(std::move(fault));
    }
    zip.Add("good.cal", definitionOf("# costs no memory, whatever there is of it\n"));
    const LoadedPackage loaded = Load(zip);
    EXPECT_EQ(loaded.messages, expected);
    EXPECT_THAT(Names(loaded), ElementsAre("good.cal"));
    ASSERT_EQ(loaded.failed.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(NotExtracted(loaded.failed[i].name), expected[i]);
        EXPECT_FALSE(loaded.failed[i].instrument);
    }
}

TEST_F(PackageTest, NamesAreShownInUtf8AndEveryOneOfThemLoads) {
    const struct {
        const char *stored, *shown;
    } names[] = {
        {"t\xc3\xbcr.cal", "t\xc3\xbcr.cal"},
        {"t\x81r.cal", "t\xc3\xbcr.cal"},
        {"\xe1\xec\xff.cal", "\xc3\x9f\xe2\x88\x9e\xc2\xa0.cal"},
        {"sub\\b.cal", "sub/b.cal"},
        {"NUL.cal", "NUL.cal"},
        {"1:30 .cal", "1:30 .cal"},
        {"same.cal", "same.cal"},
        {"same.cal", "same.cal"},
        {"x/../ok.tdf", "x/../ok.tdf"},
        {"..x/a.tdf", "..x/a.tdf"},
    };
    CZipMaker zip;
    zip.Add("Properties.txt", Properties).Add("folder\\", "");
    std::vector<std::string> expected;
    for (const int flags : {0, 0x800}) // the flag may be wrong either way
        for (const auto& name : names) {
            zip.Add({.name = name.stored, .content = Definition, .flags = flags});
            expected.push_back(name.shown);
        }
    expected.push_back(std::string(251, 'x') + ".cal");
    zip.Add(expected.back(), Definition);
    const LoadedPackage loaded = Load(zip);
    EXPECT_THAT(loaded.messages, ElementsAre());
    EXPECT_EQ(Names(loaded), expected);
}

TEST_F(PackageTest, AMemberThatDoesNotLoadIsToldByNameAndKeepsItsLog) {
    const LoadedPackage loaded = Load(CZipMaker()
                                          .Add("Properties.txt", Properties)
                                          .Add("bad.cal", "PRES NONE '' 4 BU 0 COUNT\n")
                                          .Add("a.cal", Definition));
    EXPECT_TRUE(loaded.ok);
    EXPECT_THAT(loaded.messages,
                ElementsAre("The file bad.cal\r\n"
                            "could not be loaded from the Instrument Package file.\r\n"
                            "INSTRUMENT definition line not found."));
    ASSERT_EQ(loaded.failed.size(), 1u);
    EXPECT_EQ(loaded.failed[0].name, "bad.cal");
    EXPECT_EQ(loaded.failed[0].status, DefinitionStatus::HeaderNotFound);
    EXPECT_THAT(Sink.Messages(), ElementsAre(loaded.failed[0].instrument->ParseLog()));
}

TEST_F(PackageTest, ThePropertiesAreFoundWhereverTheyArePacked) {
    const std::string other = "NAME = Other\r\nBAUDRATE = 9600\r\n";
    const std::string nameless = "BAUDRATE = 9600\r\n";
    const struct {
        CZipMaker zip;
        const char* name; ///< null: not found
    } cases[] = {
        {CZipMaker().Add("PROPERTIES.TXT", Properties), "Cast"},
        {CZipMaker().Add("./Properties.txt", Properties), "Cast"},
        {CZipMaker().Add("properties.txt", other).Add("Properties.txt", Properties), "Cast"},
        {CZipMaker().Add("sub/Properties.txt", other).Add("properties.txt", Properties), "Cast"},
        {CZipMaker().Add("sub\\properties.TXT", Properties), "Cast"},
        {CZipMaker().Add("a/Properties.txt", other).Add("b/Properties.txt", other), nullptr},
        {CZipMaker().Add("a/b/Properties.txt", other), nullptr},
        {CZipMaker().Add("../Properties.txt", other), nullptr},
        {CZipMaker().Add("xProperties.txt", other), nullptr},
        {CZipMaker().Add({.name = "Properties.txt", .content = other, .size = (1 << 20) + 1}),
         nullptr},
        {CZipMaker().Add("Properties.txt", "\xef\xbb\xbf" + Properties), "Cast"},
        {CZipMaker().Add("Properties.txt", nameless), "cast"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(&one - cases);
        const LoadedPackage loaded = Load(CZipMaker(one.zip).Add("a.cal", Definition));
        EXPECT_EQ(loaded.ok, one.name != nullptr);
        EXPECT_EQ(loaded.name, one.name ? one.name : "");
    }
}

TEST_F(PackageTest, DirectoriesThatLieAreReadAsFarAsTheyAreTrue) {
    const CZipMaker good = CZipMaker().Add("Properties.txt", Properties).Add("a.cal", Definition);
    const std::string other = CZipMaker().Add("b.cal", "").Bytes();
    const std::string cannot = "could not be opened.";
    const std::string tooLarge =
        "is larger than a package may be: 1024 files, 64 MB in all. It was not opened.";
    CZipMaker many;
    for (int i = 0; i <= 1024; ++i)
        many.Add(Format("%d.cal", i), "");
    const struct {
        std::string bytes, message; ///< no message: loads
    } cases[] = {
        {good.Bytes({.zip64 = true}), ""},
        {good.Bytes({.count = 1}), ""},
        {good.Bytes({.comment = CZipMaker().Bytes()}), ""},
        {good.Bytes({.comment = other}), ""},
        {good.Bytes({.comment = CZipMaker().Bytes({.count = 0, .size = 5})}), ""},
        {good.Bytes() + "left behind", ""},
        {good.Bytes({.count = 3}), cannot},
        {good.Bytes({.size = 90}), cannot},
        {good.Bytes({.size = 200}), cannot}, // reaches into the end record
        {good.Bytes({.size = 1 << 20}), cannot},
        {good.Bytes({.zip64 = true, .zip64At = 1 << 20}), cannot},
        {good.Bytes({.zip64 = true, .zip64At = 4}), cannot},
        {good.Bytes({.count = std::int64_t{1} << 40, .zip64 = true}), tooLarge},
        {many.Bytes(), tooLarge},
        {many.Bytes({.count = 1}), tooLarge},
        {good.Bytes({.count = 65535}), tooLarge},
        {std::string((2 << 20) + 99, '.') + "PK\5\6", cannot},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(&one - cases);
        const LoadedPackage loaded = Load(one.bytes);
        EXPECT_EQ(loaded.ok, one.message.empty());
        EXPECT_EQ(loaded.messages, one.message.empty()
                                       ? std::vector<std::string>()
                                       : std::vector<std::string>{About(one.message)});
    }
}

TEST_F(PackageTest, WhatCostsMoreThanItsSizeIsReadWithinBounds) {
    // Many blocks that unpack to nothing, used by every member.
    const std::string_view nothing("\0\0\0\xff\xff", 5);
    std::string packed;
    for (int i = 0; i < 200'000; ++i)
        packed += nothing;
    packed += DeflateStored(Definition);
    CZipMaker shared;
    shared.Add("Properties.txt", Properties);
    shared.Add({.name = "first.cal", .content = Definition, .method = 8, .packed = packed});
    const auto first = static_cast<std::int64_t>(30 + 14 + Properties.size());
    for (int i = 0; i < 99; ++i)
        shared.Add({.name = Format("%d.cal", i),
                    .content = Definition,
                    .method = 8,
                    .packedSize = static_cast<std::int64_t>(packed.size()),
                    .offset = first});
    const LoadedPackage loaded = Load(shared);
    EXPECT_EQ(loaded.members.size(), (64u << 20) / packed.size());
    EXPECT_EQ(loaded.members.size() + loaded.failed.size(), 100u);

    // What is inflated is bounded over all members, whether they load or not.
    const std::string comment = "#" + std::string(60000, '.') + "\n";
    std::string bomb = Definition;
    while (bomb.size() + comment.size() < (15 << 20))
        bomb += comment;
    CZipMaker large;
    large.Add("Properties.txt", Properties);
    large.Add("huge.cal", bomb + std::string((16 << 20) + 1 - bomb.size(), '\n'));
    for (const char* name : {"a.cal", "b.cal", "c.cal"})
        large.Add({.name = name, .content = bomb, .crcFault = name[0] == 'a'});
    EXPECT_THAT(Load(large).messages, ElementsAre(NotExtracted("huge.cal"), NotExtracted("a.cal"),
                                                  NotExtracted("c.cal")));
    EXPECT_THAT(Load(std::string((64 << 20) + 1, '.')).messages,
                ElementsAre(testing::HasSubstr("is larger than a package may be")));
}

TEST(PackageProperties, AreReadByTheRules) {
    const struct {
        const char* text;
        const char *name, *baudRate;
        bool found;
    } cases[] = {
        {"NAME = Cast 7\r\nBAUDRATE = 9600\r\n", "Cast 7", "9600", true},
        {"  baudrate = 9600  ", "", "9600", true},
        {"BAUDRATE=9600", "", "UDRATE=9600", true},
        {"; NAME = X\n;BAUDRATE = 1", "", "19200", false},
        {"NAME = A\nNAME = B = C\n", "B = C", "19200", false},
        {"NAME", "ME", "19200", false},
        {"NAME  =  two blanks", " two blanks", "19200", false},
        {"NAMES = A\nOTHER = B\n = C", "", "19200", false},
        {"\xef\xbb\xbfNAME = A", "A", "19200", false},
        {"", "", "19200", false},
    };
    for (const auto& one : cases) {
        const PackageProperties properties = ParseProperties(one.text);
        EXPECT_EQ(properties.name, one.name) << one.text;
        EXPECT_EQ(properties.baudRate, one.baudRate) << one.text;
        EXPECT_EQ(properties.baudRateFound, one.found) << one.text;
    }
}

} // namespace
} // namespace qor
