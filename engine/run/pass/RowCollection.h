#pragma once

#include <velmorak/Kind.h>
#include <velmorak/RowMemory.h>
#include <velmorak/StoredTable.h>

#include <memory>
#include <utility>

namespace velmorak {

/// Collects the rows of a stream for a plug-in that needs them as a whole: in memory up to the limit of the run, beyond
/// it in a temporary file. Its states are merged from first to last.
class RowCollection : public Accumulation {
public:
    RowCollection(Schema schema, std::shared_ptr<MemoryBudget> memory)
        : schema(std::move(schema)), memory(std::move(memory)) {}

    std::unique_ptr<AccumulatorState> newState() const override;
    void finish(AccumulatorState& /*state*/, Results& /*results*/) override {}

    /// @param state of the whole stream.
    static std::shared_ptr<const StoredTable> tableOf(AccumulatorState& state);

private:
    Schema schema;
    std::shared_ptr<MemoryBudget> memory;
};

}  // namespace velmorak
