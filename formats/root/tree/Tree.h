#pragma once

#include "root/container/File.h"
#include "root/objects/ObjectReader.h"
#include "root/tree/Basket.h"
#include "root/tree/BasketCache.h"
#include "root/tree/Selection.h"

#include <velmorak/Table.h>

#include <memory>
#include <string>
#include <vector>

namespace velmorak::root {

/// Location of a basket: a position in the file, or the tree's own record.
struct BasketPlace {
    std::uint64_t firstEntry = 0;
    std::uint64_t entries = 0;
    std::uint64_t position = 0;
    std::size_t bytes = 0;
    std::shared_ptr<const Object> embedded;
};

/// Layout of a column's values in the entries of its branch.
struct Layout {
    enum class Kind {
        Numbers,         ///< `length` numbers, times the count if there is one.
        FlaggedNumbers,  ///< The same after a byte that says whether there are any.
        Value,           ///< One value of `type`.
        Values,          ///< Values of `type` up to the end of the entry.
    };
    Kind kind = Kind::Numbers;
    ValueType type;
    std::size_t length = 1;
    bool hasHeader = false;  ///< An object's header comes first.
    /// Of a branch with several leaves, bytes in front of this one's.
    std::size_t before = 0;
};

/// One column of a tree.
struct TreeColumn {
    std::string name;
    std::string typeName;  ///< C++ name.
    std::string title;
    ColumnInfo info;
    std::string complaint;  ///< Why the column cannot be read; empty if it can.
    Layout layout;
    Selection selection;  ///< Of the values of its branch, for other layouts than numbers.
    std::vector<BasketPlace> baskets;
    std::uint64_t entries = 0;
    std::uint64_t bytes = 0;           ///< Of all its entries in the file, decompressed.
    std::optional<std::size_t> count;  ///< Column that says how many values an entry has.
    bool isCount = false;              ///< It says so for others, which may read it again.
};

/// A tree or ntuple of a file: its columns, and their values for any run of entries.
/// Threads: after construction, all operations may be called on several threads at once.
class Tree {
public:
    /// @param file must outlive this.
    /// @throws Failure if the tree's record is damaged.
    Tree(const File& file, const Classes& classes, const Entry& entry);

    std::uint64_t entries() const { return count; }
    const std::vector<TreeColumn>& columns() const { return all; }
    const std::string& title() const { return treeTitle; }

    /// Average memory of an entry's texts or list values; 0 for other columns.
    double variableBytes(const TreeColumn& column) const;

    /// @throws Failure if the column cannot be read or its bytes are damaged, with branch and entry.
    ColumnPtr read(const TreeColumn& column, std::uint64_t first, std::size_t rows) const;

private:
    Basket namedBasketAt(const TreeColumn& column, const BasketPlace& place) const;
    Basket basketAt(const TreeColumn& column, const BasketPlace& place) const;
    std::uint64_t appendBaskets(const TreeColumn& column, std::uint64_t first, std::uint64_t end, Column& target) const;
    void decode(const TreeColumn& column, const Basket& basket, std::uint64_t first, std::uint64_t last,
                Column& target) const;
    void addOffsets(const TreeColumn& column, Basket& basket) const;

    const File& file;
    std::string path;
    std::string treeTitle;
    std::uint64_t count = 0;
    std::vector<TreeColumn> all;
    mutable BasketCache cache;
};

}  // namespace velmorak::root
