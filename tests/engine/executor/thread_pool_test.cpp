#include "executor/ThreadPool.h"

#include <velmorak/Tasks.h>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <thread>
#include <vector>

namespace velmorak::test {
namespace {

TEST(ThreadPool, runsTasksAtOnceOnAllThreadsButItsCreator) {
    constexpr int threads = 4;
    std::latch together(threads);
    ThreadPool pool(threads);
    for (int i = 1; i < threads; ++i) {
        pool.submit([&] { together.arrive_and_wait(); });
    }
    together.arrive_and_wait();
    EXPECT_EQ(pool.size(), 4U);
}

TEST(ThreadPool, runsTasksFirstInFirstOut) {
    constexpr int tasks = 100;
    std::vector<int> order;
    std::latch done(tasks);
    ThreadPool pool(2);
    for (int i = 0; i < tasks; ++i) {
        pool.submit([&order, &done, i] {
            order.push_back(i);
            done.count_down();
        });
    }
    done.wait();
    for (int i = 0; i < tasks; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    }
}

TEST(ThreadPool, ofOneThreadDiscardsTasks) {
    ThreadPool pool(1);
    const auto token = std::make_shared<int>();
    pool.submit([token] { ADD_FAILURE() << "no other thread can run it"; });
    EXPECT_EQ(token.use_count(), 1);
}

TEST(ThreadPool, discardsTasksThatHaveNotBegunWhenItIsDestroyed) {
    std::promise<void> begun;
    std::promise<void> discarded;
    // Sets the promise when the task that owns it is discarded.
    std::shared_ptr<int> token(new int(), [&](const int* owned) {
        delete owned;
        discarded.set_value();
    });
    {
        ThreadPool pool(2);
        pool.submit([&] {
            begun.set_value();
            discarded.get_future().wait();
        });
        pool.submit([own = std::move(token)] { ADD_FAILURE() << "the only other thread is busy"; });
        begun.get_future().wait();
    }
}

TEST(ThreadPool, isTheOneThatTasksOfTheRunUse) {
    EXPECT_EQ(runThreads(), 1U);
    {
        std::promise<std::size_t> inTask;
        std::promise<std::thread::id> inTaskOfTask;
        const ThreadPool pool(3);
        EXPECT_EQ(runThreads(), 3U);
        spawnTask([&] {
            spawnTask([&] { inTaskOfTask.set_value(std::this_thread::get_id()); });
            inTask.set_value(runThreads());
        });
        EXPECT_EQ(inTask.get_future().get(), 3U);
        EXPECT_NE(inTaskOfTask.get_future().get(), std::this_thread::get_id());
        {
            const ThreadPool inner(2);
            EXPECT_EQ(runThreads(), 2U);
        }
        EXPECT_EQ(runThreads(), 3U);
        EXPECT_EQ(std::async(std::launch::async, &runThreads).get(), 1U) << "a thread of nobody's pool";
    }
    EXPECT_EQ(runThreads(), 1U);
}

TEST(ThreadPool, takesTasksFromManyThreads) {
    constexpr int submitters = 4;
    constexpr int tasks = 1000;
    std::latch done(submitters * tasks);
    ThreadPool pool(3);
    std::vector<std::future<void>> all;
    for (int i = 0; i < submitters; ++i) {
        all.push_back(std::async(std::launch::async, [&] {
            for (int j = 0; j < tasks; ++j) {
                pool.submit([&] { done.count_down(); });
            }
        }));
    }
    done.wait();
    EXPECT_TRUE(done.try_wait());
}

TEST(SpawnTask, discardsTheTaskOutsideOfARun) {
    const auto token = std::make_shared<int>();
    spawnTask([token] { ADD_FAILURE() << "nobody runs it"; });
    EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace velmorak::test
