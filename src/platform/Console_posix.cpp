// SPDX-License-Identifier: GPL-3.0-or-later
//
// The console on POSIX. Stop signals are blocked in every thread and taken by one that waits for
// them, so that no code of ours runs inside a signal handler.
#include "platform/Console.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qor {

namespace {

/// How long a reader that stands still may hold up a program that was asked to stop.
constexpr int StillMilliseconds = 2000, LookMilliseconds = 100;

std::atomic<bool> StopAsked{false}; ///< of the living stop watch

/// Whether a write may wait for a reader.
bool HasReader(int descriptor) {
    struct stat status {};
    return fstat(descriptor, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || isatty(descriptor));
}

/// A terminal that says it has room may have less than what is written, and a write would wait for
/// as long as nobody reads. It is opened once more, for writes that do not wait: the descriptor
/// itself is shared with whoever started the program.
class CTerminalEnd {
  public:
    explicit CTerminalEnd(int descriptor) : Given(descriptor) {
        char name[PATH_MAX];
        if (ttyname_r(descriptor, name, sizeof name) == 0)
            Own = open(name, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }
    ~CTerminalEnd() {
        if (Own >= 0)
            close(Own);
    }
    CTerminalEnd(const CTerminalEnd&) = delete;
    CTerminalEnd& operator=(const CTerminalEnd&) = delete;
    int Descriptor() const { return Own >= 0 ? Own : Given; }

  private:
    const int Given;
    int Own = -1;
};

/// How many bytes a reader's end takes at once when it takes any: an empty pipe all it can hold.
std::size_t RoomBefore(int descriptor) {
#if defined(F_GETPIPE_SZ)
    int unread = 0;
    if (ioctl(descriptor, FIONREAD, &unread) == 0 && unread == 0)
        if (int size = fcntl(descriptor, F_GETPIPE_SZ); size > 0)
            return static_cast<std::size_t>(size);
#endif
    return PIPE_BUF;
}

/// SIGTERM and SIGINT, and SIGHUP unless whoever started the program told it to ignore that
/// (nohup).
sigset_t StopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    struct sigaction action {};
    if (sigaction(SIGHUP, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

/// Takes what is still pending, so that unblocking does not let it end the process.
void Drain(const sigset_t& signals) {
    sigset_t pending;
    while (sigpending(&pending) == 0) {
        int taken = 0;
        for (int signal : {SIGTERM, SIGINT, SIGHUP})
            if (sigismember(&signals, signal) == 1 && sigismember(&pending, signal) == 1)
                taken = signal;
        if (taken == 0 || sigwait(&signals, &taken) != 0)
            return;
    }
}

} // namespace

std::vector<std::string> CommandLineArguments(int argc, char** argv) {
    return {argv, argv + argc};
}

bool IsTerminal(StandardStream stream) {
    return isatty(static_cast<int>(stream)) == 1;
}

bool JoinConsole() {
    return true;
}

bool CanDraw(StandardStream stream) {
    const char* kind = std::getenv("TERM");
    return IsTerminal(stream) && kind && *kind && std::string_view(kind) != "dumb";
}

int TerminalColumns(StandardStream stream) {
    winsize size{};
    bool told = ioctl(static_cast<int>(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return told ? size.ws_col : 80;
}

void HurryReaders() {
    StopAsked = true;
}

bool ReaderTakes(StandardStream stream) {
    const int descriptor = static_cast<int>(stream);
    pollfd writable{descriptor, POLLOUT, 0};
    return !HasReader(descriptor) || poll(&writable, 1, 0) != 0;
}

bool WaitForReader(int descriptor) {
    pollfd writable{descriptor, POLLOUT, 0};
    int waited = 0;
    while (poll(&writable, 1, LookMilliseconds) == 0)
        if (StopAsked && (waited += LookMilliseconds) >= StillMilliseconds)
            return false;
    return true;
}

StreamWrite WriteStream(StandardStream stream, std::string_view bytes) {
    const int descriptor = static_cast<int>(stream);
    const bool hasReader = HasReader(descriptor);
    static std::atomic<bool> standsStill[3] = {}; // once is enough
    const CTerminalEnd terminal(descriptor);
    int waited = 0;
    while (!bytes.empty()) {
        if (hasReader && (standsStill[descriptor] || !WaitForReader(descriptor) ||
                          waited >= StillMilliseconds)) {
            standsStill[descriptor] = true;
            return StreamWrite::ReaderStalls;
        }
        std::size_t piece =
            hasReader ? std::min(bytes.size(), RoomBefore(descriptor)) : bytes.size();
        ssize_t written = write(terminal.Descriptor(), bytes.data(), piece);
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EPIPE)
            return StreamWrite::ReaderGone;
        else if (errno == EAGAIN) // it has room, and too little: no poll can wait for that
            waited += poll(nullptr, 0, LookMilliseconds) == 0 && StopAsked ? LookMilliseconds : 0;
        else if (errno != EINTR)
            return StreamWrite::Failed;
    }
    return StreamWrite::Done;
}

bool LeadsToTerminal(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) < 0 || !S_ISCHR(status.st_mode))
        return false;
    const auto isIt = [&](const struct stat& other) {
        return S_ISCHR(other.st_mode) && other.st_rdev == status.st_rdev;
    };
    struct stat other {};
    for (StandardStream stream :
         {StandardStream::Input, StandardStream::Output, StandardStream::Error})
        if (IsTerminal(stream) && ::fstat(static_cast<int>(stream), &other) == 0 && isIt(other))
            return true;
    return ::stat("/dev/tty", &other) == 0 && isIt(other);
}

std::string_view NativeLineEnd() {
    return "\n";
}

CStopWatch::CStopWatch(CEvent& stop, std::chrono::milliseconds sameRequest)
    : Stop(stop), Repeats(sameRequest) {
    // Both come back as an error of the write, which is reported where it happened.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t signals = StopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A shell script's background job inherits an ignored SIGINT, which would be lost even though
    // it is waited for; who sends one to a run by hand wants its log closed.
    for (int signal : {SIGTERM, SIGINT})
        std::signal(signal, SIG_DFL);
    // Without a thread to take them the signals keep their default: the process ends.
    if (!Listener.Start(ThreadPriority::Normal, [this] { Listen(); }))
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

bool CStopWatch::IsWatching() const {
    return Listener.IsRunning();
}

CStopWatch::~CStopWatch() {
    Ending = true;
    // This wakes the listener; it is taken there and has no other effect.
    if (Listener.IsRunning())
        kill(getpid(), SIGTERM);
    Listener.Join();
    sigset_t signals = StopSignals();
    Drain(signals);
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    StopAsked = false;
}

void CStopWatch::Listen() {
    sigset_t signals = StopSignals();
    for (;;) {
        int signal = 0;
        int failure = sigwait(&signals, &signal);
        if (Ending)
            return;
        if (failure == 0)
            Request();
    }
}

void CStopWatch::Request() {
    if (IsSecond())
        _exit(130);
    StopAsked = true;
    Stop.Set();
}

} // namespace qor
