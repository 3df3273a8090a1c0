#include "expression/ListCompiler.h"

#include "expression/Compiler.h"

#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <limits>

namespace velmorak::expression {

/// A function of lists: what compiles it, and how many arguments it takes.
struct ListCompiler::Call {
    std::string_view name;
    TypedOperand (ListCompiler::*compile)(const Node& node, const Arguments& arguments);
    std::size_t least = 1;
    std::size_t most = 1;
    std::string_view wanted = "one list";
};

const ListCompiler::Call* ListCompiler::find(std::string_view name) {
    static constexpr std::array known{
        Call{"#at", &ListCompiler::indexed, 2, 2, ""},
        Call{"#index", &ListCompiler::asIndex},
        Call{"#slice", &ListCompiler::slicePositions, 3, 3, ""},
        Call{"#reverse", &ListCompiler::reversePositions},
        Call{"#unique", &ListCompiler::uniquePositions},
        Call{"#total", &ListCompiler::total},
        Call{"#number", &ListCompiler::checkedNumber},
        Call{"isMissing", &ListCompiler::isMissing, 1, 1, "one value"},
        Call{"ifMissing", nullptr, 1, 0, "two values"},
        Call{"reverse", nullptr, 1, 0},
        Call{"unique", nullptr, 1, 0},
        Call{"order", &ListCompiler::order},
        Call{"pairs", &ListCompiler::pairs, 1, 2, "one list or two"},
        Call{"triples", &ListCompiler::triples},
        Call{"nearest", &ListCompiler::nearest, 4, 4, "eta1, phi1, eta2, phi2"},
        Call{"concat", &ListCompiler::concat, 2, std::numeric_limits<std::size_t>::max(), "two lists or more"},
        Call{"first", &ListCompiler::element, 1, 2, "a list, and maybe a value for an empty one"},
        Call{"second", &ListCompiler::element, 1, 2, "a list, and maybe a value for one that is too short"},
        Call{"third", &ListCompiler::element, 1, 2, "a list, and maybe a value for one that is too short"},
        Call{"last", &ListCompiler::element, 1, 2, "a list, and maybe a value for an empty one"}};
    const auto* const found =
        std::find_if(known.begin(), known.end(), [&](const Call& call) { return call.name == name; });
    return found == known.end() ? nullptr : found;
}

std::string shown(const TypedOperand& value) {
    const std::string kind = value.width > 1 ? "a list of combinations of type "
                             : value.isList  ? "a list of type "
                                             : "a value of type ";
    return kind + std::string(nameOf(value.type));
}

ListCompiler::ListCompiler(Compiler& compiler) : compiler(compiler), emitter(compiler.steps()) {}

TypedOperand ListCompiler::compile(const Node& node, const Call& function, const Arguments& arguments) {
    if (arguments.size() < function.least || arguments.size() > function.most) {
        compiler.fail(node, velmorak::quoted(node.text) + " takes " + std::string(function.wanted));
    }
    return (this->*function.compile)(node, arguments);
}

TypedOperand ListCompiler::reduced(const Node& node, const TypedOperand& list) {
    if (!list.isList) {
        compiler.fail(node,
                      velmorak::quoted(node.text) + " of one argument needs a list column, but this is " + shown(list));
    }
    const Reduction reduction = findReduction(node.text, list.type, list.width);
    if (!reduction.kernel) {
        compiler.fail(node, velmorak::quoted(node.text) + " does not take " + shown(list));
    }
    TypedOperand values = list;
    if (node.text == "count") {
        values.width = 1;  // Combinations are counted, not their values.
    }
    return emitter.emitReduction(reduction.kernel, {values}, reduction.type, compiler.placeOf(node));
}

const TypedOperand& ListCompiler::wantList(const Node& node, const TypedOperand& value) const {
    if (!value.isList) {
        compiler.fail(node, "a list is needed here, but this is " + shown(value));
    }
    return value;
}

TypedOperand ListCompiler::indexed(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = arguments[0];
    const TypedOperand& index = arguments[1];
    if (!list.isList) {
        compiler.fail(node, "only a list can be indexed, but this is " + shown(list));
    }
    if (index.isList) {
        return taken(node, list, index);
    }
    const TypedOperand position = compiler.asReal(node, index);
    if (list.width == 1) {
        const Reduction way = findIndexing(list.type);
        return emitter.emitReduction(way.kernel, {list, position}, way.type, compiler.placeOf(node));
    }
    TypedOperand values = emitter.emitLists(
        {.kernel = combinationKernel(list.type), .madeShape = compiler.sourceOf(node), .widthRead = list.width},
        {list, position}, list.type, compiler.placeOf(node));
    values.positionsIn = list.positionsIn;
    return values;
}

TypedOperand ListCompiler::taken(const Node& node, const TypedOperand& list, const TypedOperand& positions) {
    if (positions.areOfTwoLists) {
        compiler.fail(node, "these are positions in two lists; index one with first(...), the other with second(...)");
    }
    if (list.width > 1 && positions.width > 1) {
        compiler.fail(node, "combinations cannot be taken from combinations");
    }
    TypedOperand values = list;
    if (positions.positionsIn) {
        emitter.emitLengthCheck(list.shape, *positions.positionsIn, compiler.placeOf(node));
    } else if (list.type == ColumnType::Integer) {
        values = compiler.asReal(node, list);
    }
    TypedOperand made = emitter.emitLists({.kernel = gatherKernel(values.type, positions.type),
                                           .shape = positions.shape,
                                           .width = list.width * positions.width,
                                           .widthRead = list.width},
                                          {values, positions}, values.type, compiler.placeOf(node));
    made.positionsIn = list.positionsIn;
    made.areOfTwoLists = list.areOfTwoLists;
    made.positionsInSecond = list.positionsInSecond;
    return made;
}

/// A condition becomes the positions where it is true; positions stay.
TypedOperand ListCompiler::asIndex(const Node& node, const Arguments& arguments) {
    const TypedOperand& index = arguments[0];
    const bool isCondition = index.type == ColumnType::Boolean;
    if (index.type == ColumnType::Text || (isCondition && !index.isList)) {
        compiler.fail(node, "a position in a list must be a number, but this is " + shown(index));
    }
    if (!isCondition) {
        return index;
    }
    if (index.width > 1) {
        compiler.fail(node, "a condition for combinations needs one truth for each; take any(...) or all(...)");
    }
    TypedOperand positions = emitter.emitLists({.kernel = whereTrue, .madeShape = "[" + compiler.sourceOf(node) + "]"},
                                               {index}, ColumnType::Integer, compiler.placeOf(node));
    positions.positionsIn = index.shape;
    return positions;
}

TypedOperand ListCompiler::slicePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    for (const std::size_t bound : {1U, 2U}) {
        const TypedOperand& value = arguments[bound];
        if (value.isList || value.type == ColumnType::Text || value.type == ColumnType::Boolean) {
            compiler.fail(compiler.child(node, bound),
                          "a bound of a slice must be a number, but this is " + shown(value));
        }
    }
    const TypedOperand low = compiler.asReal(node, arguments[1]);
    const TypedOperand high = compiler.asReal(node, arguments[2]);
    TypedOperand positions =
        emitter.emitLists({.kernel = expression::slicePositions, .madeShape = compiler.sourceOf(node)},
                          {list, low, high}, ColumnType::Integer, compiler.placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand ListCompiler::reversePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    TypedOperand positions = emitter.emitLists({.kernel = expression::reversePositions, .shape = list.shape}, {list},
                                               ColumnType::Integer, compiler.placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand ListCompiler::uniquePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        compiler.fail(node, "\"unique\" does not take " + shown(list));
    }
    TypedOperand positions =
        emitter.emitLists({.kernel = uniqueKernel(list.type), .madeShape = compiler.sourceOf(node)}, {list},
                          ColumnType::Integer, compiler.placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand ListCompiler::order(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        compiler.fail(node, "combinations have no order; sort by one value for each of them");
    }
    TypedOperand positions = emitter.emitLists({.kernel = orderKernel(list.type), .shape = list.shape}, {list},
                                               ColumnType::Integer, compiler.placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand ListCompiler::combinations(const Node& node, ListKernel kernel, const Arguments& lists,
                                        std::size_t width) {
    for (const TypedOperand& list : lists) {
        if (wantList(node, list).width > 1) {
            compiler.fail(node, velmorak::quoted(node.text) + " does not take " + shown(list));
        }
    }
    return emitter.emitLists(
        {.kernel = kernel, .madeShape = compiler.sourceOf(node), .width = width, .makesCombinations = true}, lists,
        ColumnType::Integer, compiler.placeOf(node));
}

TypedOperand ListCompiler::pairs(const Node& node, const Arguments& arguments) {
    if (arguments.size() == 1) {
        TypedOperand made = combinations(node, pairPositions, arguments, 2);
        made.positionsIn = arguments[0].shape;
        return made;
    }
    TypedOperand made = combinations(node, crossPositions, arguments, 2);
    made.areOfTwoLists = true;
    made.positionsIn = arguments[0].shape;
    made.positionsInSecond = arguments[1].shape;
    return made;
}

TypedOperand ListCompiler::triples(const Node& node, const Arguments& arguments) {
    TypedOperand made = combinations(node, triplePositions, arguments, 3);
    made.positionsIn = arguments[0].shape;
    return made;
}

TypedOperand ListCompiler::nearest(const Node& node, const Arguments& arguments) {
    for (const std::size_t list : {2U, 3U}) {
        wantList(compiler.child(node, list), arguments[list]);
    }
    Arguments reals;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].width > 1) {
            compiler.fail(compiler.child(node, i),
                          velmorak::quoted(node.text) + " does not take " + shown(arguments[i]));
        }
        reals.push_back(compiler.converted(node, compiler.child(node, i), arguments[i], ColumnType::Real));
    }
    if (reals[0].isList != reals[1].isList) {
        compiler.fail(node, "eta1 and phi1 must both be lists, or both be single values");
    }
    ListOperation operation{.kernel = nearestPositions};
    if (reals[0].isList) {
        operation.shape = reals[0].shape;
        emitter.emitLengthCheck(reals[0].shape, reals[1].shape, compiler.placeOf(node));
    }
    emitter.emitLengthCheck(reals[2].shape, reals[3].shape, compiler.placeOf(node));
    return emitter.emitLists(operation, reals, ColumnType::Integer, compiler.placeOf(node));
}

TypedOperand ListCompiler::concat(const Node& node, const Arguments& arguments) {
    ColumnType type = arguments[0].type;
    for (const TypedOperand& argument : arguments) {
        if (argument.width > 1) {
            compiler.fail(node, "\"concat\" does not take " + shown(argument));
        }
        type = argument.type == type ? type : compiler.compared(node, {argument, {.operand = {}, .type = type}});
    }
    const Arguments lists = compiler.all(node, arguments, type);
    TypedOperand made = lists[0];
    for (std::size_t i = 1; i < lists.size(); ++i) {
        made = emitter.emitLists({.kernel = concatKernel(type), .madeShape = compiler.sourceOf(node)}, {made, lists[i]},
                                 type, compiler.placeOf(node));
    }
    return made;
}

TypedOperand ListCompiler::element(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        return elementOfCombinations(node, list);
    }
    if (arguments.size() == 2 && arguments[1].isList) {
        compiler.fail(compiler.child(node, 1),
                      "the default must be a single value, but this is " + shown(arguments[1]));
    }
    const int position = node.text == "first" ? 0 : node.text == "second" ? 1 : node.text == "third" ? 2 : -1;
    ColumnType type = list.type == ColumnType::Integer ? ColumnType::Real : list.type;
    TypedOperand other;
    if (arguments.size() == 2) {
        type = list.type == arguments[1].type ? list.type : compiler.compared(node, arguments);
        other = compiler.converted(node, compiler.child(node, 1), arguments[1], type);
    } else {
        other = type == ColumnType::Real      ? compiler.constant(std::numeric_limits<double>::quiet_NaN())
                : type == ColumnType::Boolean ? emitter.constant(std::uint8_t{0}, type)
                                              : emitter.text("");
    }
    const TypedOperand values = compiler.converted(node, compiler.child(node, 0), list, type);
    return emitter.emitReduction(expression::elementKernel(type, position), {values, other}, type,
                                 compiler.placeOf(node));
}

TypedOperand ListCompiler::elementOfCombinations(const Node& node, const TypedOperand& list) {
    if (node.children.size() > 1) {
        compiler.fail(node, "combinations are never too short: no default is needed");
    }
    if (node.text == "third" && list.width < 3) {
        compiler.fail(node, "a pair has no third value");
    }
    const int position = node.text == "first" ? 0 : node.text == "second" ? 1 : node.text == "third" ? 2 : -1;
    TypedOperand made = emitter.emitReduction(expression::elementKernel(list.type, position), {list}, list.type,
                                              compiler.placeOf(node));
    made.positionsIn = list.areOfTwoLists && position != 0 ? list.positionsInSecond : list.positionsIn;
    return made;
}

/// The sum over a list; a single value stays.
TypedOperand ListCompiler::total(const Node& node, const Arguments& arguments) {
    const TypedOperand& value = arguments[0];
    if (!value.isList) {
        return value;
    }
    return emitter.emitReduction(findReduction("sum", ColumnType::Real, value.width).kernel, {value}, ColumnType::Real,
                                 compiler.placeOf(node));
}

TypedOperand ListCompiler::isMissing(const Node& node, const Arguments& arguments) {
    const TypedOperand& value = arguments[0];
    if (value.type == ColumnType::Real) {
        return compiler.emit(node, *findFunction("isnan"), ColumnType::Real, {value}, ColumnType::Boolean);
    }
    if (value.type == ColumnType::Text) {
        return compiler.emit(node, *findFunction("=="), ColumnType::Text, {value, emitter.text("")},
                             ColumnType::Boolean);
    }
    // No integer differs from itself.
    emitter.announceUses(value, 1);
    const TypedOperand number = compiler.converted(node, node, value, ColumnType::Integer);
    const TypedOperand same = compiler.converted(node, node, value, ColumnType::Integer);
    return compiler.emit(node, *findFunction("!="), ColumnType::Integer, {number, emitter.forOneUse(same)},
                         ColumnType::Boolean);
}

TypedOperand ListCompiler::checkedNumber(const Node& node, const Arguments& arguments) {
    if (arguments[0].type == ColumnType::Text) {
        compiler.fail(node, "a number or a list of numbers is needed here, but this is " + shown(arguments[0]));
    }
    return compiler.asReal(node, arguments[0]);
}

}  // namespace velmorak::expression
