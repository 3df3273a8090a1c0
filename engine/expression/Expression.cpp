#include <velmorak/Expression.h>

#include <velmorak/Failure.h>
#include "expression/Evaluation.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <string_view>

namespace velmorak {

namespace {

using expression::Code;
using expression::Operand;

/// Kinds compile expressions without a context, so this belongs to the process.
std::atomic<std::uint64_t> maxCombinations = Expression::defaultMaxCombinations;

}  // namespace

struct Expression::Program : expression::Source {};

Expression::Expression(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers)
    : program(std::make_unique<Program>()) {
    program->text = text;
    program->code = expression::compile(text, columns, numbers);
    program->columns = columns.columns();
    program->maxCombinations = program->code.makesCombinations ? maxCombinations.load() : 0;
}

Expression::Expression(Expression&&) noexcept = default;
Expression& Expression::operator=(Expression&&) noexcept = default;
Expression::~Expression() = default;

void Expression::limitCombinations(std::uint64_t most) {
    maxCombinations = most;
}

ColumnType Expression::type() const {
    return program->code.type;
}

bool Expression::isList() const {
    return program->code.isList;
}

const std::vector<std::size_t>& Expression::usedColumns() const {
    return program->code.usedColumns;
}

ColumnPtr Expression::evaluate(const Chunk& chunk) const {
    const Code& code = program->code;
    for (const std::size_t position : code.usedColumns) {
        const ColumnInfo& info = program->columns[position];
        if (position >= chunk.columns.size() || !chunk.columns[position] ||
            chunk.columns[position]->type() != info.type || chunk.columns[position]->isList() != info.isList) {
            throw std::logic_error("the chunk is not of the schema that the expression was checked against");
        }
    }
    if (code.result.in == Operand::In::Column) {
        return chunk.columns[code.result.position];
    }
    return expression::Evaluation(*program, chunk).run();
}

std::vector<std::string> namesIn(std::string_view text) {
    std::vector<std::string> names;
    for (const expression::Node& node : expression::parse(text)) {
        const bool isName =
            node.form == expression::Form::Name && (node.isQuoted || !expression::isConstant(node.text));
        if (isName && std::find(names.begin(), names.end(), node.text) == names.end()) {
            names.push_back(node.text);
        }
    }
    return names;
}

std::string expressionRefusal(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    try {
        expression::parse(text);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
