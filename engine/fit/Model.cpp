#include "fit/Model.h"

#include "expression/Printer.h"

#include <velmorak/Failure.h>
#include <velmorak/Fit.h>
#include <velmorak/Text.h>

#include <algorithm>

namespace velmorak::fitting {

namespace {

using expression::throwAt;

/// The outputs of a fit are its parameters, their errors (name and suffix), and those of fixed names.
void checkOutputNames(const Model& model, const ReservedNames& reserved) {
    for (const ModelParameter& parameter : model.parameters) {
        const std::string_view name = parameter.name;
        const bool hasSuffix = !reserved.suffix.empty() && name.ends_with(reserved.suffix);
        const std::string_view stem = hasSuffix ? name.substr(0, name.size() - reserved.suffix.size()) : "";
        const bool isTwice = std::any_of(model.parameters.begin(), model.parameters.end(),
                                         [&](const auto& other) { return !stem.empty() && other.name == stem; });
        if (isTwice || std::find(reserved.names.begin(), reserved.names.end(), name) != reserved.names.end()) {
            throwAt(model.text, std::min(model.text.find(parameter.name), model.text.size()),
                    velmorak::quoted(parameter.name) +
                        " is the name of another output; choose another name for the parameter");
        }
    }
}

/// @return the name, in back quotes if it is a word of the language.
std::string nameIn(const std::string& name) {
    for (const std::string_view word : {"and", "or", "not", "true", "false"}) {
        if (name == word) {
            return "`" + name + "`";
        }
    }
    return name;
}

/// How a formula refers to x and the parameters.
std::vector<std::string> columnsOf(const Model& model) {
    std::vector<std::string> columns{"x[0]"};
    columns.reserve(1 + model.names.size());
    for (const std::string& name : model.names) {
        columns.push_back(nameIn(name));
    }
    return columns;
}

void checkFormulaLength(const Model& model) {
    if (formulaLengthBound(model) <= std::size_t{expression::maxParentheses}) {
        return;
    }
    try {
        expression::parse(formulaOf(model));  // Types need no check: they are those of the program.
    } catch (const Failure&) {
        throwAt(model.text, 0,
                "the formula of this model, with its shapes written out, has more than " +
                    std::to_string(expression::maxCharacters) + " characters or more than " +
                    std::to_string(expression::maxParentheses) + " nested parentheses");
    }
}

}  // namespace

std::string formulaOf(const Model& model) {
    return expression::printed(model.program.code(), columnsOf(model));
}

std::size_t formulaLengthBound(const Model& model) {
    return expression::printedLengthBound(model.program.code(), columnsOf(model));
}

void checkModel(const Model& model, const ReservedNames& reserved) {
    checkOutputNames(model, reserved);
    checkFormulaLength(model);
}

FunctionObject functionOf(const Model& model, const std::vector<double>& values) {
    FunctionObject function;
    std::string names;
    for (std::size_t i = 0; i < values.size(); ++i) {
        names += (i == 0 ? "" : ",") + model.names[i];
        function.parameters.push_back({model.names[i], values[i]});
    }
    function.codelet = "codelet:fit:verbatim:jel : 1 : " + formulaOf(model) + " : " + names + " : null";
    function.arguments.push_back({"x0", {FunctionObject::Range{}}});
    return function;
}

}  // namespace velmorak::fitting

namespace velmorak {

FitModel::FitModel(std::string_view text, const ReservedNames& reserved) {
    auto compiled = std::make_shared<fitting::Model>(fitting::buildModel(text));
    fitting::checkModel(*compiled, reserved);
    model = std::move(compiled);
}

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
