// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files as every system has them: exclusive sharing that harms nobody's log, and the read-only mark
// that also holds for the superuser.
#include "FileFixture.h"

namespace qor {
namespace {

TEST_F(AFile, SecondCreatorIsRefusedAndTheOpenLogKeepsItsContent) {
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    ASSERT_EQ(File.Write(AsBytes("first")), FileCause::None);
    CFile second;
    EXPECT_EQ(second.CreateExclusive(Folder + "log"), FileCause::SharingViolation);
    File.Close();
    EXPECT_EQ(Temp.Content("log"), "first");
    EXPECT_EQ(second.CreateExclusive(Folder + "log"), FileCause::None);
    second.Close();
    EXPECT_EQ(Temp.Content("log"), "");
}

TEST_F(AFile, ReadOnlyFileIsNotTouchedNotEvenByTheSuperuser) {
    Temp.Put("done.raw", "kept");
    ASSERT_EQ(SetReadOnly(Folder + "done.raw", true), FileCause::None);
    bool readOnly = false;
    ASSERT_EQ(IsReadOnly(Folder + "done.raw", readOnly), FileCause::None);
    EXPECT_TRUE(readOnly);
    EXPECT_EQ(File.CreateExclusive(Folder + "done.raw"), FileCause::AccessDenied);
    EXPECT_EQ(File.OpenForWriting(Folder + "done.raw"), FileCause::AccessDenied);
    EXPECT_EQ(Temp.Content("done.raw"), "kept");
    ASSERT_EQ(SetReadOnly(Folder + "done.raw", false), FileCause::None);
    EXPECT_EQ(File.CreateExclusive(Folder + "done.raw"), FileCause::None);
}

TEST_F(AFile, WhatIsReplacedStaysUnderItsOtherNames) {
    Temp.Put("log", "old");
    std::filesystem::create_hard_link(Folder + "log", Folder + "backup");
    ASSERT_EQ(File.CreateExclusive(Folder + "log"), FileCause::None);
    EXPECT_EQ(File.Write(AsBytes("new")), FileCause::None);
    File.Close();
    EXPECT_EQ(Temp.Content("log"), "new");
    EXPECT_EQ(Temp.Content("backup"), "old");
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
    File.Close();
    EXPECT_EQ(Temp.Content("raw"), "record1X");
}

TEST_F(AFile, ReadsToTheEndAndMovesWithItsHandle) {
    Temp.Put("in", "abcdef");
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

TEST_F(AFile, MovesOnlyToAFreeName) {
    Temp.Put("new", "whole");
    Temp.Put("taken", "precious");
    EXPECT_EQ(RenameToNew(Folder + "new", Folder + "taken"), FileCause::AccessDenied);
    EXPECT_EQ(Temp.Content("taken"), "precious");
    ASSERT_EQ(RenameToNew(Folder + "new", Folder + "free"), FileCause::None);
    EXPECT_EQ(Temp.Content("free"), "whole");
    EXPECT_FALSE(FileExists(Folder + "new"));
    EXPECT_EQ(RenameToNew(Folder + "new", Folder + "other"), FileCause::FileNotFound);
}

TEST_F(AFile, IsWritableUnlessHeldOrReadOnlyAndStaysAsItWas) {
    Temp.Put("log", "precious");
    EXPECT_EQ(CheckWritable(Folder + "log"), FileCause::None);
    EXPECT_EQ(CheckWritable(Folder + "none"), FileCause::FileNotFound);
    EXPECT_EQ(Temp.Content("log"), "precious");
    ASSERT_EQ(SetReadOnly(Folder + "log", true), FileCause::None);
    EXPECT_EQ(CheckWritable(Folder + "log"), FileCause::AccessDenied);
    ASSERT_EQ(File.CreateExclusive(Folder + "other"), FileCause::None);
    EXPECT_EQ(CheckWritable(Folder + "other"), FileCause::SharingViolation);
}

TEST_F(AFile, IsKnownUnderEveryPath) {
    Temp.Put("a", "same");
    Temp.Put("b", "same");
    EXPECT_TRUE(IsSameFile(Folder + "a", Folder + "./a"));
    EXPECT_FALSE(IsSameFile(Folder + "a", Folder + "b"));
    EXPECT_FALSE(IsSameFile(Folder + "none", Folder + "none"));
}

} // namespace
} // namespace qor
