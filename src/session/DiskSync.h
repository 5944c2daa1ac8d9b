// SPDX-License-Identifier: GPL-3.0-or-later
//
// Makes a log survive a power cut: a thread that synchronises the file to disk once a second, and
// once more when the log has ended. Nobody waits for it: it works on a handle of its own, so a slow
// disk holds up neither frames nor the end of a log. Only the end of the program waits. What the
// system dropped after a failure cannot be written by trying again, and what others delete or cut
// is gone: whoever logs asks for Trouble and begins another file.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/File.h"
#include "platform/Worker.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace qor {

/// Why a log needs another file.
enum class FileTrouble : std::uint8_t {
    None,
    SyncFailed,
    Deleted,
    Replaced,
    Moved,
    Truncated,
    Altered ///< somebody else wrote to it
};

/// Whether the file is not what was written any more.
constexpr bool IsLost(FileTrouble trouble) {
    return trouble != FileTrouble::None && trouble != FileTrouble::SyncFailed;
}

class CDiskSync {
  public:
    explicit CDiskSync(CMessageSink& messages) : Messages(messages) {}
    /// Stops.
    ~CDiskSync() { Stop(); }
    CDiskSync(const CDiskSync&) = delete;
    CDiskSync& operator=(const CDiskSync&) = delete;

    /// Watches this open file from now on. The first failure of a file, and that of its folder, is
    /// reported, tried again every second, and reported with its count when it has passed or the
    /// file is given up.
    /// `written`: bytes that stand in it for certain, asked from the thread; a file with less was
    /// cut.
    void Watch(const CFile& file, std::function<std::uint64_t()> written);
    /// What has befallen the file that is watched, first of all.
    FileTrouble Trouble() const;
    /// What has befallen an open file of which so many bytes stand in it for certain.
    static FileTrouble Look(const CFile& file, std::uint64_t written);
    /// The same of one that holds these bytes and no more.
    static FileTrouble LookAtEnd(const CFile& file, std::uint64_t written);
    /// The watched file has ended: one last synchronisation, then its handle is closed.
    void Finish();
    /// Ends the thread when it has synchronised what it watches.
    void Stop();

  private:
    struct WatchedFile {
        CFile file;
        std::string path;
        std::uint64_t number = 0;
        std::uint32_t failures = 0;     ///< in a row
        std::uint32_t nameFailures = 0; ///< the same, of its folder
        std::function<std::uint64_t()> written;
        bool nameDone = false; ///< its folder was synchronised since it was made
    };
    bool StartThread() REQUIRES(SyncLock);
    void Note(const WatchedFile& watched, FileTrouble trouble);
    void SynchroniseName(WatchedFile& watched);
    void Synchronise(WatchedFile& watched);
    bool IsNewFailure(const char* what, const std::string& path, FileCause cause,
                      std::uint32_t& failures);
    void ReportFailure(const std::string& path, FileCause cause);
    void GiveUp(const char* what, const std::string& path, std::uint32_t failures);
    void Run();
    /// Waits for a second or for news. Returns the number up to which files have ended.
    std::uint64_t WaitForRound(std::vector<WatchedFile>& files, bool& stopping);

    CMessageSink& Messages;
    mutable CMutex SyncLock;
    CCondition Changed;
    std::vector<WatchedFile> Arriving GUARDED_BY(SyncLock);
    std::uint64_t LastNumber GUARDED_BY(SyncLock) = 0;         ///< of the file handed in last
    std::uint64_t EndedNumber GUARDED_BY(SyncLock) = 0;        ///< files up to this one have ended
    FileTrouble Seen GUARDED_BY(SyncLock) = FileTrouble::None; ///< of the file handed in last
    bool Woken GUARDED_BY(SyncLock) = false;
    bool Stopping GUARDED_BY(SyncLock) = false;
    bool Started GUARDED_BY(SyncLock) = false;
    CWorker Thread;
};

} // namespace qor
