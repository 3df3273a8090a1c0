#include "fit/Operations.h"

#include "fit/Program.h"
#include "fit/Shapes.h"

#include <algorithm>
#include <array>

namespace velmorak::fitting {

namespace {

constexpr std::array operations{Operation{"+", Op::Add, 2, false},
                                Operation{"-", Op::Subtract, 2, false},
                                Operation{"*", Op::Multiply, 2, false},
                                Operation{"/", Op::Divide, 2, false},
                                Operation{"%", Op::Remainder, 2, false},
                                Operation{"-sign", Op::Negate, 1, false},
                                Operation{"^", Op::Power, 2, false},
                                Operation{"<", Op::Less, 2, false},
                                Operation{"<=", Op::LessOrEqual, 2, false},
                                Operation{"==", Op::Equal, 2, false},
                                Operation{"!=", Op::Unequal, 2, false},
                                Operation{"&&", Op::And, 2, false},
                                Operation{"||", Op::Or, 2, false},
                                Operation{"!", Op::Not, 1, false},
                                Operation{"pow", Op::Power, 2, false},
                                Operation{"exp", Op::Exponential, 1, false},
                                Operation{"fmod", Op::Remainder, 2, false},
                                Operation{"remainder", Op::NearestRemainder, 2, false},
                                Operation{"copysign", Op::CopySign, 2, false},
                                Operation{"square", Op::Square, 1, false},
                                Operation{"atan2", Op::Arctangent2, 2, false},
                                Operation{"hypot", Op::Hypotenuse, 2, false},
                                Operation{"min", Op::Minimum, 2, true},
                                Operation{"max", Op::Maximum, 2, true},
                                Operation{"if", Op::Choice, 3, false}};

}  // namespace

const Operation* findOperation(std::string_view name) {
    const auto* const found = std::find_if(operations.begin(), operations.end(),
                                           [&](const Operation& operation) { return operation.name == name; });
    return found == operations.end() ? nullptr : found;
}

std::vector<std::string> callableNames() {
    std::vector<std::string> names = unaryNames();
    for (const Operation& operation : operations) {
        if (operation.name.front() >= 'a') {
            names.emplace_back(operation.name);
        }
    }
    for (const ShapeTemplate& shape : allShapes()) {
        names.push_back(shape.name);
    }
    return names;
}

}  // namespace velmorak::fitting
