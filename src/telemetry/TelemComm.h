// SPDX-License-Identifier: GPL-3.0-or-later
//
// One source of telemetry: a serial port with its worker thread, or a file played as if it were a
// port. It holds the locks and what is done under them; the port's steps are COpenPort's, the
// worker's loop is CPortWorker's, reading a file is CFilePlayer's, cutting frames is CFrameSync's.
// Called by the controller on the application or acquisition thread; the operations may be called
// from any thread but for initialising, which is for a time when nobody else uses the resource.
// Locks: OperationLock (one connect, disconnect or initialisation at a time; never taken by the
// worker), StatusLock, FrameLock, in this order.
#pragma once

#include "base/Lock.h"
#include "base/MessageSink.h"
#include "platform/Clock.h"
#include "telemetry/ByteTap.h"
#include "telemetry/FilePlayer.h"
#include "telemetry/LineStatus.h"
#include "telemetry/OpenPort.h"
#include "telemetry/PortWorker.h"

#include <atomic>
#include <optional>
#include <string_view>

namespace qor {

enum class ResourceState : std::uint32_t {
    NotInitialised = 0,
    File = 1,
    FileReporting = 2,
    Serial = 3,
    SerialReporting = 4,
};

/// How a connection ended by itself.
struct PortLoss {
    CommResult code = CommResult::Success; ///< the abort code; Success: none was lost yet
    SystemError error = 0;                 ///< the system's reason
    FrameTime time;
    std::int64_t milliseconds = 0; ///< the same moment on the monotonic clock
};

/// A moment's figures of a resource, for status lines. Counts go on through reconnections.
struct ResourceFigures {
    bool connected = false;
    bool waiting = false; ///< "waiting for telemetry" was reported
    std::uint32_t abortCode = 0;
    PortLoss lastLoss;              ///< kept when the abort code is reset and the port is back
    std::uint32_t losses = 0;       ///< how often the port was lost
    std::uint32_t connectError = 0; ///< system error that the last attempt to connect ended with
    std::uint64_t bytesReceived = 0;
    std::uint64_t bytesDiscarded = 0;
    std::uint64_t bytesOfFile = 0; ///< read of a file, compressed where it is
    std::uint64_t framesCut = 0;
    std::uint64_t framesLost = 0;    ///< dropped because nobody took them in time
    std::uint64_t bytesLost = 0;     ///< of these frames; they count as discarded too
    std::uint64_t bytesCutShort = 0; ///< of frames that the end of a connection cut
    LineErrorCounts lineErrors{};    ///< by LineErrorKind
};

class CTelemComm {
  public:
    /// `commands` may be null: a resource that posts no notices (state 1 or 3). Messages go to
    /// `sink`.
    CTelemComm(CMessageSink& sink, CProcessCommand* commands, CClock& clock,
               SerialPortFactory makePort);
    /// Disconnects, and waits for a worker that does not end.
    ~CTelemComm();

    CommResult InitialiseSerial(const SerialResourceSettings& settings) EXCLUDES(OperationLock);
    CommResult InitialiseFile(const FileResourceSettings& settings, CInputFile file)
        EXCLUDES(OperationLock);
    /// Opens the port and starts the worker; returns when the worker runs. Success without change
    /// when connected already, and for a file. After an abort its code must be reset first. A
    /// worker that had not ended when it was disconnected is waited for no longer: StillConnected
    /// until it has ended, then the connection is made.
    /// `quiet`: a port that cannot be opened is not reported (it is tried over and over).
    CommResult Connect(bool quiet = false) EXCLUDES(OperationLock, StatusLock);
    /// Tells the worker to end, and returns at once. Disconnect still has to follow: with many
    /// ports, telling all of them first makes their workers end at the same time.
    void RequestStop() { Worker.RequestStop(); }
    /// Ends the worker and closes the port. Frames that are still queued when the worker has ended,
    /// also one that ended by itself, go to `left` (when given) before the queue is emptied, so
    /// that a disconnection loses none.
    CommResult Disconnect(CFrameQueue* left = nullptr) EXCLUDES(OperationLock, StatusLock);
    CommResult Attach(const AttachRequest& request);
    CommResult Detach(const std::string& instrumentName);
    CommResult EnableAcquisition(const std::string& instrumentName);
    CommResult DisableAcquisition(const std::string& instrumentName);

    /// The oldest queued frame, exchanged with `frame` (whose memory is used again); `found` tells
    /// whether there was one. A file resource reads on as needed.
    CommResult RetrieveFrame(CFrameData& frame, bool& found);
    /// All queued frames at once (a file resource: the next batch): one lock for many frames. The
    /// queue handed in is emptied and its memory used again. No frame and Success: none waits, or
    /// the file is at its end. A file that could not be read on gives its code after its last
    /// frame.
    CommResult RetrieveFrames(CFrameQueue& frames);

    /// Plays a file on from that byte, 0 for anew; its queued frames are dropped. NotAFile, or
    /// FileError when it cannot be read there.
    CommResult SeekFile(std::uint64_t offset);

    std::optional<SerialResourceSettings> QuerySerialSettings() const;
    std::optional<FileResourceSettings> QueryFileSettings() const;
    CommResult ResetAbortCode(std::uint32_t& abortCode);

    const std::string& Name() const { return ResourceName; }
    ResourceState State() const { return Kind; }
    bool IsFile() const {
        return Kind == ResourceState::File || Kind == ResourceState::FileReporting;
    }
    /// A file resource that has been read to its end, its last frame handed over.
    bool AtEnd() const;
    /// False when reading on a file resource would wait for more.
    bool HasInput() const;
    std::uint32_t IdentityOf(const std::string& instrumentName) const;
    ResourceFigures Figures() const;
    void ResetBytesDiscarded();
    /// A copy of what a port receives.
    CByteTap& Tap() { return Received; }
    /// Of a file: keeps what is discarded from now on. `kept` lives longer.
    void KeepDiscarded(CDiscardedBytes* kept);
    /// The playback frame synchroniser's untagged instruments (see CFrameSync::SetUntagged).
    void SetUntagged(const std::string& instrumentName, bool untagged);

  private:
    friend class CPortWorker; // the worker's side of the resource

    /// Reports the line with the detail of the code (and what follows its fixed part), returns the
    /// code.
    CommResult Fail(std::string line, CommResult code, std::string_view systemText = {});
    /// Posts "status changed" where notices are posted.
    void PostStatus();
    CommResult SetAcquisition(const std::string& instrumentName, bool enabled) EXCLUDES(FrameLock);
    bool IsSerial() const {
        return Kind == ResourceState::Serial || Kind == ResourceState::SerialReporting;
    }
    bool IsConnected() const EXCLUDES(StatusLock);
    CommResult ClearOldRun() REQUIRES(OperationLock) EXCLUDES(StatusLock);
    CommResult StartWorker() EXCLUDES(StatusLock);
    CommResult ClosePort() EXCLUDES(StatusLock, FrameLock);
    void HandOver(CFrameQueue* left) EXCLUDES(FrameLock);

    // On the worker's thread.
    void ReceiveBytes(ByteSpan bytes) EXCLUDES(StatusLock, FrameLock);
    void ReportSilence() EXCLUDES(StatusLock, FrameLock);
    void WorkerEnds(CommResult result, SystemError error) EXCLUDES(StatusLock, FrameLock);
    void PostPass(const PassResult& pass);
    void Abort(CommResult code, SystemError error) EXCLUDES(StatusLock);

    CMessageSink& Sink;
    CProcessCommand* const Commands; ///< null: no notices
    CClock& Clock;

    mutable CMutex OperationLock;
    mutable CMutex StatusLock ACQUIRED_AFTER(OperationLock);
    mutable CMutex FrameLock ACQUIRED_AFTER(StatusLock);

    // Written by an initialisation only, which is refused while a worker runs.
    std::atomic<ResourceState> Kind = ResourceState::NotInitialised;
    std::string ResourceName;
    SerialResourceSettings Serial;
    FileResourceSettings Playback;
    static constexpr std::int32_t DefaultIdleTimeoutCount = 15;
    std::int32_t IdleTimeoutCount = DefaultIdleTimeoutCount;

    bool Connected GUARDED_BY(StatusLock) = false;
    bool Disconnecting GUARDED_BY(StatusLock) = false;
    std::uint32_t AbortCode GUARDED_BY(StatusLock) = 0;
    SystemError ConnectError GUARDED_BY(StatusLock) = 0;
    PortLoss LastLoss GUARDED_BY(StatusLock);
    std::uint32_t Losses GUARDED_BY(StatusLock) = 0;

    CFrameSync Sync GUARDED_BY(FrameLock);
    CFilePlayer Player GUARDED_BY(FrameLock);
    bool Waiting GUARDED_BY(FrameLock) = false; ///< "waiting for telemetry" was reported

    CByteTap Received;
    COpenPort Port; ///< handed from thread to thread, see there
    CLineStatus Line;

    CPortWorker Worker; ///< the last member: ends before what it uses goes
};

} // namespace qor
