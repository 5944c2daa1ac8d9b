// SPDX-License-Identifier: GPL-3.0-or-later
//
// Beginning, ending and timing of raw logs. Functions that ask or tell the operator something, or
// wait for the disk, take and release the lock around it; the others run under it. See RawLog.h.
#include "session/RawLog.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/LogHeader.h"
#include "session/SessionPath.h"
#include "session/SpanText.h"
#include "telemetry/RawLogFormat.h"

#include <algorithm>
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

bool RepeatsLogs(const LogOptions& options) {
    return options.everyEnabled || (options.durationEnabled && options.repeatEnabled);
}

/// How many logs of one folder may have the name of one second.
constexpr int LastSuffix = 99;
/// A write that takes longer than this is worth saying, in milliseconds.
constexpr std::int64_t NotedStall = 2000;

/// "name-2.raw" and so on; number 1 is the name itself.
std::string WithSuffix(const std::string& path, int number) {
    if (number == 1)
        return path;
    const std::size_t dot = path.rfind('.');
    return path.substr(0, dot) + "-" + std::to_string(number) + path.substr(dot);
}

} // namespace

CRawLog::CRawLog(SessionState& session, CMessageSink& messages)
    : Session(session), Messages(messages), Sync(messages), Stage(session.Clock, messages) {
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
    if (FileExists(path) && !MayReplace(path))
        return false;
    CRecursiveLock lock(Session.DocLock);
    Session.Naming.logFilePath = path;
    Session.Naming.logNameReady = true;
    return true;
}

void CRawLog::SayNotBegun(const char* why) {
    Messages.Raise({EventKind::LogNotBegun, Session.Naming.logFileDisplayName,
                    std::string("Logging has not begun: ") + why + "\r\n"});
}

bool CRawLog::MayReplace(const std::string& path) {
    bool mayAsk, consent;
    {
        CRecursiveLock lock(Session.DocLock);
        RaiseViewsUpdate();
        mayAsk = !Session.NoDialogs;
        consent = Session.Options.overwriteExisting && !PathsOfRun.contains(path);
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
    return Begin(StartedBy::Operator);
}

bool CRawLog::Begin(StartedBy starter) {
    EndDone.Wait(); // the log before gives its file away first
    if (!BuildLogFileName() || !ClaimStart(starter) || !ConfirmOverride())
        return false;
    const bool begun = OpenLogFile(starter);
    {
        CRecursiveLock lock(Session.DocLock);
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
    if (State.logOpen || LogStarting || !EndDone.IsSet())
        return false;
    // The operator may have stopped the run while the timer's start was asking about the name.
    if (starter == StartedBy::Timer && !State.waitingForNextLog)
        return false;
    LogStarting = true;
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
    if (!confirmed)
        LogStarting = false;
    return confirmed;
}

bool CRawLog::OpenLogFile(StartedBy starter) {
    std::string path;
    bool named;
    {
        CRecursiveLock lock(Session.DocLock);
        named = Session.Naming.logNamingMode != LogNamingMode::TimeStamp;
        path = Session.Naming.logFilePath;
    }
    const LogRecords header = HeaderRecords();
    bool inHeader = false;
    FileCause cause = named ? CreateLogFile(path, header, inHeader)
                            : CreateTimeStampLog(starter, header, inHeader);
    if (cause == FileCause::None)
        return true;
    if (!inHeader) {
        CRecursiveLock lock(Session.DocLock);
        PendingTexts.push_back(
            FileErrorMessage("opening the file", Session.Naming.logFilePath, cause));
        return false;
    }
    Messages.Report("Error writing to log file: " + std::string(GetFileErrorText(cause)) + ".\r\n");
    AddPending("An error occured creating the log file headers.\r\n"
               "Logging has been aborted.\r\n"
               "See the session log for details.");
    return false;
}

void CRawLog::AddPending(std::string text) {
    CRecursiveLock lock(Session.DocLock);
    PendingTexts.push_back(std::move(text));
}

LogRecords CRawLog::HeaderRecords() {
    CRecursiveLock lock(Session.DocLock);
    LogRecords records;
    const FrameTime now = Session.Clock.Now();
    const StationInformation station = StationAt(Session, now, Messages);
    for (const std::string& line : HeaderLines(Session, station, LocalCalendar(now)))
        records.Add(0, MakeHeaderRecord(line));
    return records;
}

FileCause CRawLog::CreateLogFile(const std::string& path, const LogRecords& header,
                                 bool& inHeader) {
    if (FileExists(path)) {
        FileCause cause = SetReadOnly(path, false);
        if (cause != FileCause::None)
            AddPending(FileErrorMessage("while accessing the file", path, cause));
    }
    return Stage.Create(path, header, inHeader);
}

/// Kept: with an operator there, a finished log of the same second is replaced.
/// Decided: not by a timer, which nobody watches, and never a log of this run: an hour comes twice
/// when daylight saving ends.
bool CRawLog::ReplacesOwnSecond(StartedBy starter) const {
    CRecursiveLock lock(Session.DocLock);
    return starter == StartedBy::Operator &&
           (!Session.NoDialogs || Session.Options.overwriteExisting) &&
           !PathsOfRun.contains(Session.Naming.logFilePath);
}

/// Decided: a name that is taken, or under which another program logs, gets the next suffix.
FileCause CRawLog::CreateTimeStampLog(StartedBy starter, const LogRecords& header, bool& inHeader) {
    const CalendarTime local = LocalCalendar(Session.Clock.Now());
    FileCause cause = FileCause::SharingViolation;
    for (int number = 1; number <= LastSuffix && cause == FileCause::SharingViolation; ++number) {
        std::string path;
        {
            CRecursiveLock lock(Session.DocLock);
            path = Session.Naming.logFilePath =
                WithSuffix(Session.Naming.logDirectory + TimeStampFileName(local), number);
        }
        const bool usable = !FileExists(path) || (number == 1 && ReplacesOwnSecond(starter));
        if (usable && !IsSymbolicLink(path))
            cause = CreateLogFile(path, header, inHeader);
    }
    return cause;
}

void CRawLog::StartLog() {
    const LogOptions options = Session.Options;
    const std::string& path = Session.Naming.logFilePath;
    Messages.Raise({EventKind::LogBegun, path, "Begin log file: \"" + path + "\".\r\n"});
    PendingAsterisk = PendingAsterisk || options.loggingSounds;
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
    Switched.Set();
    if (!State.loggingActive)
        PathsOfRun.clear();
    PathsOfRun.insert(path);
    State.loggingActive = true;
    State.runFailed = false;
    State.waitingForNextLog = false;
    State.logFilePath = path;
    State.logOpen = true;
    ++LogNumber;
    Slots = 0;
    FaultyOffered = UnstoredSaid = 0;
    StallSaid = false;
    RaiseViewsUpdate();
    Sync.Watch(Stage.OpenFile());
}

void CRawLog::PlanRoundEnd() {
    const LogOptions options = Session.Options;
    Rounds.Begin(options.every.Seconds(), State.logStartTime, StartMonotonic);
    if (options.durationEnabled && EndMonotonic <= Rounds.Due())
        return;
    State.logEndTime = State.logStartTime;
    State.logEndTime.seconds += (Rounds.Due() - StartMonotonic + 500) / 1000;
}

bool CRawLog::EndLogFile(bool abort) {
    bool ended;
    {
        CRecursiveLock lock(Session.DocLock);
        ended = MarkEnd(abort);
    }
    CompleteEnd();
    EndDone.Wait(); // also for an end that another thread is about
    ShowPending();
    return ended;
}

/// No frame joins the log any more; its file is closed by CompleteEnd.
bool CRawLog::MarkEnd(bool abort, bool switches) {
    if (LogStarting)
        return false;
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
    Ending = EndingLog{State.logFilePath, abort}; // the naming may be the next log's by now
    EndDone.Clear();
    if (switches)
        Switched.Clear();
    return true;
}

void CRawLog::CompleteEnd() {
    std::optional<EndingLog> ending;
    {
        CRecursiveLock lock(Session.DocLock);
        ending = std::exchange(Ending, std::nullopt);
    }
    if (!ending)
        return;
    Sync.Finish();
    Stage.Close();
    ProtectLogFile(ending->path);
    {
        CRecursiveLock lock(Session.DocLock);
        AfterEnd(*ending);
    }
    EndDone.Set();
}

void CRawLog::AfterEnd(const EndingLog& ending) {
    AdvanceLogFileName(Session.Naming, Session.Station);
    NoteUnstored();
    Messages.Raise(
        {EventKind::LogEnded, ending.path, "End log file: \"" + ending.path + "\".\r\n"});
    PendingAsterisk = PendingAsterisk || Session.Options.loggingSounds;
    RaiseViewsUpdate();
    const LogOptions options = Session.Options;
    if (ending.abort || !RepeatsLogs(options)) {
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
    OverrideChosen = false;
    Switched.Set();
    RaiseViewsUpdate();
}

void CRawLog::ProtectLogFile(const std::string& path) {
    bool readOnly = false;
    if (IsReadOnly(path, readOnly) != FileCause::None) {
        AddPending("An error occured while accessing the log file\r\n\"" + path + "\".");
        return;
    }
    FileCause cause = SetReadOnly(path, true);
    if (cause != FileCause::None)
        AddPending(FileErrorMessage("while accessing the log file", path, cause));
}

void CRawLog::AbandonRun() {
    {
        CRecursiveLock lock(Session.DocLock);
        State.runFailed = true;
    }
    EndLogFile(true);
}

void CRawLog::OnLogTick() {
    bool beginNext, updateViews;
    {
        CRecursiveLock lock(Session.DocLock);
        NoteClockStep();
        beginNext = TickLocked();
    }
    CompleteEnd();
    ShowPending();
    {
        CRecursiveLock lock(Session.DocLock);
        beginNext = beginNext || (State.waitingForNextLog && IsSwitching());
    }
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
    const bool rounds = Session.Options.everyEnabled;
    const bool round = rounds && Rounds.HasCome(Session.Clock.Now(), monotonic);
    if (State.waitingForNextLog && (rounds ? round : monotonic >= StartMonotonic))
        return true;
    WatchDisk();
    if (!State.logOpen)
        return false;
    if (round || (Session.Options.durationEnabled && monotonic >= EndMonotonic))
        MarkEnd(false, round);
    return false;
}

std::int64_t CRawLog::NextTimer() const {
    CRecursiveLock lock(Session.DocLock);
    constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();
    const std::int64_t round = Session.Options.everyEnabled ? Rounds.Due() : never;
    if (State.waitingForNextLog)
        return std::min(StartMonotonic, round);
    if (!State.logOpen)
        return never;
    return Session.Options.durationEnabled ? std::min(EndMonotonic, round) : round;
}

void CRawLog::WriteTimeStamp(const FrameTime& now) {
    if (!State.logOpen || now.seconds == LastTimeStamp)
        return;
    LastTimeStamp = now.seconds;
    Records.Add(0, AsBytes(MakeTimeStamp(LocalCalendar(now))));
    Flush();
}

/// Says once that the disk has stopped, and once what that cost.
void CRawLog::WatchDisk() {
    const StageFigures figures = Stage.Figures();
    if (figures.stalledMilliseconds < NotedStall) {
        if (std::exchange(StallSaid, false))
            Messages.Report(
                Format("The disk takes data again: \"%s\".\r\n", State.logFilePath.c_str()));
    } else if (!std::exchange(StallSaid, true)) {
        Messages.Raise({EventKind::DiskStalled, State.logFilePath,
                        Format("The disk has taken nothing of \"%s\" for %lld s; %zu bytes wait "
                               "in memory.\r\n",
                               State.logFilePath.c_str(),
                               static_cast<long long>(figures.stalledMilliseconds / 1000),
                               figures.waitingBytes)});
    }
    NoteUnstored();
}

void CRawLog::NoteUnstored() {
    const std::uint64_t unstored = Stage.Figures().framesUnstored;
    if (unstored <= UnstoredSaid)
        return;
    Messages.Raise({EventKind::FramesUnstored, State.logFilePath,
                    Format("%llu frames were received and not stored in \"%s\".\r\n",
                           static_cast<unsigned long long>(unstored - UnstoredSaid),
                           State.logFilePath.c_str())});
    UnstoredSaid = unstored;
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
    const std::int64_t size = step < 0 ? -step : step;
    Messages.Raise({EventKind::ClockStepped,
                    {},
                    Format("The system clock was set %s by %lld.%03lld seconds.\r\n",
                           step < 0 ? "back" : "forward", static_cast<long long>(size / 1000),
                           static_cast<long long>(size % 1000))});
}

void CRawLog::ShowPending() {
    const bool failed = Stage.Figures().cause != FileCause::None;
    std::vector<std::string> texts;
    bool beep, asterisk, close;
    if (failed) {
        {
            CRecursiveLock lock(Session.DocLock);
            if (State.logOpen) {
                State.runFailed = true;
                MarkEnd(true);
            }
        }
        CompleteEnd();
    }
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
    Sync.Stop();
}

} // namespace qor
