// SPDX-License-Identifier: GPL-3.0-or-later
//
// A resource's settings, connection, instruments, frames and figures: what is done under its locks.
// Only the functions from ReceiveBytes to Abort run on the worker's thread; the worker that aborts
// closes the port itself and never waits for its own end.
#include "telemetry/TelemComm.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "platform/SystemText.h"

#include <tuple>
#include <utility>

namespace qor {

namespace {

/// How long a disconnection waits for the worker's end.
constexpr int LongestWaitMilliseconds = 5000;

} // namespace

CTelemComm::CTelemComm(CMessageSink& sink, CProcessCommand* commands, CClock& clock,
                       SerialPortFactory makePort)
    : Sink(sink), Commands(commands), Clock(clock), Sync(sink, {}, StreamSource::Port),
      Player(sink, commands), Port(sink, std::move(makePort)), Line(sink), Worker(*this) {}

CTelemComm::~CTelemComm() {
    std::ignore = Disconnect();
}

CommResult CTelemComm::Fail(std::string line, CommResult code, std::string_view systemText) {
    Sink.Report(std::move(line.append(CommDetail(code)).append(systemText)));
    return code;
}

void CTelemComm::PostStatus() {
    if (Commands != nullptr)
        Commands->PostNotice(NoticeCode::StatusChanged, ResourceName);
}

CommResult CTelemComm::InitialiseSerial(const SerialResourceSettings& settings) {
    CLock operation(OperationLock);
    const std::string refusal = "Unable to reinitialize serial communications.\r\n";
    if (IsFile()) {
        Sink.Report(refusal);
        return CommResult::InvalidPortName;
    }
    if (!IsSerial() && settings.portName.empty())
        return Fail("Unable to initialize serial communications.\r\n", CommResult::InvalidPortName);
    if (IsSerial() && settings.portName != ResourceName)
        return Fail(refusal, CommResult::InvalidPortName);
    if (IsConnected())
        return Fail(refusal, CommResult::StillConnected);

    Serial = settings;
    IdleTimeoutCount =
        settings.idleTimeoutCount > 0 ? settings.idleTimeoutCount : DefaultIdleTimeoutCount;
    {
        CLock lock(FrameLock);
        if (!IsSerial()) {
            ResourceName = settings.portName;
            Sync.Restart(ResourceName,
                         Commands != nullptr ? StreamSource::ReportingPort : StreamSource::Port);
        }
        Sync.SetSearchBound(settings.bufferSize);
        Sync.SetGlobalSync(settings.globalSyncString);
        Sync.SetMaxFrameDepth(settings.maxFrameDepth);
        Sync.SetMaxFrameBytes(settings.maxFrameBytes);
    }
    std::string line =
        Format("Initializing serial communications on %s.\r\n", ResourceName.c_str());
    if (settings.globalSyncString.empty())
        line += CommDetail(CommResult::NoGlobalSync);
    Sink.Report(std::move(line));
    Kind = Commands != nullptr ? ResourceState::SerialReporting : ResourceState::Serial;
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::InitialiseFile(const FileResourceSettings& settings, CInputFile file) {
    CLock operation(OperationLock);
    CLock lock(FrameLock);
    FileCause refusal = FileCause::None;
    if (IsSerial() || file.Path().empty())
        refusal = FileCause::InvalidFile;
    else if (Player.InUse())
        refusal = FileCause::SharingViolation;
    if (refusal != FileCause::None)
        return Fail(Kind == ResourceState::NotInitialised
                        ? "Unable to initialize file resource.\r\n"
                        : "Unable to reinitialize file resource.\r\n",
                    CommResult::FileError, ResourceFileErrorText(refusal));

    Playback = settings;
    ResourceName = file.Path();
    Player.Load(std::move(file), settings);
    Sync.Restart(ResourceName, StreamSource::File);
    Sync.SetNearTimes();
    Sync.SetSearchBound(Player.ReadSize());
    Kind = Commands != nullptr ? ResourceState::FileReporting : ResourceState::File;
    Sink.Report(Format("Initializing file resource: %s.\r\n", ResourceName.c_str()));
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::Connect(bool quiet) {
    if (IsFile())
        return CommResult::Success;
    CLock operation(OperationLock);
    if (Kind == ResourceState::NotInitialised)
        return Fail("Unable to open serial port communications.\r\n", CommResult::NotInitialised);
    const std::string refusal =
        Format("Unable to open serial port communications on %s.\r\n", ResourceName.c_str());
    if (CommResult result = ClearOldRun(); result != CommResult::Success)
        return quiet ? result : Fail(refusal, result);
    {
        CLock lock(StatusLock);
        if (Connected)
            return CommResult::Success;
        Line.ResetFraming();
        if (AbortCode != 0)
            return Fail(refusal, CommResult::AbortCodeSet);
    }
    Worker.Join();
    SystemError error = 0;
    CommResult result = Port.Open(Serial, error);
    {
        CLock lock(StatusLock);
        ConnectError = error;
    }
    if (result == CommResult::Success)
        result = StartWorker();
    if (result == CommResult::PortNotOpened || result == CommResult::WorkerNotStarted)
        return quiet ? result : Fail(refusal, result);
    if (result != CommResult::Success)
        return result;
    Sink.Report(Format("%s connection successful.\r\n", ResourceName.c_str()));
    PostStatus();
    return CommResult::Success;
}

/// A worker that aborted may still be closing the port. One that was told to stop and had not ended
/// in time left the port open: it is closed here once the worker has ended.
CommResult CTelemComm::ClearOldRun() {
    bool aborting, left;
    {
        CLock lock(StatusLock);
        aborting = Disconnecting;
        left = Connected && !Disconnecting && Worker.StopRequested();
    }
    if (left && !Worker.HasEnded())
        return CommResult::StillConnected;
    if (aborting || left)
        Worker.Join();
    if (left)
        std::ignore = ClosePort(); // what could not be restored is told, and opened again
    return CommResult::Success;
}

CommResult CTelemComm::StartWorker() {
    {
        // Connected from here on: a worker that aborts at once disconnects like any other.
        CLock lock(StatusLock);
        Connected = true;
    }
    Received.BeginConnection();
    if (Worker.Start(*Port))
        return CommResult::Success;
    if (IsConnected()) // there was no thread for it
        std::ignore = ClosePort();
    return CommResult::WorkerNotStarted;
}

CommResult CTelemComm::Disconnect(CFrameQueue* left) {
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
        if (left != nullptr)
            HandOver(left);
        return CommResult::Success;
    }
    Worker.RequestStop();
    Worker.WaitForEnd(Clock, 0);
    Sink.Report(Format("%s disconnection successful.\r\n", ResourceName.c_str()));
    if (!Worker.WaitForEnd(Clock, LongestWaitMilliseconds)) {
        // Closing a port under a worker that still uses it could hand its bytes to another file.
        CLock lock(StatusLock);
        Disconnecting = false;
        return Fail(Format("The worker of %s does not end.\r\n", ResourceName.c_str()),
                    CommResult::StillConnected);
    }
    Worker.Join();
    HandOver(left);
    CommResult result = ClosePort();
    PostStatus();
    return result;
}

/// Gives the queued frames to `left`, when there is one, and empties the queue.
void CTelemComm::HandOver(CFrameQueue* left) {
    CLock lock(FrameLock);
    if (left != nullptr)
        std::swap(*left, Sync.Frames());
    Sync.Frames().Clear();
}

/// The frames that are queued stay so for whoever retrieves.
CommResult CTelemComm::ClosePort() {
    CommResult result = Port.Close();
    CLock status(StatusLock);
    CLock lock(FrameLock);
    Sync.ForgetBytes();
    Waiting = false;
    Connected = Disconnecting = false;
    return result;
}

/// The byte handler and the processing pass: at once, because the next read may complete too and
/// would make these frames look later.
void CTelemComm::ReceiveBytes(ByteSpan bytes) {
    if (bytes.empty())
        return;
    const FrameTime arrival = Clock.Now();
    if (Received.IsOpen())
        Received.Take(bytes, Clock.MonotonicMilliseconds());
    PassResult pass;
    {
        CLock status(StatusLock);
        CLock lock(FrameLock);
        if (std::exchange(Waiting, false))
            Sink.Report(Format("%s reading telemetry.\r\n", ResourceName.c_str()));
        Sync.Append(bytes, arrival);
        pass = Sync.RunPass();
    }
    PostPass(pass);
}

void CTelemComm::PostPass(const PassResult& pass) {
    if (pass.framesQueued && Received.IsOpen())
        Received.NoteFrame();
    if (Commands == nullptr)
        return;
    if (pass.framesQueued)
        Commands->PostFramesQueued(ResourceName);
    else if (pass.globalSyncFound)
        PostStatus();
}

void CTelemComm::ReportSilence() {
    PassResult pass;
    bool wasWaiting;
    {
        CLock status(StatusLock);
        CLock lock(FrameLock);
        pass = Sync.GoIdle();
        wasWaiting = std::exchange(Waiting, true);
    }
    PostPass(pass);
    if (wasWaiting || Commands == nullptr)
        return;
    PostStatus();
    Sink.Report(Format("%s waiting for telemetry.\r\n", ResourceName.c_str()));
}

/// What was received whole is cut, however the worker ends.
void CTelemComm::WorkerEnds(CommResult result, SystemError error) {
    PassResult pass;
    {
        CLock status(StatusLock);
        CLock lock(FrameLock);
        pass = Sync.CutRest();
    }
    PostPass(pass);
    if (result != CommResult::Success)
        Abort(result, error);
}

void CTelemComm::Abort(CommResult code, SystemError error) {
    const FrameTime now = Clock.Now();
    {
        CLock lock(StatusLock);
        // Somebody is disconnecting already, or will: the failure no longer matters.
        if (Disconnecting || Worker.StopRequested())
            return;
        AbortCode = static_cast<std::uint32_t>(code);
        LastLoss = {code, error, now, Clock.MonotonicMilliseconds()};
        ++Losses;
        Disconnecting = true;
    }
    std::ignore = Fail(Format("Telemetry acquisition aborted on %s.\r\n", ResourceName.c_str()),
                       code, SystemErrorText(error));
    std::ignore = ClosePort();
    PostStatus();
}

CommResult CTelemComm::Attach(const AttachRequest& request) {
    const char* instrument = request.instrumentName.c_str();
    if (Kind == ResourceState::NotInitialised)
        return Fail(Format("Unable to attach %s.\r\n", instrument), CommResult::NotInitialised);
    CommResult result;
    {
        CLock lock(FrameLock);
        result = Sync.Attach(request);
    }
    if (result != CommResult::Success)
        return Fail(Format("Unable to attach %s to %s.\r\n", instrument, ResourceName.c_str()),
                    result);
    Sink.Report(Format("Attaching %s to %s.\r\n", instrument, ResourceName.c_str()));
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::Detach(const std::string& instrumentName) {
    if (Kind == ResourceState::NotInitialised)
        return Fail("Unable to detach instrument.\r\n", CommResult::NotInitialised);
    CommResult result;
    {
        CLock lock(FrameLock);
        result = Sync.Detach(instrumentName);
    }
    if (result != CommResult::Success)
        return Fail(Format("Unable to detach %s.\r\n", instrumentName.c_str()), result);
    Sink.Report(Format("Detaching %s from %s.\r\n", instrumentName.c_str(), ResourceName.c_str()));
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::EnableAcquisition(const std::string& instrumentName) {
    return SetAcquisition(instrumentName, true);
}

CommResult CTelemComm::DisableAcquisition(const std::string& instrumentName) {
    return SetAcquisition(instrumentName, false);
}

CommResult CTelemComm::SetAcquisition(const std::string& instrumentName, bool enabled) {
    CommResult result;
    {
        CLock lock(FrameLock);
        result = Sync.SetAcquisition(instrumentName, enabled);
    }
    if (result != CommResult::Success)
        return Fail(Format("Unable to %s telemetry acquisition on %s.\r\n",
                           enabled ? "enable" : "disable", ResourceName.c_str()),
                    result);
    Sink.Report(Format("%s telemetry acquisition for %s on %s.\r\n",
                       enabled ? "Enabling" : "Disabling", instrumentName.c_str(),
                       ResourceName.c_str()));
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::RetrieveFrame(CFrameData& frame, bool& found) {
    found = false;
    if (Kind == ResourceState::NotInitialised)
        return Fail("Unable to retrieve frames.\r\n", CommResult::NotInitialised);
    CLock lock(FrameLock);
    CommResult result = IsFile() ? Player.ReadOn(Sync) : CommResult::Success;
    found = Sync.Frames().Pop(frame);
    return result;
}

CommResult CTelemComm::RetrieveFrames(CFrameQueue& frames) {
    frames.Clear();
    if (Kind == ResourceState::NotInitialised)
        return Fail("Unable to retrieve frames.\r\n", CommResult::NotInitialised);
    CLock lock(FrameLock);
    CommResult result = IsFile() ? Player.ReadOn(Sync) : CommResult::Success;
    std::swap(frames, Sync.Frames());
    return result;
}

CommResult CTelemComm::SeekFile(std::uint64_t offset) {
    const std::string line =
        Format("Unable to go to another place of %s.\r\n", ResourceName.c_str());
    if (!IsFile())
        return Fail(line, CommResult::NotAFile);
    CLock lock(FrameLock);
    const FileCause cause = Player.Seek(Sync, offset);
    return cause == FileCause::None
               ? CommResult::Success
               : Fail(line, CommResult::FileError, ResourceFileErrorText(cause));
}

std::optional<SerialResourceSettings> CTelemComm::QuerySerialSettings() const {
    return IsSerial() ? std::optional(Serial) : std::nullopt;
}

std::optional<FileResourceSettings> CTelemComm::QueryFileSettings() const {
    return IsFile() ? std::optional(Playback) : std::nullopt;
}

CommResult CTelemComm::ResetAbortCode(std::uint32_t& abortCode) {
    CLock lock(StatusLock);
    abortCode = std::exchange(AbortCode, 0);
    return CommResult::Success;
}

bool CTelemComm::IsConnected() const {
    CLock lock(StatusLock);
    return Connected;
}

bool CTelemComm::AtEnd() const {
    CLock lock(FrameLock);
    return Player.AtEnd();
}

bool CTelemComm::HasInput() const {
    CLock lock(FrameLock);
    return Player.HasInput();
}

std::uint32_t CTelemComm::IdentityOf(const std::string& instrumentName) const {
    CLock lock(FrameLock);
    return Sync.IdentityOf(instrumentName);
}

ResourceFigures CTelemComm::Figures() const {
    ResourceFigures figures;
    CLock status(StatusLock);
    figures.connected = Connected;
    figures.abortCode = AbortCode;
    figures.connectError = ConnectError;
    figures.lastLoss = LastLoss;
    figures.losses = Losses;
    figures.lineErrors = Line.Counts();
    CLock lock(FrameLock);
    figures.waiting = Waiting;
    const StreamFigures& stream = Sync.Figures();
    figures.bytesReceived = stream.bytesReceived;
    figures.bytesDiscarded = stream.bytesDiscarded;
    figures.bytesOfFile = Player.BytesTaken();
    figures.framesCut = stream.framesCut;
    figures.framesLost = stream.framesLost;
    figures.bytesLost = stream.bytesLost;
    figures.bytesCutShort = stream.bytesCutShort;
    return figures;
}

void CTelemComm::ResetBytesDiscarded() {
    CLock lock(FrameLock);
    Sync.ResetBytesDiscarded();
}

void CTelemComm::KeepDiscarded(CDiscardedBytes* kept) {
    CLock lock(FrameLock);
    Sync.KeepDiscarded(kept);
}

void CTelemComm::SetUntagged(const std::string& instrumentName, bool untagged) {
    CLock lock(FrameLock);
    Sync.SetUntagged(instrumentName, untagged);
}

} // namespace qor
