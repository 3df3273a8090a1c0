#pragma once

#include "expression/Syntax.h"
#include "fit/Program.h"

#include <velmorak/Fit.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What a fit knows of its model.
namespace velmorak::fitting {

/// What a parameter of a shape means, so that its value can be estimated from the data.
enum class Role { Any, Height, Location, Width, Slope, Shape };

struct ShapeParameter {
    std::string name;
    Role role = Role::Any;
    double defaultStart = 1.0;  ///< Start value where the data tell nothing.
};

/// A name in a model's text that stands for a formula of x and parameters.
struct Shape {
    std::string name;
    std::vector<ShapeParameter> parameters;
    std::string formula;  ///< An expression in x and the names of the parameters.
    std::vector<expression::Node> parsed{};
};

inline constexpr int highestDegree = 9;

/// gauss, exponential, pol0 to pol9, breitwigner, crystalball.
const std::vector<Shape>& allShapes();
/// @return null for any other name.
const Shape* findShape(std::string_view name);
/// @return what a name seems to mean that is no shape, as "the shape gauss"; empty for most names.
std::string shapeMeantBy(std::string_view name);

/// What is known of a parameter of a model.
struct ModelParameter {
    std::string name;
    Role role = Role::Any;
    double defaultStart = 1.0;
    std::size_t shape = 0;  ///< Parameters of one use of a shape share a number, counted from 1; 0 for the others.
};

struct Model {
    std::string text;
    Program program;
    std::vector<ModelParameter> parameters;
    std::vector<std::string> names;
    std::size_t shapes = 0;
    std::vector<std::string> warnings;  ///< Sentences on parameters whose names look like those of shapes.
};

/// @throws Failure with the text and a caret under the place.
Model modelOf(std::string_view text, const ReservedNames& reserved = {});

/// The program as an expression of x[0] and the parameters' names.
/// @throws Failure when it becomes longer than an expression may be.
std::string formulaOf(const Model& model);

/// @return for each parameter whether the function is linear in all those together for which wanted is true, and it is
///         one of them; parameters that spoil this are dropped, the later ones first.
std::vector<bool> linearAmong(const Program& program, std::vector<bool> wanted);

}  // namespace velmorak::fitting
