#include "graph/Log.h"
#include "graph/document/Document.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <set>
#include <string_view>

namespace velmorak {
namespace {

using JsonType = JsonValue::JsonType;

// Far more than anybody draws, and few enough to fit into memory.
constexpr std::size_t maxPlugins = 100'000;

/// Checks values against the format. Holds the text for line numbers and for fields that are preserved unchanged.
class Parser {
public:
    explicit Parser(const std::string& text) : text(text) {}

    Document document(const JsonValue& root) const;

private:
    using Fields = std::map<std::string, JsonValue, std::less<>>;

    [[noreturn]] void fail(const JsonValue& at, const std::string& reason) const;
    std::size_t line(const JsonValue& at) const;
    std::string_view written(const JsonValue& value) const;
    Fields fields(const JsonValue& object, std::initializer_list<std::string_view> known, ForeignFields& foreign) const;
    const JsonValue& required(const Fields& found, std::string_view name, const JsonValue& object) const;
    std::string textIn(const JsonValue& value, std::string_view name) const;
    std::string nameIn(const Fields& found, std::string_view name, const JsonValue& object) const;
    float coordinate(const JsonValue& value) const;
    const JsonValue& ofType(const JsonValue& value, JsonType type, const std::string& reason) const;

    void checkVersion(const JsonValue& version) const;
    DocumentPlugin plugin(const JsonValue& object) const;
    void place(const JsonValue& value, DocumentPlugin& plugin) const;
    void countPort(const JsonValue& at) const;
    void inputs(const JsonValue& list, DocumentPlugin& plugin) const;
    void outputs(const JsonValue& list, DocumentPlugin& plugin) const;
    DocumentInput input(const JsonValue& object) const;
    DocumentOutput output(const JsonValue& object) const;
    OutputName source(const JsonValue& value) const;
    std::vector<JsonValue> pairIn(const JsonValue& value, const std::string& reason) const;
    void requireUnique(std::set<std::string>& taken, const std::string& name, const char* what,
                       const JsonValue& at) const;

    const std::string& text;
    mutable std::size_t seen = 0;  ///< Position up to which lines have been counted.
    mutable std::size_t linesBefore = 0;
    mutable std::size_t ports = 0;
};

void Parser::fail(const JsonValue& at, const std::string& reason) const {
    throw DocumentError(line(at), reason);
}

std::string_view Parser::written(const JsonValue& value) const {
    return std::string_view(text).substr(value.begin, value.end - value.begin);
}

/// Counts on from the previous call, because values are mostly visited in the order of the text.
std::size_t Parser::line(const JsonValue& at) const {
    if (at.begin < seen) {
        seen = linesBefore = 0;
    }
    linesBefore += static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(seen),
                                                       text.begin() + static_cast<std::ptrdiff_t>(at.begin), '\n'));
    seen = at.begin;
    return 1 + linesBefore;
}

/// Sorts the members of an object into those that are known, each at most once, and the others.
Parser::Fields Parser::fields(const JsonValue& object, std::initializer_list<std::string_view> known,
                              ForeignFields& foreign) const {
    Fields found;
    forEachMember(text, object, [&](std::string name, const JsonValue& value) {
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            foreign.push_back({std::move(name), std::string(written(value))});
        } else if (!found.emplace(name, value).second) {
            fail(value, "the field " + quote(name) + " appears twice in one object.");
        }
    });
    return found;
}

const JsonValue& Parser::required(const Fields& found, std::string_view name, const JsonValue& object) const {
    const auto at = found.find(name);
    if (at == found.end()) {
        fail(object, "the field " + quote(name) + " is missing.");
    }
    return at->second;
}

std::string Parser::textIn(const JsonValue& value, std::string_view name) const {
    return unquoted(text, ofType(value, JsonType::Text, "the field " + quote(name) + " must be a string."));
}

std::string Parser::nameIn(const Fields& found, std::string_view name, const JsonValue& object) const {
    const JsonValue& value = required(found, name, object);
    std::string made = textIn(value, name);
    if (made.empty()) {
        fail(value, "the field " + quote(name) + " must not be empty.");
    }
    return made;
}

const JsonValue& Parser::ofType(const JsonValue& value, JsonType type, const std::string& reason) const {
    if (value.type != type) {
        fail(value, reason);
    }
    return value;
}

float Parser::coordinate(const JsonValue& value) const {
    const double number =
        numberIn(text, ofType(value, JsonType::Number, "the field \"position\" must hold two numbers."));
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max())) {
        fail(value, "a coordinate is out of range.");
    }
    return static_cast<float>(number);
}

void Parser::checkVersion(const JsonValue& version) const {
    const JsonValue& number = ofType(version, JsonType::Number, "the field \"zedra\" must be a number.");
    if (numberIn(text, number) != 1.0) {
        fail(version, "the document is of version " + std::string(written(version).substr(0, 40)) +
                          " of the format; this program reads version 1.");
    }
}

void Parser::requireUnique(std::set<std::string>& taken, const std::string& name, const char* what,
                           const JsonValue& at) const {
    if (!taken.insert(name).second) {
        fail(at, std::string("two ") + what + " are named " + quote(name) + ".");
    }
}

/// The items of a list that must have two.
std::vector<JsonValue> Parser::pairIn(const JsonValue& value, const std::string& reason) const {
    std::vector<JsonValue> items;
    forEachItem(text, ofType(value, JsonType::List, reason), [&](const JsonValue& item) {
        if (items.size() == 2) {
            fail(value, reason);
        }
        items.push_back(item);
    });
    if (items.size() != 2) {
        fail(value, reason);
    }
    return items;
}

void Parser::place(const JsonValue& value, DocumentPlugin& plugin) const {
    const std::vector<JsonValue> pair = pairIn(value, "the field \"position\" must be a list of two numbers.");
    plugin.x = coordinate(pair[0]);
    plugin.y = coordinate(pair[1]);
}

OutputName Parser::source(const JsonValue& value) const {
    const std::string reason = "the field \"from\" must be a list of two strings: plug-in and output.";
    const std::vector<JsonValue> pair = pairIn(value, reason);
    return {unquoted(text, ofType(pair[0], JsonType::Text, reason)),
            unquoted(text, ofType(pair[1], JsonType::Text, reason))};
}

DocumentInput Parser::input(const JsonValue& object) const {
    ofType(object, JsonType::Object, "an input must be an object.");
    DocumentInput made;
    const Fields found = fields(object, {"name", "value", "from"}, made.foreign);
    made.line = line(object);
    made.name = nameIn(found, "name", object);
    if (const auto value = found.find("value"); value != found.end()) {
        made.value = textIn(value->second, "value");
    }
    if (const auto from = found.find("from"); from != found.end()) {
        made.from = source(from->second);
    }
    return made;
}

DocumentOutput Parser::output(const JsonValue& object) const {
    ofType(object, JsonType::Object, "an output must be an object.");
    DocumentOutput made;
    const Fields found = fields(object, {"name", "type"}, made.foreign);
    made.name = nameIn(found, "name", object);
    const auto type = found.find("type");
    made.type = type == found.end() ? "any" : textIn(type->second, "type");
    return made;
}

DocumentPlugin Parser::plugin(const JsonValue& object) const {
    ofType(object, JsonType::Object, "a plug-in must be an object.");
    DocumentPlugin made;
    const Fields found = fields(object, {"name", "kind", "position", "collapsed", "inputs", "outputs"}, made.foreign);
    made.line = line(object);
    made.name = nameIn(found, "name", object);
    made.kind = nameIn(found, "kind", object);
    if (const auto at = found.find("position"); at != found.end()) {
        place(at->second, made);
    }
    if (const auto at = found.find("collapsed"); at != found.end()) {
        made.isCollapsed =
            text[ofType(at->second, JsonType::Boolean, "the field \"collapsed\" must be true or false.").begin] == 't';
    }
    if (const auto at = found.find("inputs"); at != found.end()) {
        inputs(at->second, made);
    }
    if (const auto at = found.find("outputs"); at != found.end()) {
        outputs(at->second, made);
    }
    return made;
}

void Parser::countPort(const JsonValue& at) const {
    if (++ports > maxPorts) {
        fail(at, "the document has more than 1000000 inputs and outputs.");
    }
}

void Parser::inputs(const JsonValue& list, DocumentPlugin& plugin) const {
    std::set<std::string> names;
    forEachItem(text, ofType(list, JsonType::List, "the field \"inputs\" must be a list."), [&](const JsonValue& item) {
        countPort(item);
        plugin.inputs.push_back(input(item));
        requireUnique(names, plugin.inputs.back().name, "inputs of a plug-in", item);
    });
}

void Parser::outputs(const JsonValue& list, DocumentPlugin& plugin) const {
    std::set<std::string> names;
    forEachItem(text, ofType(list, JsonType::List, "the field \"outputs\" must be a list."),
                [&](const JsonValue& item) {
                    countPort(item);
                    plugin.outputs.push_back(output(item));
                    requireUnique(names, plugin.outputs.back().name, "outputs of a plug-in", item);
                });
}

Document Parser::document(const JsonValue& root) const {
    ofType(root, JsonType::Object, "a document must be an object.");
    Document made;
    const Fields found = fields(root, {"zedra", "summary", "plugins"}, made.foreign);
    checkVersion(required(found, "zedra", root));
    if (const auto at = found.find("summary"); at != found.end()) {
        made.summary = textIn(at->second, "summary");
    }
    std::set<std::string> names;
    const JsonValue& plugins = required(found, "plugins", root);
    forEachItem(text, ofType(plugins, JsonType::List, "the field \"plugins\" must be a list."),
                [&](const JsonValue& item) {
                    if (made.plugins.size() == maxPlugins) {
                        fail(item, "the document has more than 100000 plug-ins.");
                    }
                    made.plugins.push_back(plugin(item));
                    requireUnique(names, made.plugins.back().name, "plug-ins", item);
                });
    return made;
}

}  // namespace

Document parseDocument(const std::string& text) {
    return Parser(text).document(parseJson(text));
}

}  // namespace velmorak
