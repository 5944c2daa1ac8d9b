// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/desk/JobThread.h"

#include <utility>

namespace qor {

namespace {

constexpr int LookMilliseconds = 50;

} // namespace

CJobThread::~CJobThread() {
    {
        CLock lock(Guard);
        Ending = true;
        Changed.NotifyAll();
    }
    Worker.Join();
}

bool CJobThread::Start() {
    return Worker.Start(ThreadPriority::Normal, [this] { Run(); });
}

void CJobThread::Add(std::function<void()> job) {
    CLock lock(Guard);
    Jobs.push_back(std::move(job));
    Changed.NotifyAll();
}

bool CJobThread::IsDone() {
    CLock lock(Guard);
    const auto done = [this]() REQUIRES(Guard) { return Jobs.empty(); };
    return !Worker.IsRunning() || Changed.WaitFor(Guard, LookMilliseconds, done);
}

void CJobThread::Run() {
    for (std::function<void()> job; Take(job);) {
        job();
        CLock lock(Guard);
        Jobs.pop_front();
        Changed.NotifyAll();
    }
}

bool CJobThread::Take(std::function<void()>& job) {
    CLock lock(Guard);
    const auto any = [this]() REQUIRES(Guard) { return Ending || !Jobs.empty(); };
    while (!Changed.WaitFor(Guard, LookMilliseconds, any)) {
    }
    if (Ending)
        return false;
    job = Jobs.front();
    return true;
}

} // namespace qor
