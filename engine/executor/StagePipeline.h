#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace velmorak {

/// Items that pass through stages one after the other. Each item occupies a slot from its loading to the end of its
/// last stage; item i has slot i modulo the number of slots, so the caller can keep an array of items in flight.
struct StagePipeline {
    struct Stage {
        bool isInOrder = false;  ///< One item at a time, in their order; else any number at once, in any order.
        std::function<void(std::size_t slot)> work;
    };

    /// Loads the next item into the slot; never called concurrently with itself. @return false when there is none.
    std::function<bool(std::size_t slot)> load;
    std::vector<Stage> stages;  ///< At least one; the last one is in order.
};

/// Runs stage pipelines. What one call of a pipeline's function writes is visible to all later calls.
class Executor {
public:
    virtual ~Executor() = default;
    /// @return the number of slots, that is, of items that may be in flight; constant.
    virtual std::size_t maxInFlight() const = 0;
    /// Returns when all items have passed. @throws what a function of the pipeline throws first; stages that are
    /// running then complete, and no other begins.
    virtual void run(const StagePipeline& pipeline) = 0;
};

/// Says which tasks of a pipeline may run now, and thereby decides that ordered stages keep their order. It calls no
/// function of the pipeline, so a test can drive it through every order that threads could produce.
///
/// The items in flight are those in [done, loaded); there are never more than slots, so no two share one. An item runs
/// one stage at a time. Stage s of item i is runnable when i has completed stage s - 1 and, where s is in order, all
/// items before i have completed s. As the last stage is in order, items are done in their order.
/// Threads: one at a time.
class TaskScheduler {
public:
    /// Loading of an item, or a stage of it.
    struct Task {
        std::uint64_t item = 0;
        std::size_t stage = loading;

        bool operator==(const Task&) const = default;
    };
    static constexpr std::size_t loading = SIZE_MAX;

    /// @param pipeline outlives this.
    TaskScheduler(const StagePipeline& pipeline, std::size_t maxInFlight);

    /// @return all tasks that may begin now, those of the oldest items first, loading last.
    std::vector<Task> runnableTasks() const;
    /// @param task one of runnableTasks.
    void begin(const Task& task);
    /// @param isLoaded for a loading: there was an item.
    void end(const Task& task, bool isLoaded = true);
    /// No task begins any more.
    void close();
    /// @return whether no task runs and none will.
    bool isOver() const;
    std::size_t slotOf(const Task& task) const { return task.item % items.size(); }

private:
    struct Item {
        std::size_t stage = 0;  ///< The next one, or the one that runs.
        bool isBusy = false;
    };
    bool mayBegin(std::uint64_t item) const;

    const StagePipeline& pipeline;
    std::vector<Item> items;            ///< By slot.
    std::vector<std::uint64_t> passed;  ///< By stage: number of items that completed it, if it is in order.
    std::uint64_t loaded = 0;
    std::uint64_t done = 0;
    std::size_t busy = 0;  ///< Tasks that run.
    bool isLoading = false;
    bool isExhausted = false;  ///< A loading found no item.
    bool isClosed = false;
};

/// Calls the function of the task. @return false when there was nothing to load.
bool execute(const StagePipeline& pipeline, const TaskScheduler::Task& task, std::size_t slot);

}  // namespace velmorak
