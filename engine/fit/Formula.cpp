#include "fit/Model.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>

namespace velmorak::fitting {

namespace {

/// Text with its precedence as in docs/expressions.md; 10 needs no parentheses anywhere.
struct Written {
    std::string text;
    int level = 10;
};

std::string within(Written part, int level) {
    return part.level < level ? "(" + std::move(part.text) + ")" : std::move(part.text);
}

Written call(const std::string& name, const std::vector<Written>& parts) {
    std::string text = name + "(";
    for (std::size_t i = 0; i < parts.size(); ++i) {
        text += (i == 0 ? "" : ",") + parts[i].text;
    }
    return {text + ")", 10};
}

Written constant(double value) {
    if (std::isnan(value)) {
        return {"(0/0)", 10};
    }
    if (std::isinf(value)) {
        return {value > 0.0 ? "(1/0)" : "(-1/0)", 10};
    }
    return {textOf(value), std::signbit(value) ? 7 : 10};
}

/// Puts parentheses around a right side of the same precedence, so that the tree is kept.
Written infix(const std::string& symbol, int level, std::vector<Written>& parts) {
    std::string text = within(std::move(parts[0]), level);
    text += symbol;
    text += within(std::move(parts[1]), level + 1);
    return {std::move(text), level};
}

Written operation(const Step& step, std::vector<Written>& parts) {
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
        case Op::NearestRemainder:
            return call("remainder", parts);
        case Op::CopySign:
            return call("copysign", parts);
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

/// @return the name, in back quotes if it is a word of the language.
std::string nameIn(const std::string& name) {
    for (const std::string_view word : {"and", "or", "not", "true", "false"}) {
        if (name == word) {
            return "`" + name + "`";
        }
    }
    return name;
}

/// @return how many steps use each step; the result counts as used once more.
std::vector<std::size_t> usesOf(const Program& program) {
    std::vector<std::size_t> uses(program.steps.size(), 0);
    for (const Step& step : program.steps) {
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            ++uses[step.in[k]];
        }
    }
    ++uses[program.result];
    return uses;
}

/// @return 0 if the step does not depend on the chosen parameters, 1 if linearly, 2 otherwise.
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
    for (const Step& step : program.steps) {
        degrees.push_back(step.op == Op::Parameter ? (chosen[step.parameter] ? 1 : 0) : degreeOf(step, degrees));
    }
    return degrees[program.result] <= 1;
}

}  // namespace

std::string formulaOf(const Model& model) {
    std::vector<std::size_t> uses = usesOf(model.program);
    std::vector<Written> written;
    for (const Step& step : model.program.steps) {
        std::vector<Written> parts;
        for (std::size_t k = 0; k < 3 && step.in[k] != Step::none; ++k) {
            Written& part = written[step.in[k]];
            const bool isLastUse = --uses[step.in[k]] == 0;
            parts.push_back(isLastUse ? std::move(part) : part);
        }
        written.push_back(step.op == Op::Constant    ? constant(step.constant)
                          : step.op == Op::Variable  ? Written{"x[0]", 10}
                          : step.op == Op::Parameter ? Written{nameIn(model.names[step.parameter]), 10}
                                                     : operation(step, parts));
        // Parts that are used several times, as in pol9(pol9(x)), multiply the text at each level.
        if (written.back().text.size() > expression::maxCharacters) {
            throw Failure("the formula is too long");
        }
    }
    return written[model.program.result].text;
}

std::vector<bool> linearAmong(const Program& program, std::vector<bool> wanted) {
    std::vector<bool> chosen(wanted.size(), false);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        chosen[i] = wanted[i];
        if (wanted[i] && !isLinear(program, chosen)) {
            chosen[i] = false;
        }
    }
    return chosen;
}

}  // namespace velmorak::fitting
