#include "columnar/Parallel.h"

#include <velmorak/Mutex.h>
#include <velmorak/Tasks.h>

#include <algorithm>
#include <exception>
#include <memory>

namespace velmorak::columnar {
namespace {

/// Work that several threads share. A helper that begins late finds nothing left, and touches no task.
class SharedWork {
public:
    SharedWork(std::size_t count, const std::function<void(std::size_t)>& task) : count(count), task(task) {}

    void work();
    /// Waits for the tasks that others have begun.
    void waitForAll();

private:
    bool take(std::size_t& number);
    void finish(std::exception_ptr problem);

    const std::size_t count;
    const std::function<void(std::size_t)>& task;  ///< Outlives the call of inParallel only.
    Mutex mutex;
    ConditionVariable ended;
    std::size_t next VELMORAK_GUARDED_BY(mutex) = 0;
    std::size_t done VELMORAK_GUARDED_BY(mutex) = 0;
    std::exception_ptr failure VELMORAK_GUARDED_BY(mutex);
};

bool SharedWork::take(std::size_t& number) {
    const MutexLock lock(mutex);
    number = next;
    next = std::min(count, next + 1);
    return number < count;
}

void SharedWork::finish(std::exception_ptr problem) {
    const MutexLock lock(mutex);
    ++done;
    if (problem && !failure) {
        failure = std::move(problem);
    }
    ended.notifyAll();
}

void SharedWork::work() {
    for (std::size_t number = 0; take(number);) {
        std::exception_ptr problem;
        try {
            task(number);
        } catch (...) {
            problem = std::current_exception();
        }
        finish(std::move(problem));
    }
}

void SharedWork::waitForAll() {
    const MutexLock lock(mutex);
    while (done < count) {
        ended.wait(mutex);
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace

void inParallel(std::size_t count, const std::function<void(std::size_t)>& task) {
    const auto shared = std::make_shared<SharedWork>(count, task);
    const std::size_t helpers = std::min(count, runThreads());
    for (std::size_t i = 1; i < helpers; ++i) {
        spawnTask([shared] { shared->work(); });
    }
    shared->work();
    shared->waitForAll();
}

}  // namespace velmorak::columnar
