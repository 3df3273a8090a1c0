#pragma once

#include "expression/Tree.h"

#include <string>
#include <string_view>
#include <vector>

/// The shapes that a model's text can name, such as gauss and pol1.
namespace velmorak::fitting {

/// The meaning of a shape's parameter, from which its start value is estimated.
enum class Role { Any, Height, Location, Width, Slope, Tail };

struct ShapeParameter {
    std::string name;
    Role role = Role::Any;
    double defaultStart = 1.0;  ///< Start value if the data give no estimate.
};

/// A named formula of x and parameters.
struct ShapeTemplate {
    std::string name;
    std::vector<ShapeParameter> parameters;
    std::string formula;  ///< An expression in x and the names of the parameters.
    expression::Tree tree{};
};

inline constexpr int maxDegree = 9;

/// gauss, exponential, pol0 to pol9, breitwigner, crystalball.
const std::vector<ShapeTemplate>& allShapes();
/// @return null for any other name.
const ShapeTemplate* findShape(std::string_view name);
/// Recognises misspelt names of shapes.
/// @return the shape that a parameter's name resembles, as "the shape gauss"; empty for most names.
std::string intendedShape(std::string_view name);

}  // namespace velmorak::fitting
