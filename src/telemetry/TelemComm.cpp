// SPDX-License-Identifier: GPL-3.0-or-later
//
// A resource's settings, attached instruments, frames and figures. Connecting, the worker and
// reading a file have files of their own.
#include "telemetry/TelemComm.h"

#include "base/Text.h"
#include "platform/FileErrorText.h"
#include "telemetry/TelemCommImpl.h"

#include <tuple>
#include <utility>

namespace qor {

CommResult CTelemComm::Impl::Fail(std::string line, CommResult code, std::string_view systemText) {
    Sink.Report(std::move(line.append(CommDetail(code)).append(systemText)));
    return code;
}

void CTelemComm::Impl::PostStatus() {
    if (Commands != nullptr)
        Commands->PostNotice(NoticeCode::StatusChanged, Name);
}

CommResult CTelemComm::Impl::InitialiseSerial(const SerialResourceSettings& settings) {
    CLock operation(OperationLock);
    const std::string refusal = "Unable to reinitialize serial communications.\r\n";
    if (IsFile()) {
        Sink.Report(refusal);
        return CommResult::InvalidPortName;
    }
    if (!IsSerial() && settings.portName.empty())
        return Fail("Unable to initialize serial communications.\r\n", CommResult::InvalidPortName);
    if (IsSerial() && settings.portName != Name)
        return Fail(refusal, CommResult::InvalidPortName);
    if (IsConnected())
        return Fail(refusal, CommResult::StillConnected);

    Serial = settings;
    if (settings.idleTimeoutCount > 0)
        IdleTimeoutCount = settings.idleTimeoutCount;
    {
        CLock lock(FrameLock);
        if (Sync == nullptr) {
            Name = settings.portName;
            Sync = std::make_unique<CFrameSync>(Sink, Name, Commands != nullptr);
        }
        Sync->SetSearchBound(settings.bufferSize);
        Sync->SetGlobalSync(settings.globalSyncString);
        if (settings.maxFrameDepth > 0)
            Sync->SetMaxFrameDepth(settings.maxFrameDepth);
    }
    std::string line = Format("Initializing serial communications on %s.\r\n", Name.c_str());
    if (settings.globalSyncString.empty())
        line += CommDetail(CommResult::NoGlobalSync);
    Sink.Report(std::move(line));
    State = Commands != nullptr ? ResourceState::SerialReporting : ResourceState::Serial;
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::Impl::InitialiseFile(const FileResourceSettings& settings, CFile& file) {
    CLock operation(OperationLock);
    CLock lock(FrameLock);
    FileCause refusal = FileCause::None;
    if (IsSerial() || file.Path().empty())
        refusal = FileCause::InvalidFile;
    else if (FileStarted && !EndReported)
        // Decided: a file is in use from its first read until its last frame is handed over.
        refusal = FileCause::SharingViolation;
    if (refusal != FileCause::None)
        return Fail(State == ResourceState::NotInitialised
                        ? "Unable to initialize file resource.\r\n"
                        : "Unable to reinitialize file resource.\r\n",
                    CommResult::FileError, ResourceFileErrorText(refusal));

    Playback = settings;
    Name = file.Path();
    File = std::move(file);
    FileStarted = FileRead = EndReported = false;
    FileResult = CommResult::Success;
    if (Sync == nullptr)
        Sync = std::make_unique<CFrameSync>(Sink, Name, false);
    else
        Sync->Restart(Name);
    Sync->SetReplay(true);
    Sync->SetSearchBound(ReadSize());
    State = Commands != nullptr ? ResourceState::FileReporting : ResourceState::File;
    Sink.Report(Format("Initializing file resource: %s.\r\n", Name.c_str()));
    PostStatus();
    return CommResult::Success;
}

CTelemComm::CTelemComm(CMessageSink& sink, CProcessCommand* commands, CClock& clock,
                       SerialPortFactory makePort)
    : Data(std::make_unique<Impl>(sink, commands, clock, std::move(makePort))) {}

CTelemComm::~CTelemComm() {
    std::ignore = Data->Disconnect(nullptr);
}

CommResult CTelemComm::InitialiseSerial(const SerialResourceSettings& settings) {
    return Data->InitialiseSerial(settings);
}

CommResult CTelemComm::InitialiseFile(const FileResourceSettings& settings, CFile file) {
    return Data->InitialiseFile(settings, file);
}

CommResult CTelemComm::Connect() {
    return Data->Connect();
}

void CTelemComm::RequestStop() {
    Data->Stop.Set();
}

CommResult CTelemComm::Disconnect(CFrameQueue* left) {
    return Data->Disconnect(left);
}

CommResult CTelemComm::Attach(const AttachRequest& request) {
    const char* instrument = request.instrumentName.c_str();
    if (State() == ResourceState::NotInitialised)
        return Data->Fail(Format("Unable to attach %s.\r\n", instrument),
                          CommResult::NotInitialised);
    CommResult result;
    {
        CLock lock(Data->FrameLock);
        result = Data->Sync->Attach(request);
    }
    if (result != CommResult::Success)
        return Data->Fail(Format("Unable to attach %s to %s.\r\n", instrument, Name().c_str()),
                          result);
    Data->Sink.Report(Format("Attaching %s to %s.\r\n", instrument, Name().c_str()));
    Data->PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::Detach(const std::string& instrumentName) {
    if (State() == ResourceState::NotInitialised)
        return Data->Fail("Unable to detach instrument.\r\n", CommResult::NotInitialised);
    CommResult result;
    {
        CLock lock(Data->FrameLock);
        result = Data->Sync->Detach(instrumentName);
    }
    if (result != CommResult::Success)
        return Data->Fail(Format("Unable to detach %s.\r\n", instrumentName.c_str()), result);
    Data->Sink.Report(Format("Detaching %s from %s.\r\n", instrumentName.c_str(), Name().c_str()));
    Data->PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::EnableAcquisition(const std::string& instrumentName) {
    return Data->SetAcquisition(instrumentName, true);
}

CommResult CTelemComm::DisableAcquisition(const std::string& instrumentName) {
    return Data->SetAcquisition(instrumentName, false);
}

CommResult CTelemComm::Impl::SetAcquisition(const std::string& instrumentName, bool enabled) {
    CommResult result = CommResult::InstrumentNotAttached;
    {
        CLock lock(FrameLock);
        if (Sync != nullptr)
            result = Sync->SetAcquisition(instrumentName, enabled);
    }
    if (result != CommResult::Success)
        return Fail(Format("Unable to %s telemetry acquisition on %s.\r\n",
                           enabled ? "enable" : "disable", Name.c_str()),
                    result);
    Sink.Report(Format("%s telemetry acquisition for %s on %s.\r\n",
                       enabled ? "Enabling" : "Disabling", instrumentName.c_str(), Name.c_str()));
    PostStatus();
    return CommResult::Success;
}

CommResult CTelemComm::RetrieveFrame(CFrameData& frame, bool& found) {
    found = false;
    if (State() == ResourceState::NotInitialised)
        return Data->Fail("Unable to retrieve frames.\r\n", CommResult::NotInitialised);
    CLock lock(Data->FrameLock);
    CommResult result = IsFile() ? Data->ReadOn() : CommResult::Success;
    found = Data->Sync->Frames().Pop(frame);
    return result;
}

CommResult CTelemComm::RetrieveFrames(CFrameQueue& frames) {
    frames.Clear();
    if (State() == ResourceState::NotInitialised)
        return Data->Fail("Unable to retrieve frames.\r\n", CommResult::NotInitialised);
    CLock lock(Data->FrameLock);
    CommResult result = IsFile() ? Data->ReadOn() : CommResult::Success;
    std::swap(frames, Data->Sync->Frames());
    return result;
}

std::optional<SerialResourceSettings> CTelemComm::QuerySerialSettings() const {
    if (!Data->IsSerial())
        return {};
    return Data->Serial;
}

std::optional<FileResourceSettings> CTelemComm::QueryFileSettings() const {
    if (!Data->IsFile())
        return {};
    return Data->Playback;
}

CommResult CTelemComm::ResetAbortCode(std::uint32_t& abortCode) {
    CLock lock(Data->StatusLock);
    abortCode = std::exchange(Data->AbortCode, 0);
    return CommResult::Success;
}

const std::string& CTelemComm::Name() const {
    return Data->Name;
}

ResourceState CTelemComm::State() const {
    return Data->State;
}

bool CTelemComm::IsFile() const {
    return Data->IsFile();
}

bool CTelemComm::AtEnd() const {
    CLock lock(Data->FrameLock);
    return Data->EndReported;
}

std::uint32_t CTelemComm::IdentityOf(const std::string& instrumentName) const {
    CLock lock(Data->FrameLock);
    return Data->Sync != nullptr ? Data->Sync->IdentityOf(instrumentName) : 0;
}

ResourceFigures CTelemComm::Figures() const {
    ResourceFigures figures;
    CLock status(Data->StatusLock);
    figures.connected = Data->Connected;
    figures.abortCode = Data->AbortCode;
    figures.connectError = Data->ConnectError;
    CLock lock(Data->FrameLock);
    figures.waiting = Data->Waiting;
    figures.bytesReceived = Data->BytesReceived;
    figures.framesCut = Data->FramesCut;
    if (Data->Sync != nullptr)
        figures.bytesDiscarded = Data->Sync->BytesDiscarded();
    return figures;
}

void CTelemComm::ResetBytesDiscarded() {
    CLock lock(Data->FrameLock);
    if (Data->Sync != nullptr)
        Data->Sync->ResetBytesDiscarded();
}

void CTelemComm::SetUntagged(const std::string& instrumentName, bool untagged) {
    CLock lock(Data->FrameLock);
    if (Data->Sync != nullptr)
        Data->Sync->SetUntagged(instrumentName, untagged);
}

} // namespace qor
