#include "numpy/Literal.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <charconv>
#include <cstddef>

namespace velmorak::numpy {
namespace {

constexpr int maxDepth = 32;

class Parser {
public:
    explicit Parser(std::string_view text) : rest(text) {}

    Literal whole();

private:
    [[noreturn]] static void fail() { throw Failure("its header cannot be read"); }
    void skipBlanks();
    bool take(std::string_view word);
    Literal any(int depth);
    Literal items(Literal::Kind kind, char end, int depth);
    char character();
    Literal text();
    Literal integer();

    std::string_view rest;
};

Literal Parser::whole() {
    Literal value = any(0);
    skipBlanks();
    if (!rest.empty()) {
        fail();
    }
    return value;
}

void Parser::skipBlanks() {
    while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\n' || rest.front() == '\t')) {
        rest.remove_prefix(1);
    }
}

bool Parser::take(std::string_view word) {
    skipBlanks();
    if (!rest.starts_with(word)) {
        return false;
    }
    rest.remove_prefix(word.size());
    return true;
}

Literal Parser::any(int depth) {
    if (depth > maxDepth) {
        fail();
    }
    if (take("{")) {
        return items(Literal::Kind::Dictionary, '}', depth);
    }
    if (take("(")) {
        return items(Literal::Kind::Sequence, ')', depth);
    }
    if (take("[")) {
        return items(Literal::Kind::Sequence, ']', depth);
    }
    if (take("True")) {
        return {.kind = Literal::Kind::Truth, .integer = 1};
    }
    if (take("False")) {
        return {.kind = Literal::Kind::Truth};
    }
    if (take("None")) {
        return {};
    }
    skipBlanks();
    return !rest.empty() && (rest.front() == '\'' || rest.front() == '"') ? text() : integer();
}

Literal Parser::items(Literal::Kind kind, char end, int depth) {
    Literal list{.kind = kind};
    while (!take({&end, 1})) {
        list.items.push_back(any(depth + 1));
        if (kind == Literal::Kind::Dictionary) {
            if (!take(":")) {
                fail();
            }
            list.items.push_back(any(depth + 1));
        }
        if (!take(",") && (rest.empty() || rest.front() != end)) {
            fail();
        }
    }
    return list;
}

/// A character, or one that is written with a backslash.
char Parser::character() {
    constexpr std::size_t codeLength = 4;  // Of \x1f.
    if (rest.starts_with("\\x") && rest.size() > codeLength) {
        unsigned code = 0;
        const auto [end, error] = std::from_chars(rest.data() + 2, rest.data() + codeLength, code, 16);
        if (error != std::errc() || end != rest.data() + codeLength) {
            fail();
        }
        rest.remove_prefix(codeLength);
        return static_cast<char>(code);
    }
    rest.remove_prefix(rest.front() == '\\' && rest.size() > 1 ? 1 : 0);
    const char found = rest.front();
    rest.remove_prefix(1);
    return found;
}

Literal Parser::text() {
    Literal literal{.kind = Literal::Kind::Text};
    const char quote = rest.front();
    rest.remove_prefix(1);
    while (!rest.empty() && rest.front() != quote) {
        literal.text += character();
    }
    if (rest.empty()) {
        fail();
    }
    rest.remove_prefix(1);
    literal.text = toUtf8(literal.text);
    return literal;
}

Literal Parser::integer() {
    Literal literal{.kind = Literal::Kind::Integer};
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), literal.integer);
    if (error != std::errc()) {
        fail();
    }
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    take("L");  // Python 2 wrote long integers with it.
    return literal;
}

}  // namespace

const Literal* Literal::find(std::string_view key) const {
    for (std::size_t i = 0; kind == Kind::Dictionary && i + 1 < items.size(); i += 2) {
        if (items[i].text == key) {
            return &items[i + 1];
        }
    }
    return nullptr;
}

Literal literalIn(std::string_view text) {
    return Parser(text).whole();
}

}  // namespace velmorak::numpy
