#pragma once

#include "run/RunState.h"
#include "run/pass/OperatorChain.h"
#include "run/pass/SourceSet.h"

#include <atomic>
#include <cstddef>
#include <map>
#include <memory>

namespace velmorak {

/// Keeps the first rows of each table of a pass for a listener that asks for them, so that one can look at every wire.
/// They are the same for any number of threads.
class TableHeads {
public:
    /// @param state, sources and chain outlive this.
    TableHeads(RunState& state, const SourceSet& sources, OperatorChain& chain);

    /// Called when the columns of all tables are known.
    void begin();
    /// Takes copies of rows of a chunk as long as they are wanted.
    /// Threads: several at once, for different chunks.
    void take(ChunkTask& task) const;
    /// Called for each chunk in their order.
    void commit(ChunkTask& task);
    /// Tells of the tables that have fewer rows.
    void end();

private:
    struct Table {
        TableHead head;
        std::size_t rows = 0;
        std::atomic<bool> isWanted = true;
    };

    void add(std::size_t node, const Schema& schema);
    const Table* wantedOf(std::size_t node) const;
    void append(std::size_t node, std::optional<Chunk> rows);
    void publish(Table& table);

    RunState& state;
    const SourceSet& sources;
    OperatorChain& chain;
    std::map<std::size_t, std::unique_ptr<Table>> tables;  ///< By node; not changed during the pass.
    std::atomic<std::size_t> left = 0;                     ///< Tables that are wanted.
};

}  // namespace velmorak
