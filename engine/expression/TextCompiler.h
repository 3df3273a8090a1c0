#pragma once

#include "expression/Compiler.h"

#include <vector>

namespace velmorak::expression {

/// Compiles the call of a function of texts.
TypedOperand compiledTexts(Compiler& compiler, const Node& node, const Function& function,
                           const std::vector<TypedOperand>& arguments);

}  // namespace velmorak::expression
