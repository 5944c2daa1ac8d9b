// SPDX-License-Identifier: GPL-3.0-or-later
//
// Settings, beginning and ending of raw logs. Functions that ask or tell the operator something, or
// wait for the disk, take and release the lock around it; the others run under it. See RawLog.h;
// files are RawLogFile.cpp, time is RawLogTimers.cpp, frames are RawLogFrames.cpp.
#include "session/RawLog.h"

#include "base/AtEnd.h"
#include "base/Text.h"
#include "session/FileKind.h"
#include "session/LogRecovery.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"

#include <utility>

namespace qor {
namespace {

bool RepeatsLogs(const LogOptions& options) {
    return options.everyEnabled || (options.durationEnabled && options.repeatEnabled);
}

} // namespace

CRawLog::CRawLog(SessionState& session, CMessageSink& messages)
    : Session(session), Messages(messages), Stage(session.Clock, messages), Sync(messages) {
    StartDone.Set();
    EndDone.Set();
    Switched.Set();
}

std::string CRawLog::SetNaming(const LogNaming& naming) {
    if (std::string fault = NamingFault(naming); !fault.empty())
        return fault;
    CRecursiveLock lock(Session.DocLock);
    Session.Naming = naming;
    Session.Naming.logNameReady = Session.Naming.logNamePrompted = false;
    RaiseViewsUpdate();
    return {};
}

std::string CRawLog::SetStation(const StationInformation& station) {
    CRecursiveLock lock(Session.DocLock);
    if (std::string fault = StationFault(station, Session.Naming.logNamingMode); !fault.empty())
        return fault;
    Session.Station = station;
    if (Session.Naming.logNamingMode == LogNamingMode::AutoCast)
        Session.Naming.logNameReady = Session.Naming.logNamePrompted = false;
    RaiseViewsUpdate();
    return {};
}

void CRawLog::RaiseViewsUpdate() {
    ViewsUpdate = true;
    Session.NoteChange();
}

std::string CRawLog::SetLogOptions(const LogOptions& options) {
    if (std::string fault = OptionsFault(options); !fault.empty())
        return fault;
    CRecursiveLock lock(Session.DocLock);
    Session.Options = options;
    RaiseViewsUpdate();
    if (!State.loggingActive)
        return {};
    State.intervalRun = RepeatsLogs(options);
    if (State.logOpen && options.durationEnabled) {
        State.logEndTime = State.logStartTime;
        State.logEndTime.seconds += options.duration.Seconds();
        EndMonotonic = StartMonotonic + options.duration.Seconds() * 1000;
    }
    if (options.everyEnabled)
        Rounds.Begin(options.every.Seconds(), Session.Clock.Now(),
                     Session.Clock.MonotonicMilliseconds());
    if (State.waitingForNextLog && !RepeatsLogs(options))
        EndRun();
    return {};
}

std::string CRawLog::SetDirectory(const std::string& folder) {
    CRecursiveLock lock(Session.DocLock);
    LogNaming naming = Session.Naming;
    naming.logDirectory = WithSeparator(folder);
    return SetNaming(naming);
}

void CRawLog::AcceptShown() {
    CRecursiveLock lock(Session.DocLock);
    OverrideChosen = true;
}

std::string CRawLog::MoveNameOn() {
    CRecursiveLock lock(Session.DocLock);
    if (State.loggingActive)
        return "The name moves on by itself when the log ends.";
    AdvanceLogFileName(Session.Naming, Session.Station);
    Session.NoteChange();
    return {};
}

bool CRawLog::BuildLogFileName() {
    std::string path;
    {
        CRecursiveLock lock(Session.DocLock);
        LogNaming& naming = Session.Naming;
        if (naming.logNameReady)
            return true;
        if (naming.logNamePrompted) {
            SayNotBegun("its name was refused before; choose another.");
            return false;
        }
        naming.logNamePrompted = true;
        naming.logFileDisplayName = LogDisplayName(naming, Session.Station);
        if (naming.logFileDisplayName.empty()) {
            SayNotBegun(naming.logNamingMode == LogNamingMode::AutoCast
                            ? "the cast of the station information is empty."
                            : "no file name is given.");
            return false;
        }
        if (naming.logNamingMode == LogNamingMode::TimeStamp) {
            naming.logNameReady = true;
            return true;
        }
        path = naming.logDirectory + naming.logFileDisplayName;
    }
    if (IsSymbolicLink(path)) {
        CRecursiveLock lock(Session.DocLock);
        SayNotBegun("its name is that of a symbolic link; choose another.");
        return false;
    }
    const bool taken = FileExists(path) && !IsAbandonedLog(path);
    if (taken && !MayReplace(path))
        return false;
    CRecursiveLock lock(Session.DocLock);
    Replaceable = taken ? path : std::string();
    Session.Naming.logFilePath = path;
    Session.Naming.logNameReady = true;
    return true;
}

void CRawLog::SayNotBegun(const char* why) {
    Messages.Raise({EventKind::LogNotBegun, Session.Naming.logFileDisplayName,
                    std::string("Logging has not begun: ") + why + "\r\n"});
}

void CRawLog::SetInputs(std::vector<std::string> files) {
    CRecursiveLock lock(Session.DocLock);
    Inputs = std::move(files);
}

bool CRawLog::HasConsent(const std::string& path) const {
    return !PathsOfRun.contains(path) &&
           std::ranges::none_of(
               Inputs, [&path](const std::string& input) { return IsSameFile(input, path); });
}

bool CRawLog::MayReplace(const std::string& path) {
    bool mayAsk, consent;
    {
        CRecursiveLock lock(Session.DocLock);
        RaiseViewsUpdate();
        mayAsk = !Session.NoDialogs;
        consent = Session.Options.overwriteExisting && HasConsent(path);
    }
    if (mayAsk)
        Switched.Set(); // an answer may take long
    if (mayAsk)
        return Session.User.AskYesNo("The log file \"" + path +
                                     "\"\r\nalready exists. Do you want to replace this file on "
                                     "the next log?");
    // Decided: where nobody can be asked, an existing log stays as it is.
    if (!consent)
        Messages.Raise(
            {EventKind::NameTaken, path,
             "The log file \"" + path +
                 "\" already exists and is not replaced.\r\n\tLogging has not begun.\r\n"});
    return consent;
}

bool CRawLog::BeginLogFile() {
    const bool begun = Begin(StartedBy::Operator);
    EndStopped();
    return begun;
}

bool CRawLog::Begin(StartedBy starter) {
    EndDone.Wait(); // the log before gives its file away first
    if (starter == StartedBy::Operator)
        FinishEarlierLogs();
    if (!BuildLogFileName() || !ClaimStart(starter))
        return false;
    bool over = false;
    const CAtEnd done([this, &over] { // also without memory to go on with
        if (!over)
            StartDone.Set();
    });
    const bool begun = ConfirmOverride() && OpenLogFile(starter);
    {
        CRecursiveLock lock(Session.DocLock);
        LogNaming& naming = Session.Naming;
        if (begun)
            StartLog();
        else // what was found under the name may be another file by the next start
            OverrideChosen = naming.logNameReady = naming.logNamePrompted = false;
        StartDone.Set();
        over = true;
        if (!begun && StopWanted)
            MarkEnd(true);
    }
    ShowPending();
    return begun;
}

bool CRawLog::ClaimStart(StartedBy starter) {
    CRecursiveLock lock(Session.DocLock);
    if (State.logOpen || IsStarting() || !EndDone.IsSet())
        return false;
    // The operator may have stopped the run while the timer's start was asking about the name.
    if (starter == StartedBy::Timer && !State.waitingForNextLog)
        return false;
    StartDone.Clear();
    return true;
}

bool CRawLog::ConfirmOverride() {
    LogQuestion question;
    {
        CRecursiveLock lock(Session.DocLock);
        if (OverrideChosen || Session.NoDialogs)
            return true;
        Switched.Set(); // as above
        question = {Session.Naming.logFileDisplayName, Session.Station};
    }
    const bool confirmed = Session.User.ConfirmLog(question) == LogAnswer::LogAsShown;
    CRecursiveLock lock(Session.DocLock);
    OverrideChosen = confirmed;
    return confirmed && !StopWanted;
}

void CRawLog::AddPending(std::string text) {
    CRecursiveLock lock(Session.DocLock);
    PendingTexts.push_back(std::move(text));
}

/// With the file that the stage has open, or in want of one.
void CRawLog::StartLog() {
    const LogOptions options = Session.Options;
    State.logStartTime = Session.Clock.Now();
    StartMonotonic = Session.Clock.MonotonicMilliseconds();
    LastTimeStamp = State.logStartTime.seconds;
    State.logElapsed = 0;
    if (options.durationEnabled) {
        State.logEndTime = State.logStartTime;
        State.logEndTime.seconds += options.duration.Seconds();
        EndMonotonic = StartMonotonic + options.duration.Seconds() * 1000;
    }
    if (options.everyEnabled)
        PlanRoundEnd();
    State.intervalRun = State.intervalRun || RepeatsLogs(options);
    NextDue = false;
    Switched.Set();
    if (!State.loggingActive)
        BeginRun();
    State.loggingActive = true;
    State.recovering = !Stage.OpenFile().IsOpen();
    State.runFailed = State.recovering || Abandoned;
    State.waitingForNextLog = false;
    State.logFilePath = Session.Naming.logFilePath;
    FileName = LastPartOf(State.logFilePath);
    LogFolder = FileFolder = FolderPartOf(State.logFilePath);
    FileBegun = FailedSince = NextTry = StartMonotonic;
    UnstoredThen = 0;
    NoFileSaid = false;
    State.logOpen = true;
    ++LogNumber;
    Slots = 0;
    FaultyOffered = 0;
    RaiseViewsUpdate();
    if (!State.recovering)
        StartFile();
}

void CRawLog::StartFile() {
    const std::string& path = State.logFilePath;
    Messages.Raise({EventKind::LogBegun, path, "Begin log file: \"" + path + "\".\r\n"});
    PendingAsterisk = PendingAsterisk || Session.Options.loggingSounds;
    PathsOfRun.insert(path);
    TellBegun(path);
    Sync.Watch(Stage.OpenFile(), [this] { return Stage.Figures().fileSize; });
}

void CRawLog::BeginRun() {
    const StageFigures figures = Stage.Figures();
    PathsOfRun.clear();
    WrittenBefore = figures.totalWritten;
    GoneBefore = figures.totalGone;
    UnstoredBefore = UnstoredSaid = UnstoredSeen = figures.totalUnstored;
}

bool CRawLog::EndLogFile(bool abort) {
    bool ended = false;
    for (bool marked = false; !marked;) {
        EndDone.Wait(); // also for another file that is being begun
        CRecursiveLock lock(Session.DocLock);
        marked = EndDone.IsSet();
        ended = marked && MarkEnd(abort);
    }
    CompleteEnd();
    EndDone.Wait(); // also for an end that another thread is about
    ShowPending();
    return ended;
}

/// What a stop wanted that came while the log was begun.
void CRawLog::EndStopped() {
    {
        CRecursiveLock lock(Session.DocLock);
        if (StopWanted && EndDone.IsSet())
            MarkEnd(true);
    }
    CompleteEnd();
    ShowPending();
}

/// No frame joins the log any more; its file is closed by CompleteEnd. One that is being begun
/// ends once it has: nobody waits for that, because a question may be open.
bool CRawLog::MarkEnd(bool abort, bool switches) {
    if (IsStarting() || Rescuing) {
        StopWanted = StopWanted || (IsStarting() && abort);
        return false;
    }
    StopWanted = StopWanted && !abort;
    if (!State.logOpen) {
        if (abort) {
            PendingClose = PendingClose || (Session.ExitIfDone && State.runFailed);
            EndRun();
        }
        return abort;
    }
    // A run that failed is over, whatever it was to repeat.
    PendingClose = Session.ExitIfDone && (!State.intervalRun || State.runFailed);
    Flush();
    State.logOpen = false;
    Ending = abort;
    EndDone.Clear();
    NextDue = switches;
    if (switches)
        Switched.Clear();
    return true;
}

void CRawLog::CompleteEnd() {
    std::optional<bool> abort;
    {
        CRecursiveLock lock(Session.DocLock);
        abort = std::exchange(Ending, std::nullopt);
    }
    if (!abort)
        return;
    const CAtEnd done([this] { EndDone.Set(); });
    Stage.Drain();
    StoreRest();
    std::string path; // the naming may be the next log's by now
    {
        CRecursiveLock lock(Session.DocLock);
        if (!std::exchange(State.recovering, false))
            path = State.logFilePath;
    }
    auto finished = path.empty() ? std::nullopt : EndFile(path);
    Sync.Finish();
    Stage.Close();
    if (finished) // what waited for another file is counted now
        finished->framesUnstored = Stage.Figures().framesUnstored;
    {
        CRecursiveLock lock(Session.DocLock);
        if (finished)
            OnFileEnded(*finished);
        AfterEnd(path, *abort);
    }
}

/// Of the log at this path; empty: it had no file at its end.
void CRawLog::AfterEnd(const std::string& path, bool abort) {
    AdvanceLogFileName(Session.Naming, Session.Station);
    SayDiskTakesAgain();
    SayUnstored();
    if (!path.empty())
        Messages.Raise({EventKind::LogEnded, path, "End log file: \"" + path + "\".\r\n"});
    PendingAsterisk = PendingAsterisk || Session.Options.loggingSounds;
    RaiseViewsUpdate();
    const LogOptions options = Session.Options;
    if (abort || !RepeatsLogs(options)) {
        EndRun();
        return;
    }
    const std::int64_t now = Session.Clock.MonotonicMilliseconds();
    const std::int64_t pause = !options.everyEnabled ? options.repeatInterval.Seconds() * 1000
                               : IsSwitching()       ? 0
                                                     : Rounds.Due() - now;
    State.logStartTime = Session.Clock.Now();
    State.logStartTime.seconds += (pause + 500) / 1000;
    StartMonotonic = now + pause;
    State.waitingForNextLog = true;
}

void CRawLog::EndRun() {
    State.intervalRun = State.loggingActive = State.waitingForNextLog = false;
    OverrideChosen = StopWanted = Abandoned = false;
    if (!IsSwitching()) { // no frame waits: those to come are nobody's loss
        NextDue = false;
        SayUnstored();
    }
    Switched.Set();
    RaiseViewsUpdate();
}

bool CRawLog::WantsLastFrames() const {
    CRecursiveLock lock(Session.DocLock);
    return (NextDue && !State.loggingActive) || (StopWanted && !IsStarting());
}

void CRawLog::EndWithLastFrames() {
    {
        CRecursiveLock lock(Session.DocLock);
        NextDue = false;
        SayUnstored();
    }
    EndStopped();
}

void CRawLog::AbandonRun() {
    {
        CRecursiveLock lock(Session.DocLock);
        State.runFailed = Abandoned = true;
    }
    EndLogFile(true);
}

/// Where the operator wants a failed file to end the run.
void CRawLog::EndFailed() {
    {
        CRecursiveLock lock(Session.DocLock);
        const bool failed = Stage.Figures().cause != FileCause::None || IsLost(Sync.Trouble());
        if (!Session.ExitOnError || !State.logOpen || !failed)
            return;
        State.runFailed = true;
        MarkEnd(true);
    }
    CompleteEnd();
}

void CRawLog::ShowPending() {
    std::vector<std::string> texts;
    bool beep, asterisk, close;
    EndFailed();
    TendFile();
    {
        CRecursiveLock lock(Session.DocLock);
        texts.swap(PendingTexts);
        beep = std::exchange(PendingBeep, false);
        asterisk = std::exchange(PendingAsterisk, false);
        close = std::exchange(PendingClose, false);
    }
    if (asterisk)
        Session.User.Beep(BeepKind::Asterisk);
    if (beep)
        Session.User.Beep(BeepKind::Default);
    for (const std::string& text : texts)
        Session.User.ShowMessage(text);
    if (close)
        Session.User.RequestClose();
}

LogStatus CRawLog::Status() const {
    const StageFigures figures = Stage.Figures();
    CRecursiveLock lock(Session.DocLock);
    LogStatus status = State;
    status.framesLogged = figures.framesWritten;
    status.framesOffered = figures.framesOffered + FaultyOffered;
    status.framesUnstored = figures.framesUnstored;
    status.runFrames = figures.totalWritten - WrittenBefore;
    status.runUnstored = figures.totalUnstored - UnstoredBefore;
    status.runGone = figures.totalGone - GoneBefore;
    status.dataLogged = State.dataLogged;
    status.fileSize = figures.fileSize;
    status.waitingBytes = figures.waitingBytes;
    status.waitingCapacity = Stage.Capacity();
    status.stalledMilliseconds = figures.stalledMilliseconds;
    status.logFilePath = State.logOpen ? State.logFilePath : Session.Naming.logFilePath;
    status.logFileDisplayName = Session.Naming.logFileDisplayName;
    return status;
}

bool CRawLog::IsCrowded() const {
    return Stage.Figures().waitingBytes > Stage.Capacity() / 2;
}

void CRawLog::ClearDataLogged() {
    CRecursiveLock lock(Session.DocLock);
    State.dataLogged = false;
}

void CRawLog::ShutDown() {
    EndLogFile(true);
    StartDone.Wait(); // no question is open any more
    if (Status().logOpen)
        EndLogFile(true);
    EndDone.Wait();
    Sync.Stop();
}

} // namespace qor
