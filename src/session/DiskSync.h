// SPDX-License-Identifier: GPL-3.0-or-later
//
// Makes a log survive a power cut: a thread that synchronises the file to disk once a second, and
// once more when the log has ended. Nobody waits for it: it works on a handle of its own, so a slow
// disk holds up neither frames nor the end of a log. Only the end of the program waits.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/File.h"
#include "platform/Worker.h"

#include <cstdint>
#include <string>
#include <vector>

namespace qor {

class CDiskSync {
  public:
    explicit CDiskSync(CMessageSink& messages) : Messages(messages) {}
    /// Stops.
    ~CDiskSync() { Stop(); }
    CDiskSync(const CDiskSync&) = delete;
    CDiskSync& operator=(const CDiskSync&) = delete;

    /// Watches this open file from now on. A failure, here or in the thread, is reported once a
    /// file; the file is then left to the system's own writing.
    void Watch(const CFile& file);
    /// The watched file has ended: one last synchronisation, then its handle is closed.
    void Finish();
    /// Ends the thread when it has synchronised what it watches.
    void Stop();

  private:
    struct WatchedFile {
        CFile file;
        std::string path;
        std::uint64_t number = 0;
        bool failed = false;
    };
    bool StartThread() REQUIRES(SyncLock);
    void ReportFailure(const std::string& path, FileCause cause);
    void Run();
    /// Waits for a second or for news. Returns the number up to which files have ended.
    std::uint64_t WaitForRound(std::vector<WatchedFile>& files, bool& stopping);

    CMessageSink& Messages;
    CMutex SyncLock;
    CCondition Changed;
    std::vector<WatchedFile> Arriving GUARDED_BY(SyncLock);
    std::uint64_t LastNumber GUARDED_BY(SyncLock) = 0;  ///< of the file handed in last
    std::uint64_t EndedNumber GUARDED_BY(SyncLock) = 0; ///< files up to this one have ended
    bool Woken GUARDED_BY(SyncLock) = false;
    bool Stopping GUARDED_BY(SyncLock) = false;
    bool Started GUARDED_BY(SyncLock) = false;
    CWorker Thread;
};

} // namespace qor
