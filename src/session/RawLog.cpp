// SPDX-License-Identifier: GPL-3.0-or-later
//
// Beginning, ending and timing of raw logs. Functions that ask or tell the operator something take
// and release the lock around it; the others run under it. See RawLog.h.
#include "session/RawLog.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/LogHeader.h"
#include "telemetry/RawLogFormat.h"

#include <limits>
#include <utility>

namespace qor {
namespace {

/// A step of the wall clock against the monotonic one that is worth a note, in milliseconds.
constexpr std::int64_t NotedClockStep = 500;
/// Reading the two clocks further apart than this says nothing about a step.
constexpr std::int64_t ReadingSpan = 50;

/// "An error occured <doing what>\r\n"path"." and the cause.
std::string FileErrorMessage(const char* doing, const std::string& path, FileCause cause) {
    return std::string("An error occured ") + doing + "\r\n\"" + path + "\".\r\n" +
           std::string(GetFileErrorText(cause));
}

/// How many programs may begin a log in one folder in one second, beyond the first.
constexpr int LaterNames = 60;

} // namespace

CRawLog::CRawLog(SessionState& session, CMessageSink& messages)
    : Session(session), Messages(messages), Sync(messages) {}

void CRawLog::SetNaming(const LogNaming& naming) {
    CRecursiveLock lock(Session.DocLock);
    Session.Naming = naming;
    Session.Naming.logNameReady = Session.Naming.logNamePrompted = false;
    ViewsUpdate = true;
}

bool CRawLog::BuildLogFileName() {
    std::string path;
    {
        CRecursiveLock lock(Session.DocLock);
        LogNaming& naming = Session.Naming;
        if (naming.logNameReady)
            return true;
        if (naming.logNamePrompted)
            return false;
        naming.logNamePrompted = true;
        naming.logFileDisplayName = LogDisplayName(naming, Session.Station);
        if (naming.logFileDisplayName.empty())
            return false;
        if (naming.logNamingMode == LogNamingMode::TimeStamp) {
            naming.logNameReady = true;
            return true;
        }
        path = naming.logDirectory + naming.logFileDisplayName;
    }
    if (FileExists(path) && !AskToReplace(path))
        return false;
    CRecursiveLock lock(Session.DocLock);
    Session.Naming.logFilePath = path;
    Session.Naming.logNameReady = true;
    return true;
}

bool CRawLog::AskToReplace(const std::string& path) {
    bool mayAsk, consent;
    {
        CRecursiveLock lock(Session.DocLock);
        ViewsUpdate = true;
        mayAsk = !Session.NoDialogs;
        consent = Session.Options.overwriteExisting;
    }
    if (mayAsk)
        return Session.User.AskYesNo("The log file \"" + path +
                                     "\"\r\nalready exists. Do you want to replace this file on "
                                     "the next log?");
    // Decided: where nobody can be asked, an existing log stays as it is.
    if (!consent)
        Messages.Report("The log file \"" + path +
                        "\" already exists and is not replaced.\r\n\tLogging has not begun.\r\n");
    return consent;
}

bool CRawLog::BeginLogFile() {
    return Begin(StartedBy::Operator);
}

bool CRawLog::Begin(StartedBy starter) {
    if (!BuildLogFileName() || !ClaimStart(starter) || !ConfirmOverride())
        return false;
    bool begun;
    {
        CRecursiveLock lock(Session.DocLock);
        begun = OpenLogFile();
        if (begun)
            StartLog();
        else
            OverrideChosen = false;
        LogStarting = false;
    }
    ShowPending();
    return begun;
}

bool CRawLog::ClaimStart(StartedBy starter) {
    CRecursiveLock lock(Session.DocLock);
    if (State.logOpen || LogStarting)
        return false;
    // The operator may have stopped the run while the timer's start was asking about the name.
    if (starter == StartedBy::Timer && !State.waitingForNextLog)
        return false;
    LogStarting = true;
    return true;
}

bool CRawLog::ConfirmOverride() {
    std::string displayName;
    {
        CRecursiveLock lock(Session.DocLock);
        if (OverrideChosen || Session.NoDialogs)
            return true;
        displayName = Session.Naming.logFileDisplayName;
    }
    bool confirmed = Session.User.ConfirmLog(displayName);
    CRecursiveLock lock(Session.DocLock);
    OverrideChosen = confirmed;
    if (!confirmed)
        LogStarting = false;
    return confirmed;
}

bool CRawLog::OpenLogFile() {
    LogNaming& naming = Session.Naming;
    const bool named = naming.logNamingMode != LogNamingMode::TimeStamp;
    FileCause cause = named ? CreateLogFile(naming.logFilePath) : CreateTimeStampLog();
    const std::string& path = naming.logFilePath;
    if (cause != FileCause::None) {
        PendingTexts.push_back(FileErrorMessage("opening the file", path, cause));
        return false;
    }
    State.framesLogged = 0;
    if (!WriteHeader()) {
        Writer.Close();
        PendingTexts.push_back("An error occured creating the log file headers.\r\n"
                               "Logging has been aborted.\r\n"
                               "See the session log for details.");
        return false;
    }
    return true;
}

FileCause CRawLog::CreateLogFile(const std::string& path) {
    if (FileExists(path)) {
        FileCause cause = SetReadOnly(path, false);
        if (cause != FileCause::None)
            PendingTexts.push_back(FileErrorMessage("while accessing the file", path, cause));
    }
    return Writer.Create(path);
}

/// Decided: where another program logs under the name of this second, which nobody chose, the next
/// free second gives the name; nobody waits for it, frames may be coming already. So it does where
/// nobody can be asked and a log has the name: an hour comes twice when daylight saving ends.
/// Kept: with an operator there, a finished log of the same second is replaced.
FileCause CRawLog::CreateTimeStampLog() {
    const bool replaces = !Session.NoDialogs || Session.Options.overwriteExisting;
    std::string& path = Session.Naming.logFilePath;
    FrameTime time = Session.Clock.Now();
    FileCause cause = FileCause::SharingViolation;
    for (int i = 0; i <= LaterNames && cause == FileCause::SharingViolation; ++i, ++time.seconds) {
        path = Session.Naming.logDirectory + TimeStampFileName(LocalCalendar(time));
        if (!FileExists(path) || (replaces && i == 0))
            cause = CreateLogFile(path);
    }
    return cause;
}

bool CRawLog::WriteHeader() {
    std::ignore = RefreshPosition(Session); // else it stays as it was typed
    for (const std::string& line : HeaderLines(Session, LocalCalendar(Session.Clock.Now())))
        if (!WriteHeaderRecord(line))
            return false;
    return true;
}

bool CRawLog::WriteHeaderRecord(const std::string& line) {
    if (!Writer.IsOpen())
        return false;
    std::size_t written = 0;
    Writer.Add(MakeHeaderRecord(line));
    FileCause cause = Writer.Flush(written);
    if (cause == FileCause::None)
        return true;
    Messages.Report("Error writing to log file: " + std::string(GetFileErrorText(cause)) + ".\r\n");
    return false;
}

void CRawLog::StartLog() {
    const LogOptions options = Session.Options;
    Messages.Report("Begin log file: \"" + Session.Naming.logFilePath + "\".\r\n");
    PendingAsterisk = PendingAsterisk || options.loggingSounds;
    State.logStartTime = Session.Clock.Now();
    StartMonotonic = Session.Clock.MonotonicMilliseconds();
    LastTimeStamp = State.logStartTime.seconds;
    State.logElapsed = 0;
    if (options.durationEnabled) {
        State.logEndTime = State.logStartTime;
        State.logEndTime.seconds += options.duration.Seconds();
        EndMonotonic = StartMonotonic + options.duration.Seconds() * 1000;
        State.intervalRun = State.intervalRun || options.repeatEnabled;
    }
    State.loggingActive = true;
    State.runFailed = false;
    State.waitingForNextLog = false;
    for (const auto& resource : Session.Resources)
        for (const auto& instrument : resource->Instruments)
            instrument->FramesThisLog = 0;
    State.logOpen = true;
    State.framesOffered = 0;
    ViewsUpdate = true;
    Sync.Watch(Writer.OpenFile());
}

bool CRawLog::EndLogFile(bool abort) {
    bool ended;
    {
        CRecursiveLock lock(Session.DocLock);
        ended = EndLocked(abort);
    }
    ShowPending();
    return ended;
}

bool CRawLog::EndLocked(bool abort) {
    if (LogStarting)
        return false;
    if (!State.logOpen) {
        if (abort)
            EndRun();
        return abort;
    }
    PendingClose = Session.ExitIfDone && !State.intervalRun;
    const std::string path = Writer.Path(); // the naming may be the next log's by now
    Sync.Finish();
    Writer.Close();
    ProtectLogFile(path);
    State.logOpen = false;
    AdvanceLogFileName(Session.Naming, Session.Station);
    Messages.Report("End log file: \"" + path + "\".\r\n");
    PendingAsterisk = PendingAsterisk || Session.Options.loggingSounds;
    if (!Session.Options.repeatEnabled || abort) {
        EndRun();
        return true;
    }
    const std::int64_t pause = Session.Options.repeatInterval.Seconds();
    State.logStartTime = Session.Clock.Now();
    State.logStartTime.seconds += pause;
    StartMonotonic = Session.Clock.MonotonicMilliseconds() + pause * 1000;
    State.waitingForNextLog = true;
    ViewsUpdate = true;
    return true;
}

void CRawLog::EndRun() {
    State.intervalRun = State.loggingActive = State.waitingForNextLog = false;
    OverrideChosen = false;
    ViewsUpdate = true;
}

void CRawLog::ProtectLogFile(const std::string& path) {
    bool readOnly = false;
    if (IsReadOnly(path, readOnly) != FileCause::None) {
        PendingTexts.push_back("An error occured while accessing the log file\r\n\"" + path +
                               "\".");
        return;
    }
    FileCause cause = SetReadOnly(path, true);
    if (cause != FileCause::None)
        PendingTexts.push_back(FileErrorMessage("while accessing the log file", path, cause));
}

void CRawLog::OnLogTick() {
    bool beginNext, updateViews;
    {
        CRecursiveLock lock(Session.DocLock);
        NoteClockStep();
        beginNext = TickLocked();
    }
    ShowPending();
    if (beginNext && !Begin(StartedBy::Timer)) {
        {
            CRecursiveLock lock(Session.DocLock);
            State.runFailed = State.waitingForNextLog; // else the operator has ended it meanwhile
        }
        EndLogFile(true);
    }
    {
        CRecursiveLock lock(Session.DocLock);
        updateViews = std::exchange(ViewsUpdate, false);
    }
    if (updateViews && Session.OnViewsUpdate)
        Session.OnViewsUpdate();
}

/// Returns whether the next log of an interval run is to begin.
bool CRawLog::TickLocked() {
    if (!State.loggingActive)
        return false;
    const std::int64_t monotonic = Session.Clock.MonotonicMilliseconds();
    State.logElapsed = (monotonic - StartMonotonic) / 1000;
    if (Session.Options.timeStampEnabled)
        WriteTimeStamp(Session.Clock.Now());
    if (State.waitingForNextLog && monotonic >= StartMonotonic)
        return true;
    if (Session.Options.durationEnabled && State.logOpen && monotonic >= EndMonotonic)
        EndLocked(false);
    return false;
}

std::int64_t CRawLog::NextTimer() const {
    CRecursiveLock lock(Session.DocLock);
    if (State.waitingForNextLog)
        return StartMonotonic;
    if (State.logOpen && Session.Options.durationEnabled)
        return EndMonotonic;
    return std::numeric_limits<std::int64_t>::max();
}

void CRawLog::WriteTimeStamp(const FrameTime& now) {
    if (!State.logOpen || now.seconds == LastTimeStamp)
        return;
    LastTimeStamp = now.seconds;
    std::size_t written = 0;
    Writer.Add(AsBytes(MakeTimeStamp(LocalCalendar(now))));
    FileCause cause = Writer.Flush(written);
    if (cause != FileCause::None)
        AbortLog(cause);
}

void CRawLog::NoteClockStep() {
    const std::int64_t before = Session.Clock.MonotonicMilliseconds();
    const FrameTime wall = Session.Clock.Now();
    if (Session.Clock.MonotonicMilliseconds() - before > ReadingSpan)
        return;
    const std::int64_t difference = wall.seconds * 1000 + wall.milliseconds - before;
    const std::int64_t step = difference - std::exchange(ClockDifference, difference);
    if (!std::exchange(ClockKnown, true) || (step > -NotedClockStep && step < NotedClockStep))
        return;
    Messages.Report(Format("The system clock was set %s by %.3f seconds.\r\n",
                           step < 0 ? "back" : "forward",
                           static_cast<double>(step < 0 ? -step : step) / 1000.0));
}

void CRawLog::ShowPending() {
    std::vector<std::string> texts;
    bool beep, asterisk, close;
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
    CRecursiveLock lock(Session.DocLock);
    LogStatus status = State;
    status.fileSize = Writer.Size();
    status.logFilePath = State.logOpen ? Writer.Path() : Session.Naming.logFilePath;
    status.logFileDisplayName = Session.Naming.logFileDisplayName;
    return status;
}

void CRawLog::ClearDataLogged() {
    CRecursiveLock lock(Session.DocLock);
    State.dataLogged = false;
}

void CRawLog::ShutDown() {
    EndLogFile(true);
    Sync.Stop();
}

} // namespace qor
