#pragma once

#include <velmorak/Mutex.h>

#include <cstddef>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

namespace velmorak {

/// Threads that run tasks, first in, first out. The thread that creates the pool belongs to it, so a pool of n threads
/// starts n - 1, with the priority of the creating thread; runThreads and spawnTask refer to the pool on all of them.
/// Lifetime: a pool is destroyed on the thread that created it. The destructor discards tasks that have not begun and
///           waits for those that run, forever if one does not return.
/// Threads:  submit may be called on any thread.
class ThreadPool {
public:
    /// Has fewer threads where the system grants no more.
    /// @param count at least 1.
    explicit ThreadPool(std::size_t count);
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    std::size_t size() const { return threads.size() + 1; }
    /// A pool of one thread discards the task, because no other thread could run it.
    /// @param task must not throw.
    void submit(std::function<void()> task) VELMORAK_EXCLUDES(mutex);

private:
    void work() VELMORAK_EXCLUDES(mutex);

    Mutex mutex;
    ConditionVariable change;
    std::deque<std::function<void()>> tasks VELMORAK_GUARDED_BY(mutex);
    bool isClosed VELMORAK_GUARDED_BY(mutex) = false;
    ThreadPool* enclosing;             ///< Pool of the creating thread before this one; null for none.
    std::vector<std::thread> threads;  ///< Complete before the first task is submitted.
};

}  // namespace velmorak
