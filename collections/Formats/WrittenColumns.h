#pragma once

#include <velmorak/Kind.h>
#include <velmorak/StateBytes.h>

#include <cstddef>
#include <vector>

namespace velmorak {

/// A file that takes the rows of a table column by column.
class ColumnFile {
public:
    virtual const Schema& schema() const = 0;
    /// @throws Failure if the file cannot be written.
    virtual void append(const std::vector<ColumnPtr>& columns, std::size_t rows) const = 0;

protected:
    ~ColumnFile() = default;
};

/// Rows on their way to a file: collected in parallel, appended in order. The state of the first rows gives them to the
/// file when they are many; others keep them.
class WrittenColumns : public AccumulatorState {
public:
    /// @param file outlives this.
    explicit WrittenColumns(const ColumnFile& file) : file(file) {}

    void fill(const Chunk& chunk) override;
    void merge(AccumulatorState& other) override;
    /// @throws Failure if rows are in the file already.
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    void handOver();

private:
    struct Rows {
        std::vector<ColumnPtr> columns;
        std::size_t count = 0;
    };

    static constexpr std::size_t maxBytesKept = std::size_t{1} << 20U;

    const ColumnFile& file;
    std::vector<Rows> rows;  ///< In order.
    std::size_t bytes = 0;
    bool hasWritten = false;
};

}  // namespace velmorak
