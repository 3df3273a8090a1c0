#include "executor/ThreadPool.h"

#include <velmorak/Tasks.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>

namespace velmorak {

/// One line, and those who work on it. Outlives the line, for helpers that come too late.
class ThreadPool::Job : public std::enable_shared_from_this<ThreadPool::Job> {
public:
    Job(const StagePipeline& line, std::size_t maxInFlight, std::size_t maxHelpers);

    void run();

private:
    /// Where nothing is left to do at the moment, the thread goes, and is called again.
    void help();

    /// Does one thing that can be done. @return false when there is none.
    bool step(std::unique_lock<std::mutex>& guard, TaskScheduler::Task& last);

    /// Rather goes on with the item that was worked on last, which is still at hand.
    static TaskScheduler::Task chosen(const std::vector<TaskScheduler::Task>& tasks, const TaskScheduler::Task& last);

    /// Where none can be had, the line is worked on with those that there are.
    void callHelpers(std::size_t wanted);

    bool tryExecute(const TaskScheduler::Task& task);

    const StagePipeline& line;  ///< Not there any more when the timetable is over.
    TaskScheduler scheduler;
    std::mutex lock;  ///< Of the timetable and of all that follows.
    std::condition_variable change;
    std::size_t maxHelpers;
    std::size_t helpers = 0;  ///< Called, and not yet gone.
    std::exception_ptr exception;
};

ThreadPool::Job::Job(const StagePipeline& line, std::size_t maxInFlight, std::size_t maxHelpers)
    : line(line), scheduler(line, maxInFlight), maxHelpers(maxHelpers) {}

void ThreadPool::Job::run() {
    std::unique_lock guard(lock);
    TaskScheduler::Task last;
    while (!scheduler.isOver()) {
        if (!step(guard, last)) {
            change.wait(guard);
        }
    }
    if (exception) {
        std::rethrow_exception(exception);
    }
}

void ThreadPool::Job::help() {
    std::unique_lock guard(lock);
    TaskScheduler::Task last;
    while (step(guard, last)) {
    }
    --helpers;
}

bool ThreadPool::Job::step(std::unique_lock<std::mutex>& guard, TaskScheduler::Task& last) {
    const std::vector<TaskScheduler::Task> tasks = scheduler.runnableTasks();
    if (tasks.empty()) {
        return false;
    }
    const TaskScheduler::Task task = chosen(tasks, last);
    scheduler.begin(task);
    callHelpers(tasks.size() - 1);
    guard.unlock();
    const bool isLoaded = tryExecute(task);
    guard.lock();
    scheduler.end(task, isLoaded);
    last = task;
    change.notify_one();  // To the one who called.
    return true;
}

TaskScheduler::Task ThreadPool::Job::chosen(const std::vector<TaskScheduler::Task>& tasks,
                                            const TaskScheduler::Task& last) {
    const auto same = std::find_if(tasks.begin(), tasks.end(), [&](const TaskScheduler::Task& task) {
        return task.item == last.item && task.stage != TaskScheduler::loading;
    });
    return same == tasks.end() ? tasks.front() : *same;
}

void ThreadPool::Job::callHelpers(std::size_t wanted) {
    try {
        for (std::size_t i = 0; i < wanted && helpers < maxHelpers; ++i, ++helpers) {
            spawnTask([self = shared_from_this()] { self->help(); });
        }
    } catch (const std::exception&) {
        maxHelpers = helpers;
    }
}

bool ThreadPool::Job::tryExecute(const TaskScheduler::Task& task) {
    try {
        return execute(line, task, scheduler.slotOf(task));
    } catch (...) {
        const std::lock_guard guard(lock);
        exception = exception ? exception : std::current_exception();
        scheduler.close();
        return false;
    }
}

ThreadPool::ThreadPool(std::size_t threads) : threads(std::max<std::size_t>(threads, 1)) {}

void ThreadPool::work(const StagePipeline& line) {
    std::make_shared<Job>(line, maxInFlight(), threads - 1)->run();
}

}  // namespace velmorak
