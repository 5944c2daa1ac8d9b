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
                 .Add("bad.cal", "PRES NONE '' 4 BU 0 COUNT\n")
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
    EXPECT_THAT(Sink.Messages(),
                ElementsAre(testing::HasSubstr("INSTRUMENT definition line not found.\r\n")));
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
        {CZipMaker().Add("sub/Properties.txt", Properties).Bytes(), {noProperties}},
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

TEST_F(PackageTest, HostileMembersAreReportedAndTheLoopGoesOn) {
    const auto definitionOf = [](std::string_view line) {
        std::string text = Definition;
        while (text.size() < (2 << 20))
            text += line;
        return text;
    };
    CZipMaker zip;
    zip.Add("Properties.txt", Properties);
    std::vector<ZipMember> faults = {
        {.name = "encrypted.cal", .flags = 1},
        {.name = "method.cal", .method = 6},
        {.name = "crc.cal", .crcFault = 1},
        {.name = "short.cal", .size = 5000},
        {.name = "more.cal", .method = 8, .size = 10},
        {.name = "damaged.cal", .method = 8, .packed = "\xff\xff\xff\xff"},
        {.name = "huge.cal", .size = (16 << 20) + 1},
        {.name = "line.cal", .content = definitionOf("#")},
        {.name = "sensors.cal", .content = definitionOf("AUX NONE '' 1 BU 0 COUNT\n")},
    };
    for (const char* name :
         {"../up.cal", "a/../../up.cal", "/abs.cal", "C:drive.cal", "back\\slash.cal",
          "sub/NUL.cal", "com1 .x.cal", "dot./a.cal", "t\xfcr.cal", "line\n.cal"})
        faults.push_back({.name = name});
    faults.push_back({.name = std::string(201, 'x') + ".cal"});
    std::vector<std::string> expected;
    for (ZipMember& fault : faults) {
        if (fault.content.empty())
            fault.content = Definition;
        zip.Add(fault);
        expected.push_back(NotExtracted(fault.name));
    }
    zip.Add("good.cal", definitionOf("# costs no memory, whatever there is of it\n"));
    zip.Add("./good.cal", Definition).Add("x/../ok.tdf", Definition);
    expected.push_back(NotExtracted("./good.cal"));
    const LoadedPackage loaded = Load(zip);
    EXPECT_EQ(loaded.messages, expected);
    EXPECT_THAT(Names(loaded), ElementsAre("good.cal", "x/../ok.tdf"));
}

TEST_F(PackageTest, BombsAreRefusedBeforeAnythingIsInflated) {
    CZipMaker many, large;
    for (int i = 0; i <= 1024; ++i)
        many.Add(Format("%d.cal", i), "");
    large.Add("Properties.txt", Properties);
    for (const char* name : {"a.cal", "b.cal", "c.cal"})
        large.Add({.name = name, .method = 8, .packed = "?", .size = 12 << 20});
    const std::string tooLarge = About("is larger than a package may be: 1024 files, 32 MB of "
                                       "definition files, 64 MB in all. It was not opened.");
    EXPECT_THAT(Load(many).messages, ElementsAre(tooLarge));
    // A count that lies.
    EXPECT_THAT(Load(many.Bytes(1)).messages, ElementsAre(About("could not be opened.")));
    EXPECT_THAT(Load(large).messages, ElementsAre(tooLarge));
    // End records by the hundred, each of which the library would follow.
    std::string ends;
    for (int i = 0; i < 100; ++i)
        ends += CZipMaker().Bytes();
    EXPECT_THAT(Load(CZipMaker().Add("Properties.txt", Properties).Bytes(-1, ends)).messages,
                ElementsAre(About("could not be opened.")));
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
