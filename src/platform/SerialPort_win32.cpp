// SPDX-License-Identifier: GPL-3.0-or-later
//
// The serial port on Windows: overlapped reads and status waits, as the worker loop above issues
// and collects them. Used by one thread at a time, no lock. It decides nothing about telemetry and
// reports nothing; every failure goes up as the system's error number.
#include "platform/SerialPort.h"

#include "platform/ReadSize_win32.h"
#include "platform/Win32Support.h"

#include <algorithm>
#include <new>
#include <utility>

#include <windows.h>

namespace qor {

namespace {

static_assert(EventBreak == EV_BREAK && EventLineError == EV_ERR);
static_assert(LineInputOverflow == CE_RXOVER && LineOverrun == CE_OVERRUN &&
              LineParity == CE_RXPARITY && LineFraming == CE_FRAME && LineBreak == CE_BREAK);
static_assert(LineTransmitFull == 0x0100 && LineIoError == 0x0400 && LineModeError == 0x8000);

/// Decided: a status wait that ended with an empty mask, or aborted although nobody cancelled it,
/// says that this driver has no such events to give (a pseudo-terminal under Wine ends every wait
/// at once), so the next one begins only after this rest. A port that has gone is told by its read.
/// Longer than the worker's own wait, so that silence is still noticed as silence.
constexpr ULONGLONG StatusRestMilliseconds = 1000;
/// The same for a read that ended without a byte: short, because bytes may follow.
constexpr ULONGLONG ReadRestMilliseconds = 20;
/// How long closing waits for the system to give back the memory of a cancelled operation.
constexpr DWORD CancelMilliseconds = 1000;

/// An operation that the system runs for us. It owns all memory that the system writes to, so that
/// nothing of a caller is touched after the caller has gone.
struct Operation {
    const WaitResult name; ///< what Wait says when it has ended
    OVERLAPPED request{};
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t capacity = 0;
    DWORD mask = 0;
    bool running = false;  ///< with the system
    bool resting = false;  ///< pending for the caller, but not issued before restEnd
    ULONGLONG restEnd = 0; ///< tick count
    std::span<std::uint8_t> target;

    explicit Operation(WaitResult itsName) : name(itsName) {}
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation() {
        if (request.hEvent != nullptr)
            CloseHandle(request.hEvent);
    }

    bool Create() {
        if (request.hEvent == nullptr)
            request.hEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        return request.hEvent != nullptr;
    }
    bool Reserve(std::size_t size) {
        if (size <= capacity)
            return true;
        bytes.reset(new (std::nothrow) std::uint8_t[size]);
        capacity = bytes ? size : 0;
        return capacity != 0;
    }
    bool HasEnded() const { return HasOverlappedIoCompleted(&request); }
    bool MustRest() const { return GetTickCount64() < restEnd; }
    void RestFor(ULONGLONG milliseconds) { restEnd = GetTickCount64() + milliseconds; }
};

class CWin32SerialPort final : public CSerialPort {
  public:
    ~CWin32SerialPort() override { Close(); }

    SystemError Open(const std::string& name) override;
    SystemError SaveTimeouts() override;
    SystemError ReadSettings() override;
    SystemError WriteSettings(const LineSettings& settings) override;
    SystemError SetReadInterval(std::uint32_t milliseconds) override;
    SystemError SetQueues(std::uint32_t inputBytes, std::uint32_t outputBytes) override;
    SystemError SetEventMask(std::uint32_t mask) override;
    SystemError CreateInput() override;
    SystemError ReadLineErrors(std::uint32_t& errors) override;
    IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) override;
    IssueResult IssueStatusWait(std::uint32_t& mask) override;
    WaitResult Wait(int milliseconds) override;
    int LongestRead() const override { return LongestReadAt(BaudRate, ReadInterval); }
    SystemError CollectRead(std::size_t& got) override;
    SystemError CollectStatus(std::uint32_t& mask) override;
    SystemError LastError() const override { return IssueError; }
    SystemError RestoreTimeouts() override;
    SystemError Purge() override;
    void Close() override;

  private:
    IssueResult Issued(Operation& operation, bool done);
    void End(std::unique_ptr<Operation>& operation);

    HANDLE Port = INVALID_HANDLE_VALUE;
    COMMTIMEOUTS SavedTimeouts{};
    DCB SavedBlock{};
    bool TimeoutsSaved = false;
    bool BlockSaved = false;
    std::uint32_t BaudRate = LineSettings().baudRate;
    std::uint32_t ReadInterval = 0; ///< milliseconds
    std::unique_ptr<Operation> Read;
    std::unique_ptr<Operation> Status;
    SystemError IssueError = 0;
};

/// A call's outcome as the seam reports it.
SystemError ErrorUnless(BOOL succeeded) {
    return succeeded ? 0 : GetLastError();
}

SystemError CWin32SerialPort::Open(const std::string& name) {
    Close();
    std::wstring path = WidePortName(name);
    if (path.empty())
        return ERROR_INVALID_NAME;
    Port = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OVERLAPPED, nullptr);
    if (Port == INVALID_HANDLE_VALUE)
        return GetLastError();
    // A file or the console opens as well; only a serial device has an event mask.
    DWORD mask = 0;
    bool isSerial = GetFileType(Port) == FILE_TYPE_CHAR && GetCommMask(Port, &mask);
    if (isSerial)
        return 0;
    Close();
    return ERROR_BAD_DEVICE;
}

SystemError CWin32SerialPort::SaveTimeouts() {
    TimeoutsSaved = GetCommTimeouts(Port, &SavedTimeouts) != FALSE;
    return ErrorUnless(TimeoutsSaved);
}

SystemError CWin32SerialPort::ReadSettings() {
    SavedBlock = {};
    SavedBlock.DCBlength = sizeof SavedBlock;
    BlockSaved = GetCommState(Port, &SavedBlock) != FALSE;
    return ErrorUnless(BlockSaved);
}

SystemError CWin32SerialPort::WriteSettings(const LineSettings& settings) {
    DCB block = SavedBlock;
    block.BaudRate = settings.baudRate;
    block.ByteSize = settings.dataBits;
    block.Parity = settings.parity;
    block.StopBits = settings.stopBits;
    block.fParity = TRUE;
    block.fDtrControl = DTR_CONTROL_ENABLE;
    block.fRtsControl = RTS_CONTROL_ENABLE;
    block.fOutxCtsFlow = FALSE;
    block.fOutxDsrFlow = FALSE;
    block.fDsrSensitivity = FALSE;
    block.fTXContinueOnXoff = FALSE;
    block.fOutX = FALSE;
    block.fInX = FALSE;
    block.fErrorChar = FALSE;
    block.fNull = FALSE;
    block.fAbortOnError = FALSE;
    BaudRate = settings.baudRate;
    return ErrorUnless(SetCommState(Port, &block));
}

SystemError CWin32SerialPort::SetReadInterval(std::uint32_t milliseconds) {
    COMMTIMEOUTS timeouts{};
    timeouts.ReadIntervalTimeout = ReadInterval = milliseconds;
    return ErrorUnless(SetCommTimeouts(Port, &timeouts));
}

SystemError CWin32SerialPort::SetQueues(std::uint32_t inputBytes, std::uint32_t outputBytes) {
    return ErrorUnless(SetupComm(Port, inputBytes, outputBytes));
}

SystemError CWin32SerialPort::SetEventMask(std::uint32_t mask) {
    return ErrorUnless(SetCommMask(Port, mask));
}

SystemError CWin32SerialPort::CreateInput() {
    if (!Read)
        Read.reset(new (std::nothrow) Operation(WaitResult::ReadDone));
    if (!Status)
        Status.reset(new (std::nothrow) Operation(WaitResult::StatusDone));
    if (!Read || !Status)
        return ERROR_NOT_ENOUGH_MEMORY;
    return ErrorUnless(Read->Create() && Status->Create());
}

SystemError CWin32SerialPort::ReadLineErrors(std::uint32_t& errors) {
    DWORD flags = 0;
    SystemError error = ErrorUnless(ClearCommError(Port, &flags, nullptr));
    errors = flags;
    return error;
}

/// What a start that returned done (or not) has come to.
IssueResult CWin32SerialPort::Issued(Operation& operation, bool done) {
    if (done)
        return IssueResult::Done;
    IssueError = GetLastError();
    operation.running = IssueError == ERROR_IO_PENDING;
    return operation.running ? IssueResult::Pending : IssueResult::Failed;
}

IssueResult CWin32SerialPort::IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) {
    got = 0;
    Read->target = buffer;
    Read->resting = Read->MustRest();
    if (Read->resting)
        return IssueResult::Pending;
    std::size_t size = std::min(buffer.size(), ReadSizeAt(BaudRate));
    if (!Read->Reserve(size)) {
        IssueError = ERROR_NOT_ENOUGH_MEMORY;
        return IssueResult::Failed;
    }
    DWORD count = 0;
    BOOL done = ReadFile(Port, Read->bytes.get(), static_cast<DWORD>(size), &count, &Read->request);
    IssueResult result = Issued(*Read, done != FALSE);
    if (result != IssueResult::Done)
        return result;
    if (count == 0) {
        Read->RestFor(ReadRestMilliseconds);
        Read->resting = true;
        return IssueResult::Pending;
    }
    got = std::min<std::size_t>(count, buffer.size());
    std::copy_n(Read->bytes.get(), got, buffer.begin());
    return IssueResult::Done;
}

IssueResult CWin32SerialPort::IssueStatusWait(std::uint32_t& mask) {
    mask = 0;
    Status->resting = Status->MustRest();
    if (Status->resting)
        return IssueResult::Pending;
    Status->mask = 0;
    BOOL done = WaitCommEvent(Port, &Status->mask, &Status->request);
    IssueResult result = Issued(*Status, done != FALSE);
    if (result == IssueResult::Done && Status->mask == 0) {
        Status->RestFor(StatusRestMilliseconds);
        Status->resting = true;
        return IssueResult::Pending;
    }
    mask = Status->mask;
    return result;
}

WaitResult CWin32SerialPort::Wait(int milliseconds) {
    ULONGLONG now = GetTickCount64();
    ULONGLONG end = now + static_cast<ULONGLONG>(std::max(milliseconds, 0));
    HANDLE events[2];
    Operation* running[2];
    DWORD count = 0;
    WaitResult rested = WaitResult::TimeOut;
    for (Operation* operation : {Read.get(), Status.get()}) {
        if (operation->running && operation->HasEnded())
            return operation->name;
        if (operation->running) {
            running[count] = operation;
            events[count++] = operation->request.hEvent;
        } else if (operation->resting && operation->restEnd < end) {
            end = std::max(operation->restEnd, now);
            rested = operation->name;
        }
    }
    DWORD pause = static_cast<DWORD>(end - now);
    if (count == 0) {
        Sleep(pause);
        return rested;
    }
    DWORD signalled = WaitForMultipleObjects(count, events, FALSE, pause);
    if (signalled >= count)
        return rested;
    Operation& ended = *running[signalled];
    if (ended.HasEnded())
        return ended.name;
    // Wine may set the event without having written the outcome. It is looked for again at each
    // wait, so a signal that is lost by clearing the event costs at most one of them.
    ResetEvent(ended.request.hEvent);
    return WaitResult::TimeOut;
}

SystemError CWin32SerialPort::CollectRead(std::size_t& got) {
    got = 0;
    bool wasResting = std::exchange(Read->resting, false);
    if (wasResting)
        return 0;
    DWORD count = 0;
    BOOL done = GetOverlappedResult(Port, &Read->request, &count, FALSE);
    SystemError error = ErrorUnless(done);
    Read->running = error == ERROR_IO_INCOMPLETE;
    if (error != 0)
        return error;
    if (count == 0)
        Read->RestFor(ReadRestMilliseconds);
    got = std::min<std::size_t>(count, Read->target.size());
    std::copy_n(Read->bytes.get(), got, Read->target.begin());
    return 0;
}

SystemError CWin32SerialPort::CollectStatus(std::uint32_t& mask) {
    mask = 0;
    bool wasResting = std::exchange(Status->resting, false);
    if (wasResting)
        return 0;
    DWORD unused = 0;
    BOOL done = GetOverlappedResult(Port, &Status->request, &unused, FALSE);
    SystemError error = ErrorUnless(done);
    Status->running = error == ERROR_IO_INCOMPLETE;
    if (error != 0 && error != ERROR_OPERATION_ABORTED)
        return error;
    if (Status->mask == 0)
        Status->RestFor(StatusRestMilliseconds);
    mask = Status->mask;
    return 0;
}

SystemError CWin32SerialPort::RestoreTimeouts() {
    return TimeoutsSaved ? ErrorUnless(SetCommTimeouts(Port, &SavedTimeouts)) : 0;
}

SystemError CWin32SerialPort::Purge() {
    constexpr DWORD Everything = PURGE_TXABORT | PURGE_RXABORT | PURGE_TXCLEAR | PURGE_RXCLEAR;
    return ErrorUnless(PurgeComm(Port, Everything));
}

/// Takes an operation back from the system and frees it.
void CWin32SerialPort::End(std::unique_ptr<Operation>& operation) {
    bool running = operation && operation->running;
    if (running)
        CancelIoEx(Port, &operation->request);
    if (running && WaitForSingleObject(operation->request.hEvent, CancelMilliseconds) != 0) {
        // The system may still write here: losing the memory is better than having it overwritten.
        [[maybe_unused]] Operation* lost = operation.release();
    }
    operation.reset();
}

void CWin32SerialPort::Close() {
    if (Port == INVALID_HANDLE_VALUE)
        return;
    // Ends a status wait also where it cannot be cancelled.
    SetCommMask(Port, 0);
    End(Read);
    End(Status);
    if (BlockSaved)
        SetCommState(Port, &SavedBlock);
    CloseHandle(Port);
    Port = INVALID_HANDLE_VALUE;
    TimeoutsSaved = false;
    BlockSaved = false;
}

} // namespace

std::unique_ptr<CSerialPort> MakeSystemSerialPort() {
    return std::make_unique<CWin32SerialPort>();
}

} // namespace qor
