#include "expression/TextCompiler.h"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

namespace velmorak::expression {
namespace {

/// @return the compiled regular expression that a text in quotes is, as a constant.
TypedOperand pattern(Compiler& compiler, const Node& node, const TypedOperand& text) {
    if (node.form != Form::Text || text.operand.in != Operand::In::Constant) {
        compiler.fail(node, "expected a regular expression in quotes");
    }
    try {
        return compiler.steps().pattern(node.text);
    } catch (const std::invalid_argument& error) {
        compiler.fail(node, std::string("the regular expression is wrong: ") + error.what());
    }
}

}  // namespace

TypedOperand compiledTexts(Compiler& compiler, const Node& node, const Function& function,
                           const std::vector<TypedOperand>& arguments) {
    std::vector<TypedOperand> values;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        values.push_back(compiler.converted(node, compiler.child(node, i), arguments[i], function.takes[i]));
    }
    if (values.size() < function.arguments) {
        values.push_back(compiler.steps().constant(std::numeric_limits<std::int64_t>::max(), ColumnType::Integer));
    }
    if (function.takesPattern) {
        values.back() = pattern(compiler, compiler.child(node, node.children.size() - 1), values.back());
    }
    const TypedOperand made = compiler.emit(node, function, ColumnType::Text, values, function.result);
    if (compiler.isModel() && made.operand.in != Operand::In::Constant) {
        compiler.fail(node, "the model of a fit has no texts");
    }
    return made;
}

}  // namespace velmorak::expression
