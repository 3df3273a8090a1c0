#include "run/pass/MergeTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

/// Shows which states met.
struct Bracketed : AccumulatorState {
    explicit Bracketed(std::string text) : text(std::move(text)) {}
    void fill(const Chunk&) override {}
    void merge(AccumulatorState& other) override {
        text = "(" + text + " " + dynamic_cast<Bracketed&>(other).text + ")";
    }
    std::string text;
};

std::string textOf(const std::unique_ptr<AccumulatorState>& state) {
    return state ? dynamic_cast<const Bracketed&>(*state).text : "none";
}

std::string nameOf(ChunkPlace place) {
    return std::string(1, static_cast<char>('a' + place.file)) + std::to_string(place.chunk);
}

void take(MergeTree& tree, ChunkPlace place) {
    tree.take(place, std::make_unique<Bracketed>(nameOf(place)));
}

std::string textOfFiles(const std::vector<std::uint64_t>& chunksOfFiles) {
    MergeTree tree;
    for (std::uint64_t file = 0; file < chunksOfFiles.size(); ++file) {
        for (std::uint64_t chunk = 0; chunk < chunksOfFiles[file]; ++chunk) {
            take(tree, {file, chunk});
        }
    }
    return textOf(tree.whole());
}

TEST(MergeTree, mergesNeighboursOfTheSameLevel) {
    EXPECT_EQ(textOfFiles({}), "none");
    EXPECT_EQ(textOfFiles({1}), "a0");
    EXPECT_EQ(textOfFiles({4}), "((a0 a1) (a2 a3))");
    EXPECT_EQ(textOfFiles({7}), "(((a0 a1) (a2 a3)) ((a4 a5) a6))");
}

TEST(MergeTree, mergesFilesOnlyWhenTheyAreWhole) {
    EXPECT_EQ(textOfFiles({3, 1, 2}), "((((a0 a1) a2) b0) (c0 c1))");
    EXPECT_EQ(textOfFiles({1, 1, 1, 1}), "((a0 b0) (c0 d0))");
}

TEST(MergeTree, leavesOutFilesWithoutChunks) {
    EXPECT_EQ(textOfFiles({0, 2, 0, 0, 1}), "((b0 b1) e0)");
    EXPECT_EQ(textOfFiles({1, 0, 1, 1}), "(a0 (c0 d0))") << "the others keep their places";
}

TEST(MergeTree, keepsTheLargestNodesOfAPart) {
    MergeTree tree({0, 3});
    for (std::uint64_t chunk = 3; chunk < 11; ++chunk) {
        take(tree, {0, chunk});
    }
    std::vector<std::string> nodes;
    for (const TreeNode& part : tree.release()) {
        EXPECT_FALSE(part.holdsFiles);
        nodes.push_back(std::to_string(part.node.first) + "+" + std::to_string(part.node.end() - part.node.first));
    }
    EXPECT_EQ(nodes, (std::vector<std::string>{"3+1", "4+4", "8+2", "10+1"}));
}

TEST(MergeTree, refusesStatesThatAreOutOfOrder) {
    MergeTree tree;
    take(tree, {1, 5});
    EXPECT_THROW(take(tree, {1, 5}), std::logic_error);
    EXPECT_THROW(take(tree, {0, 9}), std::logic_error);
    EXPECT_THROW(tree.take({true, 0, {0, 1, std::make_unique<Bracketed>("files")}}), std::logic_error);
    MergeTree other;
    EXPECT_THROW(other.take({false, 0, {1, 1, std::make_unique<Bracketed>("odd")}}), std::logic_error);
    EXPECT_THROW(other.take({false, 0, {0, 70, std::make_unique<Bracketed>("huge")}}), std::logic_error);
    EXPECT_THROW(MergeTree({0, 1}).whole(), std::logic_error);
}

/// A state for which the order of merging and its brackets show in every bit.
struct Mixed : AccumulatorState {
    explicit Mixed(std::uint64_t value) : value(value) {}
    void fill(const Chunk&) override {}
    void merge(AccumulatorState& other) override { value = mix(value, dynamic_cast<Mixed&>(other).value); }
    static std::uint64_t mix(std::uint64_t left, std::uint64_t right) {
        return (left * 0x9e3779b97f4a7c15U ^ std::rotl(right, 23)) * 0xd1342543de82ef95U + 1;
    }
    std::uint64_t value;
};

std::uint64_t valueOf(const std::unique_ptr<AccumulatorState>& state) {
    return state ? dynamic_cast<const Mixed&>(*state).value : 0;
}

using Leaves = std::vector<std::optional<std::uint64_t>>;

/// The definition: each node has the two halves of its numbers as children.
std::optional<std::uint64_t> byDefinition(const Leaves& leaves, std::size_t first, std::size_t count) {
    if (first >= leaves.size()) {
        return std::nullopt;
    }
    if (count == 1) {
        return leaves[first];
    }
    const auto left = byDefinition(leaves, first, count / 2);
    const auto right = byDefinition(leaves, first + count / 2, count / 2);
    return left && right ? Mixed::mix(*left, *right) : left ? left : right;
}

std::optional<std::uint64_t> byDefinition(const Leaves& leaves) {
    return byDefinition(leaves, 0, std::bit_ceil(leaves.size() + 1));
}

/// Files with chunks, not all of which have a state.
class RandomFiles {
public:
    explicit RandomFiles(std::mt19937_64& random) : random(random), files(below(6) + 1) {
        const std::size_t maxChunks = std::size_t{1} << below(9);
        for (Leaves& leaves : files) {
            leaves.resize(below(maxChunks) + 1);
            const bool hasGaps = below(4) == 0;
            for (auto& leaf : leaves) {
                leaf = hasGaps && below(3) == 0 ? std::nullopt : std::optional(random());
            }
        }
        for (std::uint64_t file = 0; file < files.size(); ++file) {
            for (std::uint64_t chunk = 0; chunk < files[file].size(); ++chunk) {
                places.push_back({file, chunk});
            }
        }
    }

    std::uint64_t expected() const {
        Leaves whole;
        std::transform(files.begin(), files.end(), std::back_inserter(whole),
                       [](const Leaves& leaves) { return byDefinition(leaves); });
        return byDefinition(whole).value_or(0);
    }

    /// Some chunks that neighbouring parts begin with; the first chunk is one of them.
    std::vector<std::size_t> cuts() {
        std::vector<std::size_t> begins = {0};
        for (std::size_t count = below(8); count > 0; --count) {
            begins.push_back(below(places.size()));
        }
        std::sort(begins.begin(), begins.end());
        begins.erase(std::unique(begins.begin(), begins.end()), begins.end());
        return begins;
    }

    std::vector<TreeNode> part(std::size_t begin, std::size_t end) const {
        MergeTree tree(places[begin]);
        for (std::size_t i = begin; i < end; ++i) {
            if (const auto& leaf = files[places[i].file][places[i].chunk]) {
                tree.take(places[i], std::make_unique<Mixed>(*leaf));
            }
        }
        return tree.release();
    }

    /// As a part, but merged from smaller ones.
    std::vector<TreeNode> partOfTwo(std::size_t begin, std::size_t end) {
        const std::size_t middle = begin + below(end - begin);
        MergeTree tree(places[begin]);
        for (const auto& [from, to] : {std::pair(begin, middle), std::pair(middle, end)}) {
            for (TreeNode& node : from < to ? part(from, to) : std::vector<TreeNode>()) {
                tree.take(std::move(node));
            }
        }
        return tree.release();
    }

    std::size_t size() const { return places.size(); }
    std::size_t fileCount() const { return files.size(); }

    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random); }

private:
    std::mt19937_64& random;
    std::vector<Leaves> files;
    std::vector<ChunkPlace> places;
};

/// @return the value that the parts between the cuts are merged to.
std::uint64_t valueOfParts(RandomFiles& files) {
    std::vector<std::size_t> cuts = files.cuts();
    cuts.push_back(files.size());
    MergeTree whole;
    for (std::size_t i = 0; i + 1 < cuts.size(); ++i) {
        const std::size_t count = cuts[i + 1] - cuts[i];
        std::vector<TreeNode> part =
            files.below(2) == 0 ? files.part(cuts[i], cuts[i + 1]) : files.partOfTwo(cuts[i], cuts[i + 1]);
        if (files.fileCount() == 1) {
            EXPECT_LE(part.size(), std::max<std::size_t>(1, 2 * (std::bit_width(count) - 1))) << count;
        }
        for (TreeNode& node : part) {
            whole.take(std::move(node));
        }
    }
    return valueOf(whole.whole());
}

TEST(MergeTree, hasTheSameBitsForEveryCut) {
    std::mt19937_64 random(20261122);
    for (int cut = 0; cut < 20000; ++cut) {
        RandomFiles files(random);
        ASSERT_EQ(valueOfParts(files), files.expected()) << "cut " << cut;
    }
}

/// Counts the states that exist.
struct Counted : AccumulatorState {
    explicit Counted(std::size_t& alive) : alive(alive) { ++alive; }
    ~Counted() override { --alive; }
    void fill(const Chunk&) override {}
    void merge(AccumulatorState&) override {}
    std::size_t& alive;
};

TEST(MergeTree, keepsFewStates) {
    std::size_t alive = 0;
    std::size_t most = 0;
    MergeTree tree;
    for (std::uint64_t file = 0; file < 1000; ++file) {
        for (std::uint64_t chunk = 0; chunk < 100; ++chunk) {
            tree.take({file, chunk}, std::make_unique<Counted>(alive));
            most = std::max(most, alive);
        }
    }
    EXPECT_TRUE(tree.whole());
    EXPECT_LE(most, 19U) << "log2 of 1000 and of 100, and 2";
}

}  // namespace
}  // namespace velmorak
