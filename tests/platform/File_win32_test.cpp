// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files as Windows has them: causes of failures, exclusive sharing, names beyond the code page and
// beyond the plain length; and the names of ports.
#if defined(_WIN32)
#include "FileFixture.h"
#include "platform/SystemText.h"
#include "platform/Win32Support.h"

#include <thread>

namespace qor {
namespace {

constexpr char Umlauts[] =
    "t\xC3\xA4g-\xE6\xB5\xB7.raw"; // UTF-8, one letter of it in no 8-bit page

TEST_F(AFile, OpenFailuresHaveTheirCause) {
    Temp.Put("plain", "x");
    const OpeningCase cases[] = {
        {Folder + "none", FileCause::FileNotFound, FileCause::None},
        {Folder + "no\\such\\folder", FileCause::BadPath, FileCause::BadPath},
        {Folder + "wild*card", FileCause::BadPath, FileCause::BadPath},
        {Folder + std::string("cut\0off", 7), FileCause::BadPath, FileCause::BadPath},
        {"", FileCause::BadPath, FileCause::BadPath},
        {Folder + ".", FileCause::AccessDenied, FileCause::AccessDenied},
        {"NUL", FileCause::AccessDenied, FileCause::AccessDenied},
    };
    ExpectCauses(cases);
}

TEST_F(AFile, OpenLogIsNotEvenRead) {
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    EXPECT_EQ(CFile().OpenForReading(Folder + "log"), FileCause::SharingViolation);
}

TEST_F(AFile, NamesBeyondTheCodePageAndThePlainLengthWork) {
    std::string deep = Folder + std::string(120, 'a') + "\\" + std::string(120, 'b');
    std::filesystem::create_directories(WidePath(deep));
    for (const std::string& path : {Folder + Umlauts, deep + "\\" + Umlauts}) {
        ASSERT_EQ(File.CreateExclusive(path), FileCause::None) << path;
        EXPECT_EQ(File.FullPath(), path);
        File.Close();
        EXPECT_TRUE(FileExists(path));
        EXPECT_TRUE(std::filesystem::exists(WidePath(path)));
        EXPECT_EQ(RemoveFile(path), FileCause::None);
        EXPECT_FALSE(FileExists(path));
    }
}

TEST_F(AFile, SyncBesideWritesLosesNothing) {
    constexpr int Records = 300;
    ASSERT_EQ(File.CreateExclusive(Folder + "raw"), FileCause::None);
    std::thread writer([&] {
        for (int i = 0; i < Records; ++i)
            EXPECT_EQ(File.Write(AsBytes("0123456789")), FileCause::None);
    });
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(File.Sync(), FileCause::None);
    writer.join();
    File.Close();
    EXPECT_EQ(Temp.Content("raw").size(), Records * 10u);
}

TEST_F(AFile, ClosedLogCanBeReplacedAsSoonAsItsDuplicateCloses) {
    CFile duplicate;
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Duplicate(duplicate), FileCause::None);
    File.Close();
    EXPECT_EQ(duplicate.Sync(), FileCause::None);
    std::thread synchroniser([&] { duplicate.Close(); });
    EXPECT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    synchroniser.join();
}

TEST_F(AFile, FileThatIsHeldForAMomentIsRenamed) {
    ASSERT_EQ(File.CreateExclusive(Folder + "part"), FileCause::None);
    EXPECT_NE(RenameToNew(Folder + "part", Folder + "whole"), FileCause::None) << "it is held";
    std::thread holder([&] { File.Close(); });
    EXPECT_EQ(RenameToNew(Folder + "part", Folder + "whole"), FileCause::None);
    holder.join();
    Temp.Put("part", "x");
    EXPECT_EQ(RenameToNew(Folder + "part", Folder + "whole"), FileCause::AccessDenied);
}

TEST_F(AFile, DevicesAreToldByTheirNames) {
    Temp.Put("plain", "x");
    for (const char* name : {"COM3", "com12", "\\\\.\\CNCA0", "NUL"})
        EXPECT_TRUE(IsDevice(name)) << name;
    for (const std::string& name :
         {Folder + "plain", Folder, Folder + "none", std::string("a.bin")})
        EXPECT_FALSE(IsDevice(name)) << name;
}

TEST(SystemText, EndsTheLineOnceAndNamesAnUnknownError) {
    std::string text = SystemErrorText(5);
    EXPECT_TRUE(text.ends_with("\r\n") && !text.ends_with("\r\n\r\n")) << text;
    EXPECT_EQ(SystemErrorText(0x2FFFFFFF), "Unknown error 805306367\r\n");
}

} // namespace
} // namespace qor
#endif
