#include "executor/StagePipeline.h"

#include <gtest/gtest.h>

namespace velmorak::test {
namespace {

/// Two slots, a parallel stage and an ordered one.
class TaskSchedulerTest : public testing::Test {
protected:
    using Tasks = std::vector<TaskScheduler::Task>;
    static constexpr std::size_t loading = TaskScheduler::loading;

    void execute(const TaskScheduler::Task& task, bool isLoaded = true) {
        scheduler.begin(task);
        scheduler.end(task, isLoaded);
    }

    const StagePipeline pipeline{{}, {{false, {}}, {true, {}}}};
    TaskScheduler scheduler{pipeline, 2};
};

TEST_F(TaskSchedulerTest, offersEachStageInItsOrder) {
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, loading}}));
    scheduler.begin({0, loading});
    EXPECT_TRUE(scheduler.runnableTasks().empty()) << "one loading at a time";
    scheduler.end({0, loading});
    execute({1, loading});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, 0}, {1, 0}})) << "both slots are occupied";
    execute({1, 0});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{0, 0}})) << "the second item waits for the first";
    execute({0, 0});
    execute({0, 1});
    EXPECT_EQ(scheduler.runnableTasks(), (Tasks{{1, 1}, {2, loading}}));
    execute({2, loading}, false);
    EXPECT_FALSE(scheduler.isOver());
    execute({1, 1});
    EXPECT_TRUE(scheduler.isOver());
}

TEST_F(TaskSchedulerTest, offersNothingMoreWhenClosed) {
    execute({0, loading});
    scheduler.begin({0, 0});
    scheduler.close();
    EXPECT_TRUE(scheduler.runnableTasks().empty());
    EXPECT_FALSE(scheduler.isOver()) << "a task still runs";
    scheduler.end({0, 0});
    EXPECT_TRUE(scheduler.runnableTasks().empty());
    EXPECT_TRUE(scheduler.isOver());
}

}  // namespace
}  // namespace velmorak::test
