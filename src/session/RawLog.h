// SPDX-License-Identifier: GPL-3.0-or-later
//
// The raw log of the session: begins and ends log files, adds every accepted frame with its time
// tag, time-stamp sentences, and runs the timers of interval logging. State is under the document's
// lock; questions, messages and whatever waits for the disk come while it is released. Frames come
// from the acquisition thread, the tick from the loop, commands from the user-interface thread.
#pragma once

#include "session/DiskSync.h"
#include "session/LogManifest.h"
#include "session/LogStage.h"
#include "session/RoundTimes.h"
#include "session/SessionState.h"

#include <set>

namespace qor {

/// A moment's state of logging, for status displays.
struct LogStatus {
    bool logOpen = false;       ///< a file is open and frames are written
    bool loggingActive = false; ///< a run is under way, also between the files of an interval run
    bool runFailed = false;  ///< the last run ended by a failure, or its file did and none is begun
    bool recovering = false; ///< the file is lost; frames wait for the next
    bool waitingForNextLog = false; ///< an interval run waits for the start of its next file
    bool intervalRun = false;
    bool dataLogged = false;
    std::uint64_t framesLogged = 0;   ///< in the file
    std::uint64_t framesOffered = 0;  ///< handed to it
    std::uint64_t framesUnstored = 0; ///< accepted, but lost to the log
    std::uint64_t runFrames = 0;      ///< in all files of the run, or of the latest one
    std::uint64_t runUnstored = 0;    ///< accepted since it began, but in none of them
    std::uint64_t runGone = 0;        ///< in files of the run that were deleted or cut
    std::uint64_t fileSize = 0;       ///< bytes in the file, as of its last whole record
    std::size_t waitingBytes = 0;     ///< in memory, not yet taken by the disk
    std::size_t waitingCapacity = 0;
    std::int64_t stalledMilliseconds = 0; ///< how long the disk has been at the present write
    FrameTime logStartTime;               ///< of this log, or of the next one while waiting
    FrameTime logEndTime;                 ///< only with a duration
    std::int64_t logElapsed = 0;          ///< seconds, as of the last tick; negative while waiting
    std::string logFilePath;
    std::string logFileDisplayName;
};

/// A log's file that was closed as it should be.
struct FinishedFile {
    std::string path;
    std::uint64_t size = 0;
    std::string sha256; ///< of what was written
    std::vector<ClockStep> steps;
    std::uint64_t framesUnstored = 0;
};

class CRawLog {
  public:
    /// Messages for the session log go to `messages`.
    CRawLog(SessionState& session, CMessageSink& messages);

    /// Told of each file that is begun and of each that has ended, under the document's lock; set
    /// before anything runs, or not.
    std::function<void(const std::string& path)> OnFileBegun;
    std::function<void(const FinishedFile&)> OnFileEnded;

    /// Replaces the naming settings; what was built and accepted before counts no more. What is
    /// wrong with them, or nothing; then nothing has changed.
    std::string SetNaming(const LogNaming& naming);
    /// Another folder for the logs to come, with or without a separator at its end. As SetNaming.
    std::string SetDirectory(const std::string& folder);
    /// Replaces the station information; a name that was made of it is built anew. As SetNaming.
    std::string SetStation(const StationInformation& station);
    /// Replaces the options; as SetNaming. A duration that is switched on or changed counts from
    /// the start of the log that is open; a repeat that is switched off ends the run with it.
    std::string SetLogOptions(const LogOptions& options);
    /// Moves the next log's name on to the next cast or number, as the end of a log does. What is
    /// wrong, or nothing.
    std::string MoveNameOn();
    /// The operator has seen the next log's name and the station: the next run asks no more.
    void AcceptShown();
    /// Prepares the name of the next log; asks when it would replace a file. False: no usable name.
    bool BuildLogFileName();
    /// Begins a log; on failure the operator was told why, and nothing is open. Why a name is
    /// not there, or was refused before, goes to the session log.
    bool BeginLogFile();
    /// Ends the log (`abort`: and the run) and waits until the disk has taken it. False when there
    /// is none to end, or it is still being begun; then it ends with its run as soon as it has.
    bool EndLogFile(bool abort);
    /// Ends the run, open log or none, as one that failed; a program that ends when its log is done
    /// ends with it.
    void AbandonRun();
    /// Once a second: elapsed time, time stamp, begin and end by the timers, view updates. The end
    /// of a log waits for the disk.
    void OnLogTick();
    /// Once a second, also while a log ends: says when the disk takes nothing, and what is lost.
    void WatchDisk();

    /// When the next log is to begin or this one to end, on the monotonic clock in milliseconds;
    /// the largest number when no timer runs.
    std::int64_t NextTimer() const;

    /// For a caller that holds the document's lock under another name: the same lock, which the
    /// analysis cannot see.
    void LockIsHeld() const ASSERT_CAPABILITY(Session.DocLock) {}
    /// Adds the instrument's current frame to the open log, if it is to be logged. `found` is what
    /// its checks found. Frames go to the file with the next Flush.
    void LogFrame(CQorViewIns& instrument, const FrameCheckResult& found)
        REQUIRES(Session.DocLock) {
        PendingBeep = PendingBeep || found.beep;
        if (Takes(instrument))
            AddFrame(instrument);
        else if (NextDue && instrument.LoggingEnabled)
            Stage.LoseFrame();
    }
    /// There was no memory for a frame.
    void LoseFrame() REQUIRES(Session.DocLock) { Stage.LoseFrame(); }
    void Flush() REQUIRES(Session.DocLock);
    /// Whether the instrument's frames go into the open log.
    bool Takes(const CQorViewIns& instrument) const REQUIRES(Session.DocLock) {
        return State.logOpen && instrument.LoggingEnabled;
    }
    /// Of the present or latest log; 0 before the first.
    std::uint32_t Number() const REQUIRES(Session.DocLock) { return LogNumber; }
    /// Where the next record will stand in the open log.
    std::uint64_t NextOffset() const REQUIRES(Session.DocLock);
    /// Whether one log has ended for the next to begin at once: frames wait where they are.
    bool IsSwitching() const { return !Switched.IsSet(); }
    /// Waits until the next log has begun, or it is known that none does: as long as the disk
    /// takes. Not from the thread that ticks, and without the lock.
    void AwaitNextLog() const { Switched.Wait(); }
    /// Whether frames have waited for a log that is the last: for one that was to begin at once
    /// while the run has ended instead, they are counted as lost when they are taken now; one that
    /// was stopped while it was begun takes them.
    bool WantsLastFrames() const;
    /// They were taken.
    void EndWithLastFrames();
    /// A file that is played is not read on while this much waits for the disk.
    bool IsCrowded() const;
    /// Shows and sounds what logging had for the operator, and ends a log that has failed. Without
    /// the lock.
    void ShowPending();
    /// Waits until what was added is in the file, or the file has failed. Without the lock.
    void WaitForDisk() { Stage.Drain(); }
    /// The disk is slow from now on, for practice; see CLogStage.
    void SetDiskDelay(int milliseconds) { Stage.SetDelay(milliseconds); }
    /// Files that no log replaces, whatever consent there is: those that the run reads.
    void SetInputs(std::vector<std::string> files);
    /// The files are hashed as they are written; before a log begins.
    void SetHashing(bool on) { Stage.SetHashing(on); }
    /// Bytes that may wait for the disk; before a log begins.
    void SetWaitingCapacity(std::size_t bytes) { Stage.SetCapacity(bytes); }

    LogStatus Status() const;
    OwnerFrames FramesThisLog(const CQorViewIns& instrument) const REQUIRES(Session.DocLock);
    /// Clears the flag that says that frames were logged.
    void ClearDataLogged();
    /// Ends the run and waits until the disk has everything. For the end of the document.
    void ShutDown();

  private:
    enum class StartedBy { Operator, Timer };

    void AddFrame(CQorViewIns& instrument) REQUIRES(Session.DocLock);
    void RaiseViewsUpdate() REQUIRES(Session.DocLock);
    bool Begin(StartedBy starter);
    void SayNotBegun(const char* why) REQUIRES(Session.DocLock);
    bool MayReplace(const std::string& path);
    /// Whether consent to replace files covers this one.
    bool HasConsent(const std::string& path) const REQUIRES(Session.DocLock);
    bool ClaimStart(StartedBy starter);
    bool IsStarting() const { return !StartDone.IsSet(); }
    void FinishEarlierLogs();
    bool ConfirmOverride();
    bool OpenLogFile(StartedBy starter);
    bool GoesOnWithout(StartedBy starter, FileCause cause);
    FileCause CreateLogFile(const std::string& path, bool replaces, const LogRecords& header,
                            bool& inHeader);
    FileCause CreateTimeStampLog(StartedBy starter, const LogRecords& header, bool& inHeader);
    bool ReplacesOwnSecond(StartedBy starter, const std::string& path) const;
    bool NeedsAnotherFile();
    /// Begins another file when the open one cannot be written any more: at once, then again and
    /// again. Without the lock.
    void TendFile();
    void StoreRest();
    void ReplaceFile();
    void GiveFileUp();
    FileTrouble LookAtEnd() const;
    std::optional<FinishedFile> EndFile(const std::string& path);
    void SayFileLost(FileTrouble trouble, const std::string& path);
    bool BeginAnotherFile(const std::optional<std::string>& skipped);
    /// Creates a log under the first free name: `name`, then with "-2" and so on. Its path; the
    /// cause of the last failure when there is none.
    std::string CreateInFolder(const std::string& folder, const std::string& name, bool replaces,
                               const LogRecords& header, bool& inHeader, FileCause& cause);
    void NoteOtherFile(const std::string& folder, const std::string& path);
    void EndFailed();
    LogRecords HeaderRecords();
    void AddPending(std::string text);
    void StartLog() REQUIRES(Session.DocLock);
    void StartFile() REQUIRES(Session.DocLock);
    void BeginRun() REQUIRES(Session.DocLock);
    bool MarkEnd(bool abort, bool switches = false) REQUIRES(Session.DocLock);
    void EndStopped();
    void CompleteEnd();
    void AfterEnd(const std::string& path, bool abort) REQUIRES(Session.DocLock);
    void EndRun() REQUIRES(Session.DocLock);
    void ProtectLogFile(const std::string& path);
    void PlanRoundEnd() REQUIRES(Session.DocLock);
    bool TickLocked() REQUIRES(Session.DocLock);
    void WriteTimeStamp(const FrameTime& now) REQUIRES(Session.DocLock);
    void NoteUnstored() REQUIRES(Session.DocLock);
    void SayUnstored() REQUIRES(Session.DocLock);
    void SayDiskTakesAgain() REQUIRES(Session.DocLock);
    void NoteClockStep() REQUIRES(Session.DocLock);
    void NoteStep(const FrameTime& now, std::int64_t milliseconds, bool ofZone)
        REQUIRES(Session.DocLock);
    void TellBegun(const std::string& path) REQUIRES(Session.DocLock);
    std::optional<FinishedFile> FinishFile(const std::string& path, FileTrouble trouble);
    std::uint32_t SlotOf(CQorViewIns& instrument) REQUIRES(Session.DocLock);

    SessionState& Session;
    CMessageSink& Messages;
    CLogStage Stage;
    CDiskSync Sync; ///< asks the stage until it goes
    LogStatus State GUARDED_BY(Session.DocLock);
    LogRecords Records GUARDED_BY(Session.DocLock); ///< of this batch, not yet with the stage
    std::uint64_t FaultyOffered GUARDED_BY(Session.DocLock) = 0; ///< unusable frame records
    std::uint32_t LogNumber GUARDED_BY(Session.DocLock) = 0;     ///< of this log, for slots
    std::uint32_t Slots GUARDED_BY(Session.DocLock) = 0;         ///< given in this log

    CEvent StartDone;                                     ///< no log is being begun
    bool StopWanted GUARDED_BY(Session.DocLock) = false;  ///< of the log that was being begun
    bool Abandoned GUARDED_BY(Session.DocLock) = false;   ///< the run, whatever becomes of its file
    bool Rescuing GUARDED_BY(Session.DocLock) = false;    ///< another file is being begun
    std::int64_t NextTry GUARDED_BY(Session.DocLock) = 0; ///< of it, on the monotonic clock
    std::string LogFolder GUARDED_BY(Session.DocLock);    ///< where the run's log was begun
    std::string FileName GUARDED_BY(Session.DocLock);     ///< of the run's log, without suffix
    std::string FileFolder GUARDED_BY(Session.DocLock);   ///< of the present file
    std::int64_t FileBegun GUARDED_BY(Session.DocLock) = 0; ///< on the monotonic clock
    bool NoFileSaid GUARDED_BY(Session.DocLock) = false;    ///< that no other file can be begun
    std::optional<std::int64_t> SyncGivenUp GUARDED_BY(Session.DocLock);
    /// A log is to be ended, and whether the run with it.
    std::optional<bool> Ending GUARDED_BY(Session.DocLock);
    CEvent EndDone; ///< no log is being ended or given another file
    /// The override dialog was answered; its choice holds for the run.
    bool OverrideChosen GUARDED_BY(Session.DocLock) = false;
    /// A file that was there when the name was built, and may be replaced; none: empty.
    std::string Replaceable GUARDED_BY(Session.DocLock);
    bool ViewsUpdate GUARDED_BY(Session.DocLock) = false;
    /// Logs of this run: consent to replace never covers them.
    std::set<std::string> PathsOfRun GUARDED_BY(Session.DocLock);
    std::vector<std::string> Inputs GUARDED_BY(Session.DocLock);

    // Durations run on the monotonic clock, in milliseconds.
    std::int64_t StartMonotonic GUARDED_BY(Session.DocLock) = 0;
    std::int64_t EndMonotonic GUARDED_BY(Session.DocLock) = 0;
    CRoundTimes Rounds GUARDED_BY(Session.DocLock);   ///< with round times, from the first log on
    CEvent Switched;                                  ///< no log ends for the next to begin at once
    bool NextDue GUARDED_BY(Session.DocLock) = false; ///< that next log has not begun
    std::int64_t LastTimeStamp GUARDED_BY(Session.DocLock) = 0;
    /// Wall clock minus monotonic clock at the last tick; not known before the first.
    std::int64_t ClockDifference GUARDED_BY(Session.DocLock) = 0;
    bool ClockKnown GUARDED_BY(Session.DocLock) = false;
    std::int16_t ZoneMinutes GUARDED_BY(Session.DocLock) = 0; ///< at the last tick
    std::vector<ClockStep> Steps GUARDED_BY(Session.DocLock); ///< while this file was written
    /// What is to be said of the header that was made last, when a file has it.
    std::optional<Event> PositionKept GUARDED_BY(Session.DocLock);
    bool StallSaid GUARDED_BY(Session.DocLock) = false;
    std::uint64_t WrittenBefore GUARDED_BY(Session.DocLock) = 0;  ///< the run, by the stage
    std::uint64_t UnstoredBefore GUARDED_BY(Session.DocLock) = 0; ///< the same
    std::uint64_t GoneBefore GUARDED_BY(Session.DocLock) = 0;     ///< the same
    std::int64_t FailedSince GUARDED_BY(Session.DocLock) = 0;     ///< monotonic, while recovering
    std::uint64_t UnstoredThen GUARDED_BY(Session.DocLock) = 0;
    std::uint64_t UnstoredSaid GUARDED_BY(Session.DocLock) = 0; ///< of all that the stage counts
    std::uint64_t UnstoredSeen GUARDED_BY(Session.DocLock) = 0; ///< the same, at the last tick

    // What the operator is to see and hear once the lock is released.
    std::vector<std::string> PendingTexts GUARDED_BY(Session.DocLock);
    bool PendingBeep GUARDED_BY(Session.DocLock) = false;
    bool PendingAsterisk GUARDED_BY(Session.DocLock) = false;
    bool PendingClose GUARDED_BY(Session.DocLock) = false;
};

/// Holds the document's lock at a moment at which no log has ended for the next to begin at once:
/// frames that are handed to the log meanwhile belong into the one that is open. Waits as
/// AwaitNextLog does: not with PortsLock.
class SCOPED_CAPABILITY CSettledLock {
  public:
    CSettledLock(CRecursiveMutex& docLock, const CRawLog& log) ACQUIRE(docLock) : Held(docLock) {
        for (Held.Acquire(); log.IsSwitching(); Held.Acquire()) {
            Held.Release();
            log.AwaitNextLog();
        }
    }
    ~CSettledLock() RELEASE() { Held.Release(); }
    CSettledLock(const CSettledLock&) = delete;
    CSettledLock& operator=(const CSettledLock&) = delete;

  private:
    CRecursiveMutex& Held;
};

} // namespace qor
