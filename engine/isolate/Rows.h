#pragma once

#include "isolate/Helper.h"

#include <velmorak/EndedOperation.h>
#include <velmorak/OrderedRows.h>
#include <velmorak/RowBounds.h>

#include <memory>
#include <optional>
#include <vector>

namespace velmorak::isolation {

/// What a helper process says of an operation that it has prepared.
struct PreparedRows {
    std::uint64_t number = 0;
    Schema schema;
    bool countsRows = false;
    std::optional<std::uint64_t> rowLimit;
    bool isOrdered = false;
    bool isEnded = false;    ///< It wants to know the end of the rows.
    bool isBounded = false;  ///< It knows bounds of the rows that it keeps.
};

/// A row operation in a helper process.
class IsolatedRows : public RowOperation, public EndedOperation, public BoundedOperation {
public:
    IsolatedRows(std::shared_ptr<Helper> helper, PreparedRows prepared);
    ~IsolatedRows() override;

    const Schema& schema() const override { return prepared.schema; }
    Chunk apply(const Chunk& chunk) const override { return applied(chunk, 0); }
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;
    bool countsRows() const override { return prepared.countsRows; }
    std::optional<std::uint64_t> rowLimit() const override { return prepared.rowLimit; }
    void end() override;
    std::vector<ColumnBound> bounds() const override;

protected:
    /// @param seen number of what look has found; 0 for nothing.
    Chunk applied(const Chunk& chunk, std::uint64_t seen) const;
    std::shared_ptr<const void> seenIn(const Chunk& chunk);

private:
    const std::shared_ptr<Helper> helper;
    const PreparedRows prepared;
};

/// One that is told apart by having the second base.
class IsolatedOrderedRows : public IsolatedRows, public OrderedRows {
public:
    using IsolatedRows::IsolatedRows;
    std::shared_ptr<const void> look(const Chunk& chunk) override { return seenIn(chunk); }
    Chunk apply(const Chunk& chunk) const override;
};

/// @param question about preparing operations. @return null ones where the kind gives none.
std::vector<std::unique_ptr<RowOperation>> prepareOperations(const std::shared_ptr<Helper>& helper, Question& question);

}  // namespace velmorak::isolation
