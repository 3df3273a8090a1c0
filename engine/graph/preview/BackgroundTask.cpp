#include "graph/preview/BackgroundTask.h"

#include <thread>
#include <utility>

namespace velmorak {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

std::shared_ptr<BackgroundTask> BackgroundTask::begin(Work work) {
    auto task = std::make_shared<BackgroundTask>(std::move(work));
    std::thread([task] { task->run(); }).detach();
    return task;
}

void BackgroundTask::run() {
    if (!isStopped) {
        work(*this);
    }
    work = nullptr;
    const MutexLock lock(mutex);
    isDone = true;
    changed.notifyAll();
}

void BackgroundTask::advance() {
    const MutexLock lock(mutex);
    ++steps;
    changed.notifyAll();
}

bool BackgroundTask::wait(std::chrono::milliseconds patience) {
    const MutexLock lock(mutex);
    std::uint64_t seen = steps;
    auto deadline = Clock::now() + patience;
    while (!isDone) {
        const auto left = deadline - Clock::now();
        if (left <= Clock::duration::zero()) {
            return false;
        }
        changed.waitFor(mutex, left);
        if (steps != seen) {
            seen = steps;
            deadline = Clock::now() + patience;
        }
    }
    return true;
}

}  // namespace velmorak
