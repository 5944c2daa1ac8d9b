// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files as POSIX has them: causes of failures, pipes, a full disk, links.
#if !defined(_WIN32)
#include "FileFixture.h"
#include "platform/DiskSpace.h"
#include "platform/SystemText.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace qor {
namespace {

TEST_F(AFile, OpenFailuresHaveTheirCause) {
    Temp.Put("plain", "x");
    ASSERT_EQ(::symlink("loop", (Folder + "loop").c_str()), 0);
    const OpeningCase cases[] = {
        {Folder + "none", FileCause::FileNotFound, FileCause::None},
        {Folder + "no/such/folder", FileCause::BadPath, FileCause::BadPath},
        {Folder + "plain/below", FileCause::BadPath, FileCause::BadPath},
        {Folder + "loop", FileCause::BadPath, FileCause::AccessDenied},
        {Folder + std::string(300, 'n'), FileCause::BadPath, FileCause::BadPath},
        {Folder + std::string("cut\0off", 7), FileCause::BadPath, FileCause::BadPath},
        {"", FileCause::BadPath, FileCause::BadPath},
        {Folder, FileCause::AccessDenied, FileCause::AccessDenied},
        {"/dev/zero", FileCause::AccessDenied, FileCause::AccessDenied},
    };
    ExpectCauses(cases);
}

TEST_F(AFile, OpeningAPipeWithoutAnotherEndDoesNotHang) {
    ASSERT_EQ(::mkfifo((Folder + "pipe").c_str(), 0600), 0);
    EXPECT_EQ(File.OpenForReading(Folder + "pipe"), FileCause::None);
    EXPECT_EQ(CFile().OpenForWriting(Folder + "pipe"), FileCause::None);
    File.Close();
    EXPECT_EQ(File.OpenForWriting(Folder + "pipe"), FileCause::AccessDenied);
}

TEST_F(AFile, FullDiskIsTold) {
    ASSERT_EQ(File.OpenForWriting("/dev/full"), FileCause::None);
    EXPECT_EQ(File.Write(AsBytes("x")), FileCause::DiskFull);
    EXPECT_FALSE(FreeDiskSpace("/proc")) << "no blocks are counted: that is not full";
}

TEST_F(AFile, WhatAnotherProgramCutStaysMissing) {
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("0123456789")), FileCause::None);
    ASSERT_EQ(::truncate((Folder + "log").c_str(), 4), 0);
    ASSERT_EQ(File.Write(AsBytes("ab")), FileCause::None);
    EXPECT_EQ(Temp.Content("log"), "0123ab");
}

TEST_F(AFile, FullPathIsAbsoluteAndKeepsLinks) {
    ASSERT_EQ(::symlink(Folder.c_str(), (Folder + "link").c_str()), 0);
    EXPECT_EQ(FullPathOf(Folder + "./a"), Folder + "a");
    EXPECT_EQ(FullPathOf(Folder + "link/a"), Folder + "link/a");
    EXPECT_EQ(FullPathOf("a").front(), '/');
}

TEST_F(AFile, LinksAreSeenAsLinksAndAsWhatTheyLeadTo) {
    Temp.Put("log", "");
    ASSERT_EQ(::symlink((Folder + "log").c_str(), (Folder + "link").c_str()), 0);
    ASSERT_EQ(::symlink((Folder + "none").c_str(), (Folder + "broken").c_str()), 0);
    EXPECT_TRUE(IsSymbolicLink(Folder + "link"));
    EXPECT_TRUE(IsSymbolicLink(Folder + "broken"));
    EXPECT_FALSE(IsSymbolicLink(Folder + "log"));
    EXPECT_TRUE(IsSameFile(Folder + "link", Folder + "log"));
    EXPECT_EQ(RenameToNew(Folder + "log", Folder + "broken"), FileCause::AccessDenied);
}

TEST_F(AFile, NothingIsWrittenOrChangedThroughALink) {
    Temp.Put("precious", "kept");
    ASSERT_EQ(::symlink("precious", (Folder + "link").c_str()), 0);
    ASSERT_EQ(::symlink("none", (Folder + "broken").c_str()), 0);
    for (const char* name : {"link", "broken"}) {
        EXPECT_EQ(File.CreateExclusive(Folder + name), FileCause::AccessDenied) << name;
        EXPECT_EQ(File.CreateNew(Folder + name), FileCause::AccessDenied) << name;
        EXPECT_EQ(SetReadOnly(Folder + name, true), FileCause::AccessDenied) << name;
    }
    EXPECT_EQ(File.OpenForWriting(Folder + "link"), FileCause::AccessDenied);
    bool readOnly = true;
    ASSERT_EQ(IsReadOnly(Folder + "precious", readOnly), FileCause::None);
    EXPECT_FALSE(readOnly);
    EXPECT_EQ(Temp.Content("precious"), "kept");
    EXPECT_FALSE(FileExists(Folder + "none"));
}

TEST_F(AFile, AnOpenFileIsProtectedWhateverHasItsName) {
    ASSERT_EQ(File.CreateNew(Folder + "log"), FileCause::None);
    ASSERT_EQ(RenameFile(Folder + "log", Folder + "moved"), FileCause::None);
    Temp.Put("log", "another's");
    ASSERT_EQ(File.SetReadOnly(true), FileCause::None);
    EXPECT_EQ(File.Write(AsBytes("the rest")), FileCause::None);
    bool readOnly = false, another = true;
    ASSERT_EQ(IsReadOnly(Folder + "moved", readOnly), FileCause::None);
    ASSERT_EQ(IsReadOnly(Folder + "log", another), FileCause::None);
    EXPECT_TRUE(readOnly && !another);
    EXPECT_EQ(SyncFolderOf(Folder + "moved"), FileCause::None);
    EXPECT_EQ(SyncFolderOf(Folder + "no/such"), FileCause::FileNotFound);
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
