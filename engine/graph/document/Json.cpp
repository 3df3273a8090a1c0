#include "graph/document/Json.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>

namespace velmorak {
namespace {

using Json = nlohmann::ordered_json;
using JsonType = JsonValue::JsonType;

constexpr std::string_view between = " \t\r\n,:";

JsonType typeOf(char first) {
    switch (first) {
        case '{':
            return JsonType::Object;
        case '[':
            return JsonType::List;
        case '"':
            return JsonType::Text;
        case 't':
        case 'f':
            return JsonType::Boolean;
        case 'n':
            return JsonType::Null;
        default:
            return JsonType::Number;
    }
}

std::size_t endOfText(std::string_view text, std::size_t begin) {
    std::size_t at = begin + 1;
    while (text[at] != '"') {
        at += text[at] == '\\' ? 2 : 1;
    }
    return at + 1;
}

std::size_t endOfNest(std::string_view text, std::size_t begin) {
    std::size_t level = 0;
    std::size_t at = begin;
    do {
        at = text.find_first_of("\"[]{}", at);
        const char found = text[at];
        if (found == '[' || found == '{') {
            ++level;
        } else if (found == ']' || found == '}') {
            --level;
        }
        at = found == '"' ? endOfText(text, at) : at + 1;
    } while (level > 0);
    return at;
}

JsonValue valueAt(std::string_view text, std::size_t begin) {
    JsonValue found;
    found.type = typeOf(text[begin]);
    found.begin = begin;
    if (found.type == JsonType::Text) {
        found.end = endOfText(text, begin);
    } else if (found.type == JsonType::List || found.type == JsonType::Object) {
        found.end = endOfNest(text, begin);
    } else {
        found.end = std::min(text.find_first_of(" \t\r\n,]}", begin), text.size());
    }
    return found;
}

}  // namespace

void forEachItem(std::string_view text, const JsonValue& list, const std::function<void(const JsonValue&)>& take) {
    std::size_t at = text.find_first_not_of(between, list.begin + 1);
    while (text[at] != ']') {
        const JsonValue item = valueAt(text, at);
        take(item);
        at = text.find_first_not_of(between, item.end);
    }
}

void forEachMember(std::string_view text, const JsonValue& object,
                   const std::function<void(std::string, const JsonValue&)>& take) {
    std::size_t at = text.find_first_not_of(between, object.begin + 1);
    while (text[at] != '}') {
        const JsonValue name = valueAt(text, at);
        const JsonValue value = valueAt(text, text.find_first_not_of(between, name.end));
        take(unquoted(text, name), value);
        at = text.find_first_not_of(between, value.end);
    }
}

std::string unquoted(std::string_view text, const JsonValue& value) {
    const std::string_view inside = text.substr(value.begin + 1, value.end - value.begin - 2);
    if (inside.find('\\') == std::string_view::npos) {
        return std::string(inside);
    }
    return Json::parse(text.substr(value.begin, value.end - value.begin)).get<std::string>();
}

double numberIn(std::string_view text, const JsonValue& value) {
    const std::string_view digits = text.substr(value.begin, value.end - value.begin);
    double number = 0.0;
    const auto parsed = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (parsed.ec != std::errc::result_out_of_range) {
        return number;
    }
    const std::size_t exponent = digits.find_first_of("eE");
    const bool isTiny = exponent == std::string_view::npos ? digits.substr(digits[0] == '-' ? 1 : 0).starts_with("0.")
                                                           : digits[exponent + 1] == '-';
    return isTiny ? 0.0 : std::numeric_limits<double>::infinity();
}

std::size_t lineOf(std::string_view text, std::size_t position) {
    const std::string_view before = text.substr(0, std::min(position, text.size()));
    return 1 + static_cast<std::size_t>(std::ranges::count(before, '\n'));
}

std::string jsonText(const std::string& text) {
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string validUtf8(const std::string& text) {
    return Json::parse(jsonText(text)).get<std::string>();
}

}  // namespace velmorak
