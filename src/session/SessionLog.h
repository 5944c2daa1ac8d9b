// SPDX-License-Identifier: GPL-3.0-or-later
//
// The human-readable record of everything notable: stamps each message, keeps the text for the
// session log window and appends it to a file. Entries come from the acquisition loop, which drains
// the command queue; a thread of its own writes them, so that a stalled disk holds up neither the
// loop nor the document's lock, which this room borrows. Its own lock is a leaf.
#pragma once

#include "base/MessageSink.h"
#include "platform/File.h"
#include "platform/Worker.h"
#include "session/SessionState.h"

#include <functional>
#include <string>
#include <string_view>

namespace qor {

/// The message with every line stamped but continuation lines (a TAB first) and empty ones; the
/// first line is always stamped. Text after the last CR LF is dropped.
std::string FormatSessionLogEntry(std::string_view message, const CalendarTime& local);

class CSessionLog {
  public:
    explicit CSessionLog(SessionState& session) : Session(session) {}
    /// Writes what waits.
    ~CSessionLog();
    CSessionLog(const CSessionLog&) = delete;
    CSessionLog& operator=(const CSessionLog&) = delete;

    /// Settings of the application: "Enable Session Log File", "Session Log Directory" (with or
    /// without a separator at its end). They count from the next OpenSessionLog on.
    void SetFile(bool enabled, const std::string& directory);
    bool SessionLogEnabled() const;
    std::string SessionLogDirectory() const;

    /// (Re)opens the file: at the start of every session and after a change of the settings. What
    /// was held back comes first.
    void OpenSessionLog();
    /// A session begins from a file that anybody may have made: where WaitsForOperator is set,
    /// nothing is written where it says until OpenHeld, and entries wait in memory.
    void HoldBack();
    /// The operator begins to acquire: the file of a session that is held back is opened.
    void OpenHeld();
    /// Stamps and stores one message and hands it to the writer.
    void AddSessionLogEntry(const std::string& message);
    /// Waits until the file has every entry so far, or has failed. Without the document's lock.
    void WaitForDisk();

    /// The stamped messages of this run that are kept, from an offset in all that there were on.
    std::string SessionLogText(std::size_t from = 0) const { return ReadOn(from); }
    /// The same, and the offset moves to the end (a window fetches what is new).
    std::string ReadOn(std::size_t& from) const;
    /// Path of the open file; empty when there is none.
    std::string FilePath() const;
    /// Path of the file that ended early because its disk failed; empty once another is opened.
    std::string LostPath() const;

    /// Sees every stamped entry, under the document's lock; set before a loop runs. A caller that
    /// keeps no window may also turn the keeping of the text off: playing a damaged log reports
    /// without end.
    std::function<void(const std::string& stamped)> OnEntry;
    bool KeepText = true;
    /// Off for a caller that looks at sessions and runs none: no file, whatever the settings say.
    bool KeepFile = true;
    /// Sessions are opened to be looked at first.
    bool WaitsForOperator = false;

  private:
    /// Tries the names in turn; returns the text to show to the user, empty when a file is open.
    std::string OpenFirstFree(const std::string& directory);
    void CloseFile();
    void Run();
    void HandOver(std::string_view entries) REQUIRES(WriterLock);
    void Keep(std::string_view entry) REQUIRES(Session.DocLock);

    SessionState& Session;
    CFile File; ///< of the thread that opens it while nothing waits, then of the writer
    mutable CMutex WriterLock; ///< a leaf
    CCondition Changed;
    std::string Pending GUARDED_BY(WriterLock);
    std::string OpenPath GUARDED_BY(WriterLock); ///< empty: no file is open
    std::string Lost GUARDED_BY(WriterLock);     ///< path of the file that a write failed of
    bool Holding GUARDED_BY(WriterLock) = false;
    std::string Held GUARDED_BY(WriterLock);
    bool Busy GUARDED_BY(WriterLock) = false;
    bool Stopping GUARDED_BY(WriterLock) = false;
    bool Started GUARDED_BY(WriterLock) = false;
    CWorker Writer;
    std::string Text GUARDED_BY(Session.DocLock);
    std::size_t TextBegin GUARDED_BY(Session.DocLock) = 0; ///< its offset in all that there were
    std::string Directory GUARDED_BY(Session.DocLock);
    bool Enabled GUARDED_BY(Session.DocLock) = false;
};

} // namespace qor
