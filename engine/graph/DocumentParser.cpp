#include "Document.h"
#include "Say.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <map>
#include <set>
#include <string_view>

namespace velmorak {
namespace {

using Shape = JsonValue::Shape;

/// What every check of a value needs: the text, for line numbers and for fields that are kept as they stand.
class Parser {
public:
    explicit Parser(const std::string& whole) : text(whole) {
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1))
            lineEnds.push_back(at);
    }

    Document document(const JsonValue& root) const;

private:
    using Fields = std::map<std::string_view, const JsonValue*>;

    [[noreturn]] void fail(const JsonValue& at, const std::string& reason) const {
        throw DocumentError(line(at), reason);
    }
    std::size_t line(const JsonValue& at) const {
        const auto first = std::ranges::lower_bound(lineEnds, at.begin);
        return 1 + static_cast<std::size_t>(first - lineEnds.begin());
    }
    Fields fields(const JsonValue& object, std::initializer_list<std::string_view> known, ForeignFields& foreign) const;
    const JsonValue& needed(const Fields& found, std::string_view name, const JsonValue& object) const;
    const std::string& textIn(const JsonValue& value, std::string_view name) const;
    std::string nameIn(const Fields& found, std::string_view name, const JsonValue& object) const;
    float coordinate(const JsonValue& value) const;
    const JsonValue& shaped(const JsonValue& value, Shape shape, const std::string& reason) const;

    void checkVersion(const JsonValue& version) const;
    DocumentPlugin plugin(const JsonValue& object) const;
    void place(const JsonValue& value, DocumentPlugin& plugin) const;
    DocumentInput input(const JsonValue& object) const;
    DocumentOutput output(const JsonValue& object) const;
    OutputName source(const JsonValue& value) const;
    void keepNamesApart(std::set<std::string>& taken, const std::string& name, const char* what,
                        const JsonValue& at) const;

    const std::string& text;
    std::vector<std::size_t> lineEnds;
};

/// Sorts the members of an object into those that are known, each at most once, and the others.
Parser::Fields Parser::fields(const JsonValue& object, std::initializer_list<std::string_view> known,
                              ForeignFields& foreign) const {
    Fields found;
    for (const auto& [name, value] : object.members) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            foreign.push_back({name, text.substr(value.begin, value.end - value.begin)});
        else if (!found.emplace(name, &value).second)
            fail(value, "the field " + inQuotes(name) + " stands twice in one object.");
    }
    return found;
}

const JsonValue& Parser::needed(const Fields& found, std::string_view name, const JsonValue& object) const {
    const auto at = found.find(name);
    if (at == found.end())
        fail(object, "the field " + inQuotes(name) + " is missing.");
    return *at->second;
}

const std::string& Parser::textIn(const JsonValue& value, std::string_view name) const {
    return shaped(value, Shape::Text, "the field " + inQuotes(name) + " must be a text.").text;
}

std::string Parser::nameIn(const Fields& found, std::string_view name, const JsonValue& object) const {
    const JsonValue& value = needed(found, name, object);
    if (textIn(value, name).empty())
        fail(value, "the field " + inQuotes(name) + " must not be empty.");
    return value.text;
}

const JsonValue& Parser::shaped(const JsonValue& value, Shape shape, const std::string& reason) const {
    if (value.shape != shape)
        fail(value, reason);
    return value;
}

float Parser::coordinate(const JsonValue& value) const {
    const double number = shaped(value, Shape::Number, "the field \"position\" must hold two numbers.").number;
    if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
        fail(value, "a coordinate is out of range.");
    return static_cast<float>(number);
}

void Parser::checkVersion(const JsonValue& version) const {
    const JsonValue& number = shaped(version, Shape::Number, "the field \"zedra\" must be a number.");
    if (number.number != 1.0)
        fail(version, "the document is of version " + text.substr(version.begin, version.end - version.begin) +
                          " of the format; this program reads version 1.");
}

void Parser::keepNamesApart(std::set<std::string>& taken, const std::string& name, const char* what,
                            const JsonValue& at) const {
    if (!taken.insert(name).second)
        fail(at, std::string("two ") + what + " are named " + inQuotes(name) + ".");
}

void Parser::place(const JsonValue& value, DocumentPlugin& plugin) const {
    const JsonValue& pair = shaped(value, Shape::List, "the field \"position\" must be a list of two numbers.");
    if (pair.items.size() != 2)
        fail(value, "the field \"position\" must be a list of two numbers.");
    plugin.x = coordinate(pair.items[0]);
    plugin.y = coordinate(pair.items[1]);
}

OutputName Parser::source(const JsonValue& value) const {
    const std::string reason = "the field \"from\" must be a list of two texts: plug-in and output.";
    const JsonValue& pair = shaped(value, Shape::List, reason);
    if (pair.items.size() != 2)
        fail(value, reason);
    return {shaped(pair.items[0], Shape::Text, reason).text, shaped(pair.items[1], Shape::Text, reason).text};
}

DocumentInput Parser::input(const JsonValue& object) const {
    shaped(object, Shape::Object, "an input must be an object.");
    DocumentInput made;
    const Fields found = fields(object, {"name", "value", "from"}, made.foreign);
    made.line = line(object);
    made.name = nameIn(found, "name", object);
    if (const auto value = found.find("value"); value != found.end())
        made.value = textIn(*value->second, "value");
    if (const auto from = found.find("from"); from != found.end())
        made.from = source(*from->second);
    return made;
}

DocumentOutput Parser::output(const JsonValue& object) const {
    shaped(object, Shape::Object, "an output must be an object.");
    DocumentOutput made;
    const Fields found = fields(object, {"name", "type"}, made.foreign);
    made.name = nameIn(found, "name", object);
    const auto type = found.find("type");
    made.type = type == found.end() ? "any" : textIn(*type->second, "type");
    return made;
}

DocumentPlugin Parser::plugin(const JsonValue& object) const {
    shaped(object, Shape::Object, "a plug-in must be an object.");
    DocumentPlugin made;
    const Fields found = fields(object, {"name", "kind", "position", "collapsed", "inputs", "outputs"}, made.foreign);
    made.line = line(object);
    made.name = nameIn(found, "name", object);
    made.kind = nameIn(found, "kind", object);
    if (const auto at = found.find("position"); at != found.end())
        place(*at->second, made);
    if (const auto at = found.find("collapsed"); at != found.end())
        made.isCollapsed =
            shaped(*at->second, Shape::Boolean, "the field \"collapsed\" must be true or false.").boolean;
    std::set<std::string> inputs;
    if (const auto at = found.find("inputs"); at != found.end())
        for (const JsonValue& item : shaped(*at->second, Shape::List, "the field \"inputs\" must be a list.").items) {
            made.inputs.push_back(input(item));
            keepNamesApart(inputs, made.inputs.back().name, "inputs of a plug-in", item);
        }
    std::set<std::string> outputs;
    if (const auto at = found.find("outputs"); at != found.end())
        for (const JsonValue& item : shaped(*at->second, Shape::List, "the field \"outputs\" must be a list.").items) {
            made.outputs.push_back(output(item));
            keepNamesApart(outputs, made.outputs.back().name, "outputs of a plug-in", item);
        }
    return made;
}

Document Parser::document(const JsonValue& root) const {
    shaped(root, Shape::Object, "a document must be an object.");
    Document made;
    const Fields found = fields(root, {"zedra", "summary", "plugins"}, made.foreign);
    checkVersion(needed(found, "zedra", root));
    if (const auto at = found.find("summary"); at != found.end())
        made.summary = textIn(*at->second, "summary");
    std::set<std::string> names;
    const JsonValue& plugins = needed(found, "plugins", root);
    for (const JsonValue& item : shaped(plugins, Shape::List, "the field \"plugins\" must be a list.").items) {
        made.plugins.push_back(plugin(item));
        keepNamesApart(names, made.plugins.back().name, "plug-ins", item);
    }
    return made;
}

}  // namespace

Document parseDocument(const std::string& text) {
    return Parser(text).document(parseJson(text));
}

}  // namespace velmorak
