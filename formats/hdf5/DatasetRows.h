#pragma once

#include "hdf5/Chunks.h"
#include "hdf5/Leaves.h"

#include <velmorak/Run.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::hdf5 {

/// A dataset with one or two dimensions, of which the first counts the rows.
struct Dataset {
    Handle handle;
    std::string path{};
    std::vector<std::uint64_t> shape{};
    std::size_t elementBytes = 0;
    std::vector<Leaf> leaves{};
    bool hasStoredApart = false;  ///< The library must free what it has read.
    std::string problem{};        ///< Why it cannot be read as rows; empty if it can.

    std::uint64_t rows() const { return shape.empty() ? 1 : shape[0]; }
    /// Elements in each row.
    std::uint64_t width() const { return shape.size() < 2 ? 1 : shape[1]; }
    std::uint64_t rowBytes() const { return width() * elementBytes; }
};

/// Opens a dataset and looks at its type, shape and filters. Called under the lock.
/// @throws Failure if it cannot be opened.
Dataset openDataset(hid_t place, const std::string& name, const std::string& path);

/// A column of a dataset.
struct DatasetColumn {
    std::size_t dataset = 0;  ///< Position among the datasets of the table.
    std::size_t leaf = 0;
    std::size_t first = 0;   ///< Of a dataset with two dimensions: its element in a row.
    std::size_t offset = 0;  ///< Of the first value in a row, in bytes.
    std::size_t step = 0;    ///< Bytes from one value of a list to the next.
    std::size_t count = 1;   ///< Values in each row of a list.
    bool isList = false;
};

/// Reads rows of a dataset.
/// Threads: any number at once.
class DatasetRows {
public:
    /// @param dataset outlives this. Called under the lock.
    /// @param file for messages.
    DatasetRows(const Dataset& dataset, const std::string& file);

    /// Appends the values of rows to columns.
    /// @param targets pairs of a column of the dataset and where it goes.
    using Targets = std::vector<std::pair<const DatasetColumn*, Column*>>;
    void read(std::uint64_t first, std::size_t rows, const Targets& targets, const RunContext& context);

private:
    using Piece = std::pair<const char*, std::size_t>;  ///< Bytes of rows, and their number.

    void append(const Targets& targets, Piece piece) const;
    void readBlocks(std::uint64_t first, std::size_t rows, const Targets& targets, const RunContext& context) const;
    void readChunks(std::uint64_t first, std::size_t rows, const Targets& targets, const RunContext& context) const;
    void readByLibrary(std::uint64_t first, std::size_t rows, const DatasetColumn& column, Column& target) const;
    [[noreturn]] void fail(std::uint64_t row) const;

    const Dataset& dataset;
    std::string name;
    std::unique_ptr<Chunks> chunks;  ///< Null if the library must read the rows.
};

}  // namespace velmorak::hdf5
