#pragma once

#include <velmorak/Kind.h>
#include <velmorak/RowBounds.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::columnar {

/// The columns of a file, of which any rows can be read.
/// Threads: read may be called on several threads at once.
class ColumnSource {
public:
    virtual ~ColumnSource() = default;
    virtual const std::filesystem::path& path() const = 0;
    virtual std::uint64_t rows() const = 0;
    /// Number of columns, including those that cannot be read.
    virtual std::size_t size() const = 0;
    /// Name, type and unit.
    virtual ColumnInfo info(std::size_t position) const = 0;
    /// Why the column cannot be read; empty if it can.
    virtual const std::string& complaint(std::size_t position) const = 0;
    /// @param type of the values: that of info, or real instead of integer or boolean.
    /// @throws Failure if the file is damaged there.
    virtual ColumnPtr read(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const = 0;
    /// @param bound of a column that is read as numbers.
    /// @return whether the file says that all values of these rows fail the bound; false if it does not say that.
    virtual bool isBeyond(std::size_t /*position*/, const ColumnBound& /*bound*/, std::uint64_t /*first*/,
                          std::uint64_t /*rows*/) const {
        return false;
    }
};

/// What a file holds.
struct TableSummary {
    struct ColumnSummary {
        ColumnInfo info;
        std::string complaint;  ///< Why the column cannot be read; empty if it can.
    };

    std::uint64_t rows = 0;
    std::vector<ColumnSummary> columns;
    std::string description;  ///< How the file is divided, and who wrote it.
};

TableSummary summaryOf(const ColumnSource& source);

/// A table of columns, which are read when a chunk is completed, on any thread.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @param wanted  where it has an integer or boolean column as reals, so do the chunks; may be null.
/// @throws Failure if there is no such column, or it cannot be read.
std::unique_ptr<TableReader> openColumns(std::unique_ptr<const ColumnSource> source,
                                         const std::vector<std::string>& columns, const Schema* wanted,
                                         RunContext& context);

}  // namespace velmorak::columnar
