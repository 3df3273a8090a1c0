#pragma once

#include "RunState.h"
#include "StateMerger.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

namespace velmorak {

/// One passage of a source's rows through the row-wise plug-ins and accumulators that hang on it. The source is read
/// by one thread at a time, chunks are worked on by all, and what they give is taken in in chunk order.
class StreamPass {
public:
    /// @param state outlives this.
    /// @param nodes row-wise plug-ins and accumulators downstream of the source, each after what feeds it.
    StreamPass(RunState& state, std::size_t source, const std::vector<std::size_t>& nodes);
    ~StreamPass();

    /// Passes all rows and settles the accumulators. A plug-in that fails is left out from there on, with all that it
    /// feeds; the others go on.
    /// @param threads how many may work; the memory needed grows with it.
    void execute(std::size_t threads);

private:
    struct Step;
    struct Work;

    /// Makes what one thread did in its turn visible to the next one in the same place. The scheduler of the stages
    /// does so as well; but it is not ours, and a tool that checks our threads cannot see into it.
    class Turn {
    public:
        explicit Turn(std::atomic<bool>& place) : place(place) {
            static_cast<void>(place.load(std::memory_order_acquire));
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;
        ~Turn() { place.store(true, std::memory_order_release); }

    private:
        std::atomic<bool>& place;
    };

    void open();
    void prepare(Step& step);
    void pump(std::size_t threads);
    Work* read();
    void perform(Work& work);
    void performStep(std::size_t position, Work& work, std::vector<std::optional<Chunk>>& tables);
    void takeIn(Work& work);
    void takeInStep(std::size_t position, Work& work);
    void drop(std::size_t position);
    void showProgress();
    void finish();
    void finishAccumulator(Step& step);

    RunState& state;
    std::size_t source;
    std::unique_ptr<TableReader> reader;
    std::vector<std::unique_ptr<Step>> steps;
    std::vector<std::unique_ptr<Work>> works;  ///< One for each chunk that may be on its way; they are used again.
    std::atomic<bool> reading = false;         ///< Places of turns, as is the one in each work.
    std::atomic<bool> takingIn = false;
    std::atomic<bool> hasWork = true;  ///< Some step is not dropped.
    std::uint64_t chunks = 0;
    std::uint64_t rows = 0;
    double fractionShown = 0.0;
    std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
    std::chrono::nanoseconds readingTime{0};
    std::optional<Problem> sourceProblem;
};

}  // namespace velmorak
