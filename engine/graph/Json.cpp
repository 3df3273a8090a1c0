#include "Json.h"

#include "Say.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <nlohmann/json.hpp>

namespace velmorak {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t deepestLevel = 64;

/// Walks the text and tells how far the parser has come.
class CountingIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    CountingIterator(const char* place, std::size_t& count) : at(place), passed(&count) {}
    reference operator*() const { return *at; }
    CountingIterator& operator++() {
        ++at;
        ++*passed;
        return *this;
    }
    bool operator==(const CountingIterator& other) const { return at == other.at; }

private:
    const char* at;
    std::size_t* passed;
};

/// Builds the tree of values from the parser's events.
class TreeBuilder {
public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    TreeBuilder(const std::string& whole, const std::size_t& position) : text(whole), passed(position) {}

    JsonValue takeRoot() { return std::move(root); }

    // The names of these operations are the parser's.
    bool null() { return add(scalar(JsonValue::Shape::Null, passed)); }
    bool boolean(bool value) {
        JsonValue made = scalar(JsonValue::Shape::Boolean, passed);
        made.boolean = value;
        return add(std::move(made));
    }
    bool number_integer(number_integer_t value) { return addNumber(static_cast<double>(value)); }
    bool number_unsigned(number_unsigned_t value) { return addNumber(static_cast<double>(value)); }
    bool number_float(number_float_t value, const string_t& /*written*/) { return addNumber(value); }
    bool string(string_t& value) {
        JsonValue made = scalar(JsonValue::Shape::Text, passed);
        made.text = std::move(value);
        return add(std::move(made));
    }
    bool binary(binary_t& /*value*/) { return false; }
    bool start_object(std::size_t /*size*/) { return open(JsonValue::Shape::Object); }
    bool key(string_t& name) {
        scalar(JsonValue::Shape::Text, passed);
        keys.back() = std::move(name);
        return true;
    }
    bool end_object() { return close(); }
    bool start_array(std::size_t /*size*/) { return open(JsonValue::Shape::List); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/, const nlohmann::detail::exception& error);

private:
    JsonValue scalar(JsonValue::Shape shape, std::size_t end);
    bool addNumber(double value);
    bool add(JsonValue value);
    bool open(JsonValue::Shape shape);
    bool close();

    const std::string& text;
    const std::size_t& passed;
    JsonValue root;
    std::vector<JsonValue> levels;  ///< Lists and objects that have begun.
    std::vector<std::string> keys;  ///< Parallel to levels: the last key that was read.
    std::size_t lastEnd = 0;
};

/// Everything between the last value and this one is blanks, commas and colons.
JsonValue TreeBuilder::scalar(JsonValue::Shape shape, std::size_t end) {
    JsonValue made;
    made.shape = shape;
    made.begin = std::min(text.find_first_not_of(" \t\r\n,:", lastEnd), end);
    made.end = end;
    lastEnd = end;
    return made;
}

/// The parser has to look one byte ahead to see that a number ends.
bool TreeBuilder::addNumber(double value) {
    const char last = text[passed - 1];
    const bool isLookingAhead = last < '0' || last > '9';
    JsonValue made = scalar(JsonValue::Shape::Number, isLookingAhead ? passed - 1 : passed);
    made.number = value;
    return add(std::move(made));
}

bool TreeBuilder::add(JsonValue value) {
    if (levels.empty())
        root = std::move(value);
    else if (levels.back().shape == JsonValue::Shape::Object)
        levels.back().members.push_back({keys.back(), std::move(value)});
    else
        levels.back().items.push_back(std::move(value));
    return true;
}

bool TreeBuilder::open(JsonValue::Shape shape) {
    if (levels.size() == deepestLevel)
        throw DocumentError(lineOf(text, passed), "nests deeper than 64 levels");
    levels.push_back(scalar(shape, passed));
    keys.emplace_back();
    return true;
}

bool TreeBuilder::close() {
    JsonValue done = std::move(levels.back());
    levels.pop_back();
    keys.pop_back();
    done.end = passed;
    lastEnd = passed;
    return add(std::move(done));
}

/// The parser's message begins with its own number and place, which are left out, and may repeat a whole damaged file.
bool TreeBuilder::parse_error(std::size_t /*position*/, const std::string& /*token*/,
                              const nlohmann::detail::exception& error) {
    std::string reason = validUtf8(error.what());
    for (const char* prefix : {"] ", "parse error at line ", ": "}) {
        const std::size_t found = reason.find(prefix);
        if (found != std::string::npos)
            reason.erase(0, found + std::string_view(prefix).size());
    }
    constexpr std::size_t longestReason = 200;
    if (reason.size() > longestReason)
        reason = validUtf8(reason.substr(0, longestReason)) + "...";
    throw DocumentError(lineOf(text, passed == 0 ? 0 : passed - 1), "is no JSON: " + reason);
}

/// A byte order mark is no part of the text.
std::string_view withoutMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    return text.starts_with(mark) ? text.substr(mark.size()) : text;
}

}  // namespace

JsonValue parseJson(const std::string& text) {
    const std::string_view body = withoutMark(text);
    std::size_t passed = text.size() - body.size();
    TreeBuilder builder(text, passed);
    Json::sax_parse(CountingIterator(body.data(), passed), CountingIterator(body.data() + body.size(), passed),
                    &builder);
    return builder.takeRoot();
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
