// SPDX-License-Identifier: GPL-3.0-or-later
//
// Serial ports on Linux. Overlapped input is a non-blocking read behind poll; the line's errors are
// differences of the driver's counters, looked at whenever a wait returns. Used by one thread at a
// time (see SerialPort.h), no lock. It does not write to the line and sets no flow control. The
// kernel's own structures are used because only they carry arbitrary baud rates.
#include "platform/SerialPort.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/serial.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qor {

namespace {

struct NamedSpeed {
    std::uint32_t baudRate;
    tcflag_t code;
};
constexpr NamedSpeed NamedSpeeds[] = {
    {1200, B1200},     {2400, B2400},     {4800, B4800},     {9600, B9600},
    {19200, B19200},   {38400, B38400},   {57600, B57600},   {115200, B115200},
    {230400, B230400}, {460800, B460800}, {921600, B921600},
};

/// The driver's code of a speed. A speed with a name gets it, so that other programs that look at
/// the port can read it; any other is given as a number.
tcflag_t SpeedCode(std::uint32_t baudRate) {
    for (const NamedSpeed& named : NamedSpeeds)
        if (named.baudRate == baudRate)
            return named.code;
    return BOTHER;
}

SystemError ErrorOf(int error) {
    return static_cast<SystemError>(error);
}

template <class Argument> SystemError Control(int port, unsigned long request, Argument argument) {
    int result;
    do
        result = ::ioctl(port, request, argument);
    while (result < 0 && errno == EINTR);
    return result < 0 ? ErrorOf(errno) : 0;
}

/// The port's answer to a question that only real lines know.
bool IsUnknownRequest(SystemError error) {
    return error == ENOTTY || error == EINVAL;
}

constexpr tcflag_t DataBits[] = {CS5, CS6, CS7, CS8};
constexpr tcflag_t Parities[] = {0, PARENB | PARODD, PARENB, PARENB | PARODD | CMSPAR,
                                 PARENB | CMSPAR};
constexpr tcflag_t CharacterFlags = CSIZE | PARENB | PARODD | CMSPAR | CSTOPB;

/// The character format as control flags; false for one that no driver has.
bool CharacterFormat(const LineSettings& settings, tcflag_t& flags) {
    bool fiveBits = settings.dataBits == 5;
    if (settings.dataBits < 5 || settings.dataBits > 8 || settings.parity > 4)
        return false;
    // With five data bits the long stop is one and a half bits, otherwise two.
    if (settings.stopBits > 2 || (settings.stopBits != 0 && fiveBits != (settings.stopBits == 1)))
        return false;
    flags = DataBits[settings.dataBits - 5] | Parities[settings.parity];
    if (settings.stopBits != 0)
        flags |= CSTOPB;
    return true;
}

/// Drivers round to what their divisor can do; beyond this the bytes would be wrong.
bool IsNear(std::uint32_t actual, std::uint32_t wanted) {
    std::uint64_t distance = actual > wanted ? actual - wanted : wanted - actual;
    return distance * 100 <= std::uint64_t{wanted} * 3;
}

class CPosixSerialPort final : public CSerialPort {
  public:
    ~CPosixSerialPort() override { Close(); }

    SystemError Open(const std::string& name) override;
    SystemError SaveTimeouts() override;
    SystemError ReadSettings() override;
    SystemError WriteSettings(const LineSettings& settings) override;
    SystemError SetReadInterval(std::uint32_t milliseconds) override;
    SystemError SetQueues(std::uint32_t inputBytes, std::uint32_t outputBytes) override;
    SystemError SetEventMask(std::uint32_t mask) override;
    SystemError CreateInput() override { return 0; }
    SystemError ReadLineErrors(std::uint32_t& errors) override;
    IssueResult IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) override;
    IssueResult IssueStatusWait(std::uint32_t& mask) override;
    WaitResult Wait(int milliseconds) override;
    SystemError CollectRead(std::size_t& got) override;
    SystemError CollectStatus(std::uint32_t& mask) override;
    SystemError LastError() const override { return IssueError; }
    SystemError RestoreTimeouts() override;
    SystemError Purge() override;
    void Close() override;

  private:
    SystemError TakeOver();
    SystemError ReadNow(std::size_t& got);
    bool HasStatus();
    SystemError ReadCounters(serial_icounter_struct& counters);
    std::uint32_t EventsSince(const serial_icounter_struct& now) const;

    int Port = -1;
    termios2 Original{}; ///< restored at Close
    termios2 Current{};  ///< the control block as read or written last
    cc_t SavedMinimum = 0, SavedTime = 0;
    bool CountsErrors = false; ///< the driver has error counters (a pseudo-terminal has none)
    serial_icounter_struct Cleared{}; ///< the counters when the errors were last read
    std::uint32_t EventMask = 0;
    std::span<std::uint8_t> Buffer; ///< of the pending read
    SystemError IssueError = 0;
    bool ReadPending = false;
    bool StatusPending = false;
    bool MoreExpected = true;  ///< the last read filled its buffer: try the next at once
    bool ReadWasNamed = false; ///< by the last Wait: a status that is also there is next
    int WaitFailures = 0;      ///< in a row
    SystemError WaitError = 0; ///< of the last of them
};

/// While waiting fails the port is read at this pace instead; when it has failed so often in a row
/// it fails for good.
constexpr timespec FailedWaitPause = {0, 10'000'000};
constexpr int MostWaitFailures = 100;

SystemError CPosixSerialPort::Open(const std::string& name) {
    Close();
    struct stat status {};
    if (name.find('\0') != std::string::npos)
        return EINVAL;
    if (::stat(name.c_str(), &status) < 0)
        return ErrorOf(errno);
    // Opening some devices has effects of its own: only a character device may be a port.
    if (!S_ISCHR(status.st_mode))
        return ENOTTY;
    do
        Port = ::open(name.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    while (Port < 0 && errno == EINTR);
    if (Port < 0)
        return ErrorOf(errno);
    SystemError error = TakeOver();
    if (error != 0) {
        ::close(Port);
        Port = -1;
    }
    return error;
}

/// Makes the opened device ours alone and remembers how it was. TIOCEXCL keeps other programs out
/// but for those of the superuser; the lock keeps out a second acquisition of any user.
SystemError CPosixSerialPort::TakeOver() {
    if (SystemError error = Control(Port, TCGETS2, &Original))
        return error;
    int locked;
    do
        locked = ::flock(Port, LOCK_EX | LOCK_NB);
    while (locked < 0 && errno == EINTR);
    if (locked < 0)
        return errno == EWOULDBLOCK ? ErrorOf(EBUSY) : ErrorOf(errno);
    if (SystemError error = Control(Port, TIOCEXCL, 0))
        return error;
    Current = Original;
    CountsErrors = ReadCounters(Cleared) == 0;
    MoreExpected = true;
    ReadPending = StatusPending = ReadWasNamed = false;
    WaitFailures = 0;
    EventMask = 0;
    return 0;
}

SystemError CPosixSerialPort::SaveTimeouts() {
    termios2 settings{};
    if (SystemError error = Control(Port, TCGETS2, &settings))
        return error;
    SavedMinimum = settings.c_cc[VMIN];
    SavedTime = settings.c_cc[VTIME];
    return 0;
}

SystemError CPosixSerialPort::ReadSettings() {
    return Control(Port, TCGETS2, &Current);
}

SystemError CPosixSerialPort::WriteSettings(const LineSettings& settings) {
    tcflag_t format = 0;
    if (!CharacterFormat(settings, format) || settings.baudRate == 0)
        return EINVAL;
    termios2 wanted = Current;
    // Parity is checked by the driver's counters. INPCK stays off: it would put a NUL in the place
    // of the character, and the frame's own checks are to see the byte as it came. A break is no
    // character at all.
    wanted.c_iflag &= ~static_cast<tcflag_t>(INPCK | PARMRK | IGNPAR | ISTRIP | INLCR | IGNCR |
                                             ICRNL | IUCLC | IXON | IXOFF | IXANY | BRKINT);
    wanted.c_iflag |= IGNBRK;
    wanted.c_oflag &= ~static_cast<tcflag_t>(OPOST);
    wanted.c_lflag &=
        ~static_cast<tcflag_t>(ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHONL | IEXTEN);
    wanted.c_cflag &=
        ~(CharacterFlags | static_cast<tcflag_t>(CRTSCTS | CBAUD | (CBAUD << IBSHIFT)));
    const tcflag_t speed = SpeedCode(settings.baudRate);
    wanted.c_cflag |= format | CREAD | CLOCAL | speed | (speed << IBSHIFT);
    wanted.c_ispeed = wanted.c_ospeed = settings.baudRate;
    if (SystemError error = Control(Port, TCSETS2, &wanted))
        return error;
    // The call succeeds when it could do anything at all, so what came of it is read back. A
    // pseudo-terminal has neither parity nor speed and keeps what it likes.
    if (SystemError error = Control(Port, TCGETS2, &Current))
        return error;
    bool formatKept = ((Current.c_cflag ^ format) & CharacterFlags) == 0;
    if (CountsErrors && (!formatKept || !IsNear(Current.c_ospeed, settings.baudRate)))
        return EINVAL;
    int lines = TIOCM_DTR | TIOCM_RTS;
    SystemError error = Control(Port, TIOCMBIS, &lines);
    return IsUnknownRequest(error) ? 0 : error;
}

/// Decided: there is nothing to set for the interval itself. poll reports bytes as soon as the
/// driver hands them up, which is sooner than any interval.
SystemError CPosixSerialPort::SetReadInterval(std::uint32_t) {
    Current.c_cc[VMIN] = 1; // an empty read is then told apart from a line that is gone
    Current.c_cc[VTIME] = 0;
    return Control(Port, TCSETS2, &Current);
}

/// The driver's queues have fixed sizes here; only a read of nothing is refused.
SystemError CPosixSerialPort::SetQueues(std::uint32_t inputBytes, std::uint32_t) {
    return inputBytes == 0 ? EINVAL : 0;
}

SystemError CPosixSerialPort::SetEventMask(std::uint32_t mask) {
    EventMask = mask;
    return 0;
}

SystemError CPosixSerialPort::ReadCounters(serial_icounter_struct& counters) {
    return Control(Port, TIOCGICOUNT, &counters);
}

std::uint32_t CPosixSerialPort::EventsSince(const serial_icounter_struct& now) const {
    std::uint32_t events = 0;
    if (now.brk != Cleared.brk)
        events |= EventBreak;
    if (now.frame != Cleared.frame || now.parity != Cleared.parity ||
        now.overrun != Cleared.overrun || now.buf_overrun != Cleared.buf_overrun)
        events |= EventLineError;
    return events & EventMask;
}

SystemError CPosixSerialPort::ReadLineErrors(std::uint32_t& errors) {
    errors = 0;
    if (!CountsErrors)
        return 0;
    serial_icounter_struct now{};
    if (SystemError error = ReadCounters(now))
        return error;
    const struct {
        bool happened;
        std::uint32_t flag;
    } rows[] = {
        {now.brk != Cleared.brk, LineBreak},
        {now.frame != Cleared.frame, LineFraming},
        {now.parity != Cleared.parity, LineParity},
        {now.overrun != Cleared.overrun, LineOverrun},
        {now.buf_overrun != Cleared.buf_overrun, LineInputOverflow},
    };
    for (const auto& row : rows)
        if (row.happened)
            errors |= row.flag;
    Cleared = now;
    return 0;
}

/// One read; got stays 0 when nothing is there. A line that is gone is an error.
SystemError CPosixSerialPort::ReadNow(std::size_t& got) {
    got = 0;
    ssize_t result;
    do
        result = ::read(Port, Buffer.data(), Buffer.size());
    while (result < 0 && errno == EINTR);
    if (result == 0)
        return EIO;
    if (result < 0)
        return errno == EAGAIN ? 0 : ErrorOf(errno);
    got = static_cast<std::size_t>(result);
    MoreExpected = got == Buffer.size();
    return 0;
}

IssueResult CPosixSerialPort::IssueRead(std::span<std::uint8_t> buffer, std::size_t& got) {
    Buffer = buffer;
    got = 0;
    // A read that did not fill its buffer has emptied the driver's queue: asking again at once
    // would be a system call for nothing.
    if (MoreExpected) {
        MoreExpected = false;
        IssueError = ReadNow(got);
        if (IssueError != 0)
            return IssueResult::Failed;
    }
    ReadPending = got == 0;
    return ReadPending ? IssueResult::Pending : IssueResult::Done;
}

IssueResult CPosixSerialPort::IssueStatusWait(std::uint32_t& mask) {
    mask = 0;
    StatusPending = true;
    return IssueResult::Pending;
}

bool CPosixSerialPort::HasStatus() {
    serial_icounter_struct now{};
    // A port that is gone answers nothing here; the read tells.
    return StatusPending && CountsErrors && ReadCounters(now) == 0 && EventsSince(now) != 0;
}

WaitResult CPosixSerialPort::Wait(int milliseconds) {
    pollfd port{Port, POLLIN, 0};
    int result = ::poll(&port, ReadPending ? 1 : 0, milliseconds);
    const bool failed = result < 0 && errno != EINTR;
    WaitFailures = failed ? WaitFailures + 1 : 0;
    if (failed) {
        WaitError = ErrorOf(errno);
        ::nanosleep(&FailedWaitPause, nullptr);
    }
    // Data, hang-up and error alike end the read; collecting it tells which.
    bool readDone = result > 0 || (failed && ReadPending);
    bool statusMayGoFirst = ReadWasNamed || !readDone;
    ReadWasNamed = false;
    if (statusMayGoFirst && HasStatus())
        return WaitResult::StatusDone;
    if (!readDone)
        return WaitResult::TimeOut;
    ReadWasNamed = true;
    return WaitResult::ReadDone;
}

SystemError CPosixSerialPort::CollectRead(std::size_t& got) {
    ReadPending = false;
    got = 0;
    return WaitFailures > MostWaitFailures ? WaitError : ReadNow(got);
}

SystemError CPosixSerialPort::CollectStatus(std::uint32_t& mask) {
    mask = 0;
    serial_icounter_struct now{};
    if (SystemError error = ReadCounters(now))
        return error;
    mask = EventsSince(now);
    StatusPending = false;
    return 0;
}

SystemError CPosixSerialPort::RestoreTimeouts() {
    Current.c_cc[VMIN] = SavedMinimum;
    Current.c_cc[VTIME] = SavedTime;
    return Control(Port, TCSETS2, &Current);
}

SystemError CPosixSerialPort::Purge() {
    return Control(Port, TCFLSH, TCIOFLUSH);
}

void CPosixSerialPort::Close() {
    if (Port < 0)
        return;
    // Nobody can act on a failure here: a port that is gone has nothing to restore.
    Control(Port, TCSETS2, &Original);
    Control(Port, TIOCNXCL, 0);
    ::close(Port);
    Port = -1;
}

} // namespace

std::unique_ptr<CSerialPort> MakeSystemSerialPort() {
    return std::make_unique<CPosixSerialPort>();
}

} // namespace qor
