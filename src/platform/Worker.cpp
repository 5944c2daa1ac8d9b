// SPDX-License-Identifier: GPL-3.0-or-later
//
// Threads and events for both operating systems; only the priority is the system's own business.
// A worker's owner starts and joins it from one thread at a time; events are for any thread.
#include "platform/Worker.h"

#include <chrono>
#include <system_error>
#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <pthread.h>
#include <sched.h>
#endif

namespace qor {

namespace {

constexpr int WaitSliceMilliseconds = 3'600'000;

/// Raises the calling thread above ordinary work. Without the privilege it stays as it is: slower
/// under load, not wrong.
void RaisePriority() {
#if defined(_WIN32)
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
#else
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_min(SCHED_RR);
    pthread_setschedparam(pthread_self(), SCHED_RR, &parameters);
#endif
}

} // namespace

void CEvent::Set() {
    CLock lock(EventLock);
    Flag = true;
    // Under the lock: a waiter may destroy the event as soon as it has seen the flag.
    Changed.NotifyAll();
}

void CEvent::Clear() {
    CLock lock(EventLock);
    Flag = false;
}

bool CEvent::IsSet() const {
    CLock lock(EventLock);
    return Flag;
}

bool CEvent::Wait(int milliseconds) const {
    CLock lock(EventLock);
    auto isSet = [this]() REQUIRES(EventLock) { return Flag; };
    if (milliseconds >= 0)
        return Changed.WaitFor(EventLock, milliseconds, isSet);
    while (!Changed.WaitFor(EventLock, WaitSliceMilliseconds, isSet))
        ;
    return true;
}

CWorker::~CWorker() {
    Join();
}

bool CWorker::Start(ThreadPriority priority, std::function<void()> body) {
    if (IsRunning())
        return false;
    Join();
    Ended.Clear();
    try {
        Thread = std::thread([this, priority, body = std::move(body)] {
            if (priority == ThreadPriority::TimeCritical)
                RaisePriority();
            body();
            Ended.Set();
        });
    } catch (const std::system_error&) {
        // std::thread has no other way to say that the system has no thread to give.
        return false;
    }
    Started = true;
    return true;
}

bool CWorker::IsRunning() const {
    return Started && !Ended.IsSet();
}

void CWorker::Join() {
    if (Thread.joinable())
        Thread.join();
    Started = false;
}

} // namespace qor
