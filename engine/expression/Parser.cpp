#include "expression/Syntax.h"

#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <limits>

namespace velmorak::expression {

namespace {

struct Operator {
    std::string_view symbol;
    int level;
};

constexpr int comparison = 4;

constexpr std::array<Operator, 13> operators{{{"||", 1},
                                              {"&&", 2},
                                              {"==", comparison},
                                              {"!=", comparison},
                                              {"<", comparison},
                                              {"<=", comparison},
                                              {">", comparison},
                                              {">=", comparison},
                                              {"+", 5},
                                              {"-", 5},
                                              {"*", 6},
                                              {"/", 6},
                                              {"%", 6}}};

constexpr int notLevel = 3;

int levelOf(const Token& token) {
    if (token.kind == TokenKind::Symbol) {
        for (const Operator& known : operators) {
            if (known.symbol == token.text) {
                return known.level;
            }
        }
    }
    return 0;
}

/// Recursive-descent parser. Levels of precedence: choice, or, and, not, comparison, sum, product, sign, power, index
/// into a list, primary.
class Parser {
public:
    explicit Parser(std::string_view source) : source(source), lexer(source) { advance(); }

    std::vector<Node> whole();

private:
    /// Counts the nesting for the time of its life.
    class Level {
    public:
        explicit Level(Parser& parser);
        ~Level() { --count; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        int& count;
    };

    void advance();
    bool isSymbol(std::string_view symbol) const { return token.kind == TokenKind::Symbol && token.text == symbol; }

    void expect(std::string_view symbol, const std::string& reason);

    std::size_t call(std::string_view name, std::size_t offset, std::vector<std::size_t> children);

    std::size_t choice();

    std::size_t binary(int lowest);

    std::size_t operand(int lowest);

    std::size_t sign();

    std::size_t power();

    /// A bound of a slice that is left out.
    std::size_t bound(double value);

    std::size_t element();

    std::size_t indexed(std::size_t list, std::size_t open);

    std::size_t primary();

    std::size_t value();

    std::size_t arguments(const Node& function);

    std::string_view source;
    Lexer lexer;
    Token token;
    std::size_t lastEnd = 0;  ///< End of the token before.
    int levels = 0;
    std::vector<Node> nodes;
};

void Parser::advance() {
    lastEnd = lexer.position();
    token = lexer.next();
}

std::vector<Node> Parser::whole() {
    if (token.kind == TokenKind::End) {
        throwAt(source, token.offset, "the expression is empty");
    }
    choice();
    if (token.kind != TokenKind::End) {
        throwAt(source, token.offset, "an operator is missing before this");
    }
    return std::move(nodes);
}

Parser::Level::Level(Parser& parser) : count(parser.levels) {
    if (++count > maxLevels) {
        throwAt(parser.source, parser.token.offset,
                "the expression is nested too deeply; at most " + std::to_string(maxParentheses) +
                    " nested parentheses are allowed");
    }
}

void Parser::expect(std::string_view symbol, const std::string& reason) {
    if (!isSymbol(symbol)) {
        throwAt(source, token.offset, reason);
    }
    advance();
}

std::size_t Parser::call(std::string_view name, std::size_t offset, std::vector<std::size_t> children) {
    Node node;
    node.form = Form::Call;
    node.offset = offset;
    node.text = name;
    node.begin = children.empty() ? offset : std::min(offset, nodes[children.front()].begin);
    node.end = lastEnd;
    node.children = std::move(children);
    nodes.push_back(std::move(node));
    return nodes.size() - 1;
}

std::size_t Parser::bound(double value) {
    Node node;
    node.offset = token.offset;
    node.real = value;
    node.begin = node.end = token.offset;
    nodes.push_back(std::move(node));
    return nodes.size() - 1;
}

std::size_t Parser::choice() {
    const Level level(*this);
    const std::size_t condition = binary(1);
    if (!isSymbol("?")) {
        return condition;
    }
    const std::size_t offset = token.offset;
    advance();
    const std::size_t yes = choice();
    expect(":", "a choice is written  condition ? value : other value");
    return call("if", offset, {condition, yes, choice()});
}

std::size_t Parser::binary(int lowest) {
    std::size_t left = operand(lowest);
    for (int level = levelOf(token); level >= lowest && level != 0; level = levelOf(token)) {
        const Token symbol = token;
        advance();
        const std::size_t right = binary(level + 1);
        left = call(symbol.text, symbol.offset, {left, right});
        if (level == comparison && levelOf(token) == comparison) {
            throwAt(source, token.offset, "comparisons do not chain; write a < b && b < c");
        }
    }
    return left;
}

std::size_t Parser::operand(int lowest) {
    if (!isSymbol("not")) {
        return sign();
    }
    const Level level(*this);
    if (lowest > notLevel) {
        throwAt(source, token.offset, R"(put "not" and what it negates between parentheses here)");
    }
    const std::size_t offset = token.offset;
    advance();
    return call("!", offset, {binary(notLevel)});
}

std::size_t Parser::sign() {
    const Level level(*this);
    if (!isSymbol("-") && !isSymbol("+") && !isSymbol("!")) {
        return power();
    }
    const Token symbol = token;
    advance();
    const std::size_t value = sign();
    return call(symbol.text == "!" ? "!" : symbol.text + "sign", symbol.offset, {value});
}

std::size_t Parser::power() {
    const std::size_t base = element();
    if (!isSymbol("^")) {
        return base;
    }
    const std::size_t offset = token.offset;
    advance();
    return call("^", offset, {base, sign()});
}

std::size_t Parser::element() {
    std::size_t whole = primary();
    while (isSymbol("[")) {
        const std::size_t open = token.offset;
        advance();
        whole = indexed(whole, open);
    }
    return whole;
}

std::size_t Parser::indexed(std::size_t list, std::size_t open) {
    std::vector<std::size_t> children{list, isSymbol(":") ? bound(0.0) : choice()};
    const bool isSlice = isSymbol(":");
    if (isSlice) {
        advance();
        children.push_back(isSymbol("]") ? bound(std::numeric_limits<double>::infinity()) : choice());
    }
    if (token.kind == TokenKind::End) {
        throwAt(source, open, "this bracket is never closed");
    }
    expect("]", "expected ]");
    return call(isSlice ? "[:]" : "[]", open, std::move(children));
}

std::size_t Parser::primary() {
    if (isSymbol("(")) {
        const std::size_t open = token.offset;
        advance();
        const std::size_t inside = choice();
        if (token.kind == TokenKind::End) {
            throwAt(source, open, "this parenthesis is never closed");
        }
        expect(")", "expected )");
        nodes[inside].begin = open;
        nodes[inside].end = lastEnd;
        return inside;
    }
    if (token.kind == TokenKind::End) {
        throwAt(source, token.offset, "the expression ends too early; a value is missing");
    }
    if (token.kind == TokenKind::Symbol) {
        throwAt(source, token.offset, "a value is missing before " + velmorak::quoted(token.text));
    }
    return value();
}

std::size_t Parser::value() {
    Node node;
    node.offset = token.offset;
    node.begin = token.offset;
    node.text = token.text;
    node.real = token.real;
    node.integer = token.integer;
    node.isQuoted = token.isQuoted;
    node.form = token.kind == TokenKind::Real      ? Form::Real
                : token.kind == TokenKind::Integer ? Form::Integer
                : token.kind == TokenKind::Text    ? Form::Text
                                                   : Form::Name;
    advance();
    node.end = lastEnd;
    if (node.form == Form::Name && !node.isQuoted) {
        if (isSymbol("(")) {
            return arguments(node);
        }
        if (node.text == "true" || node.text == "false") {
            node.form = Form::Truth;
            node.integer = node.text == "true" ? 1 : 0;
        }
    }
    nodes.push_back(std::move(node));
    return nodes.size() - 1;
}

std::size_t Parser::arguments(const Node& function) {
    advance();
    std::vector<std::size_t> children;
    if (!isSymbol(")")) {
        children.push_back(choice());
    }
    while (isSymbol(",")) {
        advance();
        children.push_back(choice());
    }
    expect(")", "the arguments of " + function.text + " are separated by commas and closed by a parenthesis");
    return call(function.text, function.offset, std::move(children));
}

}  // namespace

std::vector<Node> parse(std::string_view text) {
    if (text.size() > maxCharacters) {
        throwAt(text, maxCharacters, "an expression has at most " + std::to_string(maxCharacters) + " characters");
    }
    return Parser(text).whole();
}

}  // namespace velmorak::expression
