#pragma once

#include "expression/Emitter.h"
#include "expression/Syntax.h"

#include <cstddef>
#include <string_view>
#include <vector>

namespace velmorak::expression {

class Compiler;

/// Compiles the calls of functions of lists.
class ListCompiler {
public:
    using Arguments = std::vector<TypedOperand>;
    struct Call;

    /// @param compiler outlives this.
    explicit ListCompiler(Compiler& compiler);

    /// @return null if there is no function of lists of that name.
    static const Call* find(std::string_view name);
    TypedOperand compile(const Node& node, const Call& function, const Arguments& arguments);
    /// Compiles a function of one list that gives one value, such as sum.
    TypedOperand reduced(const Node& node, const TypedOperand& list);

private:
    TypedOperand indexed(const Node& node, const Arguments& arguments);
    TypedOperand taken(const Node& node, const TypedOperand& list, const TypedOperand& positions);
    TypedOperand asIndex(const Node& node, const Arguments& arguments);
    TypedOperand slicePositions(const Node& node, const Arguments& arguments);
    TypedOperand reversePositions(const Node& node, const Arguments& arguments);
    TypedOperand uniquePositions(const Node& node, const Arguments& arguments);
    TypedOperand order(const Node& node, const Arguments& arguments);
    TypedOperand pairs(const Node& node, const Arguments& arguments);
    TypedOperand triples(const Node& node, const Arguments& arguments);
    TypedOperand nearest(const Node& node, const Arguments& arguments);
    TypedOperand concat(const Node& node, const Arguments& arguments);
    TypedOperand element(const Node& node, const Arguments& arguments);
    TypedOperand elementOfCombinations(const Node& node, const TypedOperand& list);
    TypedOperand total(const Node& node, const Arguments& arguments);
    TypedOperand isMissing(const Node& node, const Arguments& arguments);
    TypedOperand checkedNumber(const Node& node, const Arguments& arguments);
    const TypedOperand& wantList(const Node& node, const TypedOperand& value) const;
    TypedOperand combinations(const Node& node, ListKernel kernel, const Arguments& lists, std::size_t width);

    Compiler& compiler;
    Emitter& emitter;
};

}  // namespace velmorak::expression
