#include <gtest/gtest.h>
#include "graph/BackgroundTask.h"

#include <future>
#include <memory>
#include <thread>

namespace velmorak::test {
namespace {

constexpr std::chrono::milliseconds noTime(0);
constexpr std::chrono::minutes plenty(10);

TEST(BackgroundTask, thatEndsIsWaitedFor) {
    std::promise<int> result;
    const auto work = BackgroundTask::begin([&](BackgroundTask& /*self*/) { result.set_value(7); });
    EXPECT_TRUE(work->wait(plenty));
    EXPECT_EQ(result.get_future().get(), 7);
}

TEST(BackgroundTask, thatDoesNotAdvanceIsLeftBehindAndMayBeWaitedForAgain) {
    const auto answer = std::make_shared<std::promise<void>>();
    const auto work =
        BackgroundTask::begin([asked = answer->get_future().share()](BackgroundTask& /*self*/) { asked.wait(); });
    EXPECT_FALSE(work->wait(noTime));
    EXPECT_FALSE(work->wait(noTime));
    answer->set_value();
    EXPECT_TRUE(work->wait(plenty));
}

TEST(BackgroundTask, isToldThatNobodyWantsTheRest) {
    const auto work = BackgroundTask::begin([](BackgroundTask& self) {
        while (!self.isStopping()) {
            std::this_thread::yield();
        }
    });
    work->stop();
    EXPECT_TRUE(work->wait(plenty));
}

}  // namespace
}  // namespace velmorak::test
