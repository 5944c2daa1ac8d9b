// SPDX-License-Identifier: GPL-3.0-or-later
//
// The synchronising thread. Files change hands under SyncLock; synchronising happens without it.
// See DiskSync.h.
#include "session/DiskSync.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"

#include <iterator>
#include <utility>

namespace qor {
namespace {

constexpr int SyncIntervalMilliseconds = 1000;
/// Ended files that could not be synchronised and are tried again.
constexpr std::size_t MostFailed = 8;

} // namespace

void CDiskSync::Watch(const CFile& file, std::function<std::uint64_t()> written) {
    WatchedFile watched;
    watched.written = std::move(written);
    watched.path = file.Path();
    FileCause cause = file.Duplicate(watched.file);
    {
        CLock lock(SyncLock);
        EndedNumber = LastNumber;
        if (cause == FileCause::None && !StartThread())
            cause = FileCause::Generic;
        if (cause == FileCause::None) {
            watched.number = ++LastNumber;
            Arriving.push_back(std::move(watched));
        }
        Seen = cause == FileCause::None ? FileTrouble::None : FileTrouble::SyncFailed;
        Woken = true;
    }
    Changed.NotifyAll();
    if (cause != FileCause::None)
        ReportFailure(file.Path(), cause);
}

FileTrouble CDiskSync::Trouble() const {
    CLock lock(SyncLock);
    return Seen;
}

void CDiskSync::Note(const WatchedFile& watched, FileTrouble trouble) {
    CLock lock(SyncLock);
    if (watched.number == LastNumber && Seen == FileTrouble::None)
        Seen = trouble;
}

FileTrouble CDiskSync::Look(const CFile& file, std::uint64_t written) {
    switch (file.Standing()) {
    case FileStanding::There:
        break;
    case FileStanding::Deleted:
        return FileTrouble::Deleted;
    case FileStanding::Replaced:
        return FileTrouble::Replaced;
    case FileStanding::Moved:
        return FileTrouble::Moved;
    }
    std::uint64_t size = 0;
    return file.Size(size) == FileCause::None && size < written ? FileTrouble::Truncated
                                                                : FileTrouble::None;
}

FileTrouble CDiskSync::LookAtEnd(const CFile& file, std::uint64_t written) {
    const FileTrouble trouble = Look(file, written);
    std::uint64_t size = 0;
    return trouble == FileTrouble::None && file.Size(size) == FileCause::None && size > written
               ? FileTrouble::Altered
               : trouble;
}

bool CDiskSync::StartThread() {
    if (!Started)
        Started = Thread.Start(ThreadPriority::Normal, [this] { Run(); });
    return Started;
}

void CDiskSync::Finish() {
    {
        CLock lock(SyncLock);
        EndedNumber = LastNumber;
        Woken = true;
    }
    Changed.NotifyAll();
}

void CDiskSync::Stop() {
    {
        CLock lock(SyncLock);
        if (!Started)
            return;
        Stopping = Woken = true;
    }
    Changed.NotifyAll();
    Thread.Join();
    CLock lock(SyncLock);
    Started = Stopping = false;
}

void CDiskSync::ReportFailure(const std::string& path, FileCause cause) {
    Messages.Raise({EventKind::SyncFailed, path,
                    "Error synchronizing log file with the disk: \"" + path + "\".\r\n\t" +
                        std::string(GetFileErrorText(cause)) +
                        "\r\n\tLogging goes on; a power failure may lose the latest data.\r\n"});
}

/// Counts; says that the failures so far have passed. True for the first of them.
bool CDiskSync::IsNewFailure(const char* what, const std::string& path, FileCause cause,
                             std::uint32_t& failures) {
    if (cause != FileCause::None)
        return failures++ == 0;
    if (const std::uint32_t passed = std::exchange(failures, 0))
        Messages.Report(Format("%s with the disk again after %u failures: \"%s\".\r\n", what,
                               passed, path.c_str()));
    return false;
}

/// The file's own synchronisation says nothing about its name.
/// Decided: a folder that could not be synchronised ends no log; another file would stand in it
/// too.
void CDiskSync::SynchroniseName(WatchedFile& watched) {
    if (watched.nameDone)
        return;
    const FileCause cause = SyncFolderOf(watched.path);
    if (watched.file.Standing() != FileStanding::There) { // also when it has gone only now
        watched.nameFailures = 0;
        return; // what has become of its name is said elsewhere
    }
    watched.nameDone = cause == FileCause::None;
    if (IsNewFailure("Folder synchronized", watched.path, cause, watched.nameFailures))
        Messages.Raise({EventKind::SyncFailed, watched.path,
                        "Error synchronizing the folder of the log file with the disk: \"" +
                            watched.path + "\".\r\n\t" + std::string(GetFileErrorText(cause)) +
                            "\r\n\tLogging goes on; a power failure may lose the whole log.\r\n"});
}

void CDiskSync::Synchronise(WatchedFile& watched) {
    SynchroniseName(watched);
    const FileCause cause = watched.file.Sync();
    if (!IsNewFailure("Synchronized", watched.path, cause, watched.failures))
        return;
    Note(watched, FileTrouble::SyncFailed);
    ReportFailure(watched.path, cause);
}

void CDiskSync::GiveUp(const char* what, const std::string& path, std::uint32_t failures) {
    if (failures > 0)
        Messages.Report(
            Format("%s with the disk, in %u tries: \"%s\".\r\n", what, failures, path.c_str()));
}

std::uint64_t CDiskSync::WaitForRound(std::vector<WatchedFile>& files, bool& stopping) {
    CLock lock(SyncLock);
    Changed.WaitFor(SyncLock, SyncIntervalMilliseconds,
                    [this]() REQUIRES(SyncLock) { return Woken; });
    Woken = false;
    files.insert(files.end(), std::make_move_iterator(Arriving.begin()),
                 std::make_move_iterator(Arriving.end()));
    Arriving.clear();
    stopping = Stopping;
    return EndedNumber;
}

void CDiskSync::Run() {
    std::vector<WatchedFile> files;
    for (bool stopping = false; !stopping;) {
        std::uint64_t ended = WaitForRound(files, stopping);
        for (WatchedFile& watched : files) {
            if (watched.number > ended)
                Note(watched, Look(watched.file, watched.written()));
            Synchronise(watched);
        }
        std::erase_if(files, [ended](const WatchedFile& watched) {
            return watched.number <= ended && watched.failures == 0 && watched.nameFailures == 0;
        });
        while (!files.empty() && (stopping || files.size() > MostFailed + 1)) {
            const WatchedFile& oldest = files.front();
            GiveUp("Folder not synchronized", oldest.path, oldest.nameFailures);
            GiveUp("Not synchronized", oldest.path, oldest.failures);
            files.erase(files.begin());
        }
    }
}

} // namespace qor
