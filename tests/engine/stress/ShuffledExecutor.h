#pragma once

#include "executor/StagePipeline.h"

#include <random>

namespace velmorak::test {

/// Runs the tasks of a pipeline one after the other, in an order that threads would hardly ever take: at random, or the
/// newest item first, so that ordered stages wait as long as possible.
class ShuffledExecutor : public Executor {
public:
    explicit ShuffledExecutor(std::uint32_t seed)
        : random(seed), slots(1 + random() % 12), isNewestFirst(random() % 3 == 0) {}
    std::size_t maxInFlight() const override { return slots; }

    void run(const StagePipeline& pipeline) override {
        TaskScheduler scheduler(pipeline, slots);
        while (!scheduler.isOver()) {
            const std::vector<TaskScheduler::Task> tasks = scheduler.runnableTasks();
            const TaskScheduler::Task task = isNewestFirst ? tasks.back() : tasks[random() % tasks.size()];
            scheduler.begin(task);
            scheduler.end(task, execute(pipeline, task, scheduler.slotOf(task)));
        }
    }

private:
    std::mt19937 random;
    std::size_t slots;
    bool isNewestFirst;
};

}  // namespace velmorak::test
