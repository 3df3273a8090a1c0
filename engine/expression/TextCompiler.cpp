#include "expression/Compiler.h"

#include <cstdint>
#include <limits>
#include <stdexcept>

/// Compiles functions of texts.
namespace velmorak::expression {

TypedOperand Compiler::ofTexts(const Node& node, const Function& function, const std::vector<TypedOperand>& arguments) {
    std::vector<TypedOperand> values;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        values.push_back(converted(node, (*nodes)[node.children[i]], arguments[i], function.takes[i]));
    }
    if (values.size() < function.arguments) {
        values.push_back(emitter.constant(std::numeric_limits<std::int64_t>::max(), ColumnType::Integer));
    }
    if (function.takesPattern) {
        values.back() = pattern((*nodes)[node.children.back()], values.back());
    }
    const TypedOperand made = emit(node, function, ColumnType::Text, values, function.result);
    if (!joinsEqual && made.operand.in != Operand::In::Constant) {
        fail(node, "the model of a fit has no texts");
    }
    return made;
}

TypedOperand Compiler::pattern(const Node& node, const TypedOperand& text) {
    if (node.form != Form::Text || text.operand.in != Operand::In::Constant) {
        fail(node, "expected a regular expression in quotes");
    }
    try {
        return emitter.pattern(node.text);
    } catch (const std::invalid_argument& error) {
        fail(node, std::string("the regular expression is wrong: ") + error.what());
    }
}

}  // namespace velmorak::expression
