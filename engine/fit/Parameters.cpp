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

/// Reads parameters from left to right.
class Reader {
public:
    explicit Reader(std::string_view given) : text(given) {}

    FitParameters all();

private:
    [[noreturn]] void refuse(std::size_t place, const std::string& reason) const;

    void skipBlanks();

    bool take(char c);

    std::string word();

    double number(const std::string& what);

    void limits(FitParameter& parameter, std::size_t place);

    FitParameter one(const std::string& name, std::size_t place);

    std::string_view text;
    std::size_t here = 0;
};

FitParameters Reader::all() {
    FitParameters found;
    for (skipBlanks(); here < text.size(); skipBlanks()) {
        const std::size_t place = here;
        const std::string name = word();
        if (name.empty()) {
            refuse(place, "the name of a parameter is missing");
        }
        if (!found.emplace(name, one(name, place)).second) {
            refuse(place, quoted(name) + " is given twice");
        }
        if (here < text.size() && !take(',')) {
            refuse(here, "parameters are separated by commas, and written  name=start [low,high] fixed");
        }
    }
    return found;
}

void Reader::refuse(std::size_t place, const std::string& reason) const {
    expression::refuse(text, place, reason);
}

void Reader::skipBlanks() {
    while (here < text.size() && isBlank(text[here])) {
        ++here;
    }
}

bool Reader::take(char c) {
    skipBlanks();
    if (here >= text.size() || text[here] != c) {
        return false;
    }
    ++here;
    return true;
}

std::string Reader::word() {
    skipBlanks();
    const std::size_t begin = here;
    while (here < text.size() && !isBlank(text[here]) &&
           std::string_view("=,[]").find(text[here]) == std::string_view::npos) {
        ++here;
    }
    return std::string(text.substr(begin, here - begin));
}

double Reader::number(const std::string& what) {
    skipBlanks();
    const std::size_t place = here;
    double value = 0.0;
    if (!readNumber(word(), value) || value != value) {
        refuse(place, what + " is a number");
    }
    return value;
}

void Reader::limits(FitParameter& parameter, std::size_t place) {
    if (!take(',')) {
        parameter.low = number("the lower limit");
        if (!take(',')) {
            refuse(here, "limits are written  [low,high]  and one of them may be missing");
        }
    }
    if (take(']')) {
        return;
    }
    parameter.high = number("the upper limit");
    if (!take(']')) {
        refuse(here, "limits are written  [low,high]  and one of them may be missing");
    }
    if (!(parameter.low < parameter.high)) {
        refuse(place, "the lower limit is not below the upper one");
    }
}

FitParameter Reader::one(const std::string& name, std::size_t place) {
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
        refuse(flag, "after start value and limits of " + name + " only  fixed  may follow");
    }
    parameter.isFixed = !last.empty();
    if (parameter.isFixed && !parameter.start) {
        refuse(place, quoted(name) + " is fixed but has no value");
    }
    if (parameter.start && (*parameter.start < parameter.low || *parameter.start > parameter.high)) {
        refuse(place, "the start value of \"" + name + "\" is outside its limits");
    }
    if (parameter.start && *parameter.start - *parameter.start != 0.0) {
        refuse(place, "the start value of \"" + name + "\" is not finite");
    }
    return parameter;
}

}  // namespace

FitParameters readFitParameters(std::string_view text) {
    return Reader(text).all();
}

}  // namespace velmorak
