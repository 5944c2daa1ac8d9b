// SPDX-License-Identifier: GPL-3.0-or-later
//
// What the program remembers of sessions between its runs: those that were open lately, and the one
// that is open now, so that the next run can tell when this one ended unexpectedly. Functions of
// the store; the caller flushes it. Called by the desktop's thread.
#pragma once

#include "session/ProfileStore.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qor {

struct RecentSession {
    std::string path; ///< absolute
    std::string title;
    std::int64_t opened = 0; ///< seconds since 1970; 0: not known

    bool operator==(const RecentSession&) const = default;
};
inline constexpr std::size_t MostRecentSessions = 10;

/// The most recent first. A session stays in the list when its file is gone; faces mark it.
std::vector<RecentSession> RecentSessions(const CProfileStore& store);
/// Puts a session that was opened or saved first; there is one entry a path.
void RememberSession(CProfileStore& store, const RecentSession& session);
void ForgetSession(CProfileStore& store, const std::string& path);

/// The session that is open.
struct SessionMark {
    std::string path; ///< empty: it was never saved
    std::string log;  ///< the raw log that is open; empty: none
    std::int64_t opened = 0;

    bool operator==(const SessionMark&) const = default;
};
/// Set when a session or a log begins, and flushed then; cleared when the session is closed in
/// order. A mark that is there when the program starts is of a run that ended unexpectedly, or of
/// one that still runs beside this: whether its log is held by another program tells them apart.
void SetSessionMark(CProfileStore& store, const SessionMark& mark);
void ClearSessionMark(CProfileStore& store);
std::optional<SessionMark> LeftSessionMark(const CProfileStore& store);

} // namespace qor
