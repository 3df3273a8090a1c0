#pragma once

#include <velmorak/Collection.h>
#include <velmorak/Failure.h>
#include <velmorak/Ports.h>
#include <velmorak/Run.h>
#include <velmorak/TableReader.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The header for authors of plug-in kinds. A kind derives from one of five base classes: Source (produces chunks),
/// RowWise (chunk to chunk), Concatenation (tables one after the other), Accumulator (one state per chunk, merged, then
/// finished) or Function (values to values). Reading, threads, caching and wiring are left to the run.
namespace velmorak {

/// Produces a table.
class Source : public Kind {
public:
    /// Called once for each pass over the table, which is the kind's only output of type table.
    virtual std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const = 0;
    /// Whether files and open may also be called outside of a run, to show the user the columns of the table. They must
    /// then be no slower than reading the beginning of a file; RunContext::isStopping() limits their time.
    virtual bool tellsColumns() const { return false; }
    /// The files on whose content the table depends: part of the key of cached results.
    virtual std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const;
};

/// A row-wise kind prepared for one schema and one set of values.
/// Threads: apply is called by several threads at once, for different chunks.
class RowOperation {
public:
    virtual ~RowOperation() = default;
    virtual const Schema& schema() const = 0;  ///< Of the chunks that apply returns.
    virtual Chunk apply(const Chunk& chunk) const = 0;
    /// Called once, before the first apply. A column that nobody uses costs no time in the source.
    /// @param wanted by column of schema(): whether it is used. apply may leave the others null.
    /// @param needed by column of the input, all false: set to true for those that apply uses. The others are null in
    ///               its chunks. The default needs all.
    virtual void markColumns(const std::vector<bool>& /*wanted*/, std::vector<bool>& needed) {
        needed.assign(needed.size(), true);
    }
    /// Whether apply uses Chunk::rowsBefore. The run then counts the rows that arrive, in order.
    virtual bool countsRows() const { return false; }
    /// Number of rows, counted from the first that comes in, after which the operation needs no more; nothing when it
    /// needs all. Used where countsRows: apply is not called for chunks that begin at the limit or after it, and a
    /// source is not read further than some operation needs its rows.
    virtual std::optional<std::uint64_t> rowLimit() const { return std::nullopt; }
};

/// Transforms a table row by row. It has one input and one output of type table.
class RowWise : public Kind {
public:
    /// @throws Failure if the values do not suit the schema.
    virtual std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                                  RunContext& context) const = 0;
};

/// Concatenates tables: the rows of each input of type table in turn, in the order of the inputs.
class Concatenation : public Kind {
public:
    /// @param schemas of the tables.
    /// @return one operation for each table; all produce the same schema.
    /// @throws Failure if the values do not suit the schemas.
    virtual std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments& arguments,
                                                               const std::vector<Schema>& schemas,
                                                               RunContext& context) const = 0;
};

class StateReader;
class StateWriter;

/// A partial result of an accumulator, filled by one thread.
class AccumulatorState {
public:
    virtual ~AccumulatorState() = default;
    virtual void fill(const Chunk& chunk) = 0;
    /// Adds the state that follows this one in chunk order. other has the same class and is not used afterwards.
    virtual void merge(AccumulatorState& other) = 0;
    /// Writes everything that fill and merge have changed, so that load gives the same bits (StateBytes.h).
    /// @throws Failure if the state cannot be saved, as the default does.
    virtual void save(StateWriter& writer) const;
    /// Reads what save wrote. Called for a new state of an accumulation with the same schema and values; it is not used
    /// after a Failure. The bytes may be damaged: load checks what it reads before using it.
    virtual void load(StateReader& reader);
};

/// An accumulator prepared for one schema and one set of values.
/// Threads: newState is called by several threads at once.
class Accumulation {
public:
    virtual ~Accumulation() = default;
    virtual std::unique_ptr<AccumulatorState> newState() const = 0;
    /// Called once, before the first newState.
    /// @param needed by column of the table, all false: set to true for those that fill uses. The others are null in
    ///               its chunks. The default needs all.
    virtual void markColumns(std::vector<bool>& needed) const { needed.assign(needed.size(), true); }
    /// Called once with the state of the whole stream; with a new state if there was no chunk.
    virtual void finish(AccumulatorState& state, Results& results) = 0;
};

/// Computes values from a table. Each chunk fills its own state; the states of a file are merged pairwise in a tree
/// that depends only on the chunk numbers, and those of several files, or tables of a concatenation, in another such
/// tree. So the result has the same bits for any number of threads, and a file has the same state among any others. A
/// kind that must merge strictly from first to last, for example because it writes the states to a file, overrides
/// mergeOrder.
class Accumulator : public Kind {
public:
    enum class MergeOrder { Tree, FirstToLast };
    virtual MergeOrder mergeOrder() const { return MergeOrder::Tree; }

    /// @param schema schema of the table; null if the input accepts any type and no table is wired to it: the run then
    ///               calls newState and finish without fill.
    /// @throws Failure if the values do not suit the schema.
    virtual std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                                  RunContext& context) const = 0;
};

/// Computes values from values.
class Function : public Kind {
public:
    virtual void evaluate(const Arguments& arguments, Results& results, RunContext& context) const = 0;
};

}  // namespace velmorak
