// SPDX-License-Identifier: GPL-3.0-or-later
//
// Pseudo-terminals. This end never keeps the listener's end open, because the hang-up state of the
// pair is what tells whether anybody listens.
#include "platform/VirtualPort.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace qor {

namespace {

SystemError LastSystemError() {
    return static_cast<SystemError>(errno);
}

/// Makes the line carry bytes as they are, whoever opens it later.
SystemError MakeRaw(const std::string& name) {
    int end = open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (end < 0)
        return LastSystemError();
    termios settings{};
    SystemError error = 0;
    if (tcgetattr(end, &settings) != 0) {
        error = LastSystemError();
    } else {
        cfmakeraw(&settings);
        if (tcsetattr(end, TCSANOW, &settings) != 0)
            error = LastSystemError();
    }
    close(end);
    return error;
}

} // namespace

CVirtualPort::~CVirtualPort() {
    Close();
}

SystemError CVirtualPort::Open(std::string& name) {
    int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (master < 0)
        return LastSystemError();
    Handle = master;
    char buffer[128];
    if (grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, buffer, sizeof buffer) != 0) {
        SystemError error = LastSystemError();
        Close();
        return error;
    }
    ListenerName = name = buffer;
    SystemError error = MakeRaw(ListenerName);
    if (error != 0)
        Close();
    return error;
}

bool CVirtualPort::WaitForListener(int milliseconds) {
    for (;;) {
        pollfd state{static_cast<int>(Handle), POLLOUT, 0};
        poll(&state, 1, 0);
        if ((state.revents & POLLHUP) == 0)
            return true;
        if (milliseconds <= 0)
            return false;
        // A hang-up state makes poll return at once, so its end can only be looked for.
        constexpr int step = 5;
        poll(nullptr, 0, step);
        milliseconds -= step;
    }
}

SystemError CVirtualPort::Write(ByteSpan bytes, int milliseconds, std::size_t& written) {
    written = bytes.size();
    if (!WaitForListener(0))
        return 0;
    pollfd room{static_cast<int>(Handle), POLLOUT, 0};
    poll(&room, 1, milliseconds);
    if ((room.revents & POLLHUP) != 0)
        return 0;
    ssize_t count = write(static_cast<int>(Handle), bytes.data(), bytes.size());
    written = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (count >= 0 || errno == EAGAIN || errno == EINTR)
        return 0;
    return LastSystemError();
}

bool CVirtualPort::Drained() const {
    pollfd state{static_cast<int>(Handle), POLLOUT, 0};
    poll(&state, 1, 0);
    if ((state.revents & POLLHUP) != 0)
        return true;
    int end = open(ListenerName.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (end < 0)
        return errno != EBUSY; // exclusively held: somebody is still reading
    int waiting = 0;
    bool drained = ioctl(end, FIONREAD, &waiting) != 0 || waiting == 0;
    close(end);
    return drained;
}

void CVirtualPort::Close() {
    if (Handle >= 0)
        close(static_cast<int>(Handle));
    Handle = -1;
}

} // namespace qor
