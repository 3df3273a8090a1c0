#include "expression/MarkedNumbers.h"
#include "expression/Syntax.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace velmorak::expression {

namespace {

constexpr std::size_t maxShown = 120;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool beginsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}

bool isControl(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    const bool isUpper = first == 0xC2 && static_cast<unsigned char>(character.back()) < 0xA0;
    return first < 0x20 || first == 0x7F || isUpper;
}

/// @return the part of the text around the offset that fits into a line; adapts the offset to it.
std::string_view window(std::string_view text, std::size_t& offset) {
    if (text.size() <= maxShown) {
        return text;
    }
    std::size_t begin = offset > maxShown / 2 ? offset - maxShown / 2 : 0;
    while (begin < offset && isContinuationByte(text[begin])) {
        ++begin;
    }
    std::size_t end = std::min(text.size(), begin + maxShown);
    while (end < std::min(text.size(), begin + maxShown + 3) && isContinuationByte(text[end])) {
        ++end;
    }
    offset -= begin;
    return text.substr(begin, end - begin);
}

/// @return the text as one line of UTF-8: control characters become blanks, stray bytes U+FFFD.
/// @param column is increased by the number of characters before the offset.
std::string asLine(std::string_view text, std::size_t offset, std::size_t& column) {
    std::string line;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t count = characterBytes(text.substr(position));
        const std::string_view character = text.substr(position, count);
        column += position < offset ? 1 : 0;
        line += count == 0 ? "\xEF\xBF\xBD" : isControl(character) ? " " : character;
        position += std::max<std::size_t>(count, 1);
    }
    return line;
}

}  // namespace

void throwAt(std::string_view text, std::size_t offset, const std::string& reason, Failure::Cause cause) {
    constexpr std::string_view omission = "...";
    std::size_t offsetInPart = offset;
    const std::string_view part = window(text, offsetInPart);
    const std::string_view before = part.data() == text.data() ? "" : omission;
    const std::string_view after = part.data() + part.size() == text.data() + text.size() ? "" : omission;
    std::size_t column = before.size();
    std::size_t ignored = 0;
    const std::string line = asLine(part, offsetInPart, column);
    throw Failure({},
                  asLine(reason, 0, ignored) + "\n  " + std::string(before) + line + std::string(after) + "\n  " +
                      std::string(column, ' ') + "^",
                  cause);
}

Token Lexer::next() {
    while (here < source.size() && (source[here] == ' ' || (source[here] >= '\t' && source[here] <= '\r'))) {
        ++here;
    }
    if (here >= source.size()) {
        return {TokenKind::End, source.size(), "", 0.0, 0, false};
    }
    const char c = source[here];
    if (isDigit(c) || (c == '.' && isDigit(at(here + 1)))) {
        return number();
    }
    if (beginsName(c) || c == numberMark) {
        return name();
    }
    if (c == '"' || c == '\'' || c == '`') {
        return quoted(c);
    }
    return symbol();
}

Token Lexer::number() {
    Token token{TokenKind::Integer, here, "", 0.0, 0, false};
    std::size_t end = here;
    while (isDigit(at(end))) {
        ++end;
    }
    bool isWhole = true;
    if (at(end) == '.') {
        isWhole = false;
        while (isDigit(at(++end))) {
        }
    }
    const std::size_t sign = at(end + 1) == '+' || at(end + 1) == '-' ? 1 : 0;
    if ((at(end) == 'e' || at(end) == 'E') && isDigit(at(end + 1 + sign))) {
        isWhole = false;
        end += 1 + sign;
        while (isDigit(at(end))) {
            ++end;
        }
    }
    if (beginsName(at(end)) || at(end) == '.') {
        throwAt(source, end, "this number does not end where it should");
    }
    token.text = source.substr(here, end - here);
    const auto* first = token.text.data();
    const auto result = std::from_chars(first, first + token.text.size(), token.integer);
    if (!isWhole || result.ec != std::errc()) {
        token.kind = TokenKind::Real;
        readNumber(token.text, token.real);
    }
    here = end;
    return token;
}

Token Lexer::name() {
    Token token{TokenKind::Name, here, "", 0.0, 0, false};
    std::size_t end = here + (at(here) == numberMark ? 1 : 0);
    if (!beginsName(at(end))) {
        throwAt(source, here, "a name must follow @, as in @cut");
    }
    while (beginsName(at(end)) || isDigit(at(end)) || (at(end) == '.' && beginsName(at(end + 1)))) {
        ++end;
    }
    token.text = source.substr(here, end - here);
    here = end;
    const std::array<std::array<std::string_view, 2>, 3> words{{{"and", "&&"}, {"or", "||"}, {"not", "not"}}};
    for (const auto& [word, meaning] : words) {
        if (token.text == word) {
            return {TokenKind::Symbol, token.offset, std::string(meaning), 0.0, 0, false};
        }
    }
    return token;
}

Token Lexer::quoted(char quote) {
    Token token{quote == '`' ? TokenKind::Name : TokenKind::Text, here, "", 0.0, 0, quote == '`'};
    for (++here; at(here) != quote || here >= source.size(); ++here) {
        if (here >= source.size()) {
            throwAt(source, token.offset, "this quote is never closed");
        }
        char c = source[here];
        if (c == '\\' && here + 1 < source.size()) {
            c = source[++here];
            c = c == 'n' ? '\n' : c == 't' ? '\t' : c;
        }
        token.text += c;
    }
    ++here;
    return token;
}

Token Lexer::symbol() {
    constexpr std::array<std::string_view, 7> pairs{"**", "&&", "||", "==", "!=", "<=", ">="};
    const std::string_view pair = source.substr(here, 2);
    Token token{TokenKind::Symbol, here, "", 0.0, 0, false};
    if (std::find(pairs.begin(), pairs.end(), pair) != pairs.end()) {
        token.text = pair == "**" ? "^" : std::string(pair);
    } else if (std::string_view("+-*/%^()[]<>!,?:").find(source[here]) != std::string_view::npos) {
        token.text = source[here];
    } else if (source[here] == '=') {
        throwAt(source, here, "use == to compare");
    } else if (source[here] == '&' || source[here] == '|') {
        throwAt(source, here, R"(write && for "and", || for "or")");
    } else {
        throwAt(source, here, "unexpected character");
    }
    here += pair == "**" ? 2 : token.text.size();
    return token;
}

}  // namespace velmorak::expression
