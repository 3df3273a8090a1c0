#include "graph/EarlyStop.h"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <iterator>

namespace velmorak {
namespace {

/// Threads of this process. Empty where /proc is missing; a stop without a run then applies to none.
std::set<pid_t> threadsAlive() {
    std::set<pid_t> threads;
    std::error_code failure;
    for (std::filesystem::directory_iterator task("/proc/self/task", failure), end; !failure && task != end;
         task.increment(failure)) {
        const std::string name = task->path().filename();
        pid_t thread = 0;
        if (std::from_chars(name.data(), name.data() + name.size(), thread).ec == std::errc()) {
            threads.insert(thread);
        }
    }
    return threads;
}

}  // namespace

void EarlyStop::note() {
    waiting = threadsAlive();
    std::erase_if(haveRun, [this](pid_t thread) { return !waiting.contains(thread); });
    std::erase_if(waiting, [this](pid_t thread) { return haveRun.contains(thread); });
    waiting.erase(gettid());
}

bool EarlyStop::consumeForThisRun() {
    const bool isMeant = waiting.contains(gettid());
    waiting.clear();
    haveRun.insert(gettid());
    return isMeant;
}

}  // namespace velmorak
