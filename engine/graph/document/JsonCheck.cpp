#include "graph/Log.h"
#include "graph/document/Json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace velmorak {
namespace {

using JsonType = JsonValue::JsonType;

constexpr int maxDepth = 64;

bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

std::string nameOf(char byte) {
    const bool isPrinted = byte > ' ' && byte < '\x7F';
    return isPrinted ? quote(std::string(1, byte)) : "the byte " + std::to_string(static_cast<unsigned char>(byte));
}

/// Checks a text against the grammar of RFC 8259. The usual libraries cannot be used because they convert every number
/// to double, and reject a text with a number out of its range.
class Check {
public:
    explicit Check(std::string_view text) : text(text) {}

    JsonValue document();

private:
    [[noreturn]] void fail(const std::string& expected) const;
    char ahead() const { return at < text.size() ? text[at] : '\0'; }
    void blanks() { at = std::min(text.find_first_not_of(" \t\r\n", at), text.size()); }
    void need(char byte);
    void digits();
    void number();
    void quoted();
    void word(std::string_view letters);
    template <typename Item>
    void items(char end, int level, Item&& item);
    void member(int level);
    JsonType value(int level);

    std::string_view text;
    std::size_t at = 0;
};

void Check::fail(const std::string& expected) const {
    const std::string found = at < text.size() ? nameOf(text[at]) : "the end of the text";
    throw DocumentError(lineOf(text, at), "is not JSON: syntax error: expected " + expected + ", found " + found);
}

void Check::need(char byte) {
    blanks();
    if (at == text.size() || text[at] != byte) {
        fail(quote(std::string(1, byte)));
    }
    ++at;
}

void Check::digits() {
    if (!isDigit(ahead())) {
        fail("a digit");
    }
    while (isDigit(ahead())) {
        ++at;
    }
}

void Check::number() {
    if (ahead() == '-') {
        ++at;
    }
    if (ahead() == '0') {
        ++at;
    } else {
        digits();
    }
    if (ahead() == '.') {
        ++at;
        digits();
    }
    if (ahead() == 'e' || ahead() == 'E') {
        ++at;
        if (ahead() == '+' || ahead() == '-') {
            ++at;
        }
        digits();
    }
}

/// The library checks escapes and characters outside ASCII.
void Check::quoted() {
    const std::size_t begin = at;
    bool isPlain = true;
    need('"');
    while (ahead() != '"') {
        if (at >= text.size() || static_cast<unsigned char>(text[at]) < 0x20U) {
            fail("the end of a text");
        }
        const bool isEscape = text[at] == '\\';
        isPlain = isPlain && !isEscape && static_cast<unsigned char>(text[at]) < 0x80U;
        at = std::min(at + (isEscape ? 2 : 1), text.size());
    }
    ++at;
    if (!isPlain && !nlohmann::json::accept(text.substr(begin, at - begin))) {
        throw DocumentError(lineOf(text, begin),
                            "is not JSON: a string holds an invalid escape, or bytes that are not UTF-8");
    }
}

void Check::word(std::string_view letters) {
    if (text.substr(at, letters.size()) != letters) {
        fail("a value");
    }
    at += letters.size();
}

/// The comma-separated items between a bracket and its counterpart.
template <typename Item>
void Check::items(char end, int level, Item&& item) {
    if (level == maxDepth) {
        throw DocumentError(lineOf(text, at), "nests deeper than 64 levels");
    }
    ++at;
    blanks();
    if (ahead() == end) {
        ++at;
        return;
    }
    for (bool isMore = true; isMore;) {
        item();
        blanks();
        isMore = ahead() == ',';
        if (isMore) {
            ++at;
        }
    }
    need(end);
}

void Check::member(int level) {
    blanks();
    if (ahead() != '"') {
        fail("the name of a field");
    }
    quoted();
    need(':');
    value(level);
}

JsonType Check::value(int level) {
    blanks();
    switch (ahead()) {
        case '{':
            items('}', level, [&] { member(level + 1); });
            return JsonType::Object;
        case '[':
            items(']', level, [&] { value(level + 1); });
            return JsonType::List;
        case '"':
            quoted();
            return JsonType::Text;
        case 't':
            word("true");
            return JsonType::Boolean;
        case 'f':
            word("false");
            return JsonType::Boolean;
        case 'n':
            word("null");
            return JsonType::Null;
        default:
            if (!isDigit(ahead()) && ahead() != '-') {
                fail("a value");
            }
            number();
            return JsonType::Number;
    }
}

JsonValue Check::document() {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        at = byteOrderMark.size();
    }
    blanks();
    JsonValue root;
    root.begin = at;
    root.type = value(0);
    root.end = at;
    blanks();
    if (at < text.size()) {
        fail("the end of the text");
    }
    return root;
}

}  // namespace

JsonValue parseJson(std::string_view text) {
    return Check(text).document();
}

}  // namespace velmorak
