// SPDX-License-Identifier: GPL-3.0-or-later
//
// Between the raw log and its file: records wait in bounded memory and a thread of its own writes
// them, so a disk that stalls costs neither a frame nor a lock that others want. While the disk
// keeps up, a record is with the operating system a few hundred microseconds after it was added.
// When a write fails the file is given up and the stage rests: what is not in the file waits for
// the next one, and what comes joins it; a log whose first file cannot be created begins so. The
// raw log adds under the document's lock; StageLock is a leaf. Whatever waits for the disk (Create,
// Rest, CloseFile, Drain, Close) is called without any lock.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/Clock.h"
#include "platform/StayAwake.h"
#include "platform/Worker.h"
#include "session/LogWriter.h"

#include <optional>

namespace qor {

/// A moment's figures of the file and of what waits for it.
struct StageFigures {
    std::uint64_t fileSize = 0; ///< bytes up to the last whole record
    std::uint64_t framesWritten = 0;
    std::uint64_t framesOffered = 0;  ///< written, and the one at which the file failed
    std::uint64_t framesUnstored = 0; ///< accepted, but neither in the file nor waiting
    std::uint64_t totalWritten = 0;   ///< in all files so far, but for those that are lost
    std::uint64_t totalUnstored = 0;  ///< in none of them
    std::uint64_t totalGone = 0;      ///< in files that are lost
    std::size_t waitingBytes = 0;
    std::int64_t stalledMilliseconds = 0; ///< how long the present write has taken
    FileCause cause = FileCause::None;    ///< of the failure after which it rests
};

/// Frames of one owner, in the present or latest file.
struct OwnerFrames {
    std::uint32_t offered = 0; ///< written, and the one at which the file failed
    std::uint32_t written = 0;
};

class CLogStage {
  public:
    static constexpr std::size_t DefaultCapacity = std::size_t{64} << 20;

    /// A failed write is raised to `messages`, from the writer's thread.
    CLogStage(CClock& clock, CMessageSink& messages) : Clock(clock), Messages(messages) {}
    /// Writes what waits, and closes.
    ~CLogStage();
    CLogStage(const CLogStage&) = delete;
    CLogStage& operator=(const CLogStage&) = delete;

    std::size_t Capacity() const { return Limit; }
    /// Bytes that may wait; before a log begins.
    void SetCapacity(std::size_t bytes) { Limit = bytes; }

    /// Whether files are hashed as they are written; before a log begins.
    void SetHashing(bool on) { Writer.SetHashing(on); }
    /// The hash of the latest file, once it was drained; see CLogWriter.
    std::string Sha256() const { return Writer.Sha256(); }

    /// Each write takes so much longer from now on, as on a slow disk: for practice. Any thread.
    void SetDelay(int milliseconds) { Delay = milliseconds; }

    /// Creates the file, which must not be there yet unless it `replaces` one, and writes the
    /// header records; what waits since the stage rests follows. On failure nothing is open and,
    /// when the header was what failed, no file is left; `inHeader` tells.
    FileCause Create(const std::string& path, bool replaces, const LogRecords& header,
                     bool& inHeader);
    /// A log begins without a file: what comes waits for the next Create.
    void BeginResting();
    /// Hands the records to the writer and leaves the list empty. False when there is no room: then
    /// the frames among them are counted as unstored.
    bool Append(LogRecords& records);
    /// A frame could not even be handed over.
    void LoseFrame();
    /// Writes nothing more into the file: what is not in it waits for the next Create.
    void Rest();
    /// What stands in the present file is lost: its frames are none of the run's any more. How many
    /// there were.
    std::uint64_t ForgetFile();
    /// Of a stage that rests.
    void CloseFile() { Writer.Close(); }
    /// Waits until everything added so far is in the file, or the stage rests.
    void Drain();
    /// Drains and closes the file. Frames that wait because the stage rests are unstored then.
    void Close();

    /// Once a log is created; until it is closed.
    const CFile& OpenFile() const { return Writer.OpenFile(); }
    StageFigures Figures() const;
    OwnerFrames FramesOf(std::uint32_t owner) const;

  private:
    void Run();
    void WriteTaken();
    void BeginCounting() REQUIRES(StageLock);
    void Count(std::size_t written, FileCause cause) REQUIRES(StageLock);
    void CountUnstored(const LogRecords& records) REQUIRES(StageLock);

    CClock& Clock;
    CMessageSink& Messages;
    std::size_t Limit = DefaultCapacity;
    std::atomic<int> Delay = 0; ///< milliseconds
    CEvent Never;               ///< what a delay waits for
    CLogWriter Writer;          ///< of the thread that creates, then of the writer
    LogRecords Writing;         ///< of the writer's thread

    mutable CMutex StageLock;
    CCondition Changed;
    LogRecords Pending GUARDED_BY(StageLock);
    std::size_t WritingBytes GUARDED_BY(StageLock) = 0;
    std::int64_t WritingSince GUARDED_BY(StageLock) = 0;
    StageFigures Counted GUARDED_BY(StageLock);
    std::vector<OwnerFrames> ByOwner GUARDED_BY(StageLock);
    bool Busy GUARDED_BY(StageLock) = false;
    bool Idle GUARDED_BY(StageLock) = false;    ///< the writer waits for records
    bool Resting GUARDED_BY(StageLock) = false; ///< there is no file to write to
    bool Stopping GUARDED_BY(StageLock) = false;
    bool Started = false;            ///< of the threads that begin and end logs
    std::optional<CStayAwake> Awake; ///< of the same; while a log is open
    CWorker Thread;
};

} // namespace qor
