// SPDX-License-Identifier: GPL-3.0-or-later
#if defined(_WIN32)
#include "session/ProfileRegistry_win32.h"

#include "platform/Registry_win32.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(ProfileRegistry, WhatWasWrittenIsReadBackByteForByte) {
    const std::string root = "Software\\QorViewTest";
    ASSERT_EQ(RemoveRegistryKey(root), FileCause::None);
    const std::string awkward[] = {"",      " blanks ", "a=b",          "%41",     "View1\\Line",
                                   "\\\\x", "\r\n;#",   "\xfc\x01\x7f", "\\end\\", "\xE6\xB5\xB7"};
    CRegistryProfileStore store;
    EXPECT_EQ(store.Flush(), FileCause::InvalidFile); // never loaded
    ASSERT_EQ(store.Load(root), FileCause::None);
    for (const std::string& section : awkward)
        for (const std::string& key : awkward)
            store.WriteText(section, key, section + "|" + key + " ");
    ASSERT_EQ(store.Flush(), FileCause::None);
    CRegistryProfileStore again;
    ASSERT_EQ(again.Load(root), FileCause::None);
    for (const std::string& section : awkward)
        for (const std::string& key : awkward)
            EXPECT_EQ(again.ReadText(section, key), section + "|" + key + " ");

    // Only what changes is written: another program's change stays.
    ASSERT_EQ(WriteRegistry(root + "\\A", "theirs", "2"), FileCause::None);
    again.WriteInteger("A", "ours", 3);
    ASSERT_EQ(again.Flush(), FileCause::None);
    EXPECT_EQ(ReadRegistryText(root + "\\A", "theirs"), "2");
    EXPECT_EQ(ReadRegistryText(root + "\\A", "ours"), "3");
    EXPECT_EQ(RemoveRegistryKey(root), FileCause::None);
}

} // namespace
} // namespace qor
#endif
