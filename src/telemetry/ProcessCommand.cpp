// SPDX-License-Identifier: GPL-3.0-or-later
//
// The command queue. Port workers post, the acquisition loop drains. Switching to the loop costs
// more than its work on a frame, so it is woken at once only after a quiet moment; under a steady
// stream of many ports it comes by itself every few milliseconds and takes what there is.
#include "telemetry/ProcessCommand.h"

#include <algorithm>
#include <utility>

namespace qor {

namespace {

/// The shortest time between two rounds of the loop; a frame queue holds many times as much.
constexpr int RestMilliseconds = 5;

/// How far back a repeated notice is looked for: more than there are ports.
constexpr std::size_t LookBack = 128;

/// A notice says that something is so, not how often: one that still waits stands for the next of
/// its kind too, and a loop that is late does not let the queue grow.
void Add(std::vector<QueuedCommand>& commands, NoticeCode notice, const std::string& name) {
    std::size_t oldest = commands.size() > LookBack ? commands.size() - LookBack : 0;
    for (std::size_t i = commands.size(); i-- > oldest;)
        if (commands[i].notice == notice && commands[i].event.subject == name)
            return;
    commands.push_back({notice, {EventKind::Note, name, {}}});
}

} // namespace

void CProcessCommand::Raise(Event event) {
    if (event.text.empty())
        return;
    // A bare line feed is no line end to the session log, which would drop the text.
    if (!event.text.ends_with("\r\n"))
        event.text += "\r\n";
    {
        CLock lock(QueueLock);
        Commands.push_back({NoticeCode::None, std::move(event)});
        if (!std::exchange(LoopWaits, false))
            return;
    }
    Arrived.NotifyAll();
}

void CProcessCommand::PostNotice(NoticeCode notice, const std::string& resourceName) {
    {
        CLock lock(QueueLock);
        Add(Commands, notice, resourceName);
        if (!std::exchange(LoopWaits, false))
            return;
    }
    Arrived.NotifyAll();
}

void CProcessCommand::PostFramesQueued(const std::string& resourceName) {
    {
        CLock lock(QueueLock);
        Add(Commands, NoticeCode::StatusChanged, resourceName);
        Add(Commands, NoticeCode::FramesAvailable, resourceName);
        if (!std::exchange(LoopWaits, false))
            return;
    }
    Arrived.NotifyAll();
}

bool CProcessCommand::Drain(std::vector<QueuedCommand>& commands, int milliseconds) {
    commands.clear();
    CLock lock(QueueLock);
    const int longest = std::clamp(milliseconds, 0, RestMilliseconds);
    const int rest = static_cast<int>(
        std::clamp<std::int64_t>(RestEnds - Clock.MonotonicMilliseconds(), 0, longest));
    if (rest > 0)
        Arrived.WaitFor(QueueLock, rest, [this]() REQUIRES(QueueLock) { return Woken; });
    // A wait of no length still costs a system call and the timer's slack: a playback asks often.
    if (milliseconds > rest) {
        LoopWaits = true;
        Arrived.WaitFor(QueueLock, milliseconds - rest,
                        [this]() REQUIRES(QueueLock) { return Woken || !Commands.empty(); });
    }
    LoopWaits = Woken = false;
    commands.swap(Commands);
    RestEnds = Clock.MonotonicMilliseconds() + RestMilliseconds;
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
