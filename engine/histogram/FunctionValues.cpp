#include <velmorak/FunctionValues.h>

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace velmorak {

namespace {

/// Name of the argument; parameters cannot have it.
constexpr std::string_view argument = "x[0]";

std::vector<std::string_view> split(std::string_view text, char mark) {
    std::vector<std::string_view> parts;
    for (std::size_t end = text.find(mark); end != std::string_view::npos; end = text.find(mark)) {
        parts.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.push_back(text);
    return parts;
}

std::string backQuoted(std::string_view name) {
    std::string text = "`";
    for (const char c : name) {
        text += c == '`' || c == '\\' ? std::string{'\\', c} : std::string{c};
    }
    return text + "`";
}

/// Limit against hostile files: no real function of the catalogue has more.
constexpr std::size_t maxParameters = 1000;

/// Translates a codelet into an expression.
class CodeletParser {
public:
    explicit CodeletParser(const FunctionObject& function) : function(function) {}

    Expression expression();

private:
    [[noreturn]] void fail(const std::string& reason) const;

    Expression compiled(const std::string& text) const;

    /// @param rest ": 1 : EXPRESSION : NAMES : GRADIENT"; the expression may contain colons.
    std::string verbatim(std::string_view rest);

    double valueOf(std::string_view name) const;

    /// Puts the argument into back quotes, so that it is a name.
    static std::string withArgument(std::string_view text);

    std::string catalogued(std::string_view codelet);

    /// @return the next parameter as an expression refers to it.
    std::string next();

    /// Some programs write the names of the catalogue in lower case.
    std::string known(std::string_view name);

    const FunctionObject& function;
    std::map<std::string, double> numbers;
};

Expression CodeletParser::expression() {
    if (function.isNormalized) {
        fail("is normalised over a range, which is not supported");
    }
    if (function.arguments.size() > 1) {
        fail("has more than one argument");
    }
    const std::string_view codelet = trimmed(function.codelet);
    const std::size_t mark = codelet.find(":verbatim:jel");
    const std::string text = mark == std::string_view::npos
                                 ? catalogued(codelet)
                                 : verbatim(codelet.substr(mark + std::string_view(":verbatim:jel").size()));
    Expression made = compiled(text);
    if (made.type() == ColumnType::Text) {
        fail("gives a text");
    }
    if (made.isList()) {
        fail("gives a list");
    }
    return made;
}

void CodeletParser::fail(const std::string& reason) const {
    throw Failure("the function \"" + function.name + "\" " + reason);
}

Expression CodeletParser::compiled(const std::string& text) const {
    try {
        return Expression(text, Schema({{std::string(argument)}}), numbers);
    } catch (const Failure& problem) {
        fail(std::string("is not understood: ") + problem.what());
    }
}

std::string CodeletParser::verbatim(std::string_view rest) {
    const std::vector<std::string_view> fields = split(rest, ':');
    if (fields.size() < 5 || !trimmed(fields[0]).empty()) {
        fail("has no codelet of the form  jel : 1 : expression : parameters : gradient");
    }
    if (trimmed(fields[1]) != "1") {
        fail("has more than one argument");
    }
    for (const std::string_view name : split(fields[fields.size() - 2], ',')) {
        if (!trimmed(name).empty() && trimmed(name) != "null") {
            numbers[std::string(trimmed(name))] = valueOf(trimmed(name));
        }
    }
    const std::string_view& names = fields[fields.size() - 2];
    const char* const begin = fields[2].data();
    return withArgument({begin, static_cast<std::size_t>(names.data() - 1 - begin)});
}

double CodeletParser::valueOf(std::string_view name) const {
    const auto found = std::find_if(function.parameters.begin(), function.parameters.end(),
                                    [&](const auto& parameter) { return parameter.name == name; });
    if (found == function.parameters.end()) {
        fail("has no value for its parameter \"" + std::string(name) + "\"");
    }
    return found->value;
}

std::string CodeletParser::withArgument(std::string_view text) {
    std::string made;
    for (std::size_t place = text.find(argument); place != std::string_view::npos; place = text.find(argument)) {
        made += std::string(text.substr(0, place)) + backQuoted(argument);
        text.remove_prefix(place + argument.size());
    }
    return made += text;
}

std::string CodeletParser::catalogued(std::string_view codelet) {
    std::vector<std::string_view> parts = split(codelet, ':');
    if (parts.size() == 3 && parts[0] == "codelet" && trimmed(parts[2]).starts_with("catalog")) {
        codelet = trimmed(parts[1]);
    }
    std::string sum;
    for (const std::string_view term : split(codelet, '+')) {
        sum += sum.empty() ? "" : "+";
        std::string product;
        for (const std::string_view factor : split(term, '*')) {
            product += (product.empty() ? "(" : "*(") + known(trimmed(factor)) + ")";
        }
        sum += product;
    }
    if (numbers.size() != function.parameters.size()) {
        fail("has " + std::to_string(function.parameters.size()) + " parameters, but \"" + std::string(codelet) +
             "\" takes " + std::to_string(numbers.size()));
    }
    return sum;
}

std::string CodeletParser::next() {
    const std::size_t position = numbers.size();
    if (position == maxParameters) {
        fail("takes more than " + std::to_string(maxParameters) + " parameters");
    }
    const std::string name = "#" + std::to_string(position);
    numbers[name] = position < function.parameters.size() ? function.parameters[position].value : 0.0;
    return backQuoted(name);
}

std::string CodeletParser::known(std::string_view name) {
    const std::string x = backQuoted(argument);
    if (name == "G" || name == "g") {
        const std::string amplitude = next();
        const std::string mean = next();
        return amplitude + "*exp(-0.5*((" + x + "-" + mean + ")/" + next() + ")^2)";
    }
    if (name == "E" || name == "e") {
        const std::string amplitude = next();
        return amplitude + "*exp(" + next() + "*" + x + ")";
    }
    constexpr int highestDegree = 99;
    int degree = -1;
    const char* const end = name.data() + name.size();
    if (!(name.starts_with('P') || name.starts_with('p')) || std::from_chars(name.data() + 1, end, degree).ptr != end ||
        degree < 0 || degree > highestDegree) {
        fail("is not understood: \"" + std::string(name) + "\" is not a known function");
    }
    std::string sum = next();
    for (int power = 1; power <= degree; ++power) {
        sum += "+" + next() + "*" + x + "^" + textOf(power);
    }
    return sum;
}

}  // namespace

FunctionValues::FunctionValues(const FunctionObject& function) : expression(CodeletParser(function).expression()) {}

std::vector<double> FunctionValues::operator()(const std::vector<double>& x) const {
    Chunk chunk;
    chunk.rows = x.size();
    chunk.columns = {std::make_shared<const Column>(Column{x, {}})};
    return asReals(expression.evaluate(chunk))->reals();
}

double FunctionValues::operator()(double x) const {
    return (*this)(std::vector<double>{x}).front();
}

}  // namespace velmorak
