#include "expression/Compiler.h"

#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <limits>

namespace velmorak::expression {

namespace {

/// Texts of messages show no more of an expression.
constexpr std::size_t maxPartLength = 40;

}  // namespace

/// A function of lists: what compiles it, and how many arguments it takes.
struct Compiler::ListCall {
    std::string_view name;
    TypedOperand (Compiler::*compile)(const Node& node, const Arguments& arguments);
    std::size_t least = 1;
    std::size_t most = 1;
    std::string_view wanted = "one list";
};

const Compiler::ListCall* Compiler::findListCall(std::string_view name) {
    static constexpr std::array known{
        ListCall{"#at", &Compiler::indexed, 2, 2, ""},
        ListCall{"#index", &Compiler::asIndex},
        ListCall{"#slice", &Compiler::slicePositions, 3, 3, ""},
        ListCall{"#reverse", &Compiler::reversePositions},
        ListCall{"#unique", &Compiler::uniquePositions},
        ListCall{"#total", &Compiler::total},
        ListCall{"#number", &Compiler::checkedNumber},
        ListCall{"isMissing", &Compiler::isMissing, 1, 1, "one value"},
        ListCall{"ifMissing", nullptr, 1, 0, "two values"},
        ListCall{"reverse", nullptr, 1, 0},
        ListCall{"unique", nullptr, 1, 0},
        ListCall{"order", &Compiler::order},
        ListCall{"pairs", &Compiler::pairs, 1, 2, "one list or two"},
        ListCall{"triples", &Compiler::triples},
        ListCall{"nearest", &Compiler::nearest, 4, 4, "eta1, phi1, eta2, phi2"},
        ListCall{"concat", &Compiler::concat, 2, std::numeric_limits<std::size_t>::max(), "two lists or more"},
        ListCall{"first", &Compiler::element, 1, 2, "a list, and maybe a value for an empty one"},
        ListCall{"second", &Compiler::element, 1, 2, "a list, and maybe a value for one that is too short"},
        ListCall{"third", &Compiler::element, 1, 2, "a list, and maybe a value for one that is too short"},
        ListCall{"last", &Compiler::element, 1, 2, "a list, and maybe a value for an empty one"}};
    const auto* const found =
        std::find_if(known.begin(), known.end(), [&](const ListCall& call) { return call.name == name; });
    return found == known.end() ? nullptr : found;
}

std::string shown(const TypedOperand& value) {
    const std::string kind = value.width > 1 ? "a list of combinations of type "
                             : value.isList  ? "a list of type "
                                             : "a value of type ";
    return kind + std::string(nameOf(value.type));
}

TypedOperand Compiler::calledOnLists(const Node& node, const ListCall& function, const Arguments& arguments) {
    if (arguments.size() < function.least || arguments.size() > function.most) {
        fail(node, quoted(node.text) + " takes " + std::string(function.wanted));
    }
    return (this->*function.compile)(node, arguments);
}

const TypedOperand& Compiler::wantList(const Node& node, const TypedOperand& value) const {
    if (!value.isList) {
        fail(node, "a list is needed here, but this is " + shown(value));
    }
    return value;
}

/// @return the source text of a node.
std::string Compiler::partOf(const Node& node) const {
    if (definitionOffset || node.end <= node.begin) {
        return node.text;
    }
    const std::string_view whole = source.substr(node.begin, node.end - node.begin);
    return whole.size() <= maxPartLength ? std::string(whole) : std::string(whole.substr(0, maxPartLength)) + "...";
}

TypedOperand Compiler::indexed(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = arguments[0];
    const TypedOperand& index = arguments[1];
    if (!list.isList) {
        fail(node, "only a list can be indexed, but this is " + shown(list));
    }
    if (index.isList) {
        return taken(node, list, index);
    }
    const TypedOperand position = asReal(node, index);
    if (list.width == 1) {
        const Reduction way = findIndexing(list.type);
        return emitter.emitReduction(way.kernel, {list, position}, way.type, placeOf(node));
    }
    TypedOperand values =
        emitter.emitLists({.kernel = combinationKernel(list.type), .madeShape = partOf(node), .widthRead = list.width},
                          {list, position}, list.type, placeOf(node));
    values.positionsIn = list.positionsIn;
    return values;
}

TypedOperand Compiler::taken(const Node& node, const TypedOperand& list, const TypedOperand& positions) {
    if (positions.areOfTwoLists) {
        fail(node, "these are positions in two lists; index one with first(...), the other with second(...)");
    }
    if (list.width > 1 && positions.width > 1) {
        fail(node, "combinations cannot be taken from combinations");
    }
    TypedOperand values = list;
    if (positions.positionsIn) {
        emitter.emitLengthCheck(list.shape, *positions.positionsIn, placeOf(node));
    } else if (list.type == ColumnType::Integer) {
        values = asReal(node, list);
    }
    TypedOperand made = emitter.emitLists({.kernel = gatherKernel(values.type, positions.type),
                                           .shape = positions.shape,
                                           .width = list.width * positions.width,
                                           .widthRead = list.width},
                                          {values, positions}, values.type, placeOf(node));
    made.positionsIn = list.positionsIn;
    made.areOfTwoLists = list.areOfTwoLists;
    made.positionsInSecond = list.positionsInSecond;
    return made;
}

/// A condition becomes the positions where it is true; positions stay.
TypedOperand Compiler::asIndex(const Node& node, const Arguments& arguments) {
    const TypedOperand& index = arguments[0];
    const bool isCondition = index.type == ColumnType::Boolean;
    if (index.type == ColumnType::Text || (isCondition && !index.isList)) {
        fail(node, "a position in a list must be a number, but this is " + shown(index));
    }
    if (!isCondition) {
        return index;
    }
    if (index.width > 1) {
        fail(node, "a condition for combinations needs one truth for each; take any(...) or all(...)");
    }
    TypedOperand positions = emitter.emitLists({.kernel = whereTrue, .madeShape = "[" + partOf(node) + "]"}, {index},
                                               ColumnType::Integer, placeOf(node));
    positions.positionsIn = index.shape;
    return positions;
}

TypedOperand Compiler::slicePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    for (const std::size_t bound : {1U, 2U}) {
        const TypedOperand& value = arguments[bound];
        if (value.isList || value.type == ColumnType::Text || value.type == ColumnType::Boolean) {
            fail((*nodes)[node.children[bound]], "a bound of a slice must be a number, but this is " + shown(value));
        }
    }
    const TypedOperand low = asReal(node, arguments[1]);
    const TypedOperand high = asReal(node, arguments[2]);
    TypedOperand positions = emitter.emitLists({.kernel = expression::slicePositions, .madeShape = partOf(node)},
                                               {list, low, high}, ColumnType::Integer, placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand Compiler::reversePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    TypedOperand positions = emitter.emitLists({.kernel = expression::reversePositions, .shape = list.shape}, {list},
                                               ColumnType::Integer, placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand Compiler::uniquePositions(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        fail(node, "\"unique\" does not take " + shown(list));
    }
    TypedOperand positions = emitter.emitLists({.kernel = uniqueKernel(list.type), .madeShape = partOf(node)}, {list},
                                               ColumnType::Integer, placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand Compiler::order(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        fail(node, "combinations have no order; sort by one value for each of them");
    }
    TypedOperand positions = emitter.emitLists({.kernel = orderKernel(list.type), .shape = list.shape}, {list},
                                               ColumnType::Integer, placeOf(node));
    positions.positionsIn = list.shape;
    return positions;
}

TypedOperand Compiler::combinations(const Node& node, ListKernel kernel, const Arguments& lists, std::size_t width) {
    for (const TypedOperand& list : lists) {
        if (wantList(node, list).width > 1) {
            fail(node, quoted(node.text) + " does not take " + shown(list));
        }
    }
    return emitter.emitLists({.kernel = kernel, .madeShape = partOf(node), .width = width, .makesCombinations = true},
                             lists, ColumnType::Integer, placeOf(node));
}

TypedOperand Compiler::pairs(const Node& node, const Arguments& arguments) {
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

TypedOperand Compiler::triples(const Node& node, const Arguments& arguments) {
    TypedOperand made = combinations(node, triplePositions, arguments, 3);
    made.positionsIn = arguments[0].shape;
    return made;
}

TypedOperand Compiler::nearest(const Node& node, const Arguments& arguments) {
    for (const std::size_t list : {2U, 3U}) {
        wantList((*nodes)[node.children[list]], arguments[list]);
    }
    Arguments reals;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].width > 1) {
            fail((*nodes)[node.children[i]], quoted(node.text) + " does not take " + shown(arguments[i]));
        }
        reals.push_back(converted(node, (*nodes)[node.children[i]], arguments[i], ColumnType::Real));
    }
    if (reals[0].isList != reals[1].isList) {
        fail(node, "eta1 and phi1 must both be lists, or both be single values");
    }
    ListOperation operation{.kernel = nearestPositions};
    if (reals[0].isList) {
        operation.shape = reals[0].shape;
        emitter.emitLengthCheck(reals[0].shape, reals[1].shape, placeOf(node));
    }
    emitter.emitLengthCheck(reals[2].shape, reals[3].shape, placeOf(node));
    return emitter.emitLists(operation, reals, ColumnType::Integer, placeOf(node));
}

TypedOperand Compiler::concat(const Node& node, const Arguments& arguments) {
    ColumnType type = arguments[0].type;
    for (const TypedOperand& argument : arguments) {
        if (argument.width > 1) {
            fail(node, "\"concat\" does not take " + shown(argument));
        }
        type = argument.type == type ? type : compared(node, {argument, {.operand = {}, .type = type}});
    }
    const Arguments lists = all(node, arguments, type);
    TypedOperand made = lists[0];
    for (std::size_t i = 1; i < lists.size(); ++i) {
        made = emitter.emitLists({.kernel = concatKernel(type), .madeShape = partOf(node)}, {made, lists[i]}, type,
                                 placeOf(node));
    }
    return made;
}

TypedOperand Compiler::element(const Node& node, const Arguments& arguments) {
    const TypedOperand& list = wantList(node, arguments[0]);
    if (list.width > 1) {
        return elementOfCombinations(node, list);
    }
    if (arguments.size() == 2 && arguments[1].isList) {
        fail((*nodes)[node.children[1]], "the default must be a single value, but this is " + shown(arguments[1]));
    }
    const int position = node.text == "first" ? 0 : node.text == "second" ? 1 : node.text == "third" ? 2 : -1;
    ColumnType type = list.type == ColumnType::Integer ? ColumnType::Real : list.type;
    TypedOperand other;
    if (arguments.size() == 2) {
        type = list.type == arguments[1].type ? list.type : compared(node, arguments);
        other = converted(node, (*nodes)[node.children[1]], arguments[1], type);
    } else {
        other = type == ColumnType::Real      ? constant(std::numeric_limits<double>::quiet_NaN())
                : type == ColumnType::Boolean ? emitter.constant(std::uint8_t{0}, type)
                                              : emitter.text("");
    }
    const TypedOperand values = converted(node, (*nodes)[node.children[0]], list, type);
    return emitter.emitReduction(expression::elementKernel(type, position), {values, other}, type, placeOf(node));
}

TypedOperand Compiler::elementOfCombinations(const Node& node, const TypedOperand& list) {
    if (node.children.size() > 1) {
        fail(node, "combinations are never too short: no default is needed");
    }
    if (node.text == "third" && list.width < 3) {
        fail(node, "a pair has no third value");
    }
    const int position = node.text == "first" ? 0 : node.text == "second" ? 1 : node.text == "third" ? 2 : -1;
    TypedOperand made =
        emitter.emitReduction(expression::elementKernel(list.type, position), {list}, list.type, placeOf(node));
    made.positionsIn = list.areOfTwoLists && position != 0 ? list.positionsInSecond : list.positionsIn;
    return made;
}

/// The sum over a list; a single value stays.
TypedOperand Compiler::total(const Node& node, const Arguments& arguments) {
    const TypedOperand& value = arguments[0];
    if (!value.isList) {
        return value;
    }
    return emitter.emitReduction(findReduction("sum", ColumnType::Real, value.width).kernel, {value}, ColumnType::Real,
                                 placeOf(node));
}

TypedOperand Compiler::isMissing(const Node& node, const Arguments& arguments) {
    const TypedOperand& value = arguments[0];
    if (value.type == ColumnType::Real) {
        return emit(node, *findFunction("isnan"), ColumnType::Real, {value}, ColumnType::Boolean);
    }
    if (value.type == ColumnType::Text) {
        return emit(node, *findFunction("=="), ColumnType::Text, {value, emitter.text("")}, ColumnType::Boolean);
    }
    // No integer differs from itself.
    emitter.announceUses(value, 1);
    const TypedOperand number = converted(node, node, value, ColumnType::Integer);
    const TypedOperand same = converted(node, node, value, ColumnType::Integer);
    return emit(node, *findFunction("!="), ColumnType::Integer, {number, emitter.forOneUse(same)}, ColumnType::Boolean);
}

TypedOperand Compiler::checkedNumber(const Node& node, const Arguments& arguments) {
    if (arguments[0].type == ColumnType::Text) {
        fail(node, "a number or a list of numbers is needed here, but this is " + shown(arguments[0]));
    }
    return asReal(node, arguments[0]);
}

}  // namespace velmorak::expression
