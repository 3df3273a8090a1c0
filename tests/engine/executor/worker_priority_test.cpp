#include "executor/WorkerPriority.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>
#include <algorithm>
#include <thread>

namespace velmorak {
namespace {

int priorityHere() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

/// How far the threads of an arena stand back that is used from here.
int priorityInARun() {
    oneapi::tbb::task_arena arena(1);
    const WorkerPriority politeness(arena, WorkerPriority::isCalledFor());
    return arena.execute([] { return priorityHere(); });
}

TEST(WorkerPriority, aRunBesideAWindowStandsBack) {
    const int before = priorityHere();
    int inside = before;
    std::thread([&] { inside = priorityInARun(); }).join();
    EXPECT_EQ(inside, std::max(before, 10));
    EXPECT_EQ(priorityHere(), before);
}

TEST(WorkerPriority, aRunOnTheFirstThreadStaysAsItIs) {
    const int before = priorityHere();
    EXPECT_EQ(priorityInARun(), before);
}

}  // namespace
}  // namespace velmorak
