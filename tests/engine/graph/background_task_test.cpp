#include "graph/preview/BackgroundTask.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>

namespace velmorak::test {
namespace {

constexpr std::chrono::milliseconds noTime(0);
constexpr std::chrono::minutes plenty(10);

TEST(BackgroundTask, thatEndsCanBeWaitedFor) {
    std::promise<int> result;
    const auto work = BackgroundTask::begin([&](BackgroundTask& /*self*/) { result.set_value(7); });
    EXPECT_TRUE(work->wait(plenty));
    EXPECT_EQ(result.get_future().get(), 7);
}

TEST(BackgroundTask, thatMakesNoProgressIsNotWaitedFor) {
    const auto answer = std::make_shared<std::promise<void>>();
    const auto work =
        BackgroundTask::begin([asked = answer->get_future().share()](BackgroundTask& /*self*/) { asked.wait(); });
    EXPECT_FALSE(work->wait(noTime));
    EXPECT_FALSE(work->wait(noTime));
    answer->set_value();
    EXPECT_TRUE(work->wait(plenty));
}

TEST(BackgroundTask, seesThatItIsStopped) {
    const auto hasBegun = std::make_shared<std::promise<void>>();
    const auto isStopped = std::make_shared<std::promise<void>>();
    const auto sawIt = std::make_shared<bool>(false);
    const auto work = BackgroundTask::begin([=](BackgroundTask& self) {
        hasBegun->set_value();
        isStopped->get_future().wait();
        *sawIt = self.isStopping();
    });
    hasBegun->get_future().wait();
    work->stop();
    isStopped->set_value();
    ASSERT_TRUE(work->wait(plenty));
    EXPECT_TRUE(*sawIt);
}

TEST(BackgroundTask, isNotRunWhenItIsStoppedFirst) {
    bool hasRun = false;
    BackgroundTask task([&](BackgroundTask& /*self*/) { hasRun = true; });
    task.stop();
    task.run();
    EXPECT_TRUE(task.wait(noTime));
    EXPECT_FALSE(hasRun);
}

}  // namespace
}  // namespace velmorak::test
