// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files as POSIX has them: causes of failures, exclusive sharing that harms nobody's log, and the
// read-only mark that also holds for the superuser.
#if !defined(_WIN32)
#include "platform/File.h"
#include "platform/SystemText.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace qor {
namespace {

class AFile : public testing::Test {
  protected:
    AFile() {
        std::string pattern = testing::TempDir() + "qorfileXXXXXX";
        Folder = ::mkdtemp(pattern.data()) + std::string("/");
    }
    ~AFile() override {
        std::error_code ignored;
        std::filesystem::remove_all(Folder, ignored);
    }
    void Put(const std::string& name, const std::string& content) {
        std::ofstream(Folder + name, std::ios::binary) << content;
    }
    std::string Content(const std::string& name) {
        std::ostringstream text;
        text << std::ifstream(Folder + name, std::ios::binary).rdbuf();
        return text.str();
    }
    std::string Folder;
    CFile File;
};

TEST_F(AFile, OpenFailuresHaveTheirCause) {
    Put("plain", "x");
    ASSERT_EQ(::symlink("loop", (Folder + "loop").c_str()), 0);
    struct {
        std::string path;
        FileCause reading, creating;
    } cases[] = {
        {Folder + "none", FileCause::FileNotFound, FileCause::None},
        {Folder + "no/such/folder", FileCause::BadPath, FileCause::BadPath},
        {Folder + "plain/below", FileCause::BadPath, FileCause::BadPath},
        {Folder + "loop", FileCause::BadPath, FileCause::BadPath},
        {Folder + std::string(300, 'n'), FileCause::BadPath, FileCause::BadPath},
        {Folder + std::string("cut\0off", 7), FileCause::BadPath, FileCause::BadPath},
        {"", FileCause::BadPath, FileCause::BadPath},
        {Folder, FileCause::AccessDenied, FileCause::AccessDenied},
        {"/dev/zero", FileCause::AccessDenied, FileCause::AccessDenied},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(File.OpenForReading(row.path), row.reading) << row.path;
        EXPECT_FALSE(File.IsOpen());
        EXPECT_EQ(File.CreateExclusive(row.path), row.creating) << row.path;
        File.Close();
    }
}

TEST_F(AFile, OpeningAPipeWithoutAnotherEndDoesNotHang) {
    ASSERT_EQ(::mkfifo((Folder + "pipe").c_str(), 0600), 0);
    EXPECT_EQ(File.OpenForReading(Folder + "pipe"), FileCause::None);
    EXPECT_EQ(CFile().OpenForWriting(Folder + "pipe"), FileCause::None);
    File.Close();
    EXPECT_EQ(File.OpenForWriting(Folder + "pipe"), FileCause::AccessDenied);
}

TEST_F(AFile, SecondCreatorIsRefusedAndTheOpenLogKeepsItsContent) {
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("first")), FileCause::None);
    CFile second;
    EXPECT_EQ(second.CreateExclusive(Folder + "log"), FileCause::SharingViolation);
    EXPECT_EQ(Content("log"), "first");
    File.Close();
    EXPECT_EQ(second.CreateExclusive(Folder + "log"), FileCause::None);
    EXPECT_EQ(Content("log"), "");
}

TEST_F(AFile, ReadOnlyFileIsNotTouchedNotEvenByTheSuperuser) {
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

TEST_F(AFile, TruncateCutsAndGoesOnThere) {
    ASSERT_EQ(File.CreateExclusive(Folder + "raw"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("record1rec")), FileCause::None);
    ASSERT_EQ(File.Truncate(7), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("X")), FileCause::None);
    ASSERT_EQ(File.Sync(), FileCause::None);
    std::uint64_t size = 0;
    EXPECT_EQ(File.Size(size), FileCause::None);
    EXPECT_EQ(size, 8u);
    EXPECT_EQ(Content("raw"), "record1X");
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

TEST_F(AFile, FullDiskIsTold) {
    ASSERT_EQ(File.OpenForWriting("/dev/full"), FileCause::None);
    EXPECT_EQ(File.Write(AsBytes("x")), FileCause::DiskFull);
}

TEST_F(AFile, FullPathIsAbsoluteAndKeepsLinks) {
    ASSERT_EQ(::symlink(Folder.c_str(), (Folder + "link").c_str()), 0);
    EXPECT_EQ(FullPathOf(Folder + "./a"), Folder + "a");
    EXPECT_EQ(FullPathOf(Folder + "link/a"), Folder + "link/a");
    EXPECT_EQ(FullPathOf("a").front(), '/');
}

TEST(SystemText, IsTheSystemsMessageAndEndsTheLine) {
    EXPECT_EQ(SystemErrorText(EIO), "Input/output error\r\n");
    EXPECT_EQ(SystemErrorText(0xFFFFFFFF), "Unknown error 4294967295\r\n");
}

TEST_F(AFile, DuplicateOutlivesTheOriginalButNotItsClaim) {
    CFile copy, next;
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Duplicate(copy), FileCause::None);
    EXPECT_EQ(next.CreateExclusive(Folder + "log"), FileCause::SharingViolation);
    ASSERT_EQ(File.Write(AsBytes("kept")), FileCause::None);
    File.Close();
    EXPECT_EQ(copy.Sync(), FileCause::None);
    ASSERT_EQ(next.CreateExclusive(Folder + "log"), FileCause::None);
    copy.Close();
    EXPECT_EQ(copy.CreateExclusive(Folder + "log"), FileCause::SharingViolation);
    EXPECT_EQ(File.Duplicate(copy), FileCause::InvalidFile);
}

} // namespace
} // namespace qor
#endif
