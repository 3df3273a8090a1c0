#include "fit/ModelParts.h"

#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/FunctionValues.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>
#include "expression/Program.h"

#include <algorithm>
#include <array>
#include <numbers>
#include <set>

namespace velmorak::fitting {

namespace {

using expression::Form;
using expression::Node;
using expression::refuse;

struct Named {
    std::string_view name;
    Op op;
    std::size_t arguments;
    bool takesMore;
};

constexpr std::array operations{Named{"+", Op::Add, 2, false},
                                Named{"-", Op::Subtract, 2, false},
                                Named{"*", Op::Multiply, 2, false},
                                Named{"/", Op::Divide, 2, false},
                                Named{"%", Op::Remainder, 2, false},
                                Named{"-sign", Op::Negate, 1, false},
                                Named{"^", Op::Power, 2, false},
                                Named{"<", Op::Less, 2, false},
                                Named{"<=", Op::LessOrEqual, 2, false},
                                Named{"==", Op::Equal, 2, false},
                                Named{"!=", Op::Unequal, 2, false},
                                Named{"&&", Op::And, 2, false},
                                Named{"||", Op::Or, 2, false},
                                Named{"!", Op::Not, 1, false},
                                Named{"pow", Op::Power, 2, false},
                                Named{"exp", Op::Exponential, 1, false},
                                Named{"fmod", Op::Remainder, 2, false},
                                Named{"atan2", Op::Arctangent2, 2, false},
                                Named{"hypot", Op::Hypotenuse, 2, false},
                                Named{"min", Op::Minimum, 2, true},
                                Named{"max", Op::Maximum, 2, true},
                                Named{"if", Op::Choice, 3, false}};

const Named* findOperation(std::string_view name) {
    const auto* const found = std::find_if(operations.begin(), operations.end(),
                                           [&](const Named& operation) { return operation.name == name; });
    return found == operations.end() ? nullptr : found;
}

std::vector<std::string> callableNames() {
    std::vector<std::string> names = unaryNames();
    for (const Named& operation : operations) {
        if (operation.name.front() >= 'a') {
            names.emplace_back(operation.name);
        }
    }
    for (const Shape& shape : allShapes()) {
        names.push_back(shape.name);
    }
    return names;
}

bool isWord(const std::string& name) {
    const bool beginsWithDigit = name.empty() || (name.front() >= '0' && name.front() <= '9');
    return !beginsWithDigit && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               (c & 0x80) != 0;
    });
}

/// What the names of a shape's formula stand for.
using Bindings = std::vector<std::pair<std::string_view, std::size_t>>;

std::size_t boundTo(const Bindings& bindings, std::string_view name) {
    const auto found =
        std::find_if(bindings.begin(), bindings.end(), [&](const auto& each) { return each.first == name; });
    return found->second;
}

FunctionObject functionOf(const Model& model, const std::vector<double>& values) {
    FunctionObject made;
    std::string names;
    for (std::size_t i = 0; i < values.size(); ++i) {
        names += (i == 0 ? "" : ",") + model.names[i];
        made.parameters.push_back({model.names[i], values[i]});
    }
    made.codelet = "codelet:fit:verbatim:jel : 1 : " + formulaOf(model) + " : " + names + " : null";
    made.arguments.push_back({"x0", {FunctionObject::Range{}}});
    return made;
}

/// Makes the program of a text.
class Builder {
public:
    Builder(std::string_view modelText, const ReservedNames& reserved) : text(modelText), reserved(reserved) {
        model.text = modelText;
    }

    Model build();

private:
    /// Every name but x must be bound where bindings are given: the text is then a shape's formula.
    std::size_t convert(const std::vector<Node>& nodes, const Bindings* bindings);

    std::size_t add(const Step& step);

    std::size_t constant(double value) { return add({.op = Op::Constant, .constant = value}); }

    std::size_t variable();

    std::size_t named(const Node& node);

    void warnAbout(const Node& node);

    std::size_t parameter(const ModelParameter& wanted);

    std::size_t call(const Node& node, const std::vector<std::size_t>& children);

    std::size_t operationOf(const Named& known, const Node& node, const std::vector<std::size_t>& children);

    /// Computes at once what is constant.
    std::size_t operation(Step step, const std::vector<std::size_t>& children);

    /// A name that is taken gets the next number.
    std::string freeName(const std::string& wanted) const;

    /// @param children the argument, then what stands for the parameters, or nothing.
    std::size_t shaped(const Shape& shape, const std::vector<std::size_t>& children);

    /// A parameter of the user's that stands alone for one of a shape has its meaning.
    void learn(std::size_t step, const ModelParameter& meaning, bool isPlain);

    void refuseReserved() const;

    /// What is fitted must be computable later from the formula alone, which is longer than the text and nests deeper.
    void refuseUnwritable() const;

    std::string_view text;
    const ReservedNames& reserved;
    Model model;
    std::vector<std::string_view> written;  ///< In the text; views of the parts that build holds.
    std::set<std::string> warned;
    std::optional<std::size_t> placeOfVariable;
};

Model Builder::build() {
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
    refuseReserved();
    refuseUnwritable();
    return std::move(model);
}

std::size_t Builder::convert(const std::vector<Node>& nodes, const Bindings* bindings) {
    std::vector<std::size_t> steps;
    std::vector<std::size_t> children;
    steps.reserve(nodes.size());
    for (const Node& node : nodes) {
        children.clear();
        for (const std::size_t child : node.children) {
            children.push_back(steps[child]);
        }
        if (node.form == Form::Name) {
            steps.push_back(bindings ? boundTo(*bindings, node.text) : named(node));
        } else if (node.form == Form::Call) {
            steps.push_back(call(node, children));
        } else if (node.form == Form::Text) {
            refuse(text, node.place, "a text is no value of a function");
        } else {
            steps.push_back(constant(node.form == Form::Real ? node.real : static_cast<double>(node.integer)));
        }
    }
    return steps.back();
}

std::size_t Builder::add(const Step& step) {
    model.program.steps.push_back(step);
    return model.program.steps.size() - 1;
}

std::size_t Builder::variable() {
    if (!placeOfVariable) {
        placeOfVariable = add({.op = Op::Variable, .dependsOnPlace = true});
    }
    return *placeOfVariable;
}

std::size_t Builder::named(const Node& node) {
    if (node.text == "x") {
        return variable();
    }
    if (!node.isQuoted && findShape(node.text)) {
        return shaped(*findShape(node.text), {variable()});
    }
    if (!node.isQuoted && expression::isConstant(node.text)) {
        return constant(node.text == "e" ? std::numbers::e : std::numbers::pi);
    }
    if (!isWord(node.text)) {
        refuse(text, node.place, "a parameter's name is one word of letters, digits and _");
    }
    warnAbout(node);
    return parameter({node.text, Role::Any, 1.0, 0});
}

void Builder::warnAbout(const Node& node) {
    const std::string meant = node.isQuoted ? std::string() : shapeMeantBy(node.text);
    if (meant.empty() || !warned.insert(node.text).second) {
        return;
    }
    model.warnings.push_back(quoted(node.text) + " is fitted as a parameter, not as a function of x; if " + meant +
                             " is meant, write its name, else `" + node.text + "` in back quotes");
}

std::size_t Builder::parameter(const ModelParameter& wanted) {
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

std::size_t Builder::call(const Node& node, const std::vector<std::size_t>& children) {
    if (const Shape* const shape = findShape(node.text)) {
        if (children.size() != 1 && children.size() != 1 + shape->parameters.size()) {
            refuse(text, node.place,
                   shape->name + " takes x, or x and its " + std::to_string(shape->parameters.size()) + " parameters");
        }
        return shaped(*shape, children);
    }
    if (node.text == "+sign") {
        return children.front();
    }
    if (node.text == ">" || node.text == ">=") {
        return operation({.op = node.text == ">" ? Op::Less : Op::LessOrEqual}, {children[1], children[0]});
    }
    if (const Named* const known = findOperation(node.text)) {
        return operationOf(*known, node, children);
    }
    const UnaryFunction* const function = findUnary(node.text);
    if (!function) {
        refuse(text, node.place, "there is no function " + quoted(node.text) + suggestion(node.text, callableNames()));
    }
    if (children.size() != 1) {
        refuse(text, node.place, node.text + " takes one argument");
    }
    return operation({.op = Op::Function, .function = function}, children);
}

std::size_t Builder::operationOf(const Named& known, const Node& node, const std::vector<std::size_t>& children) {
    if (known.takesMore ? children.size() < known.arguments : children.size() != known.arguments) {
        refuse(text, node.place,
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

std::size_t Builder::operation(Step step, const std::vector<std::size_t>& children) {
    bool isConstant = true;
    const double* in[3] = {nullptr, nullptr, nullptr};
    for (std::size_t i = 0; i < children.size(); ++i) {
        const Step& from = model.program.steps[children[i]];
        step.in[i] = children[i];
        step.dependsOnParameters = step.dependsOnParameters || from.dependsOnParameters;
        step.dependsOnPlace = step.dependsOnPlace || from.dependsOnPlace;
        isConstant = isConstant && from.op == Op::Constant;
        in[i] = &from.constant;
    }
    if (!isConstant) {
        return add(step);
    }
    double value = 0.0;
    perform(step, in, 1, &value);
    return constant(value);
}

std::string Builder::freeName(const std::string& wanted) const {
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

std::size_t Builder::shaped(const Shape& shape, const std::vector<std::size_t>& children) {
    Bindings bindings{{"x", children.front()}};
    bindings.reserve(1 + shape.parameters.size());
    ++model.shapes;
    const bool isPlain = model.program.steps[children.front()].op == Op::Variable;
    for (std::size_t i = 0; i < shape.parameters.size(); ++i) {
        const ShapeParameter& known = shape.parameters[i];
        const ModelParameter meaning{"", known.role, known.defaultStart, model.shapes};
        if (children.size() == 1) {
            ModelParameter made = meaning;
            made.name = freeName(known.name);
            bindings.emplace_back(known.name, parameter(made));
        } else {
            bindings.emplace_back(known.name, children[1 + i]);
            learn(children[1 + i], meaning, isPlain);
        }
    }
    return convert(shape.parsed, &bindings);
}

void Builder::learn(std::size_t step, const ModelParameter& meaning, bool isPlain) {
    const Step& from = model.program.steps[step];
    if (from.op != Op::Parameter) {
        return;
    }
    ModelParameter& known = model.parameters[from.parameter];
    if (known.role == Role::Any && isPlain) {
        known = {known.name, meaning.role, meaning.defaultStart, meaning.shape};
    }
}

void Builder::refuseReserved() const {
    for (const ModelParameter& parameter : model.parameters) {
        const std::string_view name = parameter.name;
        const bool hasSuffix = !reserved.suffix.empty() && name.ends_with(reserved.suffix);
        const std::string_view stem = hasSuffix ? name.substr(0, name.size() - reserved.suffix.size()) : "";
        const bool isTwice = std::any_of(model.parameters.begin(), model.parameters.end(),
                                         [&](const auto& other) { return !stem.empty() && other.name == stem; });
        if (isTwice || std::find(reserved.names.begin(), reserved.names.end(), name) != reserved.names.end()) {
            refuse(text, std::min(text.find(parameter.name), text.size()),
                   quoted(parameter.name) + " is the name of another output; choose another name for the parameter");
        }
    }
}

void Builder::refuseUnwritable() const {
    try {
        FunctionValues{functionOf(model, std::vector<double>(model.names.size(), 1.0))};
    } catch (const Failure&) {
        refuse(text, 0,
               "the formula of this model, with its shapes written out, has more than " +
                   std::to_string(expression::maxCharacters) + " characters or more than " +
                   textOf(expression::maxParentheses) + " parentheses one within the other");
    }
}

}  // namespace

Model modelOf(std::string_view text, const ReservedNames& reserved) {
    return Builder(text, reserved).build();
}

}  // namespace velmorak::fitting

namespace velmorak {

FitModel::FitModel(std::string_view text, const ReservedNames& reserved)
    : model(std::make_shared<const fitting::Model>(fitting::modelOf(text, reserved))) {}

const std::vector<std::string>& FitModel::parameters() const {
    return model->names;
}

const std::vector<std::string>& FitModel::warnings() const {
    return model->warnings;
}

FunctionObject FitModel::function(const std::vector<double>& values) const {
    return fitting::functionOf(*model, values);
}

}  // namespace velmorak
