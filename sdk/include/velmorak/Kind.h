#pragma once

#include <velmorak/Collection.h>
#include <velmorak/Failure.h>
#include <velmorak/Ports.h>
#include <velmorak/Run.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What the author of a plug-in kind includes. A kind takes one of five shapes, and writes only what differs:
/// Source (yields chunks), RowWise (chunk to chunk), Concatenation (tables one after the other), Accumulator (state per
/// chunk, merged, finished), Function (values to values).
namespace velmorak {

/// Reads a table from front to back. One thread at a time, but for complete.
class TableReader {
public:
    virtual ~TableReader() = default;
    virtual const Schema& schema() const = 0;
    /// Fills the next chunk: chunkRows rows, fewer only in the last one. Numbers are set by the run.
    /// @return false when there are no more rows; the chunk is then without rows.
    virtual bool next(Chunk& chunk) = 0;
    /// Does what next left to do: where next sets only the number of rows, this makes the columns of a chunk, from its
    /// number and firstRow. Not called for a chunk that nothing wants.
    /// Threads: several at once, for different chunks, also while next makes later ones.
    virtual void complete(Chunk& /*chunk*/) const {}
    /// Part of the work done, 0 to 1, by bytes or rows; nothing when unknown.
    virtual std::optional<double> fraction() const { return std::nullopt; }
};

/// Yields a table.
class Source : public Kind {
public:
    /// Opened anew for each pass over the table. The table is the kind's only output of type table.
    virtual std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const = 0;
    /// Whether files and open may also be called while no run is going on, to show a user the columns of the table.
    /// They then take no longer than it takes to read the beginning of a file; the context tells them to stop when it
    /// is enough.
    virtual bool tellsColumns() const { return false; }
    /// Files whose content decides what open yields, for the result store.
    virtual std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const;
};

/// What a row-wise kind does, made for one schema and one set of values.
/// Threads: apply is called by several threads at once, for different chunks.
class RowOperation {
public:
    virtual ~RowOperation() = default;
    virtual const Schema& schema() const = 0;  ///< Of the chunks that apply yields.
    virtual Chunk apply(const Chunk& chunk) const = 0;
    /// Whether apply looks at Chunk::rowsBefore. The run then counts the rows that come to it, in their order.
    virtual bool countsRows() const { return false; }
    /// Asked where countsRows. Once false for a row it stays so for those after it: apply is not called for chunks that
    /// begin there, and a source is not read on for rows that nothing wants.
    virtual bool wantsRow(std::uint64_t /*row*/) const { return true; }
};

/// Makes a table of a table, row by row. Its input of type table is its only one, and so is its output.
class RowWise : public Kind {
public:
    /// @throws Failure when schema and values do not go together.
    virtual std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                                  RunContext& context) const = 0;
};

/// Makes one table of several: the rows of each input of type table one after the other, in the order of the inputs.
class Concatenation : public Kind {
public:
    /// @param schemas of the tables.
    /// @return an operation for each of them; all yield the same schema.
    /// @throws Failure when values and schemas do not go together.
    virtual std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments& arguments,
                                                               const std::vector<Schema>& schemas,
                                                               RunContext& context) const = 0;
};

/// What an accumulator has gathered. A state is filled by one thread.
class AccumulatorState {
public:
    virtual ~AccumulatorState() = default;
    virtual void fill(const Chunk& chunk) = 0;
    /// Takes in what stands after this state in chunk order. other is of the same class.
    virtual void merge(AccumulatorState& other) = 0;
};

/// What an accumulator does, made for one schema and one set of values.
/// Threads: newState is called by several threads at once.
class Accumulation {
public:
    virtual ~Accumulation() = default;
    virtual std::unique_ptr<AccumulatorState> newState() const = 0;
    /// Called once, with the state of the whole stream; with an empty state when there was no chunk.
    virtual void finish(AccumulatorState& state, Results& results) = 0;
};

/// Makes values of a table. Each chunk fills a state of its own; states are merged pairwise in a tree that depends on
/// the chunk numbers alone, so that the result has the same bits for any number of threads. A kind whose states must
/// be taken in strictly from first to last, because they are written out, says so.
class Accumulator : public Kind {
public:
    enum class MergeOrder { Tree, FirstToLast };
    virtual MergeOrder mergeOrder() const { return MergeOrder::Tree; }

    /// @param schema of the table; null when the input takes anything and something else than a table is wired, or
    ///               nothing: the run then calls newState and finish without a fill.
    /// @throws Failure when schema and values do not go together.
    virtual std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                                  RunContext& context) const = 0;
};

/// Makes values of values.
class Function : public Kind {
public:
    virtual void evaluate(const Arguments& arguments, Results& results, RunContext& context) const = 0;
};

}  // namespace velmorak
