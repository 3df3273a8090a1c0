#include "executor/PipelineExecutor.h"
#include "executor/ThreadPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <mutex>
#include <stdexcept>

namespace velmorak::test {
namespace {

/// A pipeline of numbered items: loaded, squared in parallel, and collected in order.
struct Squares {
    explicit Squares(std::size_t maxInFlight, int items) : values(maxInFlight, 0), items(items) {}

    StagePipeline pipeline();
    std::vector<int> expected() const;

    std::vector<int> values;
    int items;
    int loaded = 0;
    std::vector<int> collected;
    std::function<void(int)> beforeSquare = [](int) {};
};

StagePipeline Squares::pipeline() {
    StagePipeline made;
    made.load = [this](std::size_t slot) {
        values[slot] = loaded;
        return loaded++ < items;
    };
    made.stages.push_back({false, [this](std::size_t slot) {
                               beforeSquare(values[slot]);
                               values[slot] *= values[slot];
                           }});
    made.stages.push_back({true, [this](std::size_t slot) { collected.push_back(values[slot]); }});
    return made;
}

std::vector<int> Squares::expected() const {
    std::vector<int> all;
    for (int i = 0; i < items; ++i) {
        all.push_back(i * i);
    }
    return all;
}

class PipelineExecutorTest : public testing::TestWithParam<std::size_t> {
protected:
    void run(const StagePipeline& pipeline) {
        const ThreadPool pool(GetParam());
        executor.run(pipeline);
    }

    PipelineExecutor executor{GetParam()};
};

TEST_P(PipelineExecutorTest, keepsTheOrderOnAnyNumberOfThreads) {
    for (const int items : {0, 1, 2, 3, 1000}) {
        Squares squares(executor.maxInFlight(), items);
        run(squares.pipeline());
        EXPECT_EQ(squares.collected, squares.expected()) << items;
    }
}

TEST_P(PipelineExecutorTest, endsWhenAStageThrows) {
    Squares squares(executor.maxInFlight(), 1000);
    squares.beforeSquare = [](int value) {
        if (value == 500) {
            throw std::runtime_error("five hundred");
        }
    };
    EXPECT_THROW(run(squares.pipeline()), std::runtime_error);
    EXPECT_LE(squares.collected.size(), 500U);
    EXPECT_LE(squares.loaded, 501 + static_cast<int>(executor.maxInFlight()));
}

TEST_P(PipelineExecutorTest, endsWhenLoadingThrows) {
    Squares squares(executor.maxInFlight(), 10);
    StagePipeline pipeline = squares.pipeline();
    pipeline.load = [](std::size_t) -> bool { throw std::bad_alloc(); };
    EXPECT_THROW(run(pipeline), std::bad_alloc);
    EXPECT_TRUE(squares.collected.empty());
}

INSTANTIATE_TEST_SUITE_P(Threads, PipelineExecutorTest, testing::Values(1, 2, 3, 16));

TEST(PipelineExecutor, worksOnSeveralItemsAtOnce) {
    PipelineExecutor executor(3);
    Squares squares(executor.maxInFlight(), 3);
    std::latch together(3);
    squares.beforeSquare = [&](int) { together.arrive_and_wait(); };
    const ThreadPool pool(3);
    executor.run(squares.pipeline());
    EXPECT_EQ(squares.collected, squares.expected());
}

TEST(PipelineExecutor, worksOutsideOfAPool) {
    PipelineExecutor executor(4);
    Squares squares(executor.maxInFlight(), 100);
    executor.run(squares.pipeline());
    EXPECT_EQ(squares.collected, squares.expected());
}

TEST(PipelineExecutor, neverHasMoreItemsInFlightThanSlots) {
    PipelineExecutor executor(4);
    Squares squares(executor.maxInFlight(), 200);
    std::mutex lock;
    std::size_t most = 0;
    StagePipeline pipeline = squares.pipeline();
    const auto load = pipeline.load;
    pipeline.load = [&](std::size_t slot) {
        const std::lock_guard guard(lock);
        const bool isLoaded = load(slot);
        most = std::max(most, static_cast<std::size_t>(squares.loaded) - squares.collected.size());
        return isLoaded;
    };
    const auto collect = pipeline.stages.back().work;
    pipeline.stages.back().work = [&](std::size_t slot) {
        const std::lock_guard guard(lock);
        collect(slot);
    };
    const ThreadPool pool(4);
    executor.run(pipeline);
    EXPECT_EQ(squares.collected, squares.expected());
    EXPECT_LE(most, executor.maxInFlight() + 1) << "the load that finds no item counts as well";
}

}  // namespace
}  // namespace velmorak::test
