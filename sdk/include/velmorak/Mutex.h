#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Locks that Clang checks at compile time (-Wthread-safety): a member that is GUARDED_BY a mutex may be used only
/// while the mutex is held, a function that REQUIRES it may be called only then. Other compilers ignore the
/// annotations. https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#if defined(__clang__)
#define VELMORAK_THREAD_SAFETY(annotation) __attribute__((annotation))
#else
#define VELMORAK_THREAD_SAFETY(annotation)
#endif

#define VELMORAK_GUARDED_BY(mutex) VELMORAK_THREAD_SAFETY(guarded_by(mutex))
#define VELMORAK_REQUIRES(mutex) VELMORAK_THREAD_SAFETY(requires_capability(mutex))
#define VELMORAK_EXCLUDES(mutex) VELMORAK_THREAD_SAFETY(locks_excluded(mutex))
#define VELMORAK_NO_THREAD_SAFETY_ANALYSIS VELMORAK_THREAD_SAFETY(no_thread_safety_analysis)

namespace velmorak {

/// std::mutex with annotations.
class VELMORAK_THREAD_SAFETY(capability("mutex")) Mutex {
public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() VELMORAK_THREAD_SAFETY(acquire_capability()) { native.lock(); }
    void unlock() VELMORAK_THREAD_SAFETY(release_capability()) { native.unlock(); }

private:
    friend class ConditionVariable;

    std::mutex native;
};

/// Holds a mutex while it lives, as std::scoped_lock does.
class VELMORAK_THREAD_SAFETY(scoped_lockable) MutexLock {
public:
    explicit MutexLock(Mutex& mutex) VELMORAK_THREAD_SAFETY(acquire_capability(mutex)) : mutex(mutex) { mutex.lock(); }
    ~MutexLock() VELMORAK_THREAD_SAFETY(release_capability()) { mutex.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& mutex;
};

/// std::condition_variable for a Mutex. It takes no predicate, because the analysis does not look into lambdas:
///     while (!isReady) {
///         change.wait(mutex);
///     }
class ConditionVariable {
public:
    /// Releases the mutex while it waits. May return without a notification.
    void wait(Mutex& mutex) VELMORAK_REQUIRES(mutex) {
        std::unique_lock lock(mutex.native, std::adopt_lock);
        change.wait(lock);
        lock.release();
    }
    /// As wait, for at most so long. @return false when the time is over.
    template <typename Rep, typename Period>
    bool waitFor(Mutex& mutex, const std::chrono::duration<Rep, Period>& time) VELMORAK_REQUIRES(mutex) {
        std::unique_lock lock(mutex.native, std::adopt_lock);
        const bool isNotified = change.wait_for(lock, time) == std::cv_status::no_timeout;
        lock.release();
        return isNotified;
    }
    void notifyOne() { change.notify_one(); }
    void notifyAll() { change.notify_all(); }

private:
    std::condition_variable change;
};

}  // namespace velmorak
