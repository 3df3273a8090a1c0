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

/// A plug-in on a stream that is made of the rows of several sources, its legs: the plug-in sees those from
/// firstSegment on. One that feeds a concatenation by two ways stands on the stream twice.
struct OperatorInstance {
    std::size_t node = 0;
    std::size_t firstSegment = 0;

    bool operator==(const OperatorInstance&) const = default;
    bool operator<(const OperatorInstance& other) const {
        return node < other.node || (node == other.node && firstSegment < other.firstSegment);
    }
};

/// One passage of a stream's rows through the plug-ins that hang on it. Its sources are read one after the other, by
/// one thread at a time; chunks are worked on by all, and what they give is taken in in chunk order.
class StreamPass {
public:
    /// @param state outlives this.
    /// @param sources in the order of their rows; one may be there twice.
    /// @param places row-wise plug-ins, concatenations and accumulators, each after what feeds it.
    StreamPass(RunState& state, const std::vector<std::size_t>& sources,
               const std::vector<OperatorInstance>& maxInFlight);
    ~StreamPass();

    /// Passes all rows and settles the accumulators. A plug-in that fails is left out from there on, with all that it
    /// feeds; the others go on. A source is read no further than something wants its rows.
    /// @param workers the memory needed grows with their places.
    void execute(Executor& executor);

private:
    struct Segment;
    struct Operator;
    struct ChunkTask;

    void addOperator(const OperatorInstance& slot);
    bool open();
    void open(Segment& segment);
    void prepare(Operator& op);
    void prepareOperations(Operator& op);
    void prepareConcatenation(Operator& op, const Concatenation& kind);
    static void prepareCounting(Operator& op);
    const Schema& schemaAt(const Operator& op, std::size_t segment) const;
    std::size_t stages() const;

    void runPipeline(Executor& executor);
    bool read(ChunkTask& task);
    bool readInto(Chunk& chunk);
    void execute(ChunkTask& task, std::size_t stage);
    void executeOperator(std::size_t position, ChunkTask& task);
    bool complete(ChunkTask& task) const;
    void count(ChunkTask& task, std::size_t stage);
    static void release(ChunkTask& task);
    const Chunk* tableFor(const Operator& op, const ChunkTask& task) const;

    void commitChunk(ChunkTask& task);
    void commitOperator(std::size_t position, ChunkTask& task);
    void closeSegment(const ChunkTask& task);
    void drop(std::size_t position);
    std::optional<double> fractionOf(const Segment& segment);
    void showProgress();
    void finish();
    void reportOperators();
    void finishAccumulator(Operator& op);

    RunState& state;
    std::vector<std::unique_ptr<Segment>> segments;
    std::vector<std::unique_ptr<Operator>> operators;
    std::map<OperatorInstance, std::size_t> maxInFlight;  ///< Positions in steps.
    std::vector<std::unique_ptr<ChunkTask>> tasks;        ///< By place, one for each chunk that may be on its way.
    std::atomic<bool> hasWork = true;                     ///< Some step is not dropped.
    std::size_t segmentBeingRead = 0;
    std::uint64_t chunks = 0;
    double fractionShown = 0.0;
    std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
    std::optional<NodeError> sourceError;  ///< Of the leg being read.
    std::optional<NodeError> chunkError;   ///< Of a source that could not complete a chunk; in chunk order.
    std::size_t segmentOfChunkError = 0;
};

}  // namespace velmorak
