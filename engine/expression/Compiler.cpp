#include "expression/Emitter.h"
#include "expression/simd/SimdKernels.h"

#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <limits>
#include <numbers>
#include <optional>

namespace velmorak::expression {

namespace {

std::string shown(const TypedOperand& value) {
    return (value.isList ? "a list of type " : "a value of type ") + std::string(nameOf(value.type));
}

std::string shownName(const Node& call) {
    return call.text == "-sign" || call.text == "+sign" ? call.text.substr(0, 1) : call.text;
}

struct Constant {
    std::string_view name;
    double value;
};

constexpr std::array constants{Constant{"pi", std::numbers::pi}, Constant{"e", std::numbers::e},
                               Constant{"inf", std::numeric_limits<double>::infinity()},
                               Constant{"nan", std::numeric_limits<double>::quiet_NaN()}};

class Compiler {
public:
    Compiler(std::string_view expression, const Schema& schema, const std::map<std::string, double>& named);

    Code run();

private:
    TypedOperand compiled(const Node& node);

    TypedOperand named(const Node& node);

    TypedOperand column(const Node& node, std::size_t position);

    TypedOperand called(const Node& node);

    /// Compiles x^2 as a product, which is faster and correctly rounded.
    bool isSquare(const Node& node) const;

    TypedOperand reduced(const Node& node, const TypedOperand& list);

    TypedOperand indexed(const Node& node, const std::vector<TypedOperand>& arguments);

    void checkArguments(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    static std::string wanted(const Function& function);

    TypedOperand applied(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    TypedOperand arithmetic(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    /// Fuses a product with the sum or difference that follows into one step, which rounds twice as before.
    std::optional<TypedOperand> joinedWithProduct(const Node& node, const std::vector<TypedOperand>& values);

    /// @return the common type in which two values are compared or chosen.
    ColumnType compared(const Node& node, const std::vector<TypedOperand>& pair);

    std::vector<TypedOperand> conditions(const Node& node, const std::vector<TypedOperand>& arguments);

    TypedOperand choice(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments);

    static Kernel kernel(const Function& function, ColumnType type);

    static Kernel scalarKernel(const Function& function, ColumnType type);

    /// @return the values, converted to the type.
    std::vector<TypedOperand> all(const Node& node, const std::vector<TypedOperand>& values, ColumnType type);

    std::string_view source;
    const Schema& columns;
    const std::map<std::string, double>& numbers;
    std::vector<Node> nodes;
    std::vector<TypedOperand> typed;  ///< The value of each node.
    Emitter emitter;
};

Compiler::Compiler(std::string_view expression, const Schema& schema, const std::map<std::string, double>& named)
    : source(expression), columns(schema), numbers(named) {}

Code Compiler::run() {
    nodes = parse(source);
    for (const Node& node : nodes) {
        typed.push_back(compiled(node));
    }
    return std::move(emitter).finish(typed.back());
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
            return named(node);
        case Form::Call:
            break;
    }
    return called(node);
}

TypedOperand Compiler::named(const Node& node) {
    if (const auto position = columns.find(node.text)) {
        return column(node, *position);
    }
    if (const auto number = numbers.find(node.text); number != numbers.end()) {
        return emitter.constant(number->second, ColumnType::Real);
    }
    if (const double* known = node.isQuoted ? nullptr : findConstant(node.text)) {
        return emitter.constant(*known, ColumnType::Real);
    }
    std::vector<std::string> names;
    for (const ColumnInfo& info : columns.columns()) {
        names.push_back(info.name);
    }
    for (const auto& [name, value] : numbers) {
        names.push_back(name);
    }
    throwAt(source, node.offset, "there is no column " + quoted(node.text) + suggestion(node.text, names));
}

TypedOperand Compiler::column(const Node& node, std::size_t position) {
    const TypedOperand value = emitter.column(position, columns[position]);
    if (value.type != ColumnType::Text || nodes.size() == 1) {
        return value;
    }
    return emitter.emit(addressTexts, {value}, ColumnType::Text, node.offset);
}

TypedOperand Compiler::called(const Node& node) {
    std::vector<TypedOperand> arguments;
    for (const std::size_t child : node.children) {
        arguments.push_back(typed[child]);
    }
    if (node.text == "[]") {
        return indexed(node, arguments);
    }
    if (isReduction(node.text) && arguments.size() == 1 && (arguments[0].isList || !findFunction(node.text))) {
        return reduced(node, arguments[0]);
    }
    const Function* function = findFunction(node.text);
    if (!function) {
        throwAt(source, node.offset,
                isReduction(node.text)
                    ? quoted(node.text) + " takes one list column"
                    : "there is no function " + quoted(node.text) + suggestion(node.text, functionNames()));
    }
    checkArguments(node, *function, arguments);
    if (isSquare(node)) {
        return applied(node, *findFunction("square"), {arguments[0]});
    }
    return applied(node, *function, arguments);
}

bool Compiler::isSquare(const Node& node) const {
    if (node.text != "^" && node.text != "pow") {
        return false;
    }
    const Node& exponent = nodes[node.children[1]];
    return (exponent.form == Form::Integer && exponent.integer == 2) ||
           (exponent.form == Form::Real && exponent.real == 2.0);
}

TypedOperand Compiler::reduced(const Node& node, const TypedOperand& list) {
    if (!list.isList) {
        throwAt(source, node.offset,
                quoted(node.text) + " of one argument needs a list column, but this is " + shown(list));
    }
    const Reduction reduction = findReduction(node.text, list.type);
    if (!reduction.kernel) {
        throwAt(source, node.offset, quoted(node.text) + " does not take " + shown(list));
    }
    return emitter.emitReduction(reduction.kernel, {list}, reduction.type, node.offset);
}

TypedOperand Compiler::indexed(const Node& node, const std::vector<TypedOperand>& arguments) {
    const TypedOperand& list = arguments[0];
    if (!list.isList) {
        throwAt(source, node.offset, "only a list can be indexed, but this is " + shown(list));
    }
    if (arguments[1].isList || arguments[1].type == ColumnType::Text || arguments[1].type == ColumnType::Boolean) {
        throwAt(source, nodes[node.children[1]].offset,
                "a position in a list must be a number, but this is " + shown(arguments[1]));
    }
    TypedOperand position = arguments[1];
    if (position.type == ColumnType::Integer) {
        position = emitter.emit(conversion(position.type, ColumnType::Real), {position}, ColumnType::Real, node.offset);
    }
    const Reduction way = findIndexing(list.type);
    return emitter.emitReduction(way.kernel, {list, position}, way.type, node.offset);
}

void Compiler::checkArguments(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    const std::size_t count = arguments.size();
    if (count < function.arguments || (count > function.arguments && !function.takesMore)) {
        throwAt(source, node.offset, quoted(node.text) + " takes " + wanted(function));
    }
}

std::string Compiler::wanted(const Function& function) {
    if (function.takesMore) {
        return "two values or more, or one list column";
    }
    return function.arguments == 1 ? "one value" : function.arguments == 2 ? "two values" : "three values";
}

TypedOperand Compiler::applied(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    switch (function.rule) {
        case Rule::Real:
            if (node.text == "exp") {
                if (const auto negative =
                        emitter.popIfProducedBy(arguments[0], kernel(*findFunction("-sign"), ColumnType::Real))) {
                    return emitter.emit(kernel(*findFunction("-exp"), ColumnType::Real), *negative, ColumnType::Real,
                                        node.offset);
                }
            }
            return emitter.emit(kernel(function, ColumnType::Real), all(node, arguments, ColumnType::Real),
                                ColumnType::Real, node.offset);
        case Rule::Test:
            return emitter.emit(kernel(function, ColumnType::Real), all(node, arguments, ColumnType::Real),
                                ColumnType::Boolean, node.offset);
        case Rule::Arithmetic:
            return arithmetic(node, function, arguments);
        case Rule::Comparison: {
            const ColumnType type = compared(node, arguments);
            return emitter.emit(kernel(function, type), all(node, arguments, type), ColumnType::Boolean, node.offset);
        }
        case Rule::Logic:
            return emitter.emit(kernel(function, ColumnType::Boolean), conditions(node, arguments), ColumnType::Boolean,
                                node.offset);
        case Rule::Choice:
            break;
    }
    return choice(node, function, arguments);
}

TypedOperand Compiler::arithmetic(const Node& node, const Function& function,
                                  const std::vector<TypedOperand>& arguments) {
    const bool hasReal = std::any_of(arguments.begin(), arguments.end(),
                                     [](const TypedOperand& argument) { return argument.type == ColumnType::Real; });
    const ColumnType type = hasReal ? ColumnType::Real : ColumnType::Integer;
    const auto values = all(node, arguments, type);
    if (values.size() == 1) {
        return emitter.emit(kernel(function, type), values, type, node.offset);
    }
    if (const auto joined = type == ColumnType::Real ? joinedWithProduct(node, values) : std::nullopt) {
        return *joined;
    }
    TypedOperand result = emitter.emit(kernel(function, type), {values[0], values[1]}, type, node.offset);
    for (std::size_t i = 2; i < values.size(); ++i) {
        result = emitter.emit(kernel(function, type), {result, values[i]}, type, node.offset);
    }
    return result;
}

std::optional<TypedOperand> Compiler::joinedWithProduct(const Node& node, const std::vector<TypedOperand>& values) {
    const bool isSum = node.text == "+";
    if ((!isSum && node.text != "-") || values[0].isList || values[1].isList) {
        return std::nullopt;
    }
    const Kernel product = kernel(*findFunction("*"), ColumnType::Real);
    for (const std::size_t side : {1U, 0U}) {
        if (side == 1 && !isSum) {
            continue;
        }
        auto factors = emitter.popIfProducedBy(values[side], product);
        if (!factors) {
            continue;
        }
        factors->push_back(values[1 - side]);
        return emitter.emit(kernel(*findFunction(isSum ? "*+" : "*-"), ColumnType::Real), *factors, ColumnType::Real,
                            node.offset);
    }
    return std::nullopt;
}

ColumnType Compiler::compared(const Node& node, const std::vector<TypedOperand>& pair) {
    const ColumnType first = pair[0].type;
    const ColumnType second = pair[1].type;
    if ((first == ColumnType::Text) != (second == ColumnType::Text)) {
        throwAt(source, node.offset, "a text and a number cannot be combined here");
    }
    if (first == ColumnType::Text || first == ColumnType::Real || second == ColumnType::Real) {
        return first == ColumnType::Text ? first : ColumnType::Real;
    }
    return ColumnType::Integer;
}

std::vector<TypedOperand> Compiler::conditions(const Node& node, const std::vector<TypedOperand>& arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].type == ColumnType::Real || arguments[i].type == ColumnType::Text) {
            throwAt(source, nodes[node.children[i]].offset,
                    "expected a condition, but this is " + shown(arguments[i]) + "; compare it with something");
        }
    }
    return all(node, arguments, ColumnType::Boolean);
}

TypedOperand Compiler::choice(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    const Node conditionOnly{node.form, node.offset, node.text, 0.0, 0, false, {node.children[0]}};
    auto values = conditions(conditionOnly, {arguments[0]});
    const std::vector<TypedOperand> pair{arguments[1], arguments[2]};
    const bool areBooleans = pair[0].type == ColumnType::Boolean && pair[1].type == ColumnType::Boolean;
    const ColumnType type = areBooleans ? ColumnType::Boolean : compared(node, pair);
    const Node valuesOnly{node.form, node.offset, node.text, 0.0, 0, false, {node.children[1], node.children[2]}};
    for (const TypedOperand& value : all(valuesOnly, pair, type)) {
        values.push_back(value);
    }
    return emitter.emit(kernel(function, type), values, type, node.offset);
}

Kernel Compiler::kernel(const Function& function, ColumnType type) {
    const Kernel wide = function.rule == Rule::Choice ? nullptr : simdKernel(function.name, type);
    return !wide ? scalarKernel(function, type) : wide;
}

Kernel Compiler::scalarKernel(const Function& function, ColumnType type) {
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

std::vector<TypedOperand> Compiler::all(const Node& node, const std::vector<TypedOperand>& values, ColumnType type) {
    std::vector<TypedOperand> converted;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const Kernel way = conversion(values[i].type, type);
        if (!way && values[i].type != type) {
            throwAt(source, nodes[node.children[i]].offset,
                    quoted(shownName(node)) + " does not take " + shown(values[i]));
        }
        converted.push_back(!way ? values[i] : emitter.emit(way, {values[i]}, type, node.offset));
    }
    return converted;
}

}  // namespace

Code compile(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers) {
    return Compiler(text, columns, numbers).run();
}

const double* findConstant(std::string_view name) {
    const auto* const found =
        std::find_if(constants.begin(), constants.end(), [&](const Constant& known) { return known.name == name; });
    return found == constants.end() ? nullptr : &found->value;
}

}  // namespace velmorak::expression
