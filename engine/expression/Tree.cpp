#include "expression/Tree.h"

#include <bit>
#include <cstdint>
#include <utility>

namespace velmorak::expression {

namespace {

/// Equal for nodes that have the same value.
std::string keyOf(const Node& node) {
    std::string key = std::to_string(static_cast<int>(node.form)) + (node.isQuoted ? "`" : ":") +
                      std::to_string(node.integer) + ":" + std::to_string(std::bit_cast<std::uint64_t>(node.real));
    for (const std::size_t child : node.children) {
        key += "," + std::to_string(child);
    }
    return key + " " + node.text;
}

/// Rewrites a parsed tree.
class Rewriter {
public:
    Rewriter(std::string_view text, bool joinsEqual) : tree(text, joinsEqual) {}

    Tree whole(const std::vector<Node>& parsed);

private:
    std::size_t added(Node node);
    std::size_t sorted(const Node& node);

    TreeBuilder tree;
};

Tree Rewriter::whole(const std::vector<Node>& parsed) {
    std::vector<std::size_t> places;
    places.reserve(parsed.size());
    for (Node node : parsed) {
        for (std::size_t& child : node.children) {
            child = places[child];
        }
        places.push_back(added(std::move(node)));
    }
    return std::move(tree).finish(places.back());
}

std::size_t Rewriter::added(Node node) {
    if (node.form != Form::Call) {
        return tree.add(std::move(node));
    }
    const std::vector<std::size_t>& children = node.children;
    const std::size_t list = children.empty() ? 0 : children[0];
    if (node.text == "[]") {
        return tree.call(node, "#at", {list, tree.call(tree[children[1]], "#index", {children[1]})});
    }
    if (node.text == "[:]") {
        return tree.call(node, "#at", {list, tree.call(node, "#slice", children)});
    }
    if (node.text == "sort") {
        return sorted(node);
    }
    if ((node.text == "reverse" || node.text == "unique") && children.size() == 1) {
        return tree.call(node, "#at", {list, tree.call(node, "#" + node.text, children)});
    }
    return isKinematic(node.text) ? addKinematic(tree, node) : tree.add(std::move(node));
}

std::size_t Rewriter::sorted(const Node& node) {
    if (node.children.empty() || node.children.size() > 2) {
        tree.fail(node, "\"sort\" takes a list, and maybe a list of values to sort it by");
    }
    return tree.call(node, "#at", {node.children.front(), tree.call(node, "order", {node.children.back()})});
}

}  // namespace

std::size_t TreeBuilder::add(Node node) {
    const auto [place, isNew] = joins ? known.try_emplace(keyOf(node), nodes.size()) : std::pair(known.end(), true);
    if (!isNew) {
        return place->second;
    }
    nodes.push_back(std::move(node));
    return nodes.size() - 1;
}

std::size_t TreeBuilder::call(const Node& origin, std::string_view name, std::vector<std::size_t> children) {
    Node node;
    node.form = Form::Call;
    node.text = name;
    node.offset = origin.offset;
    node.begin = origin.begin;
    node.end = origin.end;
    node.children = std::move(children);
    return add(std::move(node));
}

std::size_t TreeBuilder::number(const Node& origin, double value) {
    Node node;
    node.real = value;
    node.offset = origin.offset;
    node.begin = origin.begin;
    node.end = origin.end;
    return add(std::move(node));
}

Tree TreeBuilder::finish(std::size_t root) && {
    Tree tree{std::move(nodes), {}, root};
    tree.uses.assign(tree.nodes.size(), 0);
    tree.uses[root] = 1;
    for (std::size_t place = tree.nodes.size(); place-- > 0;) {
        if (tree.uses[place] > 0) {
            for (const std::size_t child : tree.nodes[place].children) {
                ++tree.uses[child];
            }
        }
    }
    return tree;
}

Tree rewritten(std::string_view text, const std::vector<Node>& parsed, bool joinsEqual) {
    return Rewriter(text, joinsEqual).whole(parsed);
}

}  // namespace velmorak::expression
