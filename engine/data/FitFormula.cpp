#include "FitModelParts.h"

#include "velmorak/Value.h"

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

/// How tightly an operation binds, as in docs/expressions.md; 10 for what needs no parentheses anywhere.
struct Written {
    std::string text;
    int level = 10;
};

std::string within(const Written& part, int level) {
    return part.level < level ? "(" + part.text + ")" : part.text;
}

Written call(const std::string& name, const std::vector<Written>& parts) {
    std::string text = name + "(";
    for (std::size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : ",") + parts[i].text;
    return {text + ")", 10};
}

Written constant(double value) {
    if (std::isnan(value))
        return {"(0/0)", 10};
    if (std::isinf(value))
        return {value > 0.0 ? "(1/0)" : "(-1/0)", 10};
    return {textOf(value), std::signbit(value) ? 7 : 10};
}

/// The right side of - and / binds tighter, so that the tree is kept.
Written infix(const std::string& symbol, int level, const std::vector<Written>& parts) {
    return {within(parts[0], level) + symbol + within(parts[1], level + 1), level};
}

Written operation(const Step& step, const std::vector<Written>& parts) {
    switch (step.op) {
        case Op::Add:
            return infix("+", 5, parts);
        case Op::Subtract:
            return infix("-", 5, parts);
        case Op::Multiply:
            return infix("*", 6, parts);
        case Op::Divide:
            return infix("/", 6, parts);
        case Op::Remainder:
            return infix("%", 6, parts);
        case Op::Less:
            return {within(parts[0], 5) + "<" + within(parts[1], 5), 4};
        case Op::LessOrEqual:
            return {within(parts[0], 5) + "<=" + within(parts[1], 5), 4};
        case Op::Equal:
            return {within(parts[0], 5) + "==" + within(parts[1], 5), 4};
        case Op::Unequal:
            return {within(parts[0], 5) + "!=" + within(parts[1], 5), 4};
        case Op::And:
            return infix("&&", 2, parts);
        case Op::Or:
            return infix("||", 1, parts);
        case Op::Not:
            return {"!" + within(parts[0], 8), 7};
        case Op::Negate:
            return {"-" + within(parts[0], 8), 7};
        case Op::Square:
            return call("pow", {parts[0], {"2", 10}});
        case Op::Power:
            return call("pow", parts);
        case Op::Arctangent2:
            return call("atan2", parts);
        case Op::Hypotenuse:
            return call("hypot", parts);
        case Op::Minimum:
            return call("min", parts);
        case Op::Maximum:
            return call("max", parts);
        case Op::Exponential:
            return call("exp", parts);
        case Op::Choice:
            return {"(" + within(parts[0], 1) + " ? " + parts[1].text + " : " + parts[2].text + ")", 10};
        default:
            return call(std::string(step.function->name), parts);
    }
}

/// 0: the step does not depend on the chosen parameters; 1: linearly; 2: in another way.
int degreeOf(const Step& step, const std::vector<int>& degrees) {
    const auto of = [&](std::size_t argument) {
        return step.in[argument] == Step::none ? 0 : degrees[step.in[argument]];
    };
    const int most = std::max({of(0), of(1), of(2)});
    switch (step.op) {
        case Op::Add:
        case Op::Subtract:
        case Op::Negate:
            return most;
        case Op::Multiply:
            return std::min(2, of(0) + of(1));
        case Op::Divide:
            return of(1) == 0 ? of(0) : 2;
        case Op::Choice:
            return of(0) == 0 ? most : 2;
        default:
            return most == 0 ? 0 : 2;
    }
}

bool isLinear(const Program& program, const std::vector<bool>& chosen) {
    std::vector<int> degrees;
    for (const Step& step : program.steps)
        degrees.push_back(step.op == Op::Parameter ? (chosen[step.parameter] ? 1 : 0) : degreeOf(step, degrees));
    return degrees[program.result] <= 1;
}

}  // namespace

std::string formulaOf(const Model& model) {
    std::vector<Written> written;
    for (const Step& step : model.program.steps) {
        std::vector<Written> parts;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k)
            parts.push_back(written[step.in[k]]);
        if (step.op == Op::Constant)
            written.push_back(constant(step.constant));
        else if (step.op == Op::Variable)
            written.push_back({"x[0]", 10});
        else if (step.op == Op::Parameter)
            written.push_back({model.names[step.parameter], 10});
        else
            written.push_back(operation(step, parts));
    }
    return written[model.program.result].text;
}

std::vector<bool> linearAmong(const Program& program, std::vector<bool> wanted) {
    std::vector<bool> chosen(wanted.size(), false);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        chosen[i] = wanted[i];
        if (wanted[i] && !isLinear(program, chosen))
            chosen[i] = false;
    }
    return chosen;
}

}  // namespace velmorak::fitting
