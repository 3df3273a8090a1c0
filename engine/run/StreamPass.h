#pragma once

#include "executor/StagePipeline.h"
#include "run/RunState.h"
#include "run/StateMerger.h"

#include <atomic>
#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace velmorak {

/// A plug-in on a stream that is made of the rows of several sources, its legs: the plug-in sees those from firstLeg
/// on. One that feeds a concatenation by two ways stands on the stream twice.
struct StepPlace {
    std::size_t node = 0;
    std::size_t firstLeg = 0;

    bool operator==(const StepPlace&) const = default;
    bool operator<(const StepPlace& other) const {
        return node < other.node || (node == other.node && firstLeg < other.firstLeg);
    }
};

/// One passage of a stream's rows through the plug-ins that hang on it. Its sources are read one after the other, by
/// one thread at a time; chunks are worked on by all, and what they give is taken in in chunk order.
class StreamPass {
public:
    /// @param state outlives this.
    /// @param sources in the order of their rows; one may be there twice.
    /// @param places row-wise plug-ins, concatenations and accumulators, each after what feeds it.
    StreamPass(RunState& state, const std::vector<std::size_t>& sources, const std::vector<StepPlace>& places);
    ~StreamPass();

    /// Passes all rows and settles the accumulators. A plug-in that fails is left out from there on, with all that it
    /// feeds; the others go on. A source is read no further than something wants its rows.
    /// @param workers the memory needed grows with their places.
    void execute(Workers& workers);

private:
    struct Leg;
    struct Step;
    struct Work;

    void addStep(const StepPlace& place);
    bool open();
    void open(Leg& leg);
    void prepare(Step& step);
    void prepareOperations(Step& step);
    void prepareConcatenation(Step& step, const Concatenation& kind);
    static void prepareCounting(Step& step);
    const Schema& schemaAt(const Step& step, std::size_t leg) const;
    std::size_t stages() const;

    void pump(Workers& workers);
    bool read(Work& work);
    bool readInto(Chunk& chunk);
    void perform(Work& work, std::size_t stage);
    void performStep(std::size_t position, Work& work);
    bool complete(Work& work) const;
    void count(Work& work, std::size_t stage);
    static void release(Work& work);
    const Chunk* tableFor(const Step& step, const Work& work) const;

    void takeIn(Work& work);
    void takeInStep(std::size_t position, Work& work);
    void closeLeg(const Work& work);
    void drop(std::size_t position);
    std::optional<double> fractionOf(const Leg& leg);
    void showProgress();
    void finish();
    void reportSteps();
    void finishAccumulator(Step& step);

    RunState& state;
    std::vector<std::unique_ptr<Leg>> legs;
    std::vector<std::unique_ptr<Step>> steps;
    std::map<StepPlace, std::size_t> places;   ///< Positions in steps.
    std::vector<std::unique_ptr<Work>> works;  ///< By place, one for each chunk that may be on its way.
    std::atomic<bool> hasWork = true;          ///< Some step is not dropped.
    std::size_t legBeingRead = 0;
    std::uint64_t chunks = 0;
    double fractionShown = 0.0;
    std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
    std::optional<Problem> sourceProblem;  ///< Of the leg being read.
    std::optional<Problem> chunkProblem;   ///< Of a source that could not complete a chunk; in chunk order.
    std::size_t legOfChunkProblem = 0;
};

}  // namespace velmorak
