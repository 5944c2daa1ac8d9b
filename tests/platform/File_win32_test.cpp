// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files as Windows has them: causes of failures, exclusive sharing, the read-only attribute, names
// beyond the code page and beyond the plain length; and the names of ports.
#if defined(_WIN32)
#include "platform/File.h"
#include "platform/SystemText.h"
#include "platform/Win32Support.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

namespace qor {
namespace {

constexpr char Umlauts[] =
    "t\xC3\xA4g-\xE6\xB5\xB7.raw"; // UTF-8, one letter of it in no 8-bit page

class AFile : public testing::Test {
  protected:
    AFile() {
        auto folder =
            std::filesystem::temp_directory_path() /
            ("qorfile" + std::to_string(std::hash<std::thread::id>{}(std::this_thread::get_id())) +
             testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
        Folder = NarrowText(folder.wstring()) + "\\";
    }
    ~AFile() override {
        std::error_code ignored;
        (void)SetReadOnly(Folder + "done.raw", false);
        std::filesystem::remove_all(WideText(Folder), ignored);
    }
    void Put(const std::string& name, const std::string& content) {
        std::ofstream(std::filesystem::path(WideText(Folder + name)), std::ios::binary) << content;
    }
    std::string Content(const std::string& name) {
        std::ostringstream text;
        std::filesystem::path path(WideText(Folder + name));
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    std::string Folder;
    CFile File;
};

TEST_F(AFile, OpenFailuresHaveTheirCause) {
    Put("plain", "x");
    struct {
        std::string path;
        FileCause reading, creating;
    } cases[] = {
        {Folder + "none", FileCause::FileNotFound, FileCause::None},
        {Folder + "no\\such\\folder", FileCause::BadPath, FileCause::BadPath},
        {Folder + "wild*card", FileCause::BadPath, FileCause::BadPath},
        {Folder + std::string("cut\0off", 7), FileCause::BadPath, FileCause::BadPath},
        {"", FileCause::BadPath, FileCause::BadPath},
        {Folder + ".", FileCause::AccessDenied, FileCause::AccessDenied},
        {"NUL", FileCause::AccessDenied, FileCause::AccessDenied},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(File.OpenForReading(row.path), row.reading) << row.path;
        EXPECT_FALSE(File.IsOpen());
        EXPECT_EQ(File.CreateExclusive(row.path), row.creating) << row.path;
        File.Close();
    }
}

TEST_F(AFile, OpenLogIsSharedWithNobodyAndKeepsItsContent) {
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("first")), FileCause::None);
    CFile second;
    EXPECT_EQ(second.CreateExclusive(Folder + "log"), FileCause::SharingViolation);
    EXPECT_EQ(second.OpenForReading(Folder + "log"), FileCause::SharingViolation);
    File.Close();
    EXPECT_EQ(Content("log"), "first");
}

TEST_F(AFile, ReadOnlyFileIsReplacedOnlyAfterItsAttributeIsCleared) {
    Put("done.raw", "kept");
    ASSERT_EQ(SetReadOnly(Folder + "done.raw", true), FileCause::None);
    bool readOnly = false;
    ASSERT_EQ(IsReadOnly(Folder + "done.raw", readOnly), FileCause::None);
    EXPECT_TRUE(readOnly);
    EXPECT_EQ(File.CreateExclusive(Folder + "done.raw"), FileCause::AccessDenied);
    EXPECT_EQ(File.OpenForWriting(Folder + "done.raw"), FileCause::AccessDenied);
    EXPECT_EQ(Content("done.raw"), "kept");
    ASSERT_EQ(SetReadOnly(Folder + "done.raw", false), FileCause::None);
    EXPECT_EQ(File.CreateExclusive(Folder + "done.raw"), FileCause::None);
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

TEST_F(AFile, TruncateCutsAndGoesOnThere) {
    ASSERT_EQ(File.CreateExclusive(Folder + "raw"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("record1rec")), FileCause::None);
    ASSERT_EQ(File.Truncate(7), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("X")), FileCause::None);
    std::uint64_t size = 0;
    EXPECT_EQ(File.Size(size), FileCause::None);
    EXPECT_EQ(size, 8u);
    File.Close();
    EXPECT_EQ(Content("raw"), "record1X");
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
    EXPECT_EQ(Content("raw").size(), Records * 10u);
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

TEST_F(AFile, ReadsToTheEndAndMovesWithItsHandle) {
    Put("in", "abcdef");
    ASSERT_EQ(File.OpenForReading(Folder + "in"), FileCause::None);
    ASSERT_EQ(File.SeekTo(4), FileCause::None);
    CFile moved = std::move(File);
    std::uint8_t buffer[4];
    std::size_t got = 9;
    ASSERT_EQ(moved.Read(buffer, got), FileCause::None);
    EXPECT_EQ(AsText({buffer, got}), "ef");
    ASSERT_EQ(moved.Read(buffer, got), FileCause::None);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(CFile().Read(buffer, got), FileCause::InvalidFile);
}

TEST(PortName, OpensAtAnyNumber) {
    EXPECT_EQ(WidePortName("COM3"), L"\\\\.\\COM3");
    EXPECT_EQ(WidePortName("com12"), L"\\\\.\\com12");
    EXPECT_EQ(WidePortName("\\\\.\\COM12"), L"\\\\.\\COM12");
    EXPECT_EQ(WidePortName("COMMON"), L"COMMON");
    EXPECT_EQ(WidePortName("COM"), L"COM");
}

TEST(SystemText, EndsTheLineOnceAndNamesAnUnknownError) {
    std::string text = SystemErrorText(5);
    EXPECT_TRUE(text.ends_with("\r\n") && !text.ends_with("\r\n\r\n")) << text;
    EXPECT_EQ(SystemErrorText(0x2FFFFFFF), "Unknown error 805306367\r\n");
}

} // namespace
} // namespace qor
#endif
