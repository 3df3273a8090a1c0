#include "executor/StagePipeline.h"

#include <algorithm>

namespace velmorak {

TaskScheduler::TaskScheduler(const StagePipeline& pipeline, std::size_t maxInFlight)
    : pipeline(pipeline), items(std::max<std::size_t>(maxInFlight, 1)), passed(pipeline.stages.size(), 0) {}

bool TaskScheduler::mayBegin(std::uint64_t item) const {
    const Item& state = items[item % items.size()];
    return !state.isBusy && (!pipeline.stages[state.stage].isInOrder || passed[state.stage] == item);
}

std::vector<TaskScheduler::Task> TaskScheduler::runnableTasks() const {
    std::vector<Task> tasks;
    if (isClosed) {
        return tasks;
    }
    for (std::uint64_t item = done; item < loaded; ++item) {
        if (mayBegin(item)) {
            tasks.push_back({item, items[item % items.size()].stage});
        }
    }
    if (!isLoading && !isExhausted && loaded - done < items.size()) {
        tasks.push_back({loaded, loading});
    }
    return tasks;
}

void TaskScheduler::begin(const Task& task) {
    ++busy;
    if (task.stage == loading) {
        isLoading = true;
    } else {
        items[slotOf(task)].isBusy = true;
    }
}

void TaskScheduler::end(const Task& task, bool isLoaded) {
    --busy;
    if (task.stage == loading) {
        isLoading = false;
        isExhausted = !isLoaded;
        loaded += isLoaded ? 1 : 0;
        items[slotOf(task)] = isLoaded ? Item{} : items[slotOf(task)];
        return;
    }
    Item& item = items[slotOf(task)];
    item.isBusy = false;
    ++item.stage;
    if (pipeline.stages[task.stage].isInOrder) {
        ++passed[task.stage];
    }
    if (item.stage == pipeline.stages.size()) {
        ++done;
    }
}

void TaskScheduler::close() {
    isClosed = true;
}

bool TaskScheduler::isOver() const {
    return busy == 0 && (isClosed || (isExhausted && done == loaded));
}

bool execute(const StagePipeline& pipeline, const TaskScheduler::Task& task, std::size_t slot) {
    if (task.stage == TaskScheduler::loading) {
        return pipeline.load(slot);
    }
    pipeline.stages[task.stage].work(slot);
    return true;
}

}  // namespace velmorak
