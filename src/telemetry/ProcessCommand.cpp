// SPDX-License-Identifier: GPL-3.0-or-later
//
// The command queue. Port workers post under the status and frame locks, the acquisition loop
// drains; posting wakes the loop only when it found the queue empty, so a burst of notices costs
// one wake-up.
#include "telemetry/ProcessCommand.h"

#include <utility>

namespace qor {

namespace {

/// How far back a repeated notice is looked for: more than there are ports.
constexpr std::size_t LookBack = 128;

/// A notice says that something is so, not how often: one that still waits stands for the next of
/// its kind too, and a loop that is late does not let the queue grow.
void Add(std::vector<ProcessCommand>& commands, NoticeCode notice, const std::string& name) {
    std::size_t oldest = commands.size() > LookBack ? commands.size() - LookBack : 0;
    for (std::size_t i = commands.size(); i-- > oldest;)
        if (commands[i].notice == notice && commands[i].text == name)
            return;
    commands.push_back({notice, name});
}

} // namespace

void CProcessCommand::Report(std::string message) {
    if (message.empty())
        return;
    // A bare line feed is no line end to the session log, which would drop the text.
    if (!message.ends_with("\r\n"))
        message += "\r\n";
    {
        CLock lock(QueueLock);
        Commands.push_back({NoticeCode::None, std::move(message)});
        if (Commands.size() > 1)
            return;
    }
    Arrived.NotifyAll();
}

void CProcessCommand::PostNotice(NoticeCode notice, const std::string& resourceName) {
    {
        CLock lock(QueueLock);
        bool loopIsWoken = !Commands.empty();
        Add(Commands, notice, resourceName);
        if (loopIsWoken)
            return;
    }
    Arrived.NotifyAll();
}

void CProcessCommand::PostFramesQueued(const std::string& resourceName) {
    {
        CLock lock(QueueLock);
        bool loopIsWoken = !Commands.empty();
        Add(Commands, NoticeCode::StatusChanged, resourceName);
        Add(Commands, NoticeCode::FramesAvailable, resourceName);
        if (loopIsWoken)
            return;
    }
    Arrived.NotifyAll();
}

bool CProcessCommand::Drain(std::vector<ProcessCommand>& commands, int milliseconds) {
    commands.clear();
    CLock lock(QueueLock);
    Arrived.WaitFor(QueueLock, milliseconds,
                    [this]() REQUIRES(QueueLock) { return Woken || !Commands.empty(); });
    Woken = false;
    commands.swap(Commands);
    return !commands.empty();
}

void CProcessCommand::Wake() {
    {
        CLock lock(QueueLock);
        Woken = true;
    }
    Arrived.NotifyAll();
}

} // namespace qor
