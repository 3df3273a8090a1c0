#pragma once

#include "root/ntuple/NTuplePage.h"

#include <velmorak/Table.h>

namespace velmorak::root {

/// A column of an RNTuple as a table: a leaf of its fields, reached through records, collections and arrays; or the
/// counts of a collection in others.
struct NTupleTableColumn {
    enum class Content {
        Values,
        Counts,  ///< Number of items of each collection at the end of the path.
        Rows,    ///< For each item, the position of its collection among all of its entry.
    };
    Content content = Content::Values;
    std::string name;
    std::string typeName;
    ColumnInfo info;
    std::string complaint;          ///< Why the column cannot be read; empty if it can.
    std::vector<std::size_t> path;  ///< Fields from the top to the leaf or the collection.
};

/// An RNTuple of a file.
/// Threads: after construction, all operations may be called on several threads at once.
class NTuple {
public:
    /// @param file must outlive this.
    /// @throws Failure if a description is damaged.
    NTuple(const File& file, const Entry& entry);

    std::uint64_t entries() const { return schema.entries; }
    const std::vector<NTupleTableColumn>& columns() const { return all; }
    const std::string& description() const { return schema.description; }
    /// Changes with the content.
    std::uint64_t checksum() const { return schema.footerChecksum; }

    /// Average memory of an entry's texts or list values; 0 for other columns.
    double variableBytes(const NTupleTableColumn& column) const;

    /// @throws Failure if the column cannot be read or its pages are damaged.
    ColumnPtr read(const NTupleTableColumn& column, std::uint64_t first, std::size_t rows) const;

private:
    void addField(std::size_t field, const std::string& name, std::vector<std::size_t> above);
    void addLeaf(std::size_t field, const std::string& name, std::vector<std::size_t> above);
    void addLevel(std::size_t field, const std::string& name, const std::vector<std::size_t>& above);
    bool isListAt(const std::vector<std::size_t>& fields) const;
    ColumnType typeOf(const NTupleField& field, std::size_t position) const;
    std::vector<std::size_t> childrenOf(std::size_t field) const;
    /// The columns of a field, in order, in the representation used by the cluster.
    std::vector<std::size_t> columnsOf(std::size_t field, const NTupleCluster* cluster) const;
    std::size_t sourceOf(std::size_t field) const;
    /// The column with the ends of a collection's items.
    std::size_t indicesOf(std::size_t field, const NTupleCluster& cluster) const;

    void appendRows(const NTupleTableColumn& column, const NTupleCluster& cluster, std::uint64_t first,
                    std::uint64_t last, Column& target) const;
    /// Items of a field in one cluster.
    struct Items {
        std::vector<std::uint64_t> bounds;  ///< Where those of each row begin, and where the last ones end.
        std::uint64_t total = 0;            ///< In the cluster.
    };
    void enter(std::size_t field, const NTupleCluster& cluster, Items& items) const;
    void appendLevel(const NTupleTableColumn& column, const NTupleCluster& cluster, const Items& items,
                     Column& target) const;
    std::uint64_t endOfAll(std::size_t column, const NTupleCluster& cluster, std::uint64_t total) const;
    void appendLeaf(std::size_t field, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                    std::uint64_t last, Column& target) const;
    void appendTexts(std::size_t field, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                     std::uint64_t last, Column& target) const;
    /// @param total elements of the column in the cluster, including those before its first page.
    Elements elements(std::size_t column, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                      std::uint64_t last) const;

    const File& file;
    std::string path;
    NTupleSchema schema;
    std::vector<NTupleTableColumn> all;
};

}  // namespace velmorak::root
