#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What an expression says, before anything is known of the columns.
namespace velmorak::expression {

enum class Form { Real, Integer, Truth, Text, Name, Call };

/// A part of an expression. An operator is a call of the function of its name, "+" for example; a sign is "-sign" or
/// "+sign", a choice with ? and : is "if".
struct Node {
    Form form = Form::Real;
    std::size_t place = 0;  ///< Byte of the text that a message points at.
    std::string text;       ///< Name, or the text between quotes.
    double real = 0.0;
    std::int64_t integer = 0;  ///< Also 0 and 1 of a truth.
    bool isQuoted = false;     ///< A name between back quotes, which never means a constant.
    std::vector<std::size_t> children;
};

/// Longest text, and deepest nesting, that is read. A pair of parentheses takes two levels, and so does what is within.
inline constexpr std::size_t maxCharacters = 16384;
inline constexpr int maxParentheses = 200;
inline constexpr int maxLevels = 2 * maxParentheses + 2;

/// @return all parts, each after its children: the last is the whole. No nesting of the text makes a later pass
///         recurse.
/// @throws Failure with the expression and a caret under the place.
std::vector<Node> parse(std::string_view text);

/// @throws Failure: the reason, the expression, and a caret under the place.
[[noreturn]] void refuse(std::string_view text, std::size_t place, const std::string& reason);

enum class TokenKind { End, Real, Integer, Text, Name, Symbol };

struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t place = 0;
    std::string text;  ///< Name, contents of quotes, or symbol ("&&" also for "and").
    double real = 0.0;
    std::int64_t integer = 0;
    bool isQuoted = false;
};

/// Cuts an expression into numbers, names, texts and symbols.
class Lexer {
public:
    explicit Lexer(std::string_view expression) : source(expression) {}
    /// @throws Failure at a character that begins nothing.
    Token next();

private:
    char at(std::size_t position) const { return position < source.size() ? source[position] : '\0'; }
    Token number();
    Token name();
    Token quoted(char quote);
    Token symbol();

    std::string_view source;
    std::size_t here = 0;
};

}  // namespace velmorak::expression
