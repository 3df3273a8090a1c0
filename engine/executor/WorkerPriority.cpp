#include "executor/WorkerPriority.h"

#include <sys/resource.h>
#include <unistd.h>

namespace velmorak {

bool isMainThread() {
    return gettid() == getpid();
}

void lowerPriority() {
    constexpr int background = 10;  // Nice value: about a tenth of the time of a competing thread at 0.
    const auto thread = static_cast<id_t>(gettid());
    if (getpriority(PRIO_PROCESS, thread) < background) {
        setpriority(PRIO_PROCESS, thread, background);
    }
}

}  // namespace velmorak
