#pragma once

#include "run/RunState.h"
#include "run/pass/ChunkTask.h"
#include "run/pass/FileStates.h"
#include "run/pass/OperatorChain.h"
#include "run/pass/SourceSet.h"

#include <cstddef>

namespace velmorak {

/// Takes the chunks of a pass in their order, after the operators have worked on them in any order, and ends the pass.
///
/// All that decides a result happens here, one chunk after the other: states are merged, the first failure of an
/// operator in chunk order is reported and the operator dropped, and a segment that nothing needs any more is closed.
/// Chunks that are on their way when that happens were worked on in vain; their outputs are ignored. So results and
/// failures are the same for any number of threads.
class ChunkCommit {
public:
    /// @param state, sources and chain outlive this.
    ChunkCommit(RunState& state, SourceSet& sources, OperatorChain& chain);

    /// From now on, states of files are taken from there, and kept there. @param states outlives this.
    void keepWith(FileStates& states) { fileStates = &states; }

    void commit(ChunkTask& task);
    /// Reports rows, times and failures, and finishes the accumulators. Called once, after the last chunk.
    void finish();
    /// The same, but finishes no accumulator. @return false if not all rows were read.
    bool finishPart();

private:
    ChunkPlace placeFor(const Operator& op, const ChunkTask& task) const;
    void commitOperator(std::size_t position, ChunkTask& task);
    void reportOperators();
    void finishAccumulator(Operator& op);

    RunState& state;
    SourceSet& sources;
    OperatorChain& chain;
    FileStates* fileStates = nullptr;
};

}  // namespace velmorak
