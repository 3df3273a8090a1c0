#include "executor/ThreadPool.h"

#include <velmorak/Tasks.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>

namespace velmorak {

/// One line, and those who work on it. Outlives the line, for helpers that come too late.
class Crew::Shift : public std::enable_shared_from_this<Crew::Shift> {
public:
    Shift(const Line& line, std::size_t places, std::size_t mostHelpers)
        : line(line), timetable(line, places), mostHelpers(mostHelpers) {}

    void run() {
        std::unique_lock guard(lock);
        Timetable::Task last;
        while (!timetable.isOver()) {
            if (!step(guard, last)) {
                change.wait(guard);
            }
        }
        if (exception) {
            std::rethrow_exception(exception);
        }
    }

private:
    /// Where nothing is left to do at the moment, the thread goes, and is called again.
    void help() {
        std::unique_lock guard(lock);
        Timetable::Task last;
        while (step(guard, last)) {
        }
        --helpers;
    }

    /// Does one thing that can be done. @return false when there is none.
    bool step(std::unique_lock<std::mutex>& guard, Timetable::Task& last) {
        const std::vector<Timetable::Task> tasks = timetable.possible();
        if (tasks.empty()) {
            return false;
        }
        const Timetable::Task task = chosen(tasks, last);
        timetable.begin(task);
        callHelpers(tasks.size() - 1);
        guard.unlock();
        const bool isLoaded = tryTo(task);
        guard.lock();
        timetable.end(task, isLoaded);
        last = task;
        change.notify_one();  // To the one who called.
        return true;
    }

    /// Rather goes on with the item that was worked on last, which is still at hand.
    static Timetable::Task chosen(const std::vector<Timetable::Task>& tasks, const Timetable::Task& last) {
        const auto same = std::find_if(tasks.begin(), tasks.end(), [&](const Timetable::Task& task) {
            return task.item == last.item && task.stage != Timetable::loading;
        });
        return same == tasks.end() ? tasks.front() : *same;
    }

    /// Where none can be had, the line is worked on with those that there are.
    void callHelpers(std::size_t wanted) {
        try {
            for (std::size_t i = 0; i < wanted && helpers < mostHelpers; ++i, ++helpers) {
                doAside([self = shared_from_this()] { self->help(); });
            }
        } catch (const std::exception&) {
            mostHelpers = helpers;
        }
    }

    bool tryTo(const Timetable::Task& task) {
        try {
            return perform(line, task, timetable.placeOf(task));
        } catch (...) {
            const std::lock_guard guard(lock);
            exception = exception ? exception : std::current_exception();
            timetable.close();
            return false;
        }
    }

    const Line& line;  ///< Not there any more when the timetable is over.
    Timetable timetable;
    std::mutex lock;  ///< Of the timetable and of all that follows.
    std::condition_variable change;
    std::size_t mostHelpers;
    std::size_t helpers = 0;  ///< Called, and not yet gone.
    std::exception_ptr exception;
};

Crew::Crew(std::size_t threads) : threads(std::max<std::size_t>(threads, 1)) {}

void Crew::work(const Line& line) {
    std::make_shared<Shift>(line, places(), threads - 1)->run();
}

}  // namespace velmorak
