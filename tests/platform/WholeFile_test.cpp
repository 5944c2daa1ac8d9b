// SPDX-License-Identifier: GPL-3.0-or-later
//
// Files that are written beside and renamed: the old one or the new one, and nothing left beside.
#include "platform/WholeFile.h"

#include "FileFixture.h"

namespace qor {
namespace {

TEST_F(AFile, IsReplacedInOneStepAlsoAfterACrash) {
    Temp.Put("set", "old");
    Temp.Put("set.part", "half of a crash");
    ASSERT_EQ(WriteWholeFile(Folder + "set", "new"), FileCause::None);
    EXPECT_EQ(Temp.Content("set"), "new");
    EXPECT_FALSE(FileExists(Folder + "set.part"));

    ASSERT_EQ(SetReadOnly(Folder + "set", true), FileCause::None);
    EXPECT_EQ(WriteWholeFile(Folder + "set", "newer"), FileCause::AccessDenied);
    std::filesystem::create_directories(Folder + "taken/inside");
    EXPECT_NE(WriteWholeFile(Folder + "taken", "x"), FileCause::None);
    EXPECT_FALSE(FileExists(Folder + "taken.part"));
    EXPECT_EQ(WriteWholeFile(Folder + "no/such", "x"), FileCause::BadPath);
    std::string bytes = "before";
    EXPECT_EQ(ReadWholeFile(Folder + "set", 2, bytes), FileCause::InvalidFile);
    EXPECT_EQ(bytes, "");
    EXPECT_EQ(ReadWholeFile(Folder + "set", 3, bytes), FileCause::None);
    EXPECT_EQ(bytes, "new");
}

#if !defined(_WIN32)
TEST_F(AFile, BesideNeverLeadsThroughALink) {
    Temp.Put("precious", "kept");
    std::filesystem::create_symlink(Folder + "precious", Folder + "set.part");
    EXPECT_EQ(File.CreateNew(Folder + "set.part"), FileCause::AccessDenied);
    ASSERT_EQ(WriteWholeFile(Folder + "set", "new"), FileCause::None);
    EXPECT_EQ(Temp.Content("precious"), "kept");
    EXPECT_EQ(Temp.Content("set"), "new");
}
#endif

TEST_F(AFile, FoldersAreMadeDownToTheLast) {
    EXPECT_EQ(MakeDirectories(Folder + "a/b/c/"), FileCause::None);
    EXPECT_EQ(MakeDirectories(Folder + "a/b"), FileCause::None);
    EXPECT_TRUE(IsDirectory(Folder + "a/b/c"));
    Temp.Put("file", "");
    EXPECT_NE(MakeDirectories(Folder + "file/below"), FileCause::None);
}

} // namespace
} // namespace qor
