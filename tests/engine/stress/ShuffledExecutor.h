#pragma once

#include "executor/StagePipeline.h"

#include <random>

namespace velmorak::test {

/// Does on a line what is possible, one task after the other, in an order that a crew would hardly ever take: any at
/// all, or the newest item first, so that what must be in order waits as long as it can.
class ShuffledExecutor : public Executor {
public:
    explicit ShuffledExecutor(std::uint32_t seed) : random(seed), most(1 + random() % 12), isHasty(random() % 3 == 0) {}
    std::size_t maxInFlight() const override { return most; }

    void work(const StagePipeline& line) override {
        TaskScheduler scheduler(line, most);
        while (!scheduler.isOver()) {
            const std::vector<TaskScheduler::Task> tasks = scheduler.runnableTasks();
            const TaskScheduler::Task task = isHasty ? tasks.back() : tasks[random() % tasks.size()];
            scheduler.begin(task);
            scheduler.end(task, execute(line, task, scheduler.slotOf(task)));
        }
    }

private:
    std::mt19937 random;
    std::size_t most;
    bool isHasty;
};

}  // namespace velmorak::test
