// SPDX-License-Identifier: GPL-3.0-or-later
//
// A thread for what may wait for a port, a disk or an answer: it does job after job, in the order
// asked, while the user interface goes on. Commanded on the user-interface thread. No widget.
#pragma once

#include "base/Lock.h"
#include "platform/Worker.h"

#include <deque>
#include <functional>

namespace qor {

class CJobThread {
  public:
    CJobThread() = default;
    /// Waits for the job that is at work.
    ~CJobThread();
    CJobThread(const CJobThread&) = delete;
    CJobThread& operator=(const CJobThread&) = delete;

    bool Start();
    void Add(std::function<void()> job);
    /// Whether nothing is left to do, after waiting for it a moment; so it is while the thread does
    /// not run.
    bool IsDone();

  private:
    void Run();
    bool Take(std::function<void()>& job);

    CMutex Guard; ///< a leaf
    CCondition Changed;
    std::deque<std::function<void()>> Jobs GUARDED_BY(Guard); ///< the first is at work
    bool Ending GUARDED_BY(Guard) = false;
    CWorker Worker; ///< the last member
};

} // namespace qor
