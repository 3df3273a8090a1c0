#include <velmorak/Fit.h>
#include <velmorak/Text.h>
#include <velmorak/Value.h>
#include "expression/Syntax.h"

#include <algorithm>

namespace velmorak {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Recursive-descent parser for the settings of parameters.
class Parser {
public:
    explicit Parser(std::string_view text) : text(text) {}

    FitParameters parse();

private:
    [[noreturn]] void fail(std::size_t offset, const std::string& reason) const;

    void skipBlanks();

    bool take(char c);

    std::string word();

    double number(const std::string& what);

    void limits(FitParameter& parameter, std::size_t offset);

    FitParameter one(const std::string& name, std::size_t offset);

    std::string_view text;
    std::size_t here = 0;
};

FitParameters Parser::parse() {
    FitParameters parameters;
    for (skipBlanks(); here < text.size(); skipBlanks()) {
        const std::size_t offset = here;
        const std::string name = word();
        if (name.empty()) {
            fail(offset, "the name of a parameter is missing");
        }
        if (!parameters.emplace(name, one(name, offset)).second) {
            fail(offset, velmorak::quoted(name) + " is given twice");
        }
        if (here < text.size() && !take(',')) {
            fail(here, "separate parameters by commas, and write each as  name=start [low,high] fixed");
        }
    }
    return parameters;
}

void Parser::fail(std::size_t offset, const std::string& reason) const {
    expression::throwAt(text, offset, reason);
}

void Parser::skipBlanks() {
    while (here < text.size() && isBlank(text[here])) {
        ++here;
    }
}

bool Parser::take(char c) {
    skipBlanks();
    if (here >= text.size() || text[here] != c) {
        return false;
    }
    ++here;
    return true;
}

std::string Parser::word() {
    skipBlanks();
    const std::size_t begin = here;
    while (here < text.size() && !isBlank(text[here]) &&
           std::string_view("=,[]").find(text[here]) == std::string_view::npos) {
        ++here;
    }
    return std::string(text.substr(begin, here - begin));
}

double Parser::number(const std::string& what) {
    skipBlanks();
    const std::size_t offset = here;
    double value = 0.0;
    if (!readNumber(word(), value) || value != value) {
        fail(offset, what + " must be a number");
    }
    return value;
}

void Parser::limits(FitParameter& parameter, std::size_t offset) {
    if (!take(',')) {
        parameter.low = number("the lower limit");
        if (!take(',')) {
            fail(here, "write limits as  [low,high]  (one of them may be missing)");
        }
    }
    if (take(']')) {
        return;
    }
    parameter.high = number("the upper limit");
    if (!take(']')) {
        fail(here, "write limits as  [low,high]  (one of them may be missing)");
    }
    if (!(parameter.low < parameter.high)) {
        fail(offset, "the lower limit must be less than the upper limit");
    }
}

FitParameter Parser::one(const std::string& name, std::size_t offset) {
    FitParameter parameter;
    if (take('=')) {
        parameter.start = number("the start value of " + name);
    }
    skipBlanks();
    const std::size_t bracket = here;
    if (take('[')) {
        limits(parameter, bracket);
    }
    skipBlanks();
    const std::size_t flag = here;
    const std::string last = word();
    if (!last.empty() && last != "fixed") {
        fail(flag, "after start value and limits of " + name + " only  fixed  may follow");
    }
    parameter.isFixed = !last.empty();
    if (parameter.isFixed && !parameter.start) {
        fail(offset, velmorak::quoted(name) + " is fixed but has no value");
    }
    if (parameter.start && (*parameter.start < parameter.low || *parameter.start > parameter.high)) {
        fail(offset, "the start value of " + velmorak::quoted(name) + " is outside its limits");
    }
    if (parameter.start && *parameter.start - *parameter.start != 0.0) {
        fail(offset, "the start value of " + velmorak::quoted(name) + " is not finite");
    }
    return parameter;
}

}  // namespace

FitParameters readFitParameters(std::string_view text) {
    return Parser(text).parse();
}

}  // namespace velmorak
