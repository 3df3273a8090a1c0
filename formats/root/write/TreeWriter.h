#pragma once

#include "root/write/FileWriter.h"
#include "root/write/TreeRows.h"

namespace velmorak::root {

/// Writes a table as a tree, in the memory of a few baskets.
/// Threads: one at a time.
class TreeWriter {
public:
    /// @param file and layout outlive this.
    TreeWriter(FileWriter& file, const TreeLayout& layout);

    /// @param rows bytesOfRows for consecutive rows, concatenated.
    /// @throws Failure if the file cannot be written.
    void append(std::string_view rows);
    /// Writes the tree's own record. @throws as append.
    void finish();

private:
    struct Branch {
        std::vector<std::int64_t> bytes;  ///< Of each basket, with its header.
        std::vector<std::int64_t> positions;
        std::int64_t contentBytes = 0;  ///< Of all baskets before compression.
        std::int64_t largestBasket = 0;
        std::int64_t largest = 0;  ///< See BranchValues.
    };

    void appendPending();
    void appendBaskets(const TreeRows& rows);
    void appendBasket(std::size_t position, std::uint32_t rows, const PackedBasket& basket);
    ObjectPtr leafOf(std::size_t position) const;
    ObjectPtr branchOf(std::size_t position, const std::vector<ObjectPtr>& leaves) const;
    Object tree(const std::vector<ObjectPtr>& branchObjects, const std::vector<ObjectPtr>& leaves) const;
    void describeClusters(Object& object) const;

    FileWriter& file;
    const TreeLayout& layout;
    TreeRows pending;
    std::vector<Branch> branches;
    std::vector<std::int64_t> firstRows{0};  ///< Of each basket, and the number of rows.
};

}  // namespace velmorak::root
