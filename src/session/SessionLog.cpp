// SPDX-License-Identifier: GPL-3.0-or-later
//
// Stamping, keeping and writing session-log entries. See SessionLog.h.
#include "session/SessionLog.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/LogName.h"

#include <algorithm>

namespace qor {
namespace {

constexpr std::string_view LineEnd = "\r\n";
constexpr const char* ProductName = "QorView";
constexpr const char* LogExtension = "log";
constexpr int LastNumber = 9;
/// Bytes that may wait for a disk that has stalled.
constexpr std::size_t MostPending = std::size_t{16} << 20;
/// Bytes of entries that are kept for the window; beyond them the older half goes.
constexpr std::size_t MostText = std::size_t{8} << 20;

std::string DirectoryPart(const std::string& path) {
    std::size_t separator = path.rfind(PathSeparator());
    return separator == std::string::npos ? "" : path.substr(0, separator + 1);
}

/// Session logs of one second that are kept; more are not expected.

/// When a session log was begun, by its first stamp, as names have it; empty when it has none.
std::string BeginOf(std::string text) {
    constexpr std::size_t gap = 10; // "2026-11-13  07:05:44> "
    if (text.size() < gap + 2 || text[gap] != ' ' || text[gap + 1] != ' ')
        return {};
    text.replace(gap, 2, "T");
    const std::optional<std::int64_t> seconds = SecondsFromText(text);
    return seconds ? FormatTime("%Y-%j-%H%M%S", CalendarFromSeconds(*seconds)) : std::string();
}

bool IsFree(const std::string& path) {
    return !FileExists(path) && !IsSymbolicLink(path);
}

/// The log of an earlier run keeps what it says, under a name of its own. Where that cannot be
/// done, or another program has it open, it stays as it is. Returns whether a log may be made here.
bool KeepEarlier(const std::string& path, const std::string& now) {
    std::array<std::uint8_t, 20> stamp{};
    std::size_t got = 0;
    std::string begin;
    {
        CFile earlier;
        if (earlier.OpenAlone(path) != FileCause::None)
            return IsFree(path);
        if (earlier.Read(stamp, got) != FileCause::None)
            return false;
        if (got == 0)
            return true;
        begin = BeginOf(std::string(AsText(ByteSpan(stamp).first(got))));
    }
    const std::string folder = DirectoryPart(path);
    const std::string kept = folder + Format("%s-%s.%s", ProductName,
                                             (begin.empty() ? now : begin).c_str(), LogExtension);
    for (int number = 1; number <= LastSuffix; ++number)
        if (const std::string name = WithSuffix(kept, number); IsFree(name))
            return RenameToNew(path, name) == FileCause::None;
    return false;
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

std::string CSessionLog::ReadOn(std::size_t& from) const {
    CRecursiveLock lock(Session.DocLock);
    const std::size_t at = from - std::min(from, TextBegin);
    if (at >= Text.size())
        return {};
    from = TextBegin + Text.size();
    return Text.substr(at);
}

void CSessionLog::Keep(std::string_view entry) {
    Text += entry;
    if (Text.size() <= MostText)
        return;
    // Decided: memory keeps the last megabytes alone, or weeks of errors would fill it; the file
    // has everything.
    const std::size_t cut = Text.find(LineEnd, Text.size() - MostText / 2) + LineEnd.size();
    Text.erase(0, cut);
    TextBegin += cut;
}

CSessionLog::~CSessionLog() {
    {
        CLock lock(WriterLock);
        if (!Started)
            return;
        Stopping = true;
    }
    Changed.NotifyAll();
    Writer.Join();
}

std::string CSessionLog::FilePath() const {
    CLock lock(WriterLock);
    return OpenPath;
}

std::string CSessionLog::LostPath() const {
    CLock lock(WriterLock);
    return Lost;
}

void CSessionLog::OpenSessionLog() {
    std::string directory;
    bool enabled;
    {
        CRecursiveLock lock(Session.DocLock);
        directory = Directory;
        enabled = Enabled && KeepFile;
    }
    // Kept: in an unchanged directory the file stays open, also when it has been switched off.
    if (const std::string open = FilePath(); !open.empty() && DirectoryPart(open) == directory)
        return;
    CloseFile();
    const std::string forUser = enabled ? OpenFirstFree(directory) : "";
    {
        CLock lock(WriterLock);
        OpenPath = File.IsOpen() ? File.Path() : "";
        Lost.clear();
        Holding = false;
        HandOver(std::exchange(Held, {}));
    }
    Changed.NotifyAll();
    if (!forUser.empty())
        Session.User.ShowMessage(forUser);
}

void CSessionLog::HoldBack() {
    if (!WaitsForOperator)
        return OpenSessionLog();
    CloseFile();
    CLock lock(WriterLock);
    OpenPath.clear();
    Lost.clear();
    Held.clear();
    Holding = true;
}

void CSessionLog::OpenHeld() {
    {
        CLock lock(WriterLock);
        if (!Holding)
            return;
    }
    OpenSessionLog();
}

void CSessionLog::CloseFile() {
    WaitForDisk();
    File.Close();
}

std::string CSessionLog::OpenFirstFree(const std::string& directory) {
    for (int number = 1; number <= LastNumber; ++number) {
        std::string path =
            directory + (number == 1 ? Format("%s.%s", ProductName, LogExtension)
                                     : Format("%s%01d.%s", ProductName, number, LogExtension));
        if (!KeepEarlier(path, FormatTime("%Y-%j-%H%M%S", LocalCalendar(Session.Clock.Now()))))
            continue;
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
    std::string entry;
    {
        CRecursiveLock lock(Session.DocLock);
        entry = FormatSessionLogEntry(message, LocalCalendar(Session.Clock.Now()));
        if (entry.empty())
            return;
        if (KeepText)
            Keep(entry);
        if (OnEntry)
            OnEntry(entry);
    }
    {
        CLock lock(WriterLock);
        if (!Holding)
            HandOver(entry);
        else if (Held.size() <= MostPending)
            Held += entry;
    }
    Changed.NotifyAll();
}

/// To the writer, where there is a file.
void CSessionLog::HandOver(std::string_view entries) {
    if (entries.empty() || OpenPath.empty() || Pending.size() > MostPending)
        return;
    if (!Started)
        Started = Writer.Start(ThreadPriority::Normal, [this] { Run(); });
    Pending += entries;
    // Decided: beyond what a stalled disk may hold up, entries stand in the window alone.
    if (Pending.size() > MostPending)
        Pending += "... entries are missing here: the disk has taken nothing for long.\r\n";
}

void CSessionLog::Run() {
    for (;;) {
        std::string entries, path;
        {
            CLock lock(WriterLock);
            Busy = false;
            Changed.NotifyAll();
            Changed.WaitFor(WriterLock, CCondition::LostWakeMilliseconds,
                            [this]() REQUIRES(WriterLock) { return Stopping || !Pending.empty(); });
            if (Pending.empty() && Stopping)
                return;
            entries.swap(Pending);
            path = OpenPath;
            Busy = !entries.empty();
        }
        if (entries.empty() || path.empty())
            continue;
        const FileCause cause = File.Write(AsBytes(entries));
        if (cause == FileCause::None)
            continue;
        {
            CLock lock(WriterLock);
            Lost = std::exchange(OpenPath, {});
            Pending.clear();
        }
        File.Close();
        Session.User.ShowMessage("An error occured while writing to the session log file:\r\n\"" +
                                 path + "\".\r\n" + std::string(GetFileErrorText(cause)) +
                                 "\r\nSession log aborted.");
    }
}

void CSessionLog::WaitForDisk() {
    CLock lock(WriterLock);
    while (Started &&
           !Changed.WaitFor(WriterLock, CCondition::LostWakeMilliseconds,
                            [this]() REQUIRES(WriterLock) { return Pending.empty() && !Busy; })) {
    }
}

} // namespace qor
