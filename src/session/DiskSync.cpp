// SPDX-License-Identifier: GPL-3.0-or-later
//
// The synchronising thread. Files change hands under SyncLock; synchronising happens without it.
// See DiskSync.h.
#include "session/DiskSync.h"

#include "platform/FileErrorText.h"

#include <iterator>
#include <utility>

namespace qor {
namespace {

constexpr int SyncIntervalMilliseconds = 1000;

} // namespace

void CDiskSync::Watch(const CFile& file) {
    WatchedFile watched;
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
        Woken = true;
    }
    Changed.NotifyAll();
    if (cause != FileCause::None)
        ReportFailure(file.Path(), cause);
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
            // A second try after a failure may report success for data that are gone.
            if (watched.failed)
                continue;
            FileCause cause = watched.file.Sync();
            watched.failed = cause != FileCause::None;
            if (watched.failed)
                ReportFailure(watched.path, cause);
        }
        std::erase_if(files, [ended](const WatchedFile& w) { return w.number <= ended; });
    }
}

} // namespace qor
