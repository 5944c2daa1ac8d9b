// SPDX-License-Identifier: GPL-3.0-or-later
//
// Recent sessions and the mark of an open one, over a store that people may have edited.
#include "session/RecentSessions.h"

#include <gtest/gtest.h>

namespace qor {
namespace {

TEST(RecentSessions, TheLastOpenedComesFirstOnceAndTenStay) {
    CMemoryProfileStore store;
    EXPECT_TRUE(RecentSessions(store).empty());
    for (int i = 0; i < 12; ++i)
        RememberSession(store, {"/s/" + std::to_string(i), "t", i});
    RememberSession(store, {"/s/5", "again", 99});
    const std::vector<RecentSession> recent = RecentSessions(store);
    ASSERT_EQ(recent.size(), MostRecentSessions);
    EXPECT_EQ(recent[0], (RecentSession{"/s/5", "again", 99}));
    EXPECT_EQ(recent[1].path, "/s/11");
    EXPECT_EQ(recent[9].path, "/s/2");

    ForgetSession(store, "/s/11");
    EXPECT_EQ(RecentSessions(store).size(), 9u);
    store.WriteText("Recent Sessions", "Path1", "");
    store.WriteText("Recent Sessions", "Opened2", "-5 minutes");
    EXPECT_EQ(RecentSessions(store)[0], (RecentSession{"/s/10", "t", 0}));
}

TEST(RecentSessions, AMarkIsLeftUnlessTheSessionWasClosed) {
    CMemoryProfileStore store;
    EXPECT_EQ(LeftSessionMark(store), std::nullopt);
    const SessionMark unsaved{"", "/logs/a.raw", 1'800'000'000'000};
    SetSessionMark(store, unsaved);
    EXPECT_EQ(LeftSessionMark(store), unsaved);
    ClearSessionMark(store);
    EXPECT_EQ(LeftSessionMark(store), std::nullopt);
}

} // namespace
} // namespace qor
