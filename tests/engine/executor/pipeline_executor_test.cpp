#include "executor/ThreadPool.h"

#include <gtest/gtest.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

namespace velmorak::test {
namespace {

/// A line of items that are counted: loaded, squared by many at once, and gathered in order.
struct Squares {
    explicit Squares(std::size_t maxInFlight, int items) : values(maxInFlight, 0), items(items) {}

    StagePipeline line() {
        StagePipeline made;
        made.load = [this](std::size_t slot) {
            values[slot] = loaded;
            return loaded++ < items;
        };
        made.stages.push_back({false, [this](std::size_t slot) {
                                   beforeSquare(values[slot]);
                                   values[slot] *= values[slot];
                               }});
        made.stages.push_back({true, [this](std::size_t slot) { gathered.push_back(values[slot]); }});
        return made;
    }
    std::vector<int> expected() const {
        std::vector<int> all;
        for (int i = 0; i < items; ++i) {
            all.push_back(i * i);
        }
        return all;
    }

    std::vector<int> values;
    int items;
    int loaded = 0;
    std::vector<int> gathered;
    std::function<void(int)> beforeSquare = [](int) {};
};

/// Among so many threads, as in a run, however few processors there are.
void workWith(ThreadPool& crew, std::size_t threads, const StagePipeline& line) {
    const oneapi::tbb::global_control allowance(oneapi::tbb::global_control::max_allowed_parallelism, threads);
    oneapi::tbb::task_arena arena(static_cast<int>(threads));
    arena.execute([&] { crew.work(line); });
}

class ThreadPoolOf : public testing::TestWithParam<std::size_t> {
protected:
    void work(const StagePipeline& line) { workWith(crew, GetParam(), line); }

    ThreadPool crew{GetParam()};
};

TEST_P(ThreadPoolOf, anyNumberKeepsTheOrder) {
    for (const int items : {0, 1, 2, 3, 1000}) {
        Squares squares(crew.maxInFlight(), items);
        work(squares.line());
        EXPECT_EQ(squares.gathered, squares.expected()) << items;
    }
}

TEST_P(ThreadPoolOf, anyNumberEndsWhenAStageThrows) {
    Squares squares(crew.maxInFlight(), 1000);
    squares.beforeSquare = [](int value) {
        if (value == 500) {
            throw std::runtime_error("five hundred");
        }
    };
    EXPECT_THROW(work(squares.line()), std::runtime_error);
    EXPECT_LE(squares.gathered.size(), 500U);
    EXPECT_LE(squares.loaded, 501 + static_cast<int>(crew.maxInFlight()));
}

TEST_P(ThreadPoolOf, anyNumberEndsWhenLoadingThrows) {
    Squares squares(crew.maxInFlight(), 10);
    StagePipeline line = squares.line();
    line.load = [](std::size_t) -> bool { throw std::bad_alloc(); };
    EXPECT_THROW(work(line), std::bad_alloc);
    EXPECT_TRUE(squares.gathered.empty());
}

INSTANTIATE_TEST_SUITE_P(Executor, ThreadPoolOf, testing::Values(1, 2, 3, 16));

TEST(ThreadPool, worksOnSeveralItemsAtOnce) {
    ThreadPool crew(3);
    Squares squares(crew.maxInFlight(), 3);
    std::atomic<int> present = 0;
    squares.beforeSquare = [&](int) {
        ++present;
        while (present < 3) {
            std::this_thread::yield();
        }
    };
    workWith(crew, 3, squares.line());
    EXPECT_EQ(squares.gathered, squares.expected());
}

TEST(ThreadPool, neverHasMoreItemsOnTheirWayThanPlaces) {
    ThreadPool crew(4);
    Squares squares(crew.maxInFlight(), 200);
    std::mutex lock;
    std::size_t most = 0;
    StagePipeline line = squares.line();
    const auto load = line.load;
    line.load = [&](std::size_t slot) {
        const std::lock_guard guard(lock);
        const bool isLoaded = load(slot);
        most = std::max(most, static_cast<std::size_t>(squares.loaded) - squares.gathered.size());
        return isLoaded;
    };
    const auto gather = line.stages.back().work;
    line.stages.back().work = [&](std::size_t slot) {
        const std::lock_guard guard(lock);
        gather(slot);
    };
    workWith(crew, 4, line);
    EXPECT_EQ(squares.gathered, squares.expected());
    EXPECT_LE(most, crew.maxInFlight() + 1) << "the load that finds nothing counts as well";
}

/// All that may be done at once with two places, an item that is worked on, and stages of both sorts.
TEST(TaskScheduler, offersEachStageInItsOrder) {
    StagePipeline line;
    line.stages.resize(2);
    line.stages[1].isInOrder = true;
    using Task = TaskScheduler::Task;
    using Tasks = std::vector<Task>;
    constexpr std::size_t loading = TaskScheduler::loading;
    TaskScheduler scheduler(line, 2);
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, loading}}));
    scheduler.begin({0, loading});
    EXPECT_TRUE(scheduler.runnableTasks().empty()) << "one loads at a time";
    scheduler.end({0, loading});
    scheduler.begin({1, loading});
    scheduler.end({1, loading});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, 0}, {1, 0}})) << "both places are taken";
    scheduler.begin({1, 0});
    scheduler.end({1, 0});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, 0}})) << "the second waits for the first";
    scheduler.begin({0, 0});
    scheduler.end({0, 0});
    scheduler.begin({0, 1});
    scheduler.end({0, 1});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{1, 1}, {2, loading}}));
    scheduler.begin({2, loading});
    scheduler.end({2, loading}, false);
    EXPECT_FALSE(scheduler.isOver());
    scheduler.begin({1, 1});
    scheduler.end({1, 1});
    EXPECT_TRUE(scheduler.isOver());
}

}  // namespace
}  // namespace velmorak::test
