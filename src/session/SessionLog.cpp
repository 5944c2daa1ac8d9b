// SPDX-License-Identifier: GPL-3.0-or-later
//
// Stamping, keeping and writing session-log entries. See SessionLog.h.
#include "session/SessionLog.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"

namespace qor {
namespace {

constexpr std::string_view LineEnd = "\r\n";
constexpr const char* ProductName = "QorView";
constexpr const char* Extension = "log";
constexpr int LastNumber = 9;

std::string DirectoryPart(const std::string& path) {
    std::size_t separator = path.rfind(PathSeparator());
    return separator == std::string::npos ? "" : path.substr(0, separator + 1);
}

} // namespace

std::string FormatSessionLogEntry(std::string_view message, const CalendarTime& local) {
    const std::string stamp = FormatTime("%Y-%m-%d  %H:%M:%S> ", local);
    std::string entry;
    bool first = true;
    for (std::size_t end; (end = message.find(LineEnd)) != std::string_view::npos;) {
        std::string_view line = message.substr(0, end + LineEnd.size());
        if (first || (line.front() != '\t' && line != LineEnd))
            entry += stamp;
        entry += line;
        message.remove_prefix(line.size());
        first = false;
    }
    return entry;
}

void CSessionLog::SetFile(bool enabled, const std::string& directory) {
    CRecursiveLock lock(Session.DocLock);
    Enabled = enabled;
    Directory = directory;
    if (!directory.empty() && !directory.ends_with('/') && directory.back() != PathSeparator())
        Directory += PathSeparator();
}

bool CSessionLog::SessionLogEnabled() const {
    CRecursiveLock lock(Session.DocLock);
    return Enabled;
}

std::string CSessionLog::SessionLogDirectory() const {
    CRecursiveLock lock(Session.DocLock);
    return Directory;
}

std::string CSessionLog::SessionLogText(std::size_t from) const {
    CRecursiveLock lock(Session.DocLock);
    return from < Text.size() ? Text.substr(from) : "";
}

std::string CSessionLog::FilePath() const {
    CRecursiveLock lock(Session.DocLock);
    return File.IsOpen() ? File.Path() : "";
}

void CSessionLog::OpenSessionLog() {
    std::string forUser;
    {
        CRecursiveLock lock(Session.DocLock);
        // Kept: in an unchanged directory the file stays open, also when it has been switched off.
        if (File.IsOpen() && DirectoryPart(File.Path()) == Directory)
            return;
        File.Close();
        if (Enabled)
            forUser = OpenFirstFree();
    }
    if (!forUser.empty())
        Session.User.ShowMessage(forUser);
}

std::string CSessionLog::OpenFirstFree() {
    for (int number = 1; number <= LastNumber; ++number) {
        std::string path =
            Directory + (number == 1 ? Format("%s.%s", ProductName, Extension)
                                     : Format("%s%01d.%s", ProductName, number, Extension));
        FileCause cause = File.CreateExclusive(path);
        if (cause == FileCause::None)
            return {};
        if (cause != FileCause::SharingViolation && cause != FileCause::AccessDenied)
            return "An error occured while opening the session log file\r\n\"" + path + "\".\r\n" +
                   std::string(GetFileErrorText(cause)) +
                   "\r\nNo session log file will be recorded.";
    }
    return "The maximum number of available session log files has been exceeded.\r\n"
           "No session log file will be recorded.";
}

void CSessionLog::AddSessionLogEntry(const std::string& message) {
    std::string forUser;
    {
        CRecursiveLock lock(Session.DocLock);
        std::string entry = FormatSessionLogEntry(message, LocalCalendar(Session.Clock.Now()));
        if (entry.empty())
            return;
        if (KeepText)
            Text += entry;
        if (OnEntry)
            OnEntry(entry);
        FileCause cause = File.IsOpen() ? File.Write(AsBytes(entry)) : FileCause::None;
        if (cause != FileCause::None) {
            forUser = "An error occured while writing to the session log file:\r\n\"" +
                      File.Path() + "\".\r\n" + std::string(GetFileErrorText(cause)) +
                      "\r\nSession log aborted.";
            File.Close();
        }
    }
    if (!forUser.empty())
        Session.User.ShowMessage(forUser);
}

} // namespace qor
