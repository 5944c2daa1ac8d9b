// SPDX-License-Identifier: GPL-3.0-or-later
//
// Mutexes that clang's thread-safety analysis understands; under other compilers the annotations
// vanish. Lock order of the program: DocLock (re-entrant), package lock, StatusLock, FrameLock,
// QueueLock (nothing is called while it is held).
#pragma once

#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define QOR_THREAD(x) __attribute__((x))
#else
#define QOR_THREAD(x)
#endif
#define CAPABILITY(name) QOR_THREAD(capability(name))
#define SCOPED_CAPABILITY QOR_THREAD(scoped_lockable)
#define GUARDED_BY(lock) QOR_THREAD(guarded_by(lock))
#define REQUIRES(...) QOR_THREAD(requires_capability(__VA_ARGS__))
#define EXCLUDES(...) QOR_THREAD(locks_excluded(__VA_ARGS__))
#define ACQUIRE(...) QOR_THREAD(acquire_capability(__VA_ARGS__))
#define RELEASE(...) QOR_THREAD(release_capability(__VA_ARGS__))
#define ACQUIRED_AFTER(...) QOR_THREAD(acquired_after(__VA_ARGS__))
#define ASSERT_CAPABILITY(lock) QOR_THREAD(assert_capability(lock))
#define RETURN_CAPABILITY(lock) QOR_THREAD(lock_returned(lock))
#define NO_THREAD_SAFETY_ANALYSIS QOR_THREAD(no_thread_safety_analysis)

namespace qor {

/// A plain mutex (StatusLock, FrameLock, QueueLock).
class CAPABILITY("mutex") CMutex {
  public:
    void Acquire() ACQUIRE() { Mutex.lock(); }
    void Release() RELEASE() { Mutex.unlock(); }

  private:
    friend class CCondition;
    std::mutex Mutex;
};

/// A mutex that its owner may take again (DocLock).
class CAPABILITY("mutex") CRecursiveMutex {
  public:
    void Acquire() ACQUIRE() { Mutex.lock(); }
    void Release() RELEASE() { Mutex.unlock(); }

  private:
    std::recursive_mutex Mutex;
};

/// Holds a mutex for a scope.
template <class M> class SCOPED_CAPABILITY CLockOf {
  public:
    explicit CLockOf(M& mutex) ACQUIRE(mutex) : Held(mutex) { Held.Acquire(); }
    ~CLockOf() RELEASE() { Held.Release(); }
    CLockOf(const CLockOf&) = delete;
    CLockOf& operator=(const CLockOf&) = delete;

  private:
    M& Held;
};
using CLock = CLockOf<CMutex>;
using CRecursiveLock = CLockOf<CRecursiveMutex>;

/// A condition variable for a CMutex that the caller holds.
class CCondition {
  public:
    /// For waits that a notification ends: what a lost one costs at most.
    static constexpr int LostWakeMilliseconds = 1000;

    void NotifyAll() { Condition.notify_all(); }

    /// Waits until the predicate holds or the time is over; returns the predicate.
    template <class Predicate>
    bool WaitFor(CMutex& mutex, int milliseconds, Predicate predicate) REQUIRES(mutex) {
        std::unique_lock<std::mutex> lock(mutex.Mutex, std::adopt_lock);
        bool holds = Condition.wait_for(lock, std::chrono::milliseconds(milliseconds), predicate);
        lock.release();
        return holds;
    }

  private:
    std::condition_variable Condition;
};

} // namespace qor
