// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/ProfileFile.h"

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

class ProfileFileTest : public testing::Test {
  protected:
    CTempFolder Temp;
    const std::string Path = Temp.Path + "settings.ini";
};

TEST_F(ProfileFileTest, WhatWasWrittenIsReadBackByteForByte) {
    const std::string awkward[] = {"",    " blanks ", "a=b",          "%41",
                                   "[x]", "\r\n;#",   "\xfc\x01\x7f", "plain"};
    CFileProfileStore store;
    ASSERT_EQ(store.Load(Path), FileCause::None);
    for (const std::string& section : awkward)
        for (const std::string& key : awkward)
            store.WriteText(section, key, section + "|" + key + " ");
    store.WriteInteger("View1\\Ancillary", "XPosition", -17);
    ASSERT_EQ(store.Flush(), FileCause::None);
    CFileProfileStore again;
    ASSERT_EQ(again.Load(Path), FileCause::None);
    for (const std::string& section : awkward)
        for (const std::string& key : awkward)
            EXPECT_EQ(again.ReadText(section, key), section + "|" + key + " ");
    EXPECT_EQ(again.ReadInteger("View1\\Ancillary", "XPosition", 3), -17);
    EXPECT_EQ(again.ReadInteger("View1\\Ancillary", "YPosition", 3), 3);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(Temp.Path), {}), 1);
}

TEST_F(ProfileFileTest, OnlyAChangeIsWritten) {
    Temp.Put("settings.ini", "[A]\nx=1 ; kept as it is\n");
    CFileProfileStore store;
    ASSERT_EQ(store.Load(Path), FileCause::None);
    store.WriteText("A", "x", store.ReadText("A", "x"));
    ASSERT_EQ(store.Flush(), FileCause::None);
    EXPECT_EQ(Temp.Content("settings.ini"), "[A]\nx=1 ; kept as it is\n");
    store.WriteInteger("A", "x", 2);
    ASSERT_EQ(store.Flush(), FileCause::None);
    EXPECT_EQ(Temp.Content("settings.ini"), "[A]\nx=2\n");
    Temp.Put("settings.ini", "\xef\xbb\xbf[A]\r\nx=3\r\n"); // as some editors leave it
    ASSERT_EQ(store.Load(Path), FileCause::None);
    EXPECT_EQ(store.ReadInteger("A", "x", 0), 3);
}

TEST_F(ProfileFileTest, SettingsThatCouldNotBeReadAreNotReplaced) {
    CFileProfileStore store;
    EXPECT_EQ(store.Flush(), FileCause::InvalidFile); // never loaded
    std::filesystem::create_directories(Path);        // a folder in the file's place
    EXPECT_EQ(store.Load(Path), FileCause::AccessDenied);
    store.WriteInteger("A", "x", 1);
    EXPECT_EQ(store.Flush(), FileCause::AccessDenied);
    EXPECT_TRUE(std::filesystem::is_directory(Path));

    CFileProfileStore elsewhere;
    EXPECT_EQ(elsewhere.Load(Temp.Path + "missing/settings.ini"), FileCause::None);
    elsewhere.WriteInteger("A", "x", 1);
    EXPECT_EQ(elsewhere.Flush(), FileCause::BadPath);
}

} // namespace
} // namespace qor
