#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace velmorak {

/// Items that pass a row of stages. Each item stands in a place until its last stage is done, and the next but so many
/// takes the place after it.
struct StagePipeline {
    struct Stage {
        bool isInOrder = false;  ///< One item after the other; else any number at once, in any order.
        std::function<void(std::size_t slot)> work;
    };

    /// Puts the next item into the place; called for one after the other. @return false when there is none.
    std::function<bool(std::size_t slot)> load;
    std::vector<Stage> stages;  ///< The last one is in order.
};

/// Who works on a line. What is written in one call of a line is seen by all that follow.
class Executor {
public:
    virtual ~Executor() = default;
    /// How many items may be on their way; the same for as long as it lives.
    virtual std::size_t maxInFlight() const = 0;
    /// Returns when all items have passed. @throws what the line throws; the items that are on their way end then.
    virtual void work(const StagePipeline& line) = 0;
};

/// Knows what may be done on a line next, and in doing so decides that stages keep their order.
/// Threads: one at a time.
class TaskScheduler {
public:
    /// Loads an item, or does a stage of it.
    struct Task {
        std::uint64_t item = 0;
        std::size_t stage = loading;

        bool operator==(const Task&) const = default;
    };
    static constexpr std::size_t loading = SIZE_MAX;

    /// @param line outlives this.
    TaskScheduler(const StagePipeline& line, std::size_t maxInFlight);

    /// All tasks that may be done now, those of the oldest items first, loading last. None may be begun twice.
    std::vector<Task> runnableTasks() const;
    void begin(const Task& task);
    /// @param isLoaded of a loading: there was an item.
    void end(const Task& task, bool isLoaded = true);
    /// No item is loaded, and no stage begun, any more.
    void close();
    /// Nothing is on its way, and nothing will be.
    bool isOver() const;
    std::size_t slotOf(const Task& task) const { return task.item % items.size(); }

private:
    struct Item {
        std::size_t stage = 0;  ///< To be done next.
        bool isBusy = false;
    };
    bool mayBegin(std::uint64_t item) const;

    const StagePipeline& line;
    std::vector<Item> items;            ///< By place.
    std::vector<std::uint64_t> passed;  ///< By stage: items that are through, where it is in order.
    std::uint64_t loaded = 0;
    std::uint64_t done = 0;
    std::size_t busy = 0;
    bool isLoading = false;
    bool isExhausted = false;
    bool isClosed = false;
};

/// Does a task. @return false when there was nothing to load.
bool execute(const StagePipeline& line, const TaskScheduler::Task& task, std::size_t slot);

}  // namespace velmorak
