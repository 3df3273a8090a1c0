#include "fit/Model.h"
#include "fit/Operations.h"

#include <velmorak/Text.h>
#include "expression/Program.h"

#include <algorithm>
#include <optional>
#include <set>

namespace velmorak::fitting {

namespace {

using expression::Form;
using expression::Node;
using expression::throwAt;

bool isWord(const std::string& name) {
    const bool beginsWithDigit = name.empty() || (name.front() >= '0' && name.front() <= '9');
    return !beginsWithDigit && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               (c & 0x80) != 0;
    });
}

/// The steps that the names in a shape's formula stand for.
using Bindings = std::vector<std::pair<std::string_view, std::size_t>>;

std::size_t boundTo(const Bindings& bindings, std::string_view name) {
    const auto found =
        std::find_if(bindings.begin(), bindings.end(), [&](const auto& each) { return each.first == name; });
    return found->second;
}

/// Compiles the text of a model.
class ModelBuilder {
public:
    explicit ModelBuilder(std::string_view text) : text(text) { model.text = text; }

    Model build();

private:
    /// @param bindings null for the text itself; for a shape's formula, the meaning of every name in it.
    /// @return the step of the whole.
    std::size_t convert(const std::vector<Node>& nodes, const Bindings* bindings);

    std::size_t add(const Step& step);

    std::size_t constant(double value) { return add({.op = Op::Constant, .constant = value}); }

    std::size_t variable();

    std::size_t nameStep(const Node& node);

    void warnIfLikeShape(const Node& node);

    std::size_t parameter(const ModelParameter& wanted);

    std::size_t call(const Node& node, const std::vector<std::size_t>& children);

    std::size_t operationOf(const Operation& known, const Node& node, const std::vector<std::size_t>& children);

    /// Folds constants.
    std::size_t operation(Step step, const std::vector<std::size_t>& children);

    /// @return the name, with a number if another parameter has it.
    std::string uniqueName(const std::string& wanted) const;

    /// Expands a shape.
    /// @param children the argument, optionally followed by all parameters.
    std::size_t expand(const ShapeTemplate& shape, const std::vector<std::size_t>& children);

    /// A user's parameter that takes the place of one of a shape inherits its meaning.
    void inherit(std::size_t step, const ModelParameter& meaning, bool isPlain);

    std::string_view text;
    Model model;
    std::vector<std::string_view> written;  ///< Names in the text; views of the nodes in build.
    std::set<std::string> warned;
    std::optional<std::size_t> stepOfVariable;
};

Model ModelBuilder::build() {
    const std::vector<Node> nodes = expression::parse(text);
    for (const Node& node : nodes) {
        if (node.form == Form::Name && node.text != "x") {
            written.push_back(node.text);
        }
    }
    model.program.result = convert(nodes, nullptr);
    for (const ModelParameter& parameter : model.parameters) {
        model.names.push_back(parameter.name);
    }
    return std::move(model);
}

std::size_t ModelBuilder::convert(const std::vector<Node>& nodes, const Bindings* bindings) {
    std::vector<std::size_t> steps;
    std::vector<std::size_t> children;
    steps.reserve(nodes.size());
    for (const Node& node : nodes) {
        children.clear();
        for (const std::size_t child : node.children) {
            children.push_back(steps[child]);
        }
        if (node.form == Form::Name) {
            steps.push_back(bindings ? boundTo(*bindings, node.text) : nameStep(node));
        } else if (node.form == Form::Call) {
            steps.push_back(call(node, children));
        } else if (node.form == Form::Text) {
            throwAt(text, node.offset, "a text cannot be part of a function");
        } else {
            steps.push_back(constant(node.form == Form::Real ? node.real : static_cast<double>(node.integer)));
        }
    }
    return steps.back();
}

std::size_t ModelBuilder::add(const Step& step) {
    model.program.steps.push_back(step);
    return model.program.steps.size() - 1;
}

std::size_t ModelBuilder::variable() {
    if (!stepOfVariable) {
        stepOfVariable = add({.op = Op::Variable, .dependsOnX = true});
    }
    return *stepOfVariable;
}

std::size_t ModelBuilder::nameStep(const Node& node) {
    if (node.text == "x") {
        return variable();
    }
    if (!node.isQuoted && findShape(node.text)) {
        return expand(*findShape(node.text), {variable()});
    }
    if (const double* const known = node.isQuoted ? nullptr : expression::findConstant(node.text)) {
        return constant(*known);
    }
    if (!isWord(node.text)) {
        throwAt(text, node.offset, "the name of a parameter must be one word of letters, digits and _");
    }
    warnIfLikeShape(node);
    return parameter({node.text, Role::Any, 1.0, 0});
}

void ModelBuilder::warnIfLikeShape(const Node& node) {
    const std::string meant = node.isQuoted ? std::string() : intendedShape(node.text);
    if (meant.empty() || !warned.insert(node.text).second) {
        return;
    }
    model.warnings.push_back(quoted(node.text) + " is fitted as a parameter, not as a function of x; if you mean " +
                             meant + ", write its name, else write `" + node.text + "` in back quotes");
}

std::size_t ModelBuilder::parameter(const ModelParameter& wanted) {
    std::vector<ModelParameter>& all = model.parameters;
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& known) { return known.name == wanted.name; });
    if (found != all.end()) {
        return model.program.stepOfParameter[static_cast<std::size_t>(found - all.begin())];
    }
    all.push_back(wanted);
    model.program.stepOfParameter.push_back(
        add({.op = Op::Parameter, .parameter = all.size() - 1, .dependsOnParameters = true}));
    return model.program.stepOfParameter.back();
}

std::size_t ModelBuilder::call(const Node& node, const std::vector<std::size_t>& children) {
    if (const ShapeTemplate* const shape = findShape(node.text)) {
        if (children.size() != 1 && children.size() != 1 + shape->parameters.size()) {
            throwAt(text, node.offset,
                    shape->name + " takes x, or x and its " + std::to_string(shape->parameters.size()) + " parameters");
        }
        return expand(*shape, children);
    }
    if (node.text == "+sign") {
        return children.front();
    }
    if (node.text == ">" || node.text == ">=") {
        return operation({.op = node.text == ">" ? Op::Less : Op::LessOrEqual}, {children[1], children[0]});
    }
    if (const Operation* const known = findOperation(node.text)) {
        return operationOf(*known, node, children);
    }
    const UnaryFunction* const function = findUnary(node.text);
    if (!function) {
        throwAt(text, node.offset,
                "there is no function " + quoted(node.text) + suggestion(node.text, callableNames()));
    }
    if (children.size() != 1) {
        throwAt(text, node.offset, node.text + " takes one argument");
    }
    return operation({.op = Op::Function, .function = function}, children);
}

std::size_t ModelBuilder::operationOf(const Operation& known, const Node& node,
                                      const std::vector<std::size_t>& children) {
    if (known.takesMore ? children.size() < known.arguments : children.size() != known.arguments) {
        throwAt(text, node.offset,
                node.text + " takes " + std::to_string(known.arguments) +
                    (known.takesMore        ? " arguments or more"
                     : known.arguments == 1 ? " argument"
                                            : " arguments"));
    }
    if (known.op == Op::Power) {
        const Step& exponent = model.program.steps[children[1]];
        if (exponent.op == Op::Constant && exponent.constant == 2.0) {
            return operation({.op = Op::Square}, {children[0]});
        }
    }
    std::size_t result = operation({.op = known.op},
                                   {children.begin(), children.begin() + static_cast<std::ptrdiff_t>(known.arguments)});
    for (std::size_t i = known.arguments; i < children.size(); ++i) {
        result = operation({.op = known.op}, {result, children[i]});
    }
    return result;
}

std::size_t ModelBuilder::operation(Step step, const std::vector<std::size_t>& children) {
    bool isConstant = true;
    const double* in[3] = {nullptr, nullptr, nullptr};
    for (std::size_t i = 0; i < children.size(); ++i) {
        const Step& from = model.program.steps[children[i]];
        step.in[i] = children[i];
        step.dependsOnParameters = step.dependsOnParameters || from.dependsOnParameters;
        step.dependsOnX = step.dependsOnX || from.dependsOnX;
        isConstant = isConstant && from.op == Op::Constant;
        in[i] = &from.constant;
    }
    if (!isConstant) {
        return add(step);
    }
    double value = 0.0;
    executeStep(step, in, 1, &value);
    return constant(value);
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

std::size_t ModelBuilder::expand(const ShapeTemplate& shape, const std::vector<std::size_t>& children) {
    Bindings bindings{{"x", children.front()}};
    bindings.reserve(1 + shape.parameters.size());
    ++model.shapes;
    const bool isPlain = model.program.steps[children.front()].op == Op::Variable;
    for (std::size_t i = 0; i < shape.parameters.size(); ++i) {
        const ShapeParameter& known = shape.parameters[i];
        const ModelParameter meaning{"", known.role, known.defaultStart, model.shapes};
        if (children.size() == 1) {
            ModelParameter made = meaning;
            made.name = uniqueName(known.name);
            bindings.emplace_back(known.name, parameter(made));
        } else {
            bindings.emplace_back(known.name, children[1 + i]);
            inherit(children[1 + i], meaning, isPlain);
        }
    }
    return convert(shape.parsed, &bindings);
}

void ModelBuilder::inherit(std::size_t step, const ModelParameter& meaning, bool isPlain) {
    const Step& from = model.program.steps[step];
    if (from.op != Op::Parameter) {
        return;
    }
    ModelParameter& known = model.parameters[from.parameter];
    if (known.role == Role::Any && isPlain) {
        known = {known.name, meaning.role, meaning.defaultStart, meaning.shape};
    }
}

}  // namespace

Model buildModel(std::string_view text) {
    return ModelBuilder(text).build();
}

}  // namespace velmorak::fitting
