// SPDX-License-Identifier: GPL-3.0-or-later
//
// The files of raw logs: how one is created under a free name, what happens when the open one
// cannot be written any more, and its protection at the end. Everything here waits for the disk,
// without the lock.
#include "session/RawLog.h"

#include "base/AtEnd.h"
#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "session/FileKind.h"
#include "session/LogHeader.h"
#include "session/LogName.h"
#include "session/LogRecovery.h"
#include "session/SessionPath.h"
#include "telemetry/RawLogFormat.h"

#include <tuple>
#include <utility>

namespace qor {
namespace {

/// How many logs of one folder may have the name of one second.
/// Between two tries to begin another file, in milliseconds.
constexpr std::int64_t RetryMilliseconds = 3000;
/// Between two files that are given up because they could not be synchronised.
constexpr std::int64_t SyncPause = 60'000;

/// "An error occured <doing what>\r\n"path"." and the cause.
std::string FileErrorMessage(const char* doing, const std::string& path, FileCause cause) {
    return std::string("An error occured ") + doing + "\r\n\"" + path + "\".\r\n" +
           std::string(GetFileErrorText(cause));
}

/// What the operator reads of a file that is lost.
std::string LossText(FileTrouble trouble) {
    switch (trouble) {
    case FileTrouble::None:
    case FileTrouble::SyncFailed:
        return {}; // said where it was seen
    case FileTrouble::Deleted:
        return "was deleted while it was written; what it held is lost.";
    case FileTrouble::Replaced:
        return "was taken away while it was written, and another file has its name.";
    case FileTrouble::Moved:
        return "was moved away while it was written.";
    case FileTrouble::Truncated:
        return "was cut off by another program while it was written.";
    case FileTrouble::Altered:
        return "holds bytes of another program, which has written to it; look at what it holds.";
    }
    return {};
}

/// Whether another file, or none, has its name by now.
bool IsAway(FileTrouble trouble) {
    return trouble == FileTrouble::Deleted || trouble == FileTrouble::Replaced ||
           trouble == FileTrouble::Moved;
}

} // namespace

/// What a crash has left in the folders of this run.
void CRawLog::FinishEarlierLogs() {
    std::vector<LoggedInstrument> instruments;
    std::vector<std::string> folders;
    {
        CRecursiveLock lock(Session.DocLock);
        if (State.loggingActive)
            return;
        instruments = Session.LoggedInstruments();
        folders = Session.SpareDirectories;
        folders.push_back(Session.Naming.logDirectory);
    }
    for (const std::string& folder : folders)
        FinishCutLogs(folder, instruments, Messages);
}

bool CRawLog::OpenLogFile(StartedBy starter) {
    std::string path;
    bool named, replaces;
    {
        CRecursiveLock lock(Session.DocLock);
        named = Session.Naming.logNamingMode != LogNamingMode::TimeStamp;
        path = Session.Naming.logFilePath;
        replaces = path == Replaceable;
    }
    const LogRecords header = HeaderRecords();
    bool inHeader = false;
    FileCause cause = named
                          ? CreateLogFile(path, replaces || IsAbandonedLog(path), header, inHeader)
                          : CreateTimeStampLog(starter, header, inHeader);
    if (cause == FileCause::None || GoesOnWithout(starter, cause))
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

/// A file that cannot be begun ends no run: what comes waits for another one.
/// Decided: but for the operator's own start, who is told and may do something about it.
bool CRawLog::GoesOnWithout(StartedBy starter, FileCause cause) {
    std::string path;
    {
        CRecursiveLock lock(Session.DocLock);
        if (starter == StartedBy::Operator || Session.ExitOnError)
            return false;
        path = Session.Naming.logFilePath;
    }
    Stage.BeginResting();
    Messages.Raise({EventKind::LogFailed, path,
                    "The log file \"" + path +
                        "\" could not be begun: " + std::string(GetFileErrorText(cause)) + "\r\n"});
    return true;
}

LogRecords CRawLog::HeaderRecords() {
    CRecursiveLock lock(Session.DocLock);
    LogRecords records;
    const FrameTime now = Session.Clock.Now();
    const StationInformation station = StationAt(Session, now, PositionKept);
    for (const std::string& line : HeaderLines(Session, station, LocalCalendar(now)))
        records.Add(0, MakeHeaderRecord(line));
    return records;
}

FileCause CRawLog::CreateLogFile(const std::string& path, bool replaces, const LogRecords& header,
                                 bool& inHeader) {
    const bool there = replaces && FileExists(path);
    if (there) {
        FileCause cause = SetReadOnly(path, false);
        if (cause != FileCause::None)
            AddPending(FileErrorMessage("while accessing the file", path, cause));
    }
    return Stage.Create(path, there, header, inHeader);
}

/// Kept: with an operator there, a finished log of the same second is replaced.
/// Decided: not by a timer, which nobody watches, and never a log of this run: an hour comes twice
/// when daylight saving ends.
bool CRawLog::ReplacesOwnSecond(StartedBy starter, const std::string& path) const {
    CRecursiveLock lock(Session.DocLock);
    return starter == StartedBy::Operator &&
           (!Session.NoDialogs || Session.Options.overwriteExisting) && HasConsent(path);
}

FileCause CRawLog::CreateTimeStampLog(StartedBy starter, const LogRecords& header, bool& inHeader) {
    const std::string name = TimeStampFileName(LocalCalendar(Session.Clock.Now()));
    std::string folder;
    {
        CRecursiveLock lock(Session.DocLock);
        folder = Session.Naming.logDirectory;
    }
    FileCause cause = FileCause::None;
    std::string path = CreateInFolder(folder, name, ReplacesOwnSecond(starter, folder + name),
                                      header, inHeader, cause);
    CRecursiveLock lock(Session.DocLock);
    Session.Naming.logFilePath = std::move(path);
    return cause;
}

/// Decided: a name that is taken, or under which another program logs, gets the next suffix; when
/// there is none left, it is a SharingViolation.
std::string CRawLog::CreateInFolder(const std::string& folder, const std::string& name,
                                    bool replaces, const LogRecords& header, bool& inHeader,
                                    FileCause& cause) {
    for (int number = 1; number <= LastSuffix; ++number) {
        std::string path = WithSuffix(folder + name, number);
        const bool replacesIt = replaces && number == 1;
        if (IsSymbolicLink(path) || (FileExists(path) && !replacesIt))
            continue;
        cause = CreateLogFile(path, replacesIt, header, inHeader);
        // Another program may have been first with the name.
        if (cause != FileCause::SharingViolation &&
            (cause != FileCause::AccessDenied || !FileExists(path)))
            return path;
    }
    cause = FileCause::SharingViolation;
    return folder + name;
}

/// Protects the open log's own file, wherever it is by now: one that came back unprotected would
/// look as if a crash had cut it off.
void CRawLog::ProtectLogFile(const std::string& path) {
    const FileCause cause = Stage.OpenFile().SetReadOnly(true);
    bool readOnly = false;
    if (IsReadOnly(path, readOnly) != FileCause::None)
        AddPending("An error occured while accessing the log file\r\n\"" + path + "\".");
    else if (cause != FileCause::None)
        AddPending(FileErrorMessage("while accessing the log file", path, cause));
}

bool CRawLog::NeedsAnotherFile() {
    CRecursiveLock lock(Session.DocLock);
    if (!State.logOpen || Rescuing || IsStarting() || Session.ExitOnError)
        return false;
    if (State.recovering)
        return Session.Clock.MonotonicMilliseconds() >= NextTry;
    if (Stage.Figures().cause != FileCause::None)
        return true;
    const FileTrouble trouble = Sync.Trouble();
    if (trouble != FileTrouble::SyncFailed)
        return trouble != FileTrouble::None;
    // On a disk that synchronises nothing one more file does not help.
    const std::int64_t now = Session.Clock.MonotonicMilliseconds();
    if (SyncGivenUp && now - *SyncGivenUp < SyncPause)
        return false;
    SyncGivenUp = now;
    return true;
}

void CRawLog::TendFile() {
    {
        CRecursiveLock lock(Session.DocLock);
        if (!NeedsAnotherFile())
            return;
        Rescuing = true;
        EndDone.Clear();
    }
    const CAtEnd done([this] {
        CRecursiveLock lock(Session.DocLock);
        Rescuing = false;
        EndDone.Set();
    });
    ReplaceFile();
}

/// What the file of a log that ends did not take, up to the last frame, has one more chance; a
/// folder whose file failed at once is left out by the first try only.
void CRawLog::StoreRest() {
    const auto waits = [this] {
        CRecursiveLock lock(Session.DocLock);
        return !Session.ExitOnError && Stage.Figures().waitingBytes > 0;
    };
    for (int tries = 0; tries < 2 && waits(); ++tries) {
        ReplaceFile();
        Stage.Drain();
    }
}

/// Gives the file up, where there still is one, and begins another. By one thread at a time.
void CRawLog::ReplaceFile() {
    bool hasFile;
    std::optional<std::string> skipped; // a folder whose file has failed at once
    {
        CRecursiveLock lock(Session.DocLock);
        hasFile = !std::exchange(State.recovering, true);
        if (hasFile) {
            StallSaid = false; // it takes nothing more, which was said
            FailedSince = Session.Clock.MonotonicMilliseconds();
            UnstoredThen = Stage.Figures().framesUnstored;
            if (FailedSince - FileBegun < RetryMilliseconds)
                skipped = FileFolder;
        }
    }
    if (hasFile)
        GiveFileUp();
    const bool begun = BeginAnotherFile(skipped);
    CRecursiveLock lock(Session.DocLock);
    State.recovering = !begun;
    State.runFailed = !begun || Abandoned;
    NextTry = Session.Clock.MonotonicMilliseconds() + RetryMilliseconds;
    RaiseViewsUpdate();
}

void CRawLog::GiveFileUp() {
    // A failed write was said; cutting it back makes the file shorter.
    const bool failed = Stage.Figures().cause != FileCause::None;
    const FileTrouble trouble = failed ? FileTrouble::None : Sync.Trouble();
    std::string path;
    {
        CRecursiveLock lock(Session.DocLock);
        path = State.logFilePath;
    }
    SayFileLost(trouble, path);
    Sync.Finish();
    Stage.Rest();
    if (IsAway(trouble)) // it was said to be
        std::ignore = Stage.OpenFile().SetReadOnly(true);
    else
        ProtectLogFile(path);
    Stage.CloseFile();
    if (const auto finished = FinishFile(path, trouble)) {
        CRecursiveLock lock(Session.DocLock);
        OnFileEnded(*finished);
    }
    Messages.Raise({EventKind::LogEnded, path, "End log file: \"" + path + "\".\r\n"});
}

/// What nobody has seen when the log ends. After a failed write there is nothing to see: it was
/// said, and cutting it back makes the file shorter.
FileTrouble CRawLog::LookAtEnd() const {
    const StageFigures figures = Stage.Figures();
    if (figures.cause != FileCause::None)
        return FileTrouble::None;
    const FileTrouble seen = Sync.Trouble();
    return IsLost(seen) ? seen : CDiskSync::LookAtEnd(Stage.OpenFile(), figures.fileSize);
}

std::optional<FinishedFile> CRawLog::EndFile(const std::string& path) {
    const FileTrouble trouble = LookAtEnd();
    if (trouble != FileTrouble::None) {
        SayFileLost(trouble, path);
        CRecursiveLock lock(Session.DocLock);
        State.runFailed = true;
    }
    ProtectLogFile(path);
    return FinishFile(path, trouble);
}

/// Nothing is written to the file any more. What is known of it; nothing when it is not there or
/// was cut, nobody asks, or it may end in a part of a record.
std::optional<FinishedFile> CRawLog::FinishFile(const std::string& path, FileTrouble trouble) {
    if (trouble == FileTrouble::Deleted || trouble == FileTrouble::Truncated) {
        if (const std::uint64_t gone = Stage.ForgetFile())
            Messages.Raise({EventKind::LogFailed, path,
                            Format("%llu frames were in the log file \"%s\", which is lost.\r\n",
                                   static_cast<unsigned long long>(gone), path.c_str())});
        return {};
    }
    if (IsAway(trouble) || trouble == FileTrouble::Altered)
        return {};
    FinishedFile file{path, Stage.Figures().fileSize, Stage.Sha256(), {}, 0};
    if (!OnFileEnded || file.sha256.empty())
        return {};
    CRecursiveLock lock(Session.DocLock);
    file.steps = Steps;
    file.framesUnstored = Stage.Figures().framesUnstored;
    return file;
}

void CRawLog::TellBegun(const std::string& path) {
    Steps.clear();
    if (std::optional<Event> kept = std::exchange(PositionKept, std::nullopt))
        Messages.Raise(std::move(*kept));
    if (OnFileBegun)
        OnFileBegun(path);
}

void CRawLog::SayFileLost(FileTrouble trouble, const std::string& path) {
    if (const std::string text = LossText(trouble); !text.empty())
        Messages.Raise(
            {EventKind::LogFailed, path, "The log file \"" + path + "\" " + text + "\r\n"});
}

/// Decided: where all suffixes of a log's own name are used up, as after days on a disk that
/// synchronises nothing, its next file is named by the time.
bool CRawLog::BeginAnotherFile(const std::optional<std::string>& skipped) {
    const LogRecords header = HeaderRecords();
    std::vector<std::string> folders;
    const std::string timeName = TimeStampFileName(LocalCalendar(Session.Clock.Now()));
    std::string name;
    {
        CRecursiveLock lock(Session.DocLock);
        folders = Session.SpareDirectories;
        folders.insert(folders.begin(), LogFolder);
        if (Session.Naming.logDirectory != LogFolder) // chosen meanwhile
            folders.insert(folders.begin(), Session.Naming.logDirectory);
        if (skipped)
            std::erase(folders, *skipped);
        name = Session.Naming.logNamingMode == LogNamingMode::TimeStamp ? timeName : FileName;
    }
    FileCause cause = FileCause::Generic;
    bool inHeader = false;
    for (const std::string& folder : folders) {
        std::string path = CreateInFolder(folder, name, false, header, inHeader, cause);
        if (cause == FileCause::SharingViolation)
            path = CreateInFolder(folder, timeName, false, header, inHeader, cause);
        if (cause == FileCause::None) {
            NoteOtherFile(folder, path);
            return true;
        }
    }
    CRecursiveLock lock(Session.DocLock);
    if (folders.empty() || std::exchange(NoFileSaid, true))
        return false;
    std::string text =
        "No other log file can be begun: " + std::string(GetFileErrorText(cause)) + "\r\n";
    if (State.logOpen) // else it ends, and they are lost
        text += "\tFrames wait in memory; it is tried again every " +
                std::to_string(RetryMilliseconds / 1000) + " seconds.\r\n";
    Messages.Raise({EventKind::LogFailed, State.logFilePath, std::move(text)});
    return false;
}

void CRawLog::NoteOtherFile(const std::string& folder, const std::string& path) {
    {
        CRecursiveLock lock(Session.DocLock);
        FileFolder = folder;
        NoFileSaid = false;
        FileBegun = Session.Clock.MonotonicMilliseconds();
        const std::uint64_t lost = Stage.Figures().framesUnstored - UnstoredThen;
        const std::string gap = Format("It goes on from the file that failed %lld s before; %s.",
                                       static_cast<long long>((FileBegun - FailedSince) / 1000),
                                       lost == 0 ? "no frame was lost between"
                                                 : Format("%llu frames could not be kept",
                                                          static_cast<unsigned long long>(lost))
                                                       .c_str());
        State.logFilePath = path;
        PathsOfRun.insert(path);
        TellBegun(path);
        Messages.Raise(
            {EventKind::LogGoesOn, path, "Begin log file: \"" + path + "\".\r\n\t" + gap + "\r\n"});
    }
    Sync.Watch(Stage.OpenFile(), [this] { return Stage.Figures().fileSize; });
}

} // namespace qor
