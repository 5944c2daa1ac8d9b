// SPDX-License-Identifier: GPL-3.0-or-later
//
// The raw log of the session: begins and ends log files, writes every accepted frame with its time
// tag, time-stamp sentences, and runs the timers of interval logging. Every entry point takes the
// document's lock for its whole run, but for questions and messages to the operator, which are
// shown while it is released. Frames come from the acquisition thread, the tick from the loop,
// commands from the user-interface thread. The path of a frame is RawLogFrames.cpp.
#pragma once

#include "session/DiskSync.h"
#include "session/LogWriter.h"
#include "session/SessionState.h"

namespace qor {

/// A moment's state of logging, for status displays.
struct LogStatus {
    bool logOpen = false;       ///< a file is open and frames are written
    bool loggingActive = false; ///< a run is under way, also between the files of an interval run
    bool runFailed = false;     ///< the last run ended by a failure, not by time or the operator
    bool waitingForNextLog = false; ///< an interval run waits for the start of its next file
    bool intervalRun = false;
    bool dataLogged = false;
    std::uint32_t framesLogged = 0;
    std::uint32_t framesOffered = 0;
    std::uint64_t fileSize = 0;  ///< bytes in the file, as of its last whole record
    FrameTime logStartTime;      ///< of this log, or of the next one while waiting
    FrameTime logEndTime;        ///< only with a duration
    std::int64_t logElapsed = 0; ///< seconds, as of the last tick; negative while waiting
    std::string logFilePath;
    std::string logFileDisplayName;
};

class CRawLog {
  public:
    /// Messages for the session log go to `messages`.
    CRawLog(SessionState& session, CMessageSink& messages);

    /// Replaces the naming settings; what was built and accepted before counts no more.
    void SetNaming(const LogNaming& naming);
    /// Prepares the name of the next log; asks when it would replace a file. False: no usable name.
    bool BuildLogFileName();
    /// Begins a log; on failure the operator was told why, and nothing is open. A name that is not
    /// there, or whose replacing was refused before, fails silently.
    bool BeginLogFile();
    /// Ends the log (`abort`: and the run). False when there is none to end.
    bool EndLogFile(bool abort);
    /// Once a second: elapsed time, time stamp, begin and end by the timers, view updates.
    void OnLogTick();

    /// When the next log is to begin or this one to end, on the monotonic clock in milliseconds;
    /// the largest number when no timer runs.
    std::int64_t NextTimer() const;

    /// Processes and logs every frame of the queue and leaves it empty: one lock, and one write,
    /// for all of them. Returns how many an instrument claimed. The caller calls ShowPending once
    /// it holds the lock no more.
    std::size_t LogFrames(CFrameQueue& frames);
    /// Shows and sounds what LogFrames had for the operator. Without the lock.
    void ShowPending();

    LogStatus Status() const;
    /// Clears the flag that says that frames were logged.
    void ClearDataLogged();
    /// Ends the run and waits until the disk has everything. For the end of the document.
    void ShutDown();

  private:
    enum class StartedBy { Operator, Timer };

    bool Begin(StartedBy starter);
    bool AskToReplace(const std::string& path);
    bool ClaimStart(StartedBy starter);
    bool ConfirmOverride();
    bool OpenLogFile() REQUIRES(Session.DocLock);
    FileCause CreateLogFile(const std::string& path) REQUIRES(Session.DocLock);
    FileCause CreateTimeStampLog() REQUIRES(Session.DocLock);
    bool WriteHeader() REQUIRES(Session.DocLock);
    bool WriteHeaderRecord(const std::string& line) REQUIRES(Session.DocLock);
    void StartLog() REQUIRES(Session.DocLock);
    bool EndLocked(bool abort) REQUIRES(Session.DocLock);
    void EndRun() REQUIRES(Session.DocLock);
    void ProtectLogFile(const std::string& path) REQUIRES(Session.DocLock);
    bool TickLocked() REQUIRES(Session.DocLock);
    void WriteTimeStamp(const FrameTime& now) REQUIRES(Session.DocLock);
    void NoteClockStep() REQUIRES(Session.DocLock);

    bool LogFrame(CFrameData& frame) REQUIRES(Session.DocLock);
    bool WriteFrameRecord(const CFrameData* frame, bool tagged) REQUIRES(Session.DocLock);
    void FlushFrames() REQUIRES(Session.DocLock);
    void AbortLog(FileCause cause) REQUIRES(Session.DocLock);

    SessionState& Session;
    CMessageSink& Messages;
    CDiskSync Sync;
    CLogWriter Writer GUARDED_BY(Session.DocLock);
    LogStatus State GUARDED_BY(Session.DocLock);
    /// The instruments of the records that wait in the writer, in order.
    std::vector<CQorViewIns*> Unwritten GUARDED_BY(Session.DocLock);

    bool LogStarting GUARDED_BY(Session.DocLock) = false;
    /// The override dialog was answered; its choice holds for the run.
    bool OverrideChosen GUARDED_BY(Session.DocLock) = false;
    bool ViewsUpdate GUARDED_BY(Session.DocLock) = false;

    // Durations run on the monotonic clock, in milliseconds.
    std::int64_t StartMonotonic GUARDED_BY(Session.DocLock) = 0;
    std::int64_t EndMonotonic GUARDED_BY(Session.DocLock) = 0;
    std::int64_t LastTimeStamp GUARDED_BY(Session.DocLock) = 0;
    /// Wall clock minus monotonic clock at the last tick; not known before the first.
    std::int64_t ClockDifference GUARDED_BY(Session.DocLock) = 0;
    bool ClockKnown GUARDED_BY(Session.DocLock) = false;

    // What the operator is to see and hear once the lock is released.
    std::vector<std::string> PendingTexts GUARDED_BY(Session.DocLock);
    bool PendingBeep GUARDED_BY(Session.DocLock) = false;
    bool PendingAsterisk GUARDED_BY(Session.DocLock) = false;
    bool PendingClose GUARDED_BY(Session.DocLock) = false;
};

} // namespace qor
