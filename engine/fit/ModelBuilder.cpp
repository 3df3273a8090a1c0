#include "fit/Model.h"

#include <velmorak/Text.h>
#include "expression/Compiler.h"

#include <algorithm>
#include <optional>
#include <set>

namespace velmorak::fitting {

namespace {

using expression::Buffers;
using expression::Compiler;
using expression::Form;
using expression::Node;
using expression::Operand;
using expression::TypedOperand;

bool isWord(const std::string& name) {
    const bool beginsWithDigit = name.empty() || (name.front() >= '0' && name.front() <= '9');
    return !beginsWithDigit && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               (c & 0x80) != 0;
    });
}

/// The names in the definition of a shape.
class ShapeNames : public expression::Scope {
public:
    void bind(std::string_view name, const TypedOperand& value) { bindings.emplace_back(name, value); }

    TypedOperand named(const Node& node, Compiler& /*compiler*/) override;

private:
    std::vector<std::pair<std::string_view, TypedOperand>> bindings;
};

TypedOperand ShapeNames::named(const Node& node, Compiler& /*compiler*/) {
    const auto found =
        std::find_if(bindings.begin(), bindings.end(), [&](const auto& each) { return each.first == node.text; });
    return found->second;
}

/// Compiles the text of a model: an expression of x, with shapes, in which other names are parameters.
/// Columns of the program: 0 is x, 1 + i is parameter i.
class ModelBuilder : public expression::Scope {
public:
    explicit ModelBuilder(std::string_view text) : text(text), compiler(text, Buffers::Kept) { model.text = text; }

    Model build();

    TypedOperand named(const Node& node, Compiler& compiler) override;
    std::optional<TypedOperand> called(const Node& call, const std::vector<TypedOperand>& arguments,
                                       Compiler& compiler) override;
    std::vector<std::string> callableNames() const override;

private:
    TypedOperand variable() { return compiler.steps().column(0, {.name = "x"}); }

    void warnIfLikeShape(const Node& node);

    TypedOperand parameter(const ModelParameter& wanted);

    /// @return the name, with a number if another parameter has it.
    std::string uniqueName(const std::string& wanted) const;

    /// Expands a shape.
    /// @param arguments x, optionally followed by all parameters.
    TypedOperand expand(const ShapeTemplate& shape, const std::vector<TypedOperand>& arguments, std::size_t offset);

    /// A user's parameter that takes the place of one of a shape inherits its meaning.
    void inherit(const TypedOperand& from, const ModelParameter& meaning, bool isPlain);

    std::string_view text;
    Compiler compiler;
    Model model;
    std::vector<std::string_view> written;  ///< Names in the text; views of the nodes in build.
    std::set<std::string> warned;
};

/// Lists and texts that are not known beforehand have neither a derivative nor a place among the values of a fit.
void checkSteps(std::string_view text, const expression::Code& code) {
    for (const expression::Step& step : code.steps) {
        const bool takesText = std::any_of(std::begin(step.inType), std::end(step.inType),
                                           [](ColumnType type) { return type == ColumnType::Text; });
        if (step.domain != expression::IterationDomain::Rows) {
            expression::throwAt(text, step.offset, "the model of a fit has no lists");
        }
        if (step.type == ColumnType::Text || takesText) {
            expression::throwAt(text, step.offset, "the model of a fit has no texts");
        }
    }
}

Model ModelBuilder::build() {
    const std::vector<Node> nodes = expression::parse(text);
    for (const Node& node : nodes) {
        if (node.form == Form::Name && node.text != "x") {
            written.push_back(node.text);
        }
    }
    const TypedOperand value = compiler.compile(nodes, *this);
    if (value.type == ColumnType::Text) {
        compiler.fail(nodes.back(), "a function cannot give a text");
    }
    const TypedOperand whole = compiler.asReal(nodes.back(), value);
    for (const ModelParameter& parameter : model.parameters) {
        model.names.push_back(parameter.name);
    }
    expression::Code code = std::move(compiler).finish(whole);
    checkSteps(text, code);
    model.program = Program(std::move(code), model.names.size(), std::string(text));
    return std::move(model);
}

TypedOperand ModelBuilder::named(const Node& node, Compiler& /*compiler*/) {
    if (node.text == "x") {
        return variable();
    }
    if (const ShapeTemplate* const shape = node.isQuoted ? nullptr : findShape(node.text)) {
        return expand(*shape, {variable()}, node.offset);
    }
    if (const double* const known = node.isQuoted ? nullptr : expression::findConstant(node.text)) {
        return compiler.constant(*known);
    }
    if (!isWord(node.text)) {
        compiler.fail(node, "the name of a parameter must be one word of letters, digits and _");
    }
    warnIfLikeShape(node);
    return parameter({node.text, Role::Any, 1.0, 0});
}

void ModelBuilder::warnIfLikeShape(const Node& node) {
    const std::string meant = node.isQuoted ? std::string() : intendedShape(node.text);
    if (meant.empty() || !warned.insert(node.text).second) {
        return;
    }
    model.warnings.push_back(velmorak::quoted(node.text) +
                             " is fitted as a parameter, not as a function of x; if you mean " + meant +
                             ", write its name, else write `" + node.text + "` in back quotes");
}

TypedOperand ModelBuilder::parameter(const ModelParameter& wanted) {
    std::vector<ModelParameter>& all = model.parameters;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& known) { return known.name == wanted.name; });
    const auto position = static_cast<std::size_t>(found - all.begin());
    if (found == all.end()) {
        all.push_back(wanted);
    }
    return compiler.steps().column(1 + position, {.name = wanted.name});
}

std::optional<TypedOperand> ModelBuilder::called(const Node& call, const std::vector<TypedOperand>& arguments,
                                                 Compiler& /*compiler*/) {
    const ShapeTemplate* const shape = findShape(call.text);
    if (!shape) {
        return std::nullopt;
    }
    if (arguments.size() != 1 && arguments.size() != 1 + shape->parameters.size()) {
        compiler.fail(
            call, shape->name + " takes x, or x and its " + std::to_string(shape->parameters.size()) + " parameters");
    }
    return expand(*shape, arguments, call.offset);
}

std::vector<std::string> ModelBuilder::callableNames() const {
    std::vector<std::string> names;
    for (const ShapeTemplate& shape : allShapes()) {
        names.push_back(shape.name);
    }
    return names;
}

std::string ModelBuilder::uniqueName(const std::string& wanted) const {
    const auto isTaken = [&](const std::string& name) {
        return std::find(written.begin(), written.end(), name) != written.end() ||
               std::any_of(model.parameters.begin(), model.parameters.end(),
                           [&](const auto& known) { return known.name == name; });
    };
    std::string name = wanted;
    for (int number = 2; isTaken(name); ++number) {
        name = wanted + "_" + std::to_string(number);
    }
    return name;
}

TypedOperand ModelBuilder::expand(const ShapeTemplate& shape, const std::vector<TypedOperand>& arguments,
                                  std::size_t offset) {
    ShapeNames names;
    names.bind("x", arguments.front());
    ++model.shapes;
    const bool isPlain = arguments.front().operand.in == Operand::In::Column && arguments.front().operand.position == 0;
    for (std::size_t i = 0; i < shape.parameters.size(); ++i) {
        const ShapeParameter& known = shape.parameters[i];
        const ModelParameter meaning{"", known.role, known.defaultStart, model.shapes};
        if (arguments.size() == 1) {
            ModelParameter made = meaning;
            made.name = uniqueName(known.name);
            names.bind(known.name, parameter(made));
        } else {
            names.bind(known.name, arguments[1 + i]);
            inherit(arguments[1 + i], meaning, isPlain);
        }
    }
    return compiler.compileDefinition(shape.tree, names, offset);
}

void ModelBuilder::inherit(const TypedOperand& from, const ModelParameter& meaning, bool isPlain) {
    if (from.operand.in != Operand::In::Column || from.operand.position == 0) {
        return;
    }
    ModelParameter& known = model.parameters[from.operand.position - 1];
    if (known.role == Role::Any && isPlain) {
        known = {known.name, meaning.role, meaning.defaultStart, meaning.shape};
    }
}

}  // namespace

Model buildModel(std::string_view text) {
    return ModelBuilder(text).build();
}

}  // namespace velmorak::fitting
