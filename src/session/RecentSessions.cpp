// SPDX-License-Identifier: GPL-3.0-or-later
#include "session/RecentSessions.h"

#include "base/Text.h"
#include "platform/File.h"

#include <charconv>

namespace qor {

namespace {

constexpr const char* RecentSection = "Recent Sessions";
constexpr const char* MarkSection = "Open Session";

std::int64_t ReadTime(const CProfileStore& store, const std::string& section,
                      const std::string& key) {
    const std::string text = store.ReadText(section, key);
    std::int64_t time = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), time);
    return error == std::errc() && end == text.data() + text.size() && time > 0 ? time : 0;
}

void WriteRecent(CProfileStore& store, const std::vector<RecentSession>& sessions) {
    for (std::size_t i = 0; i < MostRecentSessions; ++i) {
        const RecentSession session = i < sessions.size() ? sessions[i] : RecentSession();
        const std::string number = std::to_string(i + 1);
        store.WriteText(RecentSection, "Path" + number, session.path);
        store.WriteText(RecentSection, "Title" + number, session.title);
        store.WriteText(RecentSection, "Opened" + number, std::to_string(session.opened));
    }
}

bool SamePath(const std::string& a, const std::string& b) {
    return PathSeparator() == '\\' ? EqualsNoCase(a, b) : a == b;
}

} // namespace

std::vector<RecentSession> RecentSessions(const CProfileStore& store) {
    std::vector<RecentSession> sessions;
    for (std::size_t i = 1; i <= MostRecentSessions; ++i) {
        const std::string number = std::to_string(i);
        RecentSession session{store.ReadText(RecentSection, "Path" + number),
                              store.ReadText(RecentSection, "Title" + number),
                              ReadTime(store, RecentSection, "Opened" + number)};
        if (!session.path.empty())
            sessions.push_back(std::move(session));
    }
    return sessions;
}

void RememberSession(CProfileStore& store, const RecentSession& session) {
    std::vector<RecentSession> sessions = RecentSessions(store);
    std::erase_if(sessions,
                  [&](const RecentSession& other) { return SamePath(other.path, session.path); });
    sessions.insert(sessions.begin(), session);
    WriteRecent(store, sessions);
}

void ForgetSession(CProfileStore& store, const std::string& path) {
    std::vector<RecentSession> sessions = RecentSessions(store);
    std::erase_if(sessions, [&](const RecentSession& other) { return SamePath(other.path, path); });
    WriteRecent(store, sessions);
}

void SetSessionMark(CProfileStore& store, const SessionMark& mark) {
    store.WriteText(MarkSection, "Path", mark.path);
    store.WriteText(MarkSection, "Log", mark.log);
    store.WriteText(MarkSection, "Opened", std::to_string(mark.opened));
    store.WriteInteger(MarkSection, "Open", 1);
}

void ClearSessionMark(CProfileStore& store) {
    store.WriteInteger(MarkSection, "Open", 0);
}

std::optional<SessionMark> LeftSessionMark(const CProfileStore& store) {
    if (store.ReadInteger(MarkSection, "Open", 0) != 1)
        return std::nullopt;
    return SessionMark{store.ReadText(MarkSection, "Path"), store.ReadText(MarkSection, "Log"),
                       ReadTime(store, MarkSection, "Opened")};
}

} // namespace qor
