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

} // namespace
} // namespace qor
