#include "run/pass/MergeTree.h"

#include <bit>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

constexpr unsigned maxLevel = 62;

struct Range {
    std::uint64_t first = 0;
    unsigned level = 0;
    std::uint64_t end = 0;
};

/// The smallest aligned range that holds both nodes.
Range around(const AlignedNode& left, const AlignedNode& right) {
    const auto level = static_cast<unsigned>(std::bit_width(left.first ^ (right.end() - 1)));
    const std::uint64_t count = std::uint64_t{1} << level;
    const std::uint64_t first = left.first / count * count;
    return {first, level, first + count};
}

bool isAligned(const AlignedNode& node) {
    return node.level <= maxLevel && node.first <= (std::uint64_t{1} << maxLevel) - (std::uint64_t{1} << node.level) &&
           node.first % (std::uint64_t{1} << node.level) == 0;
}

}  // namespace

void AlignedMerger::add(AlignedNode node) {
    if (!isAligned(node)) {
        throw std::logic_error("a node of the tree of states is not aligned");
    }
    if (node.first < (nodes.empty() ? begin : nodes.back().end())) {
        throw std::logic_error("a node of the tree of states does not follow the previous one");
    }
    mergeNodesBefore(node.first);
    nodes.push_back(std::move(node));
    mergeNodesBefore(nodes.back().end());
}

/// Ranges of neighbouring pairs grow from the last node to the first, so that the last pair is the next to be merged.
void AlignedMerger::mergeNodesBefore(std::uint64_t end) {
    while (nodes.size() > 1) {
        AlignedNode& left = nodes[nodes.size() - 2];
        const Range joint = around(left, nodes.back());
        if (joint.first < begin || joint.end > end) {
            return;
        }
        left.state->merge(*nodes.back().state);
        left.first = joint.first;
        left.level = joint.level;
        nodes.pop_back();
    }
}

std::unique_ptr<AccumulatorState> AlignedMerger::whole() {
    if (nodes.empty()) {
        return nullptr;
    }
    mergeNodesBefore(std::numeric_limits<std::uint64_t>::max());
    std::unique_ptr<AccumulatorState> state = std::move(nodes.front().state);
    nodes.clear();
    return state;
}

std::vector<AlignedNode> AlignedMerger::release() {
    return std::exchange(nodes, {});
}

MergeTree::MergeTree(ChunkPlace begin)
    : begin(begin), file(begin.file), chunks(begin.chunk), files(begin.file + (begin.chunk > 0 ? 1 : 0)) {}

void MergeTree::take(ChunkPlace place, std::unique_ptr<AccumulatorState> state) {
    take({false, place.file, {place.chunk, 0, std::move(state)}});
}

void MergeTree::take(TreeNode part) {
    if (part.holdsFiles) {
        endFile();
        file = part.node.end();
        files.add(std::move(part.node));
        return;
    }
    if (part.file != file) {
        if (part.file < file) {
            throw std::logic_error("a file of the tree of states does not follow the previous one");
        }
        endFile();
        file = part.file;
    }
    chunks.add(std::move(part.node));
}

void MergeTree::endFile() {
    if (isFirstFileCut() && file == begin.file) {
        for (AlignedNode& node : chunks.release()) {
            firstParts.push_back({false, file, std::move(node)});
        }
    } else if (!chunks.isEmpty()) {
        std::unique_ptr<AccumulatorState> whole = chunks.whole();
        if (fileListener) {
            fileListener(file, *whole);
        }
        files.add({file, 0, std::move(whole)});
    }
    chunks = AlignedMerger();
}

std::unique_ptr<AccumulatorState> MergeTree::whole() {
    if (begin != ChunkPlace{}) {
        throw std::logic_error("a tree of states that begins elsewhere has no whole");
    }
    endFile();
    return files.whole();
}

std::vector<TreeNode> MergeTree::release() {
    std::vector<TreeNode> parts = std::exchange(firstParts, {});
    for (AlignedNode& node : files.release()) {
        parts.push_back({true, 0, std::move(node)});
    }
    for (AlignedNode& node : chunks.release()) {
        parts.push_back({false, file, std::move(node)});
    }
    return parts;
}

}  // namespace velmorak
