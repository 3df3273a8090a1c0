#pragma once

#include "expression/Syntax.h"

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::expression {

/// A syntax tree in which functions that are composed of others are replaced by these, and slices, sorting and the like
/// by positions and one way to index. Names of calls that begin with # are none that a user can write.
struct Tree {
    std::vector<Node> nodes;        ///< Each after its children.
    std::vector<std::size_t> uses;  ///< For each node, by how many nodes it is used; 0 for one that is not needed.
    std::size_t root = 0;
};

/// @param joinsEqual whether equal parts of the tree become one node, which is computed once.
/// @throws Failure for a wrong number of arguments.
Tree rewritten(std::string_view text, const std::vector<Node>& parsed, bool joinsEqual);

/// Builds a tree, node by node.
class TreeBuilder {
public:
    TreeBuilder(std::string_view source, bool joins) : source(source), joins(joins) {}

    /// @return the place of the node, or of an equal one.
    std::size_t add(Node node);
    /// @param origin the node that messages about the call name.
    std::size_t call(const Node& origin, std::string_view name, std::vector<std::size_t> children);
    std::size_t number(const Node& origin, double value);

    const Node& operator[](std::size_t place) const { return nodes[place]; }
    [[noreturn]] void fail(const Node& node, const std::string& reason) const { throwAt(source, node.offset, reason); }
    Tree finish(std::size_t root) &&;

private:
    std::string_view source;
    bool joins;
    std::vector<Node> nodes;
    std::map<std::string, std::size_t> known;
};

/// The functions of momenta, which are composed of others. docs/expressions.md has the formulas.
bool isKinematic(std::string_view name);
/// @param call whose children are in the tree.
/// @return the place of the result.
std::size_t addKinematic(TreeBuilder& tree, const Node& call);

}  // namespace velmorak::expression
