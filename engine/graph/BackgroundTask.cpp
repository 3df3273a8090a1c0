#include "graph/BackgroundTask.h"

#include <thread>
#include <utility>

namespace velmorak {

std::shared_ptr<BackgroundTask> BackgroundTask::begin(std::function<void(BackgroundTask&)> work) {
    auto made = std::make_shared<BackgroundTask>();
    // Nothing can end a thread that the kernel holds, so it cannot be joined.
    std::thread([made, work = std::move(work)]() mutable {
        work(*made);
        work = nullptr;
        made->end();
    }).detach();
    return made;
}

void BackgroundTask::advance() {
    const std::lock_guard guard(mutex);
    ++steps;
    changed.notify_all();
}

void BackgroundTask::end() {
    const std::lock_guard guard(mutex);
    isDone = true;
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
