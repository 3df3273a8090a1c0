#include "graph/BackgroundTask.h"

#include <thread>
#include <utility>

namespace velmorak {

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
    const std::lock_guard guard(mutex);
    isDone = true;
    changed.notify_all();
}

void BackgroundTask::advance() {
    const std::lock_guard guard(mutex);
    ++steps;
    changed.notify_all();
}

bool BackgroundTask::wait(std::chrono::milliseconds patience) {
    std::unique_lock guard(mutex);
    std::uint64_t seen = steps;
    while (changed.wait_for(guard, patience, [&] { return isDone || steps != seen; }) && !isDone) {
        seen = steps;
    }
    return isDone;
}

}  // namespace velmorak
