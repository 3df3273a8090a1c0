#include "executor/PipelineExecutor.h"

#include <velmorak/Mutex.h>
#include <velmorak/Tasks.h>

#include <algorithm>
#include <exception>
#include <memory>

namespace velmorak {

/// One pipeline and the threads that work on it. It outlives the pipeline, for helpers that start too late: they find
/// no runnable task and leave.
class PipelineExecutor::Job : public std::enable_shared_from_this<PipelineExecutor::Job> {
public:
    Job(const StagePipeline& pipeline, std::size_t maxInFlight, std::size_t maxHelpers);

    void run() VELMORAK_EXCLUDES(mutex);

private:
    /// Body of a helper's task. Returns when no task is runnable; requestHelpers submits it again when one is.
    void help() VELMORAK_EXCLUDES(mutex);

    /// Executes one runnable task, without the mutex. @return false when there is none.
    bool step(TaskScheduler::Task& last) VELMORAK_REQUIRES(mutex);

    /// Prefers the item last worked on; it is still in the processor's cache.
    static TaskScheduler::Task chosen(const std::vector<TaskScheduler::Task>& tasks, const TaskScheduler::Task& last);

    /// Without memory for it, the pipeline runs on the threads that it has.
    void requestHelpers(std::size_t wanted) VELMORAK_REQUIRES(mutex);

    bool tryExecute(const TaskScheduler::Task& task, std::size_t slot) VELMORAK_EXCLUDES(mutex);

    const StagePipeline& pipeline;  ///< Dangles when the scheduler is over.
    Mutex mutex;
    TaskScheduler scheduler VELMORAK_GUARDED_BY(mutex);
    ConditionVariable change;
    std::size_t maxHelpers VELMORAK_GUARDED_BY(mutex);
    std::size_t helpers VELMORAK_GUARDED_BY(mutex) = 0;  ///< Requested, and not yet gone.
    std::exception_ptr exception VELMORAK_GUARDED_BY(mutex);
};

PipelineExecutor::Job::Job(const StagePipeline& pipeline, std::size_t maxInFlight, std::size_t maxHelpers)
    : pipeline(pipeline), scheduler(pipeline, maxInFlight), maxHelpers(maxHelpers) {}

void PipelineExecutor::Job::run() {
    const MutexLock lock(mutex);
    TaskScheduler::Task last;
    while (!scheduler.isOver()) {
        if (!step(last)) {
            change.wait(mutex);
        }
    }
    if (exception) {
        std::rethrow_exception(exception);
    }
}

void PipelineExecutor::Job::help() {
    const MutexLock lock(mutex);
    TaskScheduler::Task last;
    while (step(last)) {
    }
    --helpers;
}

bool PipelineExecutor::Job::step(TaskScheduler::Task& last) {
    const std::vector<TaskScheduler::Task> tasks = scheduler.runnableTasks();
    if (tasks.empty()) {
        return false;
    }
    const TaskScheduler::Task task = chosen(tasks, last);
    const std::size_t slot = scheduler.slotOf(task);
    scheduler.begin(task);
    requestHelpers(tasks.size() - 1);
    mutex.unlock();
    const bool isLoaded = tryExecute(task, slot);
    mutex.lock();
    scheduler.end(task, isLoaded);
    last = task;
    change.notifyOne();  // Only run waits.
    return true;
}

TaskScheduler::Task PipelineExecutor::Job::chosen(const std::vector<TaskScheduler::Task>& tasks,
                                                  const TaskScheduler::Task& last) {
    const auto same = std::find_if(tasks.begin(), tasks.end(), [&](const TaskScheduler::Task& task) {
        return task.item == last.item && task.stage != TaskScheduler::loading;
    });
    return same == tasks.end() ? tasks.front() : *same;
}

void PipelineExecutor::Job::requestHelpers(std::size_t wanted) {
    try {
        for (std::size_t i = 0; i < wanted && helpers < maxHelpers; ++i, ++helpers) {
            spawnTask([self = shared_from_this()] { self->help(); });
        }
    } catch (const std::exception&) {
        maxHelpers = helpers;
    }
}

bool PipelineExecutor::Job::tryExecute(const TaskScheduler::Task& task, std::size_t slot) {
    try {
        return execute(pipeline, task, slot);
    } catch (...) {
        const MutexLock lock(mutex);
        exception = exception ? exception : std::current_exception();
        scheduler.close();
        return false;
    }
}

PipelineExecutor::PipelineExecutor(std::size_t threads) : threads(std::max<std::size_t>(threads, 1)) {}

void PipelineExecutor::run(const StagePipeline& pipeline) {
    // Outside of a pool nobody would run a helper's task.
    const std::size_t maxHelpers = std::min(threads, runThreads()) - 1;
    std::make_shared<Job>(pipeline, maxInFlight(), maxHelpers)->run();
}

}  // namespace velmorak
