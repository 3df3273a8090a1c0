#include "executor/TaskArena.h"

#include <oneapi/tbb/task_arena.h>

namespace velmorak {

void enqueue(void (*call)(void*), void* argument) {
    oneapi::tbb::task_arena(oneapi::tbb::task_arena::attach{}).enqueue([call, argument] { call(argument); });
}

}  // namespace velmorak
