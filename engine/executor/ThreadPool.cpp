#include "executor/ThreadPool.h"

#include <velmorak/Tasks.h>

#include <exception>
#include <utility>

namespace velmorak {
namespace {

/// The pool that the calling thread belongs to; null for none.
thread_local ThreadPool* currentPool = nullptr;

}  // namespace

ThreadPool::ThreadPool(std::size_t count) : enclosing(std::exchange(currentPool, this)) {
    try {
        threads.reserve(count);
        for (std::size_t i = 1; i < count; ++i) {
            threads.emplace_back([this] { work(); });
        }
    } catch (const std::exception&) {
        // The system limits the number of threads. Fewer give the same results.
    }
}

ThreadPool::~ThreadPool() {
    std::deque<std::function<void()>> discarded;
    {
        const MutexLock lock(mutex);
        isClosed = true;
        discarded.swap(tasks);
    }
    discarded.clear();
    change.notifyAll();
    for (std::thread& thread : threads) {
        thread.join();
    }
    currentPool = enclosing;
}

void ThreadPool::submit(std::function<void()> task) {
    {
        const MutexLock lock(mutex);
        if (isClosed || threads.empty()) {
            return;
        }
        tasks.push_back(std::move(task));
    }
    change.notifyOne();
}

void ThreadPool::work() {
    currentPool = this;
    const MutexLock lock(mutex);
    while (true) {
        while (!isClosed && tasks.empty()) {
            change.wait(mutex);
        }
        if (isClosed) {
            return;
        }
        std::function<void()> task = std::move(tasks.front());
        tasks.pop_front();
        mutex.unlock();
        task();
        task = nullptr;  // Its destructor may lock as well.
        mutex.lock();
    }
}

std::size_t runThreads() {
    return currentPool ? currentPool->size() : 1;
}

void spawnTask(std::function<void()> task) {
    if (currentPool) {
        currentPool->submit(std::move(task));
    }
}

}  // namespace velmorak
