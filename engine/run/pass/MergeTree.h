#pragma once

#include <velmorak/Kind.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace velmorak {

/// Place of a chunk in a table: its file in the list of files, and its number in that file; both counted from 0.
struct ChunkPlace {
    std::uint64_t file = 0;
    std::uint64_t chunk = 0;

    auto operator<=>(const ChunkPlace&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// 2^level neighbouring numbers, the first of which is a multiple of 2^level, and the state of those that exist.
struct AlignedNode {
    std::uint64_t first = 0;
    unsigned level = 0;
    std::unique_ptr<AccumulatorState> state;

    std::uint64_t end() const { return first + (std::uint64_t{1} << level); }
};

/// States of ascending numbers, merged along the aligned binary tree over all numbers: the node of 2^level numbers has
/// the first and the second half of them as children. A child without numbers is left out.
class AlignedMerger {
public:
    /// @param begin numbers below it may follow elsewhere, so that nodes that reach below it are not formed here.
    explicit AlignedMerger(std::uint64_t begin = 0) : begin(begin) {}

    /// Numbers between the previous node and this one do not exist.
    /// @throws std::logic_error if the node is not aligned or does not follow the previous one.
    void add(AlignedNode node);
    bool isEmpty() const { return nodes.empty(); }
    /// Calls visitor with each state, in the order of their numbers.
    template <typename Visitor>
    void visit(const Visitor& visitor) const {
        for (const AlignedNode& node : nodes) {
            visitor(*node.state);
        }
    }
    /// @return one state of all numbers; null if there are none. Leaves the merger empty.
    std::unique_ptr<AccumulatorState> whole();
    /// @return the largest nodes that can be formed as long as later numbers may follow, in order: at most 2 log2 n for
    ///         n numbers. Leaves the merger empty.
    std::vector<AlignedNode> release();

private:
    void mergeNodesBefore(std::uint64_t end);

    std::uint64_t begin;
    std::vector<AlignedNode> nodes;  ///< In ascending order.
};

/// A node of a MergeTree, to be merged elsewhere.
struct TreeNode {
    bool holdsFiles = false;  ///< The numbers of node are files; otherwise chunks of the file.
    std::uint64_t file = 0;   ///< Of the chunks.
    AlignedNode node;
};

/// Gets the state of a file before that is merged with others.
using FileListener = std::function<void(std::uint64_t file, const AccumulatorState& whole)>;

/// Merges the states of an accumulator, which arrive in the order of their chunks: the chunks of a file along an
/// aligned binary tree over their numbers, and then the files along another one. Which states meet depends only on the
/// places of the chunks, so that the result has the same bits for any number of threads, however the rows are divided
/// among several trees, and so that the state of a file does not depend on other files. The number of states alive is
/// at most the sum of log2 of the number of chunks of a file and log2 of the number of files, and 2.
class MergeTree {
public:
    /// @param begin place of the first chunk, if the chunks before it are merged elsewhere.
    explicit MergeTree(ChunkPlace begin = {});

    /// Calls the listener with the state of each file whose chunks were all taken here.
    void setFileListener(FileListener listener) { fileListener = std::move(listener); }

    /// @throws std::logic_error for a place that does not follow the previous one.
    void take(ChunkPlace place, std::unique_ptr<AccumulatorState> state);
    /// Takes the state of a whole file, or what release of another tree returned.
    void take(TreeNode part);
    /// Calls visitor with each state that was not merged with others yet, in the order of their chunks.
    template <typename Visitor>
    void visit(const Visitor& visitor) const {
        for (const TreeNode& part : firstParts) {
            visitor(*part.node.state);
        }
        files.visit(visitor);
        chunks.visit(visitor);
    }
    /// @return the state of all chunks; null if there are none. Leaves the tree empty.
    /// @throws std::logic_error if the tree does not begin with the first chunk.
    std::unique_ptr<AccumulatorState> whole();
    /// @return nodes for another tree, which takes them in this order, after those of previous chunks and before those
    ///         of later ones. Leaves the tree empty.
    std::vector<TreeNode> release();

private:
    bool isFirstFileCut() const { return begin.chunk > 0; }
    void endFile();

    ChunkPlace begin;
    std::uint64_t file;                ///< Whose chunks arrive.
    AlignedMerger chunks;              ///< Of that file.
    std::vector<TreeNode> firstParts;  ///< Of the first file, if it begins elsewhere, and has ended.
    AlignedMerger files;               ///< That have ended.
    FileListener fileListener;
};

}  // namespace velmorak
