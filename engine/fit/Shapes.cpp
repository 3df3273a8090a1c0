#include "fit/Shapes.h"

#include <velmorak/Fit.h>

#include <algorithm>

namespace velmorak::fitting {

namespace {

/// p0 + x (p1 + x (p2 + ...)).
ShapeTemplate polynomial(int degree) {
    ShapeTemplate shape{"pol" + std::to_string(degree), {}, {}, {}};
    for (int power = 0; power <= degree; ++power) {
        const std::string name = "p" + std::to_string(power);
        shape.parameters.push_back({name, Role::Height, 0.0});
        shape.formula += power < degree ? name + "+x*(" : name;
    }
    shape.formula.append(static_cast<std::size_t>(degree), ')');
    return shape;
}

std::vector<ShapeTemplate> makeShapes() {
    const ShapeParameter height{"amplitude", Role::Height, 1.0};
    const ShapeParameter mean{"mean", Role::Location, 0.0};
    std::vector<ShapeTemplate> shapes{
        {"gauss", {height, mean, {"sigma", Role::Width, 1.0}}, "amplitude*exp(-0.5*((x-mean)/sigma)^2)"},
        {"exponential", {{"norm", Role::Height, 1.0}, {"slope", Role::Slope, -1.0}}, "norm*exp(slope*x)"},
        {"breitwigner", {height, mean, {"gamma", Role::Width, 1.0}}, "amplitude/(1+(2*(x-mean)/gamma)^2)"},
        {"crystalball",
         {height, mean, {"sigma", Role::Width, 1.0}, {"alpha", Role::Tail, 1.5}, {"n", Role::Tail, 3.0}},
         "amplitude*((x-mean)/sigma > -alpha ? exp(-0.5*((x-mean)/sigma)^2)"
         " : exp(-0.5*alpha^2)*pow(1-alpha/n*(alpha+(x-mean)/sigma), -n))"}};
    for (int degree = 0; degree <= maxDegree; ++degree) {
        shapes.push_back(polynomial(degree));
    }
    for (ShapeTemplate& shape : shapes) {
        shape.tree = expression::rewritten(shape.formula, expression::parse(shape.formula), false);
    }
    return shapes;
}

}  // namespace

const std::vector<ShapeTemplate>& allShapes() {
    static const std::vector<ShapeTemplate> shapes = makeShapes();
    return shapes;
}

const ShapeTemplate* findShape(std::string_view name) {
    const std::vector<ShapeTemplate>& shapes = allShapes();
    const auto found =
        std::find_if(shapes.begin(), shapes.end(), [&](const ShapeTemplate& shape) { return shape.name == name; });
    return found == shapes.end() ? nullptr : &*found;
}

std::string intendedShape(std::string_view name) {
    constexpr std::size_t shortest = 4;  // Shorter words begin too many names.
    std::string word;
    for (const char c : name) {
        if (c != '_') {
            word += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    const bool isPolynomial = word.starts_with("pol") && word.size() > 3 &&
                              word.find_first_not_of("0123456789", word[3] == 'y' ? 4 : 3) == std::string::npos;
    if (isPolynomial) {
        return "one of the shapes pol0 to pol" + std::to_string(maxDegree);
    }
    if (word.size() > 5 && word.ends_with("ian")) {
        word.resize(word.size() - 3);  // Gaussian.
    }
    while (word.size() > shortest && word.back() >= '0' && word.back() <= '9') {
        word.pop_back();
    }
    for (const ShapeTemplate& shape : allShapes()) {
        if (word.size() >= shortest && shape.name.starts_with(word)) {
            return "the shape " + shape.name;
        }
    }
    return {};
}

}  // namespace velmorak::fitting

namespace velmorak {

std::string FitModel::shapes() {
    std::string text;
    for (const fitting::ShapeTemplate& shape : fitting::allShapes()) {
        if (shape.name.starts_with("pol") && shape.name != "pol2") {
            continue;
        }
        text += "| `" + shape.name + "` |";
        for (const fitting::ShapeParameter& parameter : shape.parameters) {
            text += " `" + parameter.name + "`";
        }
        text += " | `" + shape.formula + "` |\n";
    }
    return text;
}

}  // namespace velmorak
