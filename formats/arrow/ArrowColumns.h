#pragma once

#include "arrow/BatchBuffers.h"
#include "arrow/Elements.h"
#include "columnar/ColumnSource.h"

#include <memory>

namespace velmorak::arrow {

/// The columns of an Arrow file or stream.
class ArrowColumns : public columnar::ColumnSource {
public:
    /// @throws Failure if the file is missing or its descriptions are damaged.
    explicit ArrowColumns(const std::filesystem::path& path);

    const std::filesystem::path& path() const override { return file.path(); }
    std::uint64_t rows() const override { return firstRows.back(); }
    std::size_t size() const override { return columns.size(); }
    /// Values of integer and boolean columns are real if some are missing.
    ColumnInfo info(std::size_t position) const override;
    const std::string& complaint(std::size_t position) const override { return columns[position].complaint; }
    ColumnPtr read(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const override;

    std::size_t batches() const { return messages.batches.size(); }
    const std::string& warning() const { return messages.warning; }

private:
    /// A decoded dictionary.
    struct Values {
        Column column;
        std::size_t bytes() const;
    };

    bool hasMissing(const Leaf& leaf) const;
    Column readBatch(std::size_t position, ColumnType type, std::size_t batch, std::uint64_t first,
                     std::uint64_t last) const;
    Column valuesIn(const Leaf& leaf, ColumnType type, std::size_t batch, const BatchBuffers& parts,
                    Elements&& elements) const;
    Column lookUp(const Leaf& leaf, const std::vector<std::int64_t>& positions, std::size_t batch, ColumnType type,
                  Elements& elements) const;
    std::shared_ptr<const Values> dictionary(const Leaf& leaf, std::size_t batch, ColumnType type) const;
    std::vector<std::size_t> dictionaryParts(std::int64_t id, std::size_t batch) const;

    columnar::FileBytes file;
    Messages messages;
    std::vector<Leaf> leaves;
    std::vector<columnar::NestedColumn> columns;
    std::vector<std::uint64_t> firstRows;  ///< Of each batch; at the end, the number of all rows.
    mutable BufferCache buffers;
    mutable columnar::PartCache<Values> dictionaries;
};

}  // namespace velmorak::arrow
