// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/TempFolder.h"
#include "fakes/ZipMaker.h"
#include "session/FileDescription.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(FileDescription, SaysWhatAddingWouldBring) {
    const CTempFolder temp;
    const std::string good = "INSTRUMENT HDR '' 3 AS 0 NONE\nPRES NONE 'dbar' 8 BD 0 COUNT\n";
    const std::string repaired =
        "INSTRUMENT REP '' 3 AS 0 NONE\nT NONE '' 1 BU 0 COUNT\nPRES NONE '' V BD 0 COUNT\n";
    const std::string bad = "PRES NONE '' 4 BU 0 COUNT\n";

    const FileDescription one = DescribeFile(temp.Put("a.cal", good));
    EXPECT_EQ(one.kind, FileKind::Definition);
    EXPECT_EQ(one.title, "HDR");
    EXPECT_THAT(one.instruments, ElementsAre("HDR"));
    EXPECT_THAT(one.faults, ElementsAre());

    const FileDescription mended = DescribeFile(temp.Put("r.tdf", repaired));
    EXPECT_EQ(mended.title, "REP");
    EXPECT_THAT(mended.faults, ElementsAre(HasSubstr("Sensor ignored.")));

    const FileDescription nameless = DescribeFile(temp.Put("gps.tdf", "# nothing\n"));
    EXPECT_EQ(nameless.title, "gps");
    EXPECT_THAT(nameless.instruments, ElementsAre("gps"));

    const FileDescription broken = DescribeFile(temp.Put("bad.cal", bad));
    EXPECT_EQ(broken.title, "bad");
    EXPECT_THAT(broken.instruments, ElementsAre());
    EXPECT_THAT(broken.faults, ElementsAre(HasSubstr("INSTRUMENT definition line not found.")));

    const std::string zip = CZipMaker()
                                .Add("Properties.txt", "NAME = Cast\nBAUDRATE = 57600\n")
                                .Add("a.cal", good)
                                .Add("b.cal", bad)
                                .Add("c.tdf", repaired)
                                .Bytes();
    const FileDescription package = DescribeFile(temp.Put("cast.sip", zip));
    EXPECT_EQ(package.kind, FileKind::Package);
    EXPECT_EQ(package.title, "Cast");
    EXPECT_EQ(package.baudRate, "57600");
    EXPECT_THAT(package.instruments, ElementsAre("HDR", "REP"));
    EXPECT_THAT(package.faults, ElementsAre(HasSubstr("b.cal"), HasSubstr("Sensor ignored.")));

    const FileDescription renamed = DescribeFile(temp.Put("cast.zip", zip));
    EXPECT_EQ(renamed.title, "Cast");
    EXPECT_THAT(renamed.faults, ElementsAre(NotInstrumentFile(temp.Path + "cast.zip"),
                                            HasSubstr("b.cal"), HasSubstr("Sensor ignored.")));
    const FileDescription missing = DescribeFile(temp.Path + "none.sip");
    EXPECT_EQ(missing.title, "none");
    EXPECT_EQ(missing.baudRate, "");
    EXPECT_THAT(missing.faults, ElementsAre(HasSubstr("could not be opened.")));

    const FileDescription log = DescribeFile(temp.Put("2026.raw", "QORHDR "));
    EXPECT_EQ(log.kind, FileKind::RawLog);
    EXPECT_EQ(log.title, "2026");
    EXPECT_THAT(log.faults, ElementsAre());
    EXPECT_THAT(DescribeFile(temp.Put("notes.txt", "n")).faults,
                ElementsAre("The file extension for " + temp.Path +
                            "notes.txt \r\nis not a Package/Calibration/TDF file."));
}

} // namespace
} // namespace qor
