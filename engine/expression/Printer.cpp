#include "expression/Printer.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>

namespace velmorak::expression {

namespace {

constexpr int primaryLevel = 10;
constexpr int productLevel = 6;

/// Text with its level of precedence and the type that the compiler finds for it.
struct Written {
    std::string text;
    int level = primaryLevel;
    ColumnType type = ColumnType::Real;
};

std::string within(const Written& part, int level) {
    return part.level < level ? "(" + part.text + ")" : part.text;
}

Written real(double value) {
    if (std::isnan(value)) {
        return {"(0/0)"};
    }
    if (std::isinf(value)) {
        return {value > 0.0 ? "(1/0)" : "(-1/0)"};
    }
    std::string text = textOf(value);
    const bool isWhole = text.find_first_not_of("-0123456789") == std::string::npos;
    const bool isNegative = std::signbit(value);
    if (isWhole && isNegative && value == 0.0) {
        text += ".0";  // An integer has no negative zero.
    }
    return {text, isNegative ? 7 : primaryLevel, isWhole ? ColumnType::Integer : ColumnType::Real};
}

Written constant(const Block& block, ColumnType type) {
    const double value = numberIn(block, type);
    if (type == ColumnType::Boolean) {
        return {value != 0.0 ? "true" : "false", primaryLevel, type};
    }
    if (type == ColumnType::Real) {
        return real(value);
    }
    const auto integer = *reinterpret_cast<const std::int64_t*>(block.bytes);
    return {std::to_string(integer), integer < 0 ? 7 : primaryLevel, type};
}

Written call(const std::string& name, const std::vector<Written>& parts) {
    std::string text = name + "(";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : ",") + parts[i].text;
    }
    return {text + ")"};
}

Written inNotation(const Notation& notation, const std::vector<Written>& parts) {
    std::string text(notation.before);
    text += within(parts[0], notation.firstLevel);
    if (parts.size() > 1) {
        text += notation.between;
        text += within(parts[1], notation.otherLevel);
    }
    if (parts.size() > 2) {
        text += notation.beforeThird;
        text += within(parts[2], notation.otherLevel);
    }
    text += notation.after;
    return {text, notation.level};
}

/// Real constants such as 2 look like integers. Where nothing else makes an operation one of reals, a factor does.
void keepReal(const Step& step, std::vector<Written>& parts) {
    const bool hasReal =
        std::any_of(parts.begin(), parts.end(), [](const Written& part) { return part.type == ColumnType::Real; });
    if (step.function->rule == Rule::Arithmetic && step.type == ColumnType::Real && !hasReal) {
        parts[0] = {"1.0*" + within(parts[0], productLevel + 1), productLevel};
    }
}

Written operation(const Step& step, std::vector<Written>& parts) {
    keepReal(step, parts);
    const Notation& notation = step.function->notation;
    const bool isCall = notation.before.empty() && notation.between.empty();
    Written whole = isCall ? call(std::string(step.function->name), parts) : inNotation(notation, parts);
    whole.type = step.type;
    if (step.function->rule == Rule::Choice && parts[1].type != ColumnType::Real && parts[2].type != ColumnType::Real) {
        whole.type = parts[1].type;
    }
    return whole;
}

/// Writes steps in the order of execution.
class Printer {
public:
    Printer(const Code& code, const std::vector<std::string>& columns);

    std::string whole();

private:
    void count(const Operand& operand);
    Written take(const Operand& operand, ColumnType type);
    Written written(const Step& step);

    const Code& code;
    const std::vector<std::string>& columns;
    std::vector<Written> buffers;
    std::vector<std::size_t> uses;  ///< For each buffer, how many steps still need its text.
};

Printer::Printer(const Code& code, const std::vector<std::string>& columns)
    : code(code), columns(columns), buffers(code.buffers), uses(code.buffers) {
    for (const Step& step : code.steps) {
        for (const Operand& operand : step.in) {
            count(operand);
        }
    }
    count(code.result);
}

std::string Printer::whole() {
    for (const Step& step : code.steps) {
        Written& made = buffers[step.out.position];
        made = written(step);
        // Parts that are used several times, as in pol9(pol9(x)), multiply the text at each level.
        if (made.text.size() > maxCharacters) {
            throw Failure("the formula is too long");
        }
    }
    return take(code.result, code.type).text;
}

void Printer::count(const Operand& operand) {
    if (operand.in == Operand::In::Buffer) {
        ++uses[operand.position];
    }
}

Written Printer::take(const Operand& operand, ColumnType type) {
    switch (operand.in) {
        case Operand::In::Column:
            return {columns[operand.position]};
        case Operand::In::Constant:
            return constant(*code.constantAt[operand.position], type);
        default:
            break;
    }
    const bool isLastUse = --uses[operand.position] == 0;
    return isLastUse ? std::move(buffers[operand.position]) : buffers[operand.position];
}

Written Printer::written(const Step& step) {
    std::vector<Written> parts;
    for (std::size_t k = 0; k < 3 && step.in[k].in != Operand::In::Nothing; ++k) {
        parts.push_back(take(step.in[k], step.inType[k]));
    }
    // Conversions need no text: the compiler finds them again.
    return step.function ? operation(step, parts) : std::move(parts[0]);
}

/// Bounds the length of what Printer writes for steps.
class LengthBound {
public:
    LengthBound(const Code& code, const std::vector<std::string>& columns);

    std::size_t whole();

private:
    std::size_t bound(const Operand& operand) const;
    std::size_t bound(const Step& step) const;

    const Code& code;
    const std::vector<std::string>& columns;
    std::vector<std::size_t> buffers;
};

LengthBound::LengthBound(const Code& code, const std::vector<std::string>& columns)
    : code(code), columns(columns), buffers(code.buffers) {}

std::size_t LengthBound::whole() {
    for (const Step& step : code.steps) {
        // Parts that are used several times multiply the sum at each level.
        buffers[step.out.position] = std::min(bound(step), maxCharacters + 1);
    }
    return bound(code.result);
}

/// With parentheses, which a name does not need.
std::size_t LengthBound::bound(const Operand& operand) const {
    switch (operand.in) {
        case Operand::In::Nothing:
            return 0;
        case Operand::In::Column:
            return columns[operand.position].size();
        case Operand::In::Constant:
            return std::string_view("(-1.7976931348623157e+308)").size();
        default:
            return buffers[operand.position] + 2;
    }
}

std::size_t LengthBound::bound(const Step& step) const {
    std::size_t sum = bound(step.in[0]) + bound(step.in[1]) + bound(step.in[2]);
    if (step.function) {
        const Notation& notation = step.function->notation;
        sum += notation.before.size() + notation.between.size() + notation.beforeThird.size() + notation.after.size();
        sum += step.function->name.size() + std::string_view("(,,)").size();
    }
    const bool hasColumn = std::any_of(std::begin(step.in), std::end(step.in),
                                       [](const Operand& operand) { return operand.in == Operand::In::Column; });
    return hasColumn ? sum : sum + std::string_view("1.0*()").size();
}

}  // namespace

std::size_t printedLengthBound(const Code& code, const std::vector<std::string>& columns) {
    return LengthBound(code, columns).whole();
}

std::string printed(const Code& code, const std::vector<std::string>& columns) {
    return Printer(code, columns).whole();
}

}  // namespace velmorak::expression
