#pragma once

#include "run/RunState.h"
#include "run/pass/ChunkTask.h"
#include "run/pass/Operator.h"
#include "run/pass/SourceSet.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace velmorak {

/// The operators of one stream, each after those that feed it, and their work on single chunks.
///
/// An operator that counts rows must see the chunks in their order before it works on them. So the work on a chunk is
/// divided into stages: a chunk enters stage n + 1 through count, in chunk order, and passes the operators of a stage
/// in any order relative to other chunks. An operator that fails at a chunk is not called for later ones; which chunk
/// was the first to fail is decided when chunks are committed in their order, so that the outcome does not depend on
/// the number of threads.
///
/// Threads: execute and release may be called by several threads at once, for different chunks; count by one thread at
/// a time for each stage; drop by the thread that commits.
class OperatorChain {
public:
    /// @param state and sources outlive this.
    /// @param instances each after those that feed it.
    OperatorChain(RunState& state, const SourceSet& sources, const std::vector<OperatorInstance>& instances);

    /// Prepares the kinds for the columns of the open sources. Operators that fail are dropped.
    void prepare();
    std::size_t stages() const;

    /// Tells the operators of the stage how many rows come before the chunk.
    void count(ChunkTask& task, std::size_t stage);
    void execute(ChunkTask& task, std::size_t stage);
    /// Frees the tables of a chunk.
    static void release(ChunkTask& task);

    /// Drops an operator and all that it feeds.
    void drop(std::size_t position);
    /// Some operator is not dropped, or there are none: the rows are then read to be counted.
    bool hasWork() const { return isWorking; }
    /// An operator that is at work, or the lack of operators, needs the segment beyond this chunk.
    bool needsMore(const ChunkTask& task) const;
    /// Fraction done of the rows of the segment that some operator still needs. @param read that of the source.
    std::optional<double> fraction(std::size_t segment, std::optional<double> read) const;

    /// Of the table that the operator takes, or of the first of several.
    const Schema& inputSchema(std::size_t position) const {
        return schemaAt(*operators[position], operators[position]->parents.front().firstSegment);
    }
    std::size_t size() const { return operators.size(); }
    Operator& at(std::size_t position) { return *operators[position]; }

private:
    void add(const OperatorInstance& instance);
    void prepare(Operator& op);
    void prepareOperations(Operator& op);
    void prepareConcatenation(Operator& op, const Concatenation& kind);
    static void prepareCounting(Operator& op);
    const Schema& schemaAt(const Operator& op, std::size_t segment) const;
    void look(std::size_t position, ChunkTask& task, const Chunk* table);
    void executeOperator(std::size_t position, ChunkTask& task);
    const Chunk* tableFor(const Operator& op, const ChunkTask& task) const;
    std::optional<double> fractionOf(std::size_t position, std::size_t segment, std::optional<double> read) const;

    RunState& state;
    const SourceSet& sources;
    std::vector<std::unique_ptr<Operator>> operators;
    std::map<OperatorInstance, std::size_t> positions;  ///< In operators.
    std::atomic<bool> isWorking = true;
    bool completesFirst = false;  ///< An operator looks at the columns of a source in the order of the rows.
};

}  // namespace velmorak
