#include "graph/BackgroundTask.h"
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

namespace velmorak::test {
namespace {

constexpr std::chrono::milliseconds noTime(0);
constexpr std::chrono::minutes plenty(10);

TEST(WorkAside, thatEndsIsWaitedFor) {
    std::promise<int> result;
    const auto work = WorkAside::begin([&](WorkAside& /*self*/) { result.set_value(7); });
    EXPECT_TRUE(work->wait(plenty));
    EXPECT_EQ(result.get_future().get(), 7);
}

TEST(WorkAside, thatDoesNotAdvanceIsLeftBehindAndMayBeWaitedForAgain) {
    const auto answer = std::make_shared<std::promise<void>>();
    const auto work = WorkAside::begin([asked = answer->get_future().share()](WorkAside& /*self*/) { asked.wait(); });
    EXPECT_FALSE(work->wait(noTime));
    EXPECT_FALSE(work->wait(noTime));
    answer->set_value();
    EXPECT_TRUE(work->wait(plenty));
}

TEST(WorkAside, isToldThatNobodyWantsTheRest) {
    const auto work = WorkAside::begin([](WorkAside& self) {
        while (!self.isStopping())
            std::this_thread::yield();
    });
    work->stop();
    EXPECT_TRUE(work->wait(plenty));
}

}  // namespace
}  // namespace velmorak::test
