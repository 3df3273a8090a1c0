#include "expression/Compiler.h"

#include "expression/ListCompiler.h"
#include "expression/MarkedNumbers.h"
#include "expression/TextCompiler.h"
#include "expression/simd/SimdKernels.h"

#include <velmorak/Text.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace velmorak::expression {

namespace {

/// Texts of messages show no more of an expression.
constexpr std::size_t maxPartLength = 40;

std::string shownName(const Node& call) {
    return call.text == "-sign" || call.text == "+sign" ? call.text.substr(0, 1) : call.text;
}

std::string wanted(const Function& function) {
    if (function.takesMore) {
        return "two values or more, or one list column";
    }
    return function.arguments == 1 ? "one value" : function.arguments == 2 ? "two values" : "three values";
}

Kernel scalarKernel(const Function& function, ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return function.forReals;
        case ColumnType::Integer:
            return function.forIntegers;
        case ColumnType::Boolean:
            return function.forBooleans;
        case ColumnType::Text:
            break;
    }
    return function.forTexts;
}

/// @param type of the arguments, or of the values of a choice.
Operation operationOf(const Function& function, ColumnType type) {
    const SimdKernel* const wide = findSimdKernel(function.name, type);
    const ReverseKernel reverse = type == ColumnType::Real ? function.reverse : nullptr;
    return {!wide ? scalarKernel(function, type) : wide->kernel, &function,
            !wide || !wide->reverse ? reverse : wide->reverse};
}

/// Compiles x^2 as a product, which is faster and correctly rounded.
bool isSquare(const Node& node, const std::optional<double>& exponent) {
    return (node.text == "^" || node.text == "pow") && exponent == 2.0;
}

/// The columns of a table, and numbers with names.
class Columns : public Scope {
public:
    Columns(const Schema& schema, const std::map<std::string, double>& numbers) : schema(schema), numbers(numbers) {}

    TypedOperand named(const Node& node, Compiler& compiler) override;

private:
    [[noreturn]] void failUnknown(const Node& node, const Compiler& compiler) const;

    const Schema& schema;
    const std::map<std::string, double>& numbers;
};

TypedOperand Columns::named(const Node& node, Compiler& compiler) {
    const auto number = numbers.find(node.text);
    if (isMarkedNumber(node) && number != numbers.end()) {
        return compiler.constant(number->second);
    }
    if (const auto position = schema.find(node.text)) {
        return compiler.steps().column(*position, schema[*position]);
    }
    const bool isQuotedMark = node.isQuoted && node.text.starts_with(numberMark);
    if (number != numbers.end() && !isQuotedMark) {
        return compiler.constant(number->second);
    }
    if (const double* const known = node.isQuoted ? nullptr : findConstant(node.text)) {
        return compiler.constant(*known);
    }
    failUnknown(node, compiler);
}

void Columns::failUnknown(const Node& node, const Compiler& compiler) const {
    if (isMarkedNumber(node)) {
        compiler.fail(node, "no number can be entered or wired for " + velmorak::quoted(node.text) + " here");
    }
    std::vector<std::string> known;
    std::vector<std::string> columns;
    for (const ColumnInfo& info : schema.columns()) {
        columns.push_back(info.name);
    }
    known = columns;
    for (const auto& [name, value] : numbers) {
        known.push_back(name);
    }
    compiler.fail(node,
                  "there is no column " + velmorak::quoted(node.text) + columnsThere(node.text, columns) +
                      suggestion(node.text, known),
                  Failure::Cause::UnknownColumn);
}

}  // namespace

void Compiler::fail(const Node& node, const std::string& reason, Failure::Cause cause) const {
    throwAt(source, placeOf(node), reason, cause);
}

std::string Compiler::sourceOf(const Node& node) const {
    if (definitionOffset || node.end <= node.begin) {
        return node.text;
    }
    const std::string_view whole = source.substr(node.begin, node.end - node.begin);
    return whole.size() <= maxPartLength ? std::string(whole) : std::string(whole.substr(0, maxPartLength)) + "...";
}

TypedOperand Compiler::compile(const std::vector<Node>& parsed, Scope& scope) {
    return compile(rewritten(source, parsed, joinsEqual), scope);
}

TypedOperand Compiler::compile(const Tree& tree, Scope& scope) {
    nodes = &tree.nodes;
    uses = &tree.uses;
    names = &scope;
    typed.assign(tree.nodes.size(), {});
    for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
        if (tree.uses[i] > 0) {
            typed[i] = compiled(tree.nodes[i]);
            emitter.announceUses(typed[i], tree.uses[i] - 1);
        }
    }
    return typed[tree.root];
}

TypedOperand Compiler::compileDefinition(const Tree& tree, Scope& scope, std::size_t offset) {
    const auto* const outerNodes = nodes;
    const auto* const outerUses = uses;
    Scope* const outerNames = names;
    std::vector<TypedOperand> outerTyped = std::exchange(typed, {});
    const std::optional<std::size_t> outerOffset = std::exchange(definitionOffset, offset);
    const TypedOperand whole = compile(tree, scope);
    nodes = outerNodes;
    uses = outerUses;
    names = outerNames;
    typed = std::move(outerTyped);
    definitionOffset = outerOffset;
    return whole;
}

TypedOperand Compiler::compiled(const Node& node) {
    switch (node.form) {
        case Form::Real:
            return emitter.constant(node.real, ColumnType::Real);
        case Form::Integer:
            return emitter.constant(node.integer, ColumnType::Integer);
        case Form::Truth:
            return emitter.constant(static_cast<std::uint8_t>(node.integer), ColumnType::Boolean);
        case Form::Text:
            return emitter.text(node.text);
        case Form::Name:
            break;
        case Form::Call:
            return called(node);
    }
    const TypedOperand value = names->named(node, *this);
    const bool isTextColumn = value.type == ColumnType::Text && value.operand.in == Operand::In::Column;
    return isTextColumn && nodes->size() > 1
               ? emitter.emit({.kernel = addressTexts}, {value}, ColumnType::Text, placeOf(node))
               : value;
}

TypedOperand Compiler::asReal(const Node& node, const TypedOperand& value) {
    return converted(node, node, value, ColumnType::Real);
}

TypedOperand Compiler::called(const Node& node) {
    std::vector<TypedOperand> arguments;
    arguments.reserve(node.children.size());
    for (const std::size_t child : node.children) {
        arguments.push_back((*uses)[child] > 1 ? emitter.forOneUse(typed[child]) : typed[child]);
    }
    if (const auto known = names->called(node, arguments, *this)) {
        return *known;
    }
    if (const ListCompiler::Call* const function = ListCompiler::find(node.text)) {
        return ListCompiler(*this).compile(node, *function, arguments);
    }
    if (isReduction(node.text) && arguments.size() == 1 && (arguments[0].isList || !findFunction(node.text))) {
        return ListCompiler(*this).reduced(node, arguments[0]);
    }
    const Function* function = findFunction(node.text);
    if (!function) {
        failUnknown(node);
    }
    checkArguments(node, *function, arguments);
    if (arguments.size() == 2 && isSquare(node, emitter.numberOf(arguments[1]))) {
        return applied(node, *findFunction("square"), {arguments[0]});
    }
    return applied(node, *function, arguments);
}

void Compiler::failUnknown(const Node& node) const {
    if (isReduction(node.text)) {
        fail(node, velmorak::quoted(node.text) + " takes one list column");
    }
    std::vector<std::string> known = functionNames();
    for (std::string& name : names->callableNames()) {
        known.push_back(std::move(name));
    }
    fail(node, "there is no function " + velmorak::quoted(node.text) + suggestion(node.text, known));
}

void Compiler::checkArguments(const Node& node, const Function& function,
                              const std::vector<TypedOperand>& arguments) const {
    const std::size_t count = arguments.size();
    const std::size_t least = function.arguments - (function.hasDefault ? 1 : 0);
    if (count < least || (count > function.arguments && !function.takesMore)) {
        fail(node, velmorak::quoted(node.text) + " takes " + wanted(function));
    }
}

TypedOperand Compiler::applied(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    switch (function.rule) {
        case Rule::Real:
            return ofReals(node, function, arguments);
        case Rule::Test:
            return emit(node, function, ColumnType::Real, all(node, arguments, ColumnType::Real), ColumnType::Boolean);
        case Rule::Arithmetic:
            return arithmetic(node, function, arguments);
        case Rule::Comparison: {
            const ColumnType type = compared(node, arguments);
            return emit(node, function, type, all(node, arguments, type), ColumnType::Boolean);
        }
        case Rule::Logic:
            return emit(node, function, ColumnType::Boolean, conditions(node, arguments), ColumnType::Boolean);
        case Rule::Texts:
            return compiledTexts(*this, node, function, arguments);
        case Rule::Choice:
            break;
    }
    return choice(node, function, arguments);
}

TypedOperand Compiler::emit(const Node& node, const Function& function, ColumnType argumentType,
                            const std::vector<TypedOperand>& values, ColumnType type) {
    std::size_t width = 1;
    for (const TypedOperand& value : values) {
        if (value.width > 1 && width > 1 && value.width != width) {
            fail(node, "pairs and triples cannot be combined with each other");
        }
        width = std::max(width, value.width);
    }
    const TypedOperand result = emitter.emit(operationOf(function, argumentType), values, type, placeOf(node));
    const bool areConstants = std::all_of(values.begin(), values.end(), [](const TypedOperand& value) {
        return value.operand.in == Operand::In::Constant;
    });
    if (areConstants && result.operand.in != Operand::In::Constant) {
        fail(node, "no integer can hold a result: it is too large, or a division by 0");
    }
    return result;
}

TypedOperand Compiler::ofReals(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    if (node.text == "exp") {
        const Kernel sign = operationOf(*findFunction("-sign"), ColumnType::Real).kernel;
        if (const auto negative = emitter.popIfProducedBy(arguments[0], sign)) {
            return emit(node, *findFunction("-exp"), ColumnType::Real, *negative, ColumnType::Real);
        }
    }
    return emit(node, function, ColumnType::Real, all(node, arguments, ColumnType::Real), ColumnType::Real);
}

TypedOperand Compiler::arithmetic(const Node& node, const Function& function,
                                  const std::vector<TypedOperand>& arguments) {
    const bool hasReal = std::any_of(arguments.begin(), arguments.end(),
                                     [](const TypedOperand& argument) { return argument.type == ColumnType::Real; });
    const ColumnType type = hasReal ? ColumnType::Real : ColumnType::Integer;
    const auto values = all(node, arguments, type);
    if (values.size() == 1) {
        return node.text == "+sign" ? values[0] : emit(node, function, type, values, type);
    }
    if (const auto joined = type == ColumnType::Real ? joinedWithProduct(node, values) : std::nullopt) {
        return *joined;
    }
    TypedOperand result = emit(node, function, type, {values[0], values[1]}, type);
    for (std::size_t i = 2; i < values.size(); ++i) {
        result = emit(node, function, type, {result, values[i]}, type);
    }
    return result;
}

std::optional<TypedOperand> Compiler::joinedWithProduct(const Node& node, const std::vector<TypedOperand>& values) {
    const bool isSum = node.text == "+";
    if ((!isSum && node.text != "-") || values[0].isList || values[1].isList) {
        return std::nullopt;
    }
    const Kernel product = operationOf(*findFunction("*"), ColumnType::Real).kernel;
    for (const std::size_t side : {1U, 0U}) {
        if (side == 1 && !isSum) {
            continue;
        }
        auto factors = emitter.popIfProducedBy(values[side], product);
        if (!factors) {
            continue;
        }
        factors->push_back(values[1 - side]);
        return emit(node, *findFunction(isSum ? "*+" : "*-"), ColumnType::Real, *factors, ColumnType::Real);
    }
    return std::nullopt;
}

ColumnType Compiler::compared(const Node& node, const std::vector<TypedOperand>& pair) const {
    const ColumnType first = pair[0].type;
    const ColumnType second = pair[1].type;
    if ((first == ColumnType::Text) != (second == ColumnType::Text)) {
        fail(node, "a text and a number cannot be combined here");
    }
    if (first == ColumnType::Text || first == ColumnType::Real || second == ColumnType::Real) {
        return first == ColumnType::Text ? first : ColumnType::Real;
    }
    return ColumnType::Integer;
}

std::vector<TypedOperand> Compiler::conditions(const Node& node, const std::vector<TypedOperand>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].type == ColumnType::Real || arguments[i].type == ColumnType::Text) {
            fail((*nodes)[node.children[i]],
                 "expected a condition, but this is " + shown(arguments[i]) + "; compare it with something");
        }
    }
    return all(node, arguments, ColumnType::Boolean);
}

TypedOperand Compiler::choice(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    Node conditionOnly = node;
    conditionOnly.children = {node.children[0]};
    auto values = conditions(conditionOnly, {arguments[0]});
    const std::vector<TypedOperand> pair{arguments[1], arguments[2]};
    const bool areBooleans = pair[0].type == ColumnType::Boolean && pair[1].type == ColumnType::Boolean;
    const ColumnType type = areBooleans ? ColumnType::Boolean : compared(node, pair);
    Node valuesOnly = node;
    valuesOnly.children = {node.children[1], node.children[2]};
    for (const TypedOperand& value : all(valuesOnly, pair, type)) {
        values.push_back(value);
    }
    return emit(node, function, type, values, type);
}

TypedOperand Compiler::converted(const Node& call, const Node& argument, const TypedOperand& value, ColumnType type) {
    const Kernel way = conversion(value.type, type);
    if (!way && value.type != type) {
        fail(argument, velmorak::quoted(shownName(call)) + " does not take " + shown(value));
    }
    return !way ? value : emitter.emit({.kernel = way}, {value}, type, placeOf(call));
}

std::vector<TypedOperand> Compiler::all(const Node& node, const std::vector<TypedOperand>& values, ColumnType type) {
    std::vector<TypedOperand> same;
    same.reserve(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        same.push_back(converted(node, (*nodes)[node.children[i]], values[i], type));
    }
    return same;
}

Code compile(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers) {
    Columns scope(columns, numbers);
    Compiler compiler(text, Buffers::Reused);
    const std::vector<Node> tree = parse(text);
    const TypedOperand whole = compiler.compile(tree, scope);
    if (whole.width > 1) {
        compiler.fail(
            tree.back(),
            "a list of combinations is not a column; take first(...), second(...), or a sum of each, or index "
            "another list with it");
    }
    return std::move(compiler).finish(whole);
}

}  // namespace velmorak::expression
