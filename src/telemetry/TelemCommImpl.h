// SPDX-License-Identifier: GPL-3.0-or-later
//
// The inside of a communications resource, shared by the files that implement it and by nobody
// else. Who may touch what is written at the members.
#pragma once

#include "telemetry/LineStatus.h"
#include "telemetry/TelemComm.h"

#include <atomic>
#include <string_view>

namespace qor {

struct CTelemComm::Impl {
    Impl(CMessageSink& sink, CProcessCommand* commands, CClock& clock, SerialPortFactory makePort)
        : Sink(sink), Commands(commands), Clock(clock), MakePort(std::move(makePort)), Line(sink) {}

    // TelemComm.cpp
    CommResult InitialiseSerial(const SerialResourceSettings& settings) EXCLUDES(OperationLock);
    CommResult InitialiseFile(const FileResourceSettings& settings, CFile& file)
        EXCLUDES(OperationLock);
    CommResult SetAcquisition(const std::string& instrumentName, bool enabled) EXCLUDES(FrameLock);
    /// Reports the line with the detail of the code (and what follows its fixed part), returns the
    /// code.
    CommResult Fail(std::string line, CommResult code, std::string_view systemText = {});
    /// Posts "status changed" where notices are posted.
    void PostStatus();

    // CommConnection.cpp
    CommResult Connect() EXCLUDES(OperationLock, StatusLock);
    CommResult Disconnect(CFrameQueue* left) EXCLUDES(OperationLock, StatusLock);
    void Abort(CommResult code, SystemError error) EXCLUDES(OperationLock, StatusLock);
    CommResult OpenPort();
    void NoteConnectError(SystemError error);
    CommResult ConfigurePort();
    CommResult StartWorker();
    CommResult ClosePort(CFrameQueue* left) EXCLUDES(StatusLock, FrameLock);
    void HandOver(CFrameQueue* left) REQUIRES(FrameLock);

    // CommWorker.cpp: the body of the worker thread
    class CRun;
    void RunWorker();

    // CommFile.cpp
    std::uint32_t ReadSize() const;
    /// Reads on until a frame is queued or there is no more; the code of a file that failed.
    CommResult ReadOn() REQUIRES(FrameLock);
    void ReadChunk() REQUIRES(FrameLock);
    void ReadFailed(CommResult code, std::string_view causeText) REQUIRES(FrameLock);
    void ReportEnd() REQUIRES(FrameLock);

    bool IsFile() const {
        return State == ResourceState::File || State == ResourceState::FileReporting;
    }
    bool IsSerial() const {
        return State == ResourceState::Serial || State == ResourceState::SerialReporting;
    }
    bool IsConnected() const EXCLUDES(StatusLock) {
        CLock lock(StatusLock);
        return Connected;
    }
    bool IsDisconnecting() const EXCLUDES(StatusLock) {
        CLock lock(StatusLock);
        return Disconnecting;
    }

    CMessageSink& Sink;
    CProcessCommand* const Commands; ///< null: no notices
    CClock& Clock;
    const SerialPortFactory MakePort;

    mutable CMutex OperationLock;
    mutable CMutex StatusLock ACQUIRED_AFTER(OperationLock);
    mutable CMutex FrameLock ACQUIRED_AFTER(StatusLock);

    // Written by an initialisation only, which is refused while a worker runs.
    std::atomic<ResourceState> State = ResourceState::NotInitialised;
    std::string Name;
    SerialResourceSettings Serial;
    FileResourceSettings Playback;
    std::int32_t IdleTimeoutCount = 15;

    bool Connected GUARDED_BY(StatusLock) = false;
    bool Disconnecting GUARDED_BY(StatusLock) = false;
    std::uint32_t AbortCode GUARDED_BY(StatusLock) = 0;
    SystemError ConnectError GUARDED_BY(StatusLock) = 0;

    std::unique_ptr<CFrameSync> Sync GUARDED_BY(FrameLock); ///< from the initialisation on
    bool Waiting GUARDED_BY(FrameLock) = false; ///< "waiting for telemetry" was reported
    std::uint64_t BytesReceived GUARDED_BY(FrameLock) = 0;
    std::uint64_t FramesCut GUARDED_BY(FrameLock) = 0;

    // A file resource.
    CFile File GUARDED_BY(FrameLock);
    bool FileStarted GUARDED_BY(FrameLock) = false; ///< read from
    bool FileRead GUARDED_BY(FrameLock) = false;    ///< to its end, or as far as it could be
    bool EndReported GUARDED_BY(FrameLock) = false; ///< and the last frame is handed over
    CommResult FileResult GUARDED_BY(FrameLock) = CommResult::Success;

    // The port is used by one thread at a time: the connecting one until the worker runs, the
    // worker until it has ended, the disconnecting one after. Starting and joining the worker hand
    // it over.
    std::unique_ptr<CSerialPort> Port;
    bool TimeoutsSaved = false;
    CLineStatus Line;

    CEvent Answered; ///< the worker runs, or has ended without
    CEvent Finished; ///< the worker has ended
    CEvent Stop;
    std::atomic<bool> Running = false; ///< it has issued its first read and status wait
    /// Started and joined under OperationLock. The last member: joined before what it uses goes.
    CWorker Worker;
};

} // namespace qor
