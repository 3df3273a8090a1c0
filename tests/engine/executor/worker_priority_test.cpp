#include "executor/ThreadPool.h"
#include "executor/WorkerPriority.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>
#include <algorithm>
#include <functional>
#include <future>
#include <thread>

namespace velmorak::test {
namespace {

int niceValue() {
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

void inThread(const std::function<void()>& work) {
    std::thread(work).join();
}

TEST(WorkerPriority, tellsTheMainThreadFromOthers) {
    EXPECT_TRUE(isMainThread());
    inThread([] { EXPECT_FALSE(isMainThread()); });
}

TEST(WorkerPriority, isLoweredForTheCallingThreadOnly) {
    const int before = niceValue();
    inThread([before] {
        lowerPriority();
        EXPECT_EQ(niceValue(), std::max(before, 10));
    });
    EXPECT_EQ(niceValue(), before);
}

TEST(WorkerPriority, isPassedOnToThePoolOfTheThread) {
    inThread([] {
        lowerPriority();
        const int lowered = niceValue();
        std::promise<int> inPool;
        ThreadPool pool(2);
        pool.submit([&] { inPool.set_value(niceValue()); });
        EXPECT_EQ(inPool.get_future().get(), lowered);
    });
}

TEST(WorkerPriority, isNeverRaised) {
    inThread([] {
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 15);
        const int inherited = niceValue();
        lowerPriority();
        EXPECT_EQ(niceValue(), inherited);
    });
}

}  // namespace
}  // namespace velmorak::test
