#pragma once

#include "fit/Program.h"
#include "fit/Shapes.h"

#include <velmorak/Fit.h>

#include <string>
#include <string_view>
#include <vector>

/// The compiled form of a model's text.
namespace velmorak::fitting {

struct ModelParameter {
    std::string name;
    Role role = Role::Any;
    double defaultStart = 1.0;
    std::size_t shape = 0;  ///< Number of the use of a shape that it belongs to, counted from 1; 0 for none.
};

struct Model {
    std::string text;
    Program program;
    std::vector<ModelParameter> parameters;
    std::vector<std::string> names;  ///< Of the parameters.
    std::size_t shapes = 0;          ///< Number of uses of shapes.
    std::vector<std::string> warnings;
};

/// Compiles a text.
/// @throws Failure whose message shows the text with a caret under the mistake.
Model buildModel(std::string_view text);

/// Checks what the text as a whole must satisfy: no parameter has a reserved name, and the formula can be evaluated
/// later, although it is longer than the text and nested deeper.
/// @throws Failure whose message shows the text with a caret under the mistake.
void checkModel(const Model& model, const ReservedNames& reserved);

/// @return the program as an expression of x[0] and the names of the parameters.
/// @throws Failure if it is longer than an expression may be.
std::string formulaOf(const Model& model);

/// Takes much less time than formulaOf.
/// @return at least the length of the formula.
std::size_t formulaLengthBound(const Model& model);

/// @return the model with these values of its parameters.
FunctionObject functionOf(const Model& model, const std::vector<double>& values);

/// Chooses parameters in which the model is jointly linear, greedily and in order.
/// @param wanted the candidates, one flag for each parameter.
/// @return the subset chosen.
std::vector<bool> linearAmong(const Program& program, std::vector<bool> wanted);

}  // namespace velmorak::fitting
