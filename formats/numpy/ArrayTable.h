#pragma once

#include "numpy/ArrayHeader.h"
#include "numpy/ZipArchive.h"

#include <velmorak/Kind.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::numpy {

/// An array of a file.
struct StoredArray {
    std::string name;  ///< In an archive, without ".npy"; else empty.
    ArrayHeader header;
    std::uint64_t position = 0;         ///< Of the data in the file, unless it is packed.
    std::optional<ZipMember> packed{};  ///< Where its bytes must be unpacked.
    std::string problem{};              ///< Why it is not a table; empty if it is one.
};

/// Lists the arrays of a .npy or .npz file.
/// @throws Failure if the file cannot be read or is damaged.
std::vector<StoredArray> arraysIn(const PlainFile& file);

/// A column that arrays of a file provide.
struct ArrayColumn {
    ColumnInfo info;
    std::string problem{};
    const StoredArray* array = nullptr;
    Element element{};
    std::uint64_t offset = 0;     ///< Of the first row's element in the data.
    std::uint64_t inItem = 0;     ///< Of a field: its offset in the record or complex number.
    std::uint64_t rowStride = 0;  ///< Bytes from one row to the next.
    std::uint64_t count = 1;      ///< Elements in each row, one after the other.
    /// Of a column of lists with different lengths: the array that says where the list of each row begins.
    const StoredArray* offsets = nullptr;

    std::uint64_t rows() const { return offsets ? offsets->header.rows() - 1 : array->header.rows(); }
};

/// @return the array NAME.offsets of an array NAME of lists; null if the array holds none.
const StoredArray* offsetsOf(const StoredArray& array, const std::vector<StoredArray>& arrays);

/// @param names whether the columns have the name of the array, because there are others.
std::vector<ArrayColumn> columnsOf(const StoredArray& array, bool names);

/// Reads columns of arrays with the same number of rows. Stored arrays are read and decoded on any thread, packed ones
/// by next.
/// @param columns all can be read.
/// @param arrays  that the columns refer to.
std::unique_ptr<TableReader> openArrays(std::shared_ptr<const PlainFile> file, std::vector<StoredArray> arrays,
                                        std::vector<ArrayColumn> columns, std::uint64_t rows, RunContext& context);

}  // namespace velmorak::numpy
