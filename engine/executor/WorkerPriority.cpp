#include "executor/WorkerPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace velmorak {

namespace {

constexpr int background = 10;  ///< As `nice` counts: about a tenth of the time of a thread at 0 that wants it too.

bool isFirstThread() {
    return gettid() == getpid();
}

/// Of the calling thread alone. The system does not let it rise again: the threads are the run's own, and another run
/// wants them so too.
void lowerPriority() {
    const auto thread = static_cast<id_t>(gettid());
    if (getpriority(PRIO_PROCESS, thread) < background) {  // A program that stands farther back stays there.
        setpriority(PRIO_PROCESS, thread, background);
    }
}

}  // namespace

WorkerPriority::WorkerPriority(oneapi::tbb::task_arena& arena, bool isWanted) : task_scheduler_observer(arena) {
    if (isWanted) {
        observe(true);
    }
}

WorkerPriority::~WorkerPriority() {
    observe(false);
}

bool WorkerPriority::isCalledFor() {
    return !isFirstThread();
}

void WorkerPriority::on_scheduler_entry(bool) {
    if (!isFirstThread()) {
        lowerPriority();
    }
}

}  // namespace velmorak
