#pragma once

#include "columnar/ColumnSource.h"
#include "columnar/PartCache.h"
#include "parquet/ChunkPages.h"
#include "parquet/ListWalk.h"

#include <functional>
#include <memory>
#include <optional>

namespace velmorak::parquet {

/// The columns of a Parquet file.
class ParquetColumns : public columnar::ColumnSource {
public:
    /// @throws Failure if the file is missing or its description is damaged.
    explicit ParquetColumns(const std::filesystem::path& path);

    const FileMetadata& metadata() const { return description; }
    const std::filesystem::path& path() const override { return file.path(); }
    std::uint64_t rows() const override { return firstRows.back(); }
    std::size_t size() const override { return columns.size(); }
    /// Values of integer and boolean columns are real if some may be missing.
    ColumnInfo info(std::size_t position) const override;
    const std::string& complaint(std::size_t position) const override { return columns[position].complaint; }
    ColumnPtr read(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const override;
    /// By the least and greatest values that the row groups tell.
    bool isBeyond(std::size_t position, const ColumnBound& bound, std::uint64_t first,
                  std::uint64_t rows) const override;

private:
    struct Range;

    void checkGroups();
    bool hasMissing(std::size_t leaf) const;
    const Leaf& leafOf(std::size_t position) const { return leaves[columns[position].leaf]; }
    const ColumnChunk& chunkOf(const Range& range) const;
    ColumnPtr readGroups(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows,
                         const std::function<ColumnPtr(const Range&)>& read) const;
    ColumnPtr readValues(const Range& range, std::uint64_t rows, Column& target) const;
    ColumnPtr readLists(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const;
    void walkLists(const Range& range, ListWalk& walk) const;
    std::shared_ptr<const ChunkPages> pagesOf(const Range& range, std::optional<ColumnType> type) const;
    std::shared_ptr<const DecodedPage> decoded(const Range& range, const ChunkPages& found, std::size_t page,
                                               std::uint64_t used) const;

    columnar::FileBytes file;
    FileMetadata description;
    std::vector<Leaf> leaves;
    std::vector<columnar::NestedColumn> columns;
    std::vector<std::uint64_t> firstRows;  ///< Of each row group; at the end, the number of all rows.
    mutable columnar::PartCache<ChunkPages> chunks;
    mutable columnar::PartCache<DecodedPage> pages;
    mutable columnar::PartCache<PageLevels> levels;
};

}  // namespace velmorak::parquet
