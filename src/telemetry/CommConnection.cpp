// SPDX-License-Identifier: GPL-3.0-or-later
//
// Connecting and disconnecting a serial resource: each step of the port has its own line and code
// in the session log. Runs on the caller's thread; only Abort runs on the worker, which closes the
// port itself and never waits for its own end.
#include "base/Text.h"
#include "platform/SystemText.h"
#include "telemetry/TelemCommImpl.h"

#include <tuple>
#include <utility>

namespace qor {

namespace {

/// The first look at whether the worker has ended, and how long its end is waited for after that.
constexpr int FirstPauseMilliseconds = 50;
constexpr int LongestWaitMilliseconds = 5000;

/// How long the driver may hold bytes back after a pause on the line: one character and 6 ms.
std::uint32_t ReadInterval(std::uint32_t baudRate) {
    return baudRate == 0 ? 6 : 10000 / baudRate + 6;
}

} // namespace

CommResult CTelemComm::Impl::Connect() {
    if (IsFile())
        return CommResult::Success;
    CLock operation(OperationLock);
    if (State == ResourceState::NotInitialised)
        return Fail("Unable to open serial port communications.\r\n", CommResult::NotInitialised);
    const std::string refusal =
        Format("Unable to open serial port communications on %s.\r\n", Name.c_str());
    // A worker that aborted may still be closing the port.
    if (IsDisconnecting())
        Worker.Join();
    {
        CLock lock(StatusLock);
        if (Connected)
            return CommResult::Success;
        Line.ResetFraming();
        if (AbortCode != 0)
            return Fail(refusal, CommResult::AbortCodeSet);
    }
    Worker.Join();
    CommResult result = OpenPort();
    if (result == CommResult::Success)
        result = StartWorker();
    if (result == CommResult::PortNotOpened || result == CommResult::WorkerNotStarted)
        return Fail(refusal, result);
    if (result != CommResult::Success)
        return result;
    Sink.Report(Format("%s connection successful.\r\n", Name.c_str()));
    PostStatus();
    return CommResult::Success;
}

/// Opens and sets up the port; on failure it is closed again.
CommResult CTelemComm::Impl::OpenPort() {
    TimeoutsSaved = false;
    Port = MakePort();
    SystemError error = Port == nullptr ? SystemErrorNoMemory : Port->Open(Name);
    NoteConnectError(error);
    if (error != 0) {
        Port.reset();
        return CommResult::PortNotOpened;
    }
    CommResult result = ConfigurePort();
    if (result != CommResult::Success)
        std::ignore = ClosePort(nullptr);
    return result;
}

void CTelemComm::Impl::NoteConnectError(SystemError error) {
    CLock lock(StatusLock);
    ConnectError = error;
}

CommResult CTelemComm::Impl::ConfigurePort() {
    const LineSettings line{Serial.baudRate, Serial.dataBits, Serial.parity, Serial.stopBits};
    auto failed = [this](const char* step, CommResult code, SystemError error) {
        NoteConnectError(error);
        return Fail(Format("Unable to %s for %s.\r\n", step, Name.c_str()), code,
                    SystemErrorText(error));
    };
    if (SystemError error = Port->SaveTimeouts())
        return failed("get serial port timeouts", CommResult::TimeoutsNotRead, error);
    TimeoutsSaved = true;
    if (SystemError error = Port->ReadSettings())
        return failed("get serial port settings", CommResult::SettingsNotRead, error);
    if (SystemError error = Port->WriteSettings(line))
        return failed("set serial port settings", CommResult::SettingsNotWritten, error);
    if (SystemError error = Port->SetReadInterval(ReadInterval(Serial.baudRate)))
        return failed("set serial port timeouts", CommResult::TimeoutsNotSet, error);
    if (SystemError error = Port->SetQueues(Serial.bufferSize, 0))
        return failed("set serial communications buffer", CommResult::QueueSizeNotSet, error);
    if (SystemError error = Port->SetEventMask(EventBreak | EventLineError))
        return failed("set serial communications mask", CommResult::EventMaskNotSet, error);
    return CommResult::Success;
}

CommResult CTelemComm::Impl::StartWorker() {
    Answered.Clear();
    Finished.Clear();
    Stop.Clear();
    Running = false;
    {
        // Connected from here on: a worker that aborts at once disconnects like any other.
        CLock lock(StatusLock);
        Connected = true;
    }
    if (!Worker.Start(ThreadPriority::TimeCritical, [this] { RunWorker(); })) {
        std::ignore = ClosePort(nullptr);
        return CommResult::WorkerNotStarted;
    }
    Answered.Wait();
    if (Running)
        return CommResult::Success;
    Worker.Join();
    return CommResult::WorkerNotStarted;
}

CommResult CTelemComm::Impl::Disconnect(CFrameQueue* left) {
    if (!IsSerial())
        return CommResult::Success;
    CLock operation(OperationLock);
    bool working;
    {
        CLock lock(StatusLock);
        working = Connected && !Disconnecting;
        Disconnecting = Connected;
    }
    if (!working) {
        // A worker that aborted closes the port itself; the caller may rely on its being closed and
        // on the frames that were cut before.
        Worker.Join();
        CLock lock(FrameLock);
        HandOver(left);
        return CommResult::Success;
    }
    Stop.Set();
    bool ended = Finished.Wait(FirstPauseMilliseconds);
    Sink.Report(Format("%s disconnection successful.\r\n", Name.c_str()));
    if (!ended && !Finished.Wait(LongestWaitMilliseconds)) {
        // Closing a port under a worker that still uses it could hand its bytes to another file.
        CLock lock(StatusLock);
        Disconnecting = false;
        return Fail(Format("The worker of %s does not end.\r\n", Name.c_str()),
                    CommResult::StillConnected);
    }
    Worker.Join();
    CommResult result = ClosePort(left);
    PostStatus();
    return result;
}

void CTelemComm::Impl::Abort(CommResult code, SystemError error) {
    {
        CLock lock(StatusLock);
        // Somebody is disconnecting already: the failure no longer matters.
        if (Disconnecting)
            return;
        AbortCode = static_cast<std::uint32_t>(code);
        Disconnecting = true;
    }
    std::ignore = Fail(Format("Telemetry acquisition aborted on %s.\r\n", Name.c_str()), code,
                       SystemErrorText(error));
    // What was cut before the failure is still wanted: it stays queued for whoever retrieves.
    CFrameQueue cut;
    std::ignore = ClosePort(&cut);
    {
        CLock lock(FrameLock);
        std::swap(cut, Sync->Frames());
    }
    PostStatus();
}

/// Gives the queued frames to `left`, when there is one.
void CTelemComm::Impl::HandOver(CFrameQueue* left) {
    if (left == nullptr)
        return;
    left->Clear();
    std::swap(*left, Sync->Frames());
}

/// Every step is tried, whatever became of the one before.
CommResult CTelemComm::Impl::ClosePort(CFrameQueue* left) {
    CommResult result = CommResult::Success;
    SystemError error = TimeoutsSaved ? Port->RestoreTimeouts() : 0;
    if (error != 0)
        result = Fail(Format("Unable to reset serial port timeouts for %s.\r\n", Name.c_str()),
                      CommResult::NotRestored, SystemErrorText(error));
    error = Port->Purge();
    if (error != 0)
        result = Fail(Format("Unable to purge serial port buffers for %s.\r\n", Name.c_str()),
                      CommResult::NotRestored, SystemErrorText(error));
    {
        CLock lock(FrameLock);
        HandOver(left);
        Sync->Clear();
        Waiting = false;
    }
    Port->Close();
    Port.reset();
    CLock lock(StatusLock);
    Connected = Disconnecting = false;
    return result;
}

} // namespace qor
