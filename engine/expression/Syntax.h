#pragma once

#include <velmorak/Failure.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The syntax tree of an expression, independent of the columns.
namespace velmorak::expression {

enum class Form { Real, Integer, Truth, Text, Name, Call };

/// A node of the syntax tree. An operator is a call of the function of that name, such as "+"; a sign is "-sign" or
/// "+sign", ?: is "if", list[index] is "[]", and list[begin:end] is "[:]", where a bound that is left out is 0 or
/// Infinity.
struct Node {
    Form form = Form::Real;
    std::size_t offset = 0;  ///< In bytes; messages point there.
    std::string text;        ///< Name, or text between quotes.
    double real = 0.0;
    std::int64_t integer = 0;  ///< Also 0 or 1 of a boolean.
    bool isQuoted = false;     ///< A name in back quotes, which never means a constant.
    std::vector<std::size_t> children;
    std::size_t begin = 0;  ///< The node's part of the text is [begin, end).
    std::size_t end = 0;
};

/// Limits of length and nesting. A pair of parentheses takes two levels.
inline constexpr std::size_t maxCharacters = 16384;
inline constexpr int maxParentheses = 200;
inline constexpr int maxLevels = 2 * maxParentheses + 2;

/// @return all nodes, each after its children; the last is the root. Later passes therefore need no recursion.
/// @throws Failure whose message shows the expression with a caret under the mistake.
std::vector<Node> parse(std::string_view text);

/// @throws Failure with the reason, the text, and a caret under the byte at offset.
[[noreturn]] void throwAt(std::string_view text, std::size_t offset, const std::string& reason,
                          Failure::Cause cause = Failure::Cause::Other);

enum class TokenKind { End, Real, Integer, Text, Name, Symbol };

struct Token {
    TokenKind kind = TokenKind::End;
    std::size_t offset = 0;
    std::string text;  ///< Name, contents of quotes, or symbol ("&&" also for "and").
    double real = 0.0;
    std::int64_t integer = 0;
    bool isQuoted = false;
};

/// Splits an expression into numbers, names, texts and symbols.
class Lexer {
public:
    explicit Lexer(std::string_view source) : source(source) {}
    /// @throws Failure at a character that begins no token.
    Token next();
    /// @return the end of the token that next returned last.
    std::size_t position() const { return here; }

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
