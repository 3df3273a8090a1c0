#pragma once

#include "executor/StagePipeline.h"
#include "run/RunState.h"
#include "run/pass/ChunkCommit.h"
#include "run/pass/LiveResults.h"
#include "run/pass/OperatorChain.h"
#include "run/pass/SourceSet.h"
#include "run/pass/TableHeads.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <vector>

namespace velmorak {

/// One pass of a stream's rows through the operators on it: SourceSet reads chunks, one at a time; OperatorChain works
/// on several at once; ChunkCommit takes them in chunk order. Memory grows with the number of chunks in flight, not
/// with the number of rows.
class StreamPass {
public:
    /// @param state outlives this.
    /// @param sources in the order of their rows; one may occur twice.
    /// @param operators row-wise plug-ins, concatenations and accumulators, each after those that feed it.
    /// @param range chunks to read.
    StreamPass(RunState& state, const std::vector<std::size_t>& sources, const std::vector<OperatorInstance>& operators,
               const PassRange& range = {});

    /// States of files are taken from there, and kept there. Called before execute. @param states outlives this.
    void keepWith(FileStates& states) {
        fileStates = &states;
        chunks.keepWith(states);
    }

    /// Passes all rows and finishes the accumulators. A plug-in that fails is left out from there on, with all that it
    /// feeds; the others go on. A source is read no further than some operator needs its rows.
    void execute(Executor& executor);

    /// The steps of execute, for a pass whose states come from elsewhere, or go there.
    /// @return false if no rows are to be read.
    bool prepare();
    void readRows(Executor& executor);
    void finish() { chunks.finish(); }
    /// Reports rows and failures; the accumulators are not finished. @return false if not all rows were read.
    bool finishPart() { return chunks.finishPart(); }

    SourceSet& tables() { return sources; }
    OperatorChain& operators() { return chain; }

private:
    StagePipeline stages();
    bool read(ChunkTask& task);
    void commit(ChunkTask& task);
    void showProgress();

    RunState& state;
    SourceSet sources;
    OperatorChain chain;
    ChunkCommit chunks;
    TableHeads heads;
    LiveResults live;
    FileStates* fileStates = nullptr;
    std::vector<std::unique_ptr<ChunkTask>> tasks;  ///< By slot: one for each chunk in flight.
    double fractionShown = 0.0;                     ///< Never falls.
    std::chrono::steady_clock::time_point began = std::chrono::steady_clock::now();
};

}  // namespace velmorak
