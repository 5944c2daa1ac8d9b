// SPDX-License-Identifier: GPL-3.0-or-later
//
// A thread with a priority, and manual-reset events: what the port workers and the acquisition
// loop are made of.
#pragma once

#include "base/Lock.h"

#include <functional>
#include <thread>

namespace qor {

/// An event that stays set until it is cleared.
class CEvent {
  public:
    void Set();
    void Clear();
    bool IsSet() const;
    /// Waits until set, or for at most so many milliseconds (-1: without limit); returns whether it
    /// is set.
    bool Wait(int milliseconds = -1) const;

  private:
    mutable CMutex EventLock;
    mutable CCondition Changed;
    bool Flag GUARDED_BY(EventLock) = false;
};

enum class ThreadPriority { Normal, TimeCritical };

/// One thread of execution; joined at the latest by its destructor.
class CWorker {
  public:
    CWorker() = default;
    ~CWorker();
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    /// Starts the thread; false when the system has none to give. A priority that the system
    /// refuses (no privilege) is not a failure.
    bool Start(ThreadPriority priority, std::function<void()> body);
    /// True from Start until the body has returned.
    bool IsRunning() const;
    /// Waits for the body's end. Not from the body itself.
    void Join();

  private:
    std::thread Thread;
    CEvent Ended;
    bool Started = false;
};

} // namespace qor
