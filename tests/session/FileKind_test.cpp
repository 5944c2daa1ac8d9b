// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakes/TempFolder.h"
#include "session/FileKind.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(FileKind, IsToldByTheExtension) {
    const struct {
        const char* path;
        FileKind kind;
    } cases[] = {
        {"cast.sip", FileKind::Package}, {"sub.cal/CAST.SIP", FileKind::Package},
        {"a.Cal", FileKind::Definition}, {"c:\\x.raw\\a.tdf", FileKind::Definition},
        {"a.qor", FileKind::Session},    {"a.raw", FileKind::RawLog},
        {"a.RAW.GZ", FileKind::RawLog},  {"a.raw.zst", FileKind::RawLog},
        {"a.cal.gz", FileKind::Other},   {"gz", FileKind::Other},
        {"a.cal.txt", FileKind::Other},  {"sip", FileKind::Other},
        {"a.sip/b", FileKind::Other},    {"", FileKind::Other},
    };
    for (const auto& one : cases)
        EXPECT_EQ(KindByName(one.path), one.kind) << one.path;
    EXPECT_EQ(StemOf("x.y/a.b.sip"), "a.b");
    EXPECT_EQ(StemOf("x.y\\a"), "a");
}

TEST(FileKind, IsToldByTheContentWhereTheNameSaysNothing) {
    const struct {
        std::string content;
        FileKind kind;
    } cases[] = {
        {"PK\3\4", FileKind::Package},
        {"PK\5\6", FileKind::Package},
        {"QORHDR a (CRUISE-ID)\r\n", FileKind::RawLog},
        {"# of spring\n\n  Instrument\tHDR '' 3 AS 0 NONE\n", FileKind::Definition},
        {"\xef\xbb\xbfVLF_INSTRUMENT $GPRMC '' 6 AS 0 NONE", FileKind::Definition},
        {"INSTRUMENTS of the cruise\n", FileKind::Other},
        {"the INSTRUMENT\n", FileKind::Other},
        {std::string("\0\nINSTRUMENT\n", 13), FileKind::Other},
        {"\xef\xbb\xbf {\"title\": \"\", \"qorview-session\": 1}", FileKind::Session},
        {"{\"title\": \"\"}", FileKind::Other},
        {"\"qorview-session\": 1", FileKind::Other},
        {"", FileKind::Other},
    };
    const CTempFolder temp;
    for (const auto& one : cases)
        EXPECT_EQ(KindOfFile(temp.Put("x.bin", one.content)), one.kind) << one.content;
    EXPECT_EQ(KindOfFile(temp.Put("named.raw", "PK\3\4")), FileKind::RawLog);
    EXPECT_EQ(KindOfFile(temp.Path + "missing"), FileKind::Other);
    EXPECT_EQ(KindOfFile(temp.Path), FileKind::Other);
}

} // namespace
} // namespace qor
