#include <velmorak/RowBounds.h>

#include "expression/Kernels.h"
#include "expression/MarkedNumbers.h"
#include "expression/Syntax.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace velmorak {
namespace {

using expression::Form;
using expression::Node;
using Relation = ColumnBound::Relation;

/// A comparison, and the one that says the same with its sides exchanged.
struct Comparison {
    std::string_view name;
    Relation relation;
    Relation mirrored;
};

constexpr std::array comparisons = {
    Comparison{"<", Relation::Less, Relation::Greater}, Comparison{"<=", Relation::LessEqual, Relation::GreaterEqual},
    Comparison{">", Relation::Greater, Relation::Less}, Comparison{">=", Relation::GreaterEqual, Relation::LessEqual},
    Comparison{"==", Relation::Equal, Relation::Equal}};

class Bounds {
public:
    Bounds(std::vector<Node> nodes, const Schema& columns, const std::map<std::string, double>& numbers)
        : nodes(std::move(nodes)), columns(columns), numbers(numbers) {}

    std::vector<ColumnBound> find() const;

private:
    bool usesLists() const;
    std::optional<std::size_t> columnAt(const Node& node) const;
    std::optional<double> numberAt(const Node& node) const;
    std::optional<ColumnBound> boundAt(const Node& node) const;

    const std::vector<Node> nodes;
    const Schema& columns;
    const std::map<std::string, double>& numbers;
};

bool Bounds::usesLists() const {
    return std::ranges::any_of(nodes, [&](const Node& node) {
        const std::optional<std::size_t> column =
            node.form == Form::Name ? columns.find(node.text) : std::optional<std::size_t>();
        return column && columns[*column].isList;
    });
}

/// The name of a constant never means a column, unless it is quoted.
std::optional<std::size_t> Bounds::columnAt(const Node& node) const {
    if (node.form != Form::Name || isMarkedNumber(node) || (!node.isQuoted && expression::isConstant(node.text))) {
        return std::nullopt;
    }
    const std::optional<std::size_t> column = columns.find(node.text);
    const bool isNumber =
        column && (columns[*column].type == ColumnType::Real || columns[*column].type == ColumnType::Integer);
    return isNumber ? column : std::nullopt;
}

std::optional<double> Bounds::numberAt(const Node& node) const {
    switch (node.form) {
        case Form::Real:
            return node.real;
        case Form::Integer:
            return static_cast<double>(node.integer);
        case Form::Call:
            if (node.text == "-sign" && node.children.size() == 1) {
                const std::optional<double> number = numberAt(nodes[node.children.front()]);
                return number ? std::optional(-*number) : std::nullopt;
            }
            return std::nullopt;
        case Form::Name: {
            const auto found = numbers.find(node.text);
            const bool isHidden = !isMarkedNumber(node) &&
                                  (node.isQuoted || expression::isConstant(node.text) || columns.find(node.text));
            return found != numbers.end() && !isHidden ? std::optional(found->second) : std::nullopt;
        }
        default:
            return std::nullopt;
    }
}

std::optional<ColumnBound> Bounds::boundAt(const Node& node) const {
    const auto* const comparison = std::ranges::find(comparisons, node.text, &Comparison::name);
    if (node.form != Form::Call || comparison == comparisons.end() || node.children.size() != 2) {
        return std::nullopt;
    }
    const Node& left = nodes[node.children[0]];
    const Node& right = nodes[node.children[1]];
    const bool isMirrored = !columnAt(left);
    const std::optional<std::size_t> column = columnAt(isMirrored ? right : left);
    const std::optional<double> number = numberAt(isMirrored ? left : right);
    if (!column || !number) {
        return std::nullopt;
    }
    return ColumnBound{*column, isMirrored ? comparison->mirrored : comparison->relation, *number};
}

std::vector<ColumnBound> Bounds::find() const {
    std::vector<ColumnBound> found;
    if (nodes.empty() || usesLists()) {
        return found;
    }
    std::vector<std::size_t> open = {nodes.size() - 1};
    while (!open.empty()) {
        const Node& node = nodes[open.back()];
        open.pop_back();
        if (node.form == Form::Call && node.text == "&&") {
            open.insert(open.end(), node.children.rbegin(), node.children.rend());
        } else if (const std::optional<ColumnBound> bound = boundAt(node)) {
            found.push_back(*bound);
        }
    }
    return found;
}

}  // namespace

bool ColumnBound::excludes(double low, double high) const {
    switch (relation) {
        case Relation::Less:
            return low >= number;
        case Relation::LessEqual:
            return low > number;
        case Relation::Greater:
            return high <= number;
        case Relation::GreaterEqual:
            return high < number;
        case Relation::Equal:
            return low > number || high < number;
    }
    return false;
}

std::vector<ColumnBound> boundsIn(std::string_view expression, const Schema& columns,
                                  const std::map<std::string, double>& numbers) {
    return Bounds(expression::parse(expression), columns, numbers).find();
}

}  // namespace velmorak
